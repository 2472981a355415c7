// Faults at every read of a start, a switch, a walk and Exit: whichever open or
// read fails, no file is written over with what the program got of it, the old
// files stand whole, and a new start shows every category with the rows it last
// had on disk. (Faults at every write are the robustness programs' disk-fault sweep.)
#include <gtest/gtest.h>

#include <array>

#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

const std::vector<std::string> kNames = {"Attic", "Car parts", "Mom's stuff", "Tools, misc"};

const std::map<std::string, Table> kItems = {
    {"Attic", numberedItems(1500, std::string(40, 'x'))}, // read and written in several pieces
    {"Car parts",
     {{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}, {"Wrench", "", "", "", "", "", ""}}},
    {"Mom's stuff", {{"Ring", "100.00", "150.00", "Shop, Main St", "", "", "\"gold\""}}},
    {"Tools, misc", {{"Saw", "10", "", "", "", "", ""}, {"Drill", " 5", "", "", "", "", ""}}},
};
const std::string kEdited = "Mom's stuff";

// Start: the fault hits the start. Switch: the switch to Attic; its save, an
// edit of another category and Exit follow unfaulted. Walk, Exit: an edit, then
// the fault hits SaveCategoryList or Exit.
enum class Road { Start, Switch, Walk, Exit };

class ReadFaults : public ::testing::TestWithParam<Road> {};

TEST_P(ReadFaults, OldFilesStandWholeAtEveryFault) {
    const Road road = GetParam();
    int faults = 0;
    for (long k = 0; k < 1000; ++k) {
        SCOPED_TRACE("fault at operation " + std::to_string(k));
        Harness h;
        const std::filesystem::path data = h.dataDir.path();
        h.writeIndex(kNames);
        for (const auto& [name, items] : kItems) h.writeCategory(name, items);
        auto before = folderBytes(data);
        const auto arm = [&] { h.files.arm(FaultyFiles::OpenRead | FaultyFiles::Read, k); };
        if (road == Road::Start) arm();
        auto& m = h.start();
        const auto edit = [&] {
            h.run([&] { m.lstCategory.setText(kEdited); });
            h.run([&] { m.FG1.setTextMatrix(1, 2, "175.00"); });
        };
        switch (road) {
        case Road::Start:
            EXPECT_FALSE(anyFileOpen(m));
            EXPECT_FALSE(m.CurrentCategory.has_value());
            break;
        case Road::Switch: {
            arm();
            h.run([&] { m.lstCategory.setText("Attic"); });
            const Table rows = withHeading(kItems.at("Attic"));
            const int shown = m.FG1.Rows();
            ASSERT_LE(shown, static_cast<int>(rows.size()));
            EXPECT_EQ(gridCells(m.FG1), Table(rows.begin(), rows.begin() + shown)) << "rows of the file, each whole";
            h.run([&] { m.SaveCategoryFile(); });
            break;
        }
        case Road::Walk: edit(); arm(); h.run([&] { m.SaveCategoryList(); }); break;
        case Road::Exit: edit(); arm(); h.click(m.cmdExit); break;
        }
        const bool fired = h.files.fired();
        h.files.disarm();
        faults += fired;
        if (road == Road::Switch) edit();
        if (road != Road::Exit) h.click(m.cmdExit);

        // On disk: nothing cut, nothing left over, only the edited category may have changed.
        EXPECT_TRUE(leftoverTemporaries(data).empty());
        for (const auto& [n, now] : folderBytes(data)) {
            if (n == ".csv") continue; // the grid of no category, from the first switch
            ASSERT_TRUE(before.count(n)) << "unexpected file " << n;
            if (n == kEdited + ".csv" || n == "NumCats.csv") continue; // checked below
            EXPECT_EQ(now, before[n]) << n;
        }
        const std::string count = readFile(data / "NumCats.csv").value_or("<missing>");
        EXPECT_TRUE(count == " 4 \r\n" || count == "4 \r\n") << count;

        // What a new start shows: the edit is lost only to a fault in its own save.
        auto fresh = h.restart();
        EXPECT_EQ(fresh->m().lstCategory.items(), kNames);
        auto seen = openEveryCategory(*fresh);
        Table edited = withHeading(kItems.at(kEdited));
        edited[1][2] = "175.00";
        for (const auto& [name, items] : kItems) {
            const bool asEdited = name == kEdited && road != Road::Start && seen[name] == edited;
            const bool asBefore = seen[name] == withHeading(items) && (name != kEdited || road != Road::Switch);
            EXPECT_TRUE(asEdited || asBefore) << name;
        }
        if (!fired || HasFailure()) break; // one broken case tells enough
    }
    RecordProperty("faults", faults);
    EXPECT_GT(faults, 2) << "too few faults were injected";
}

INSTANTIATE_TEST_SUITE_P(Storage, ReadFaults, ::testing::Values(Road::Start, Road::Switch, Road::Walk, Road::Exit),
                         [](const auto& info) { return std::string(std::array{"Start", "Switch", "Walk", "Exit"}[int(info.param)]); });

} // namespace

// Faults at every read of a walk and of Exit: whichever open or read fails,
// no file is written over with what the grid got of it, the old files stand
// whole, and a new start shows every category with the rows it last had on
// disk. (Faults at every write are the robustness programs' disk-fault sweep.)
#include <gtest/gtest.h>

#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

const std::vector<std::string> kNames = {"Attic", "Car parts", "Mom's stuff", "Tools, misc"};

// Large enough that its file is read and written in several pieces.
Table manyItems() {
    Table t;
    for (int i = 1; i <= 1500; ++i)
        t.push_back({"box " + std::to_string(i), std::to_string(i) + ".25", "", "attic, shelf " + std::to_string(i % 7), "", "",
                     std::string(40, 'x')});
    return t;
}

const std::map<std::string, Table> kItems = {
    {"Attic", manyItems()},
    {"Car parts",
     {{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}, {"Wrench", "", "", "", "", "", ""}}},
    {"Mom's stuff", {{"Ring", "100.00", "150.00", "Shop, Main St", "", "", "\"gold\""}}},
    {"Tools, misc", {{"Saw", "10", "", "", "", "", ""}, {"Drill", " 5", "", "", "", "", ""}}},
};
// The edit made in the open category before the save.
const std::string kEdited = "Mom's stuff";
Table editedTable() {
    Table t = withHeading(kItems.at(kEdited));
    t[1][2] = "175.00";
    return t;
}

enum class Save { CategoryList, Exit };

std::string saveName(Save s) { return s == Save::CategoryList ? "SaveCategoryList" : "Exit"; }

class SaveFaults : public ::testing::TestWithParam<Save> {};

TEST_P(SaveFaults, OldFilesStandWholeAtEveryFault) {
    const Save save = GetParam();
    int faults = 0;
    for (long k = 0; k < 1000; ++k) {
        SCOPED_TRACE(saveName(save) + ", fault at operation " + std::to_string(k));
        Harness h;
        const std::filesystem::path data = h.dataDir.path();
        h.writeIndex(kNames);
        for (const auto& [name, items] : kItems) h.writeCategory(name, items);
        auto before = folderBytes(data);
        auto& m = h.start();
        h.run([&] { m.lstCategory.setText(kEdited); });
        h.run([&] { m.FG1.setTextMatrix(1, 2, "175.00"); });
        h.files.arm(FaultyFiles::OpenRead | FaultyFiles::Read, k);
        switch (save) {
        case Save::CategoryList: h.run([&] { m.SaveCategoryList(); }); break;
        case Save::Exit: h.click(m.cmdExit); break;
        }
        const bool fired = h.files.fired();
        h.files.disarm();
        faults += fired;

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

        // What a new start shows.
        auto fresh = h.restart();
        EXPECT_EQ(fresh->m().lstCategory.items(), kNames);
        auto seen = openEveryCategory(*fresh);
        for (const auto& [name, items] : kItems) {
            const bool edited = name == kEdited && seen[name] == editedTable();
            EXPECT_TRUE(edited || seen[name] == withHeading(items)) << name;
        }
        if (!fired) break;
        if (HasFailure()) break; // one broken case tells enough
    }
    RecordProperty("faults", faults);
    EXPECT_GT(faults, 0) << "no fault was ever injected";
}

INSTANTIATE_TEST_SUITE_P(Storage, SaveFaults, ::testing::Values(Save::CategoryList, Save::Exit),
                         [](const auto& info) { return saveName(info.param) + "Reads"; });

} // namespace

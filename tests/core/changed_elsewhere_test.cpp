// Another program changes the open category's file: the next switch never writes over it unread.
#include <gtest/gtest.h>

#include <cstdio>

#include "forms/input.h"
#include "support/snapshots.h"

using namespace qmtest;
namespace {

// same: theirs are the bytes the file had; taken: "NAME (changed elsewhere)" is listed; copy: where theirs is kept.
// atExit: Exit is the first save after their change.
struct Writer { const char* label; std::string name; bool ours, inPlace, same, taken; std::string copy; bool atExit = false; };
class OtherProgram : public ::testing::TestWithParam<Writer> {};

// Theirs alone stays and shows at the switch back; both changed, ours stays, theirs is kept byte for byte, told once.
TEST_P(OtherProgram, NothingOfEitherIsLost) {
    const Writer& w = GetParam();
    Harness h;
    const auto file = h.data(w.name + ".csv");
    h.writeCategories({{w.name, {{"jack", "10"}}}, {"Zed", {}}, {w.taken ? w.name + " (changed elsewhere)" : "Zoo", {}}});
    writeFile(h.data(w.name + " (changed elsewhere 2).csv"), "another program's file\r\n");
    if (!w.inPlace) settle(h); // times far back prove a state: a rename gives a new one
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    if (w.ours) h.run([&] { m.FG1.setTextMatrix(1, 1, "11"); });
    std::string theirs = h.text(w.name + ".csv");
    if (!w.same && w.inPlace) theirs.replace(theirs.find(",10,"), 4, ",12,"); // only the bytes tell
    else if (!w.same) theirs = std::string(kHeadingLine) + "\njack,12,,,,,\n";   // a spreadsheet's own line ends
    const auto time = std::filesystem::last_write_time(file);
    writeFile(w.inPlace ? file : h.data("new.tmp"), theirs);
    if (w.inPlace) std::filesystem::last_write_time(file, time);
    else ASSERT_EQ(std::rename(h.data("new.tmp").c_str(), file.c_str()), 0);
    if (w.atExit) h.click(m.cmdExit);
    else {
        // A click on "Zed": the walk of the list's focus gain lists a kept version ahead of it.
        const auto& items = m.lstCategory.items();
        forms::input::selectEntry(h.runtime, m.lstCategory, int(std::find(items.begin(), items.end(), "Zed") - items.begin()));
        EXPECT_EQ(m.lstCategory.Text(), "Zed");
        h.run([&] { m.lstCategory.setText(w.name); });
        EXPECT_EQ(gridCells(m.FG1), withHeading({{"jack", w.ours ? "11" : w.same ? "10" : "12"}}));
        EXPECT_EQ(h.text(w.name + ".csv"), recordLines(gridCells(m.FG1)));
    }
    if (!w.copy.empty()) { EXPECT_EQ(h.text(w.copy + ".csv"), theirs) << "their bytes, as they were"; }
    const std::string told = "The category \"" + w.name + "\" was changed by another program while it was open here. Your version is kept as \"" + w.name + "\", the other as \"" + w.copy + "\".";
    EXPECT_EQ(h.dialogs.texts(), std::vector<std::string>(!w.copy.empty(), told));
    if (!w.atExit) h.click(m.cmdExit);
    const auto listed = h.restart()->m().lstCategory.items();
    EXPECT_EQ(std::count(listed.begin(), listed.end(), w.copy), !w.copy.empty());
}
const std::string kLong = std::string(241, 'A') + "\u00e9\u00e9\u00e9\u00e9\u00e9"; // as long as a name can be

INSTANTIATE_TEST_SUITE_P(Storage, OtherProgram, ::testing::Values(
    Writer{"TheirsRenamedOver", "Attic", false, false, false, false, ""},
    Writer{"TheirsInPlace", "Attic", false, true, false, false, ""},
    Writer{"OursOnlyTheirsTheSameBytes", "Attic", true, false, true, false, ""},
    Writer{"BothRenamedOver", "Attic", true, false, false, false, "Attic (changed elsewhere)"},
    Writer{"BothThenExit", "Attic", true, false, false, false, "Attic (changed elsewhere)", true},
    Writer{"BothNamesTaken", "Attic", true, false, false, true, "Attic (changed elsewhere 3)"},
    Writer{"BothLongName", kLong, true, false, false, false, std::string(231, 'A') + " (changed elsewhere)"}),
    [](const auto& info) { return std::string(info.param.label); });

} // namespace

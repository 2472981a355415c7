// The switch between categories: which place each of its saves and loads
// touches, the window it leaves, and the heading's font size.
#include <gtest/gtest.h>

#include "forms/input.h"
#include "pictures/frm_pic.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

const std::string kA = lfCategory({"a-data,1,,,,,"}), kB = lfCategory({"b-data,2,,,,,"});
const std::string kFloppyA = lfCategory({"a-floppy,3,,,,,"}), kFloppyB = lfCategory({"b-floppy,4,,,,,"});
const std::string kEditedA = crlf({kHeadingLine, "a-data,1,,edited,,,"});
using Files = std::vector<std::optional<std::string>>; // A and B in the data folder, then on the floppy

struct Places : ::testing::Test {
    Harness h;
    void seed() {
        writeFile(h.data("A.csv"), kA), writeFile(h.data("B.csv"), kB);
        writeFile(h.floppy("A.csv"), kFloppyA), writeFile(h.floppy("B.csv"), kFloppyB);
    }
    Files files() const { return {readFile(h.data("A.csv")), readFile(h.data("B.csv")), readFile(h.floppy("A.csv")), readFile(h.floppy("B.csv"))}; }
    void SetUp() override {
        h.writeIndex({"A", "B"});
        seed();
    }
};

struct FlagCase {
    const char* name;
    bool writeToFloppy, readFromFloppy;
    Files after; // after the switch from A (edited) to B
    std::string itemShown;
};

class SwitchPlaces : public Places, public ::testing::WithParamInterface<FlagCase> {};

TEST_P(SwitchPlaces, EachSaveAndLoadTouchesItsPlace) {
    const FlagCase& c = GetParam();
    auto& m = h.startAndOpen(0);
    h.run([&] { m.FG1.setTextMatrix(1, 3, "edited"); });
    seed();
    m.WriteToFloppy = c.writeToFloppy;
    m.ReadFromFloppy = c.readFromFloppy;
    h.run([&] { m.lstCategory.setSelected(1); });
    EXPECT_EQ(std::make_tuple(files(), std::string(m.FG1.TextMatrix(1, 0)), m.CurrentCategory.value_or("-")),
              std::make_tuple(c.after, c.itemShown, "B"));
}

INSTANTIATE_TEST_SUITE_P(
    Switch, SwitchPlaces,
    ::testing::Values(
        // Saves and loads in the data folder; the edit of A is stored before B is read.
        FlagCase{"FlagsFalse", false, false, {kEditedA, crlf({kHeadingLine, "b-data,2,,,,,"}), kFloppyA, kFloppyB}, "b-data"},
        // Saves to the floppy root, loads from the data folder: A's grid and B's data copy go to the floppy.
        FlagCase{"WriteToFloppy", true, false, {kA, kB, kEditedA, crlf({kHeadingLine, "b-data,2,,,,,"})}, "b-data"},
        // Loads from the floppy root, saves to the data folder: B comes from the floppy into the data folder.
        FlagCase{"ReadFromFloppy", false, true, {kEditedA, crlf({kHeadingLine, "b-floppy,4,,,,,"}), kFloppyA, kFloppyB}, "b-floppy"}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- the window after a switch ----------------------------------------------------------------------

// The caption, totals, grid and editor a click shows: the GUI category and typing tests.
// The first switch after the start touches no category but its own; one to a
// heading-only file changes nothing in it; one to items brings the grid back.
TEST(Switch, BringsTheGridBackOnlyForItemsAndTouchesNoOtherFile) {
    Harness h;
    h.writeIndex({"Alpha", "Bare", "Tools"});
    writeFile(h.data("Bare.csv"), crlf({"N,C,V,L,D,W,S"}));
    writeFile(h.data("Tools.csv"), lfCategory({"Saw,10.00,8.00,,,,", "Drill,2.50,1.25,,,,SN 9"}));
    auto& m = h.startAndOpen(0);
    EXPECT_EQ(folderBytes(h.dataDir.path()), (std::map<std::string, std::string>{
        {".csv", crlf({kHeadingLine})}, {"Alpha.csv", crlf({kHeadingLine})}, {"Bare.csv", crlf({"N,C,V,L,D,W,S"})},
        {"CatFiles.csv", "Alpha\r\nBare\r\nTools\r\n"}, {"NumCats.csv", " 3 \r\n"},
        {"Tools.csv", lfCategory({"Saw,10.00,8.00,,,,", "Drill,2.50,1.25,,,,SN 9"})}}));
    h.run([&] { m.lstCategory.setSelected(1); });
    EXPECT_WINDOW(h, "Alpha Bare* Tools | Bare \"Bare\" | N | 1 at 0,6 hidden fixed 01 focus cmdAddAsset");
    EXPECT_EQ(readFile(h.data("Bare.csv")), crlf({"N,C,V,L,D,W,S"}));
    h.run([&] { m.lstCategory.setSelected(2); });
    EXPECT_WINDOW(h, "Alpha Bare Tools* | Tools \"Tools\" | Item Saw Drill | 3 at 2,6 fixed 11 editor focus T1");
    EXPECT_EQ(std::make_tuple(m.FG1.Left(), m.FG1.Top(), m.lstCategory.Left(), m.lstCategory.Top(), m.lblCategory.Left(), m.lblCategory.Top()),
              std::make_tuple(120, 240, 1800, 240, 4560, 240));
}

// ---- a save that fails before the grid is replaced ---------------------------------------------------------

// Every command that saves the grid and then loads over it, on a disk that
// fails every write from then on: the open category and what was typed stay
// in the window, the user hears of it once, and a later save stores it all.
struct KeptCase {
    const char* name;
    std::function<void(Harness&, qm::frmMain&)> act;
    Table expectedB; // B's items at the next start, after an Exit with a good disk
    int messages;
    long failFrom = 0; // the first write operation that fails
};

class KeptOnFailedSave : public ::testing::TestWithParam<KeptCase> {};

TEST_P(KeptOnFailedSave, TheCategoryAndItsEditsStayAndAreStoredLater) {
    const KeptCase& c = GetParam();
    Harness h;
    const std::vector<std::string> names = {"A", "B", "C"};
    h.writeCategories({{"A", {{"A1", "1"}}}, {"B", {{"B1", "1"}}}, {"C", {{"C1", "1"}}}});
    auto& m = h.startAndOpen(1);
    h.run([&] { m.FG1.setTextMatrix(1, 3, "edited"); });
    const std::size_t told = h.dialogs.messages.size();
    h.files.persistent = true;
    h.files.arm(FaultyFiles::OpenWrite | FaultyFiles::Write | FaultyFiles::Commit, c.failFrom);
    c.act(h, m);
    h.files.persistent = false;
    h.files.disarm();

    EXPECT_EQ(std::make_tuple(m.lstCategory.items(), m.lstCategory.Text(), m.CurrentCategory, std::string(m.FG1.TextMatrix(1, 3))),
              std::make_tuple(names, std::string("B"), std::optional<std::string>("B"), std::string("edited")));
    EXPECT_EQ(std::make_tuple(m.txtLoading.Visible(), m.FG1.Left(), m.lstCategory.Left()), std::make_tuple(false, 120, 1800));
    ASSERT_EQ(h.dialogs.messages.size(), told + static_cast<std::size_t>(c.messages));
    for (auto msg = h.dialogs.messages.begin() + static_cast<long>(told); msg != h.dialogs.messages.end(); ++msg)
        EXPECT_TRUE(msg->title == "Quillmere" && msg->text.find("\"B\" could not be ") != std::string::npos) << msg->text;

    if (!m.ended()) h.click(m.cmdExit);
    auto again = h.restart();
    EXPECT_EQ(again->m().lstCategory.items(), names);
    EXPECT_EQ(openEveryCategory(*again)["B"], withHeading(c.expectedB));
}

const Table kEditedB = {{"B1", "1", "", "edited"}};

INSTANTIATE_TEST_SUITE_P(
    Commands, KeptOnFailedSave,
    ::testing::Values(
        KeptCase{"Switch", [](Harness& h, qm::frmMain& m) { h.run([&] { m.lstCategory.setSelected(2); }); }, kEditedB, 1},
        // Told once an event: a later event that fails again is told again.
        KeptCase{"TwoSwitches", [](Harness& h, qm::frmMain& m) { for (int k : {2, 0}) h.run([&] { m.lstCategory.setSelected(k); }); }, kEditedB, 2},
        // The gain of focus can't write the index, so it runs no walk; the selection stops.
        KeptCase{"ClickOnTheList", [](Harness& h, qm::frmMain&) { h.selectCategory(0); }, kEditedB, 1},
        // The index file opens, then every save fails: each step of the walk stops.
        KeptCase{"Walk", [](Harness& h, qm::frmMain& m) { h.focus(m.cmdAddAsset), h.focus(m.lstCategory); }, kEditedB, 1, 1},
        KeptCase{"AddItem",
                 [](Harness& h, qm::frmMain& m) {
                     h.dialogs.inputAnswers.push_back("new thing"), h.click(m.cmdAddAsset);
                     EXPECT_EQ(m.FG1.TextMatrix(2, 0), "new thing");
                 },
                 {{"B1", "1", "", "edited"}, {"new thing"}}, 1},
        KeptCase{"AddCategory", [](Harness& h, qm::frmMain& m) { h.dialogs.inputAnswers.push_back("D"), h.click(m.cmdAddCategory); }, kEditedB, 1},
        KeptCase{"RenameCategory",
                 [](Harness& h, qm::frmMain& m) {
                     h.dialogs.inputAnswers.push_back("Z"), h.click(m.cmdRenameCat);
                     EXPECT_FALSE(m.RenamePending);
                     EXPECT_FALSE(std::filesystem::exists(h.data("Z.csv")));
                 },
                 kEditedB, 2},
        // Exit asks; the default answer (No, as Esc) keeps the program open for
        // a later save, Yes ends it and loses what it could not store.
        KeptCase{"Exit", [](Harness& h, qm::frmMain& m) { h.click(m.cmdExit); EXPECT_EQ(h.program.ends, 0); }, kEditedB, 1},
        KeptCase{"ExitLosingTheEdits", [](Harness& h, qm::frmMain& m) {
                     h.dialogs.msgAnswers.push_back(forms::vbYes), h.click(m.cmdExit);
                     EXPECT_EQ(h.program.ends, 1);
                     for (const auto& msg : h.dialogs.messages) EXPECT_EQ(msg.buttons, forms::vbYesNo | forms::vbDefaultButton2);
                 }, {{"B1", "1"}}, 1}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- the stock picture -----------------------------------------------------------------------------------

class StockPicture : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

// The stock picture is shown in a hidden frmPic; one that is missing or no
// picture gives a plain placeholder, and the switch goes on.
TEST_P(StockPicture, IsShownOrAPlaceholderAndTheSwitchGoesOn) {
    const auto [file, shown] = GetParam();
    Harness h;
    h.writeIndex({"Empty", "Tools"}); // no file for "Empty"
    h.writeCategory("Tools", {{"Saw", "10.00"}});
    if (*file) writeFile(h.data("NoPic.jpg"), file);
    auto& m = h.startAndOpen(0);
    EXPECT_EQ(std::make_tuple(m.Pic().form.Visible(), FakePicture::pathOf(m.Pic().picItem.picture()), m.txtLoading.Visible()),
              std::make_tuple(false, *shown ? shown : h.data("NoPic.jpg").string(), false));
    EXPECT_WINDOW(h, "Empty* Tools | Empty \"Empty\" | Item | 1 at 0,6 hidden fixed 01 focus cmdAddAsset");
    h.run([&] { m.lstCategory.setSelected(1); });
    EXPECT_EQ(window(h).line() + " " + std::string(m.txtCost.Text()) + " " + std::to_string(m.lstCategory.Left()),
              "Empty Tools* | Tools \"Tools\" | Item Saw | 2 at 1,6 fixed 11 editor focus T1 $10.00 1800");
}

INSTANTIATE_TEST_SUITE_P(Switch, StockPicture,
                         ::testing::Values(std::pair{"PIC 1000 800", ""}, std::pair{"", "<placeholder>"},
                                           std::pair{"not a picture", "<placeholder>"}));

// ---- the heading's font size ----------------------------------------------------------------------------------

TEST(CategoryHeading, FontSizeFollowsTheLengthInCharacters) {
    const std::string a14 = "Fourteen chars", a15 = "Fifteen chars!!", a16 = "Sixteen chars!!!";
    // Letters of two and three bytes: a byte count would put these over 15.
    const std::string u14 = "\xC3\x84\xC3\x96\xC3\x9C\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\xC3\x84\xC3\x96\xC3\x9C\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F";
    const std::string u15 = u14 + "\xE2\x82\xAC";
    const std::vector<std::pair<std::string, double>> steps = {
        {a16, 20}, {a15, 20}, {a14, 36}, {a15, 36}, {a16, 20}, {u14, 36}, {a16, 20}, {"", 20}, {"x", 36}, {u15, 36},
        {a16, 20}, {u15, 20},
    };
    Harness h;
    auto& m = h.start();
    EXPECT_EQ(m.lblCategory.font().size, 36);
    for (const auto& [caption, size] : steps) {
        h.run([&] { m.lblCategory.setCaption(caption); });
        EXPECT_EQ(m.lblCategory.font().size, size) << "caption \"" << caption << "\"";
    }
}

// ---- the keyboard alone ----------------------------------------------------------------------------------

// Keys from the check box with Apple open: Tab and Shift+Tab go round the
// whole order by tab index (the editor in the grid's place; the list reached,
// and kept after the walk its gain runs); a key in the list selects as a click
// does: the whole switch, and the focus where a click leaves it.
struct KeysCase { std::vector<std::pair<int, char32_t>> keys; std::vector<std::string> focus; std::string open; };
class Keys : public ::testing::TestWithParam<KeysCase> {};

TEST_P(Keys, MoveTheFocusAndSwitchAsTheTableSays) {
    Harness h;
    h.writeCategories({{"Apple", {{"A1"}}}, {"Bare", {}}, {"cherry", {{"C1"}}}, {"Date", {{"D1"}}}});
    auto& m = h.startAndClick(0);
    h.focus(m.chkPic);
    std::vector<std::string> focus;
    for (auto [k, ch] : GetParam().keys) {
        if (std::abs(k) == forms::key::Tab) forms::input::tab(h.runtime, m.form, k < 0);
        else forms::input::listKey(h.runtime, m.lstCategory, k, ch, 2);
        focus.push_back(h.runtime.focused()->name());
    }
    EXPECT_EQ(std::make_tuple(focus, m.CurrentCategory.value_or("-"), m.lblCategory.Caption(), m.txtLoading.Visible()),
              std::make_tuple(GetParam().focus, GetParam().open, GetParam().open, false));
}

using namespace forms::key;
const std::pair<int, char32_t> kTab{Tab, 0}, kBack{-Tab, 0};
INSTANTIATE_TEST_SUITE_P(
    Keyboard, Keys,
    ::testing::Values(KeysCase{std::vector(13, kTab), {"cmdAddCategory", "cmdDeleteCategory", "cmdRenameCat", "cmdAddAsset", "cmdDeleteAsset",
                               "cmdRenameItem", "cmdSave", "cmdLoad", "cmdPrint", "cmdExit", "T1", "lstCategory", "chkPic"}, "Apple"},
                      KeysCase{std::vector(13, kBack), {"lstCategory", "T1", "cmdExit", "cmdPrint", "cmdLoad", "cmdSave", "cmdRenameItem",
                               "cmdDeleteAsset", "cmdAddAsset", "cmdRenameCat", "cmdDeleteCategory", "cmdAddCategory", "chkPic"}, "Apple"},
                      KeysCase{{kBack, {Down, 0}}, {"lstCategory", "cmdAddAsset"}, "Bare"}, KeysCase{{kBack, {End, 0}}, {"lstCategory", "T1"}, "Date"},
                      KeysCase{{kBack, {PageDown, 0}}, {"lstCategory", "T1"}, "cherry"}, KeysCase{{kBack, {0, U'C'}}, {"lstCategory", "T1"}, "cherry"},
                      KeysCase{{kBack, {Up, 0}, {0, U'z'}}, {"lstCategory", "lstCategory", "lstCategory"}, "Apple"}));

} // namespace

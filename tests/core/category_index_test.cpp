// The category index: reading "NumCats.csv" and "CatFiles.csv" into the list,
// writing them back with the walk over every category.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "storage/value.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using storage::Value;

namespace {

std::vector<std::string> entries(const qm::frmMain& m) { return m.lstCategory.items(); }

bool rewritten(Harness& h, const std::string& name) {
    return readFile(h.data(name + ".csv")).value_or("").find("\r\n") != std::string::npos;
}

// ---- LoadCategoryList's outcomes ----------------------------------------------------

// An index that exists but can't be read whole is told at start and never
// written over: the category commands answer with the same message and change
// nothing, so no category is left without its entry. A count that is a number
// but disagrees with the names is repaired from them and told once at start.
// A missing index is a new database and is told nothing. Every index a start
// takes is saved to the stick whole. A later load adds to the list and the
// count that are there, and leaves them as far as it got.
struct IndexCase {
    std::optional<std::string> numCats, catFiles; // nothing: no file
    const char* unreadable;                       // a file with a read error, or ""
    std::string count;                            // CategoryCount after a load over "before"
    std::vector<std::string> list;                // after a load over the one entry "Kept"
    bool kept;
    std::string repaired = ""; // what NumCats.csv said and CatFiles.csv names, told at start
};

class LoadCategoryListTable : public ::testing::TestWithParam<IndexCase> {};

TEST_P(LoadCategoryListTable, LeavesCountAndListAsToldAndAnUnreadableIndexWhole) {
    const IndexCase& c = GetParam();
    Harness h;
    h.writeCategory("Alpha", {{"a1"}});
    if (c.numCats) writeFile(h.data("NumCats.csv"), *c.numCats);
    if (c.catFiles) writeFile(h.data("CatFiles.csv"), *c.catFiles);
    if (*c.unreadable) h.files.unreadable.insert(h.data(c.unreadable).string());
    const auto index = [&] { return std::pair{readFile(h.data("NumCats.csv")), readFile(h.data("CatFiles.csv"))}; };
    const auto before = index();
    auto& m = h.start();
    const std::vector<std::string> told{m.IndexKeptMessage()};
    const std::vector<std::string> repaired{"The list of categories was repaired: NumCats.csv " + c.repaired + ". Every name in CatFiles.csv is listed."};
    EXPECT_EQ(h.dialogs.texts(), c.kept ? told : c.repaired.empty() ? std::vector<std::string>{} : repaired);
    std::vector<std::string> list = c.list;
    std::erase(list, "Kept");
    EXPECT_EQ(entries(m), list) << "at start";
    if (!c.kept && c.numCats) {
        // "Save complete." only for a copy that a load into an empty data folder takes whole.
        h.click(m.cmdSave);
        Harness fresh("", h.floppyDir.place());
        fresh.click(fresh.start().cmdLoad);
        EXPECT_EQ(std::tuple(h.dialogs.texts().back(), fresh.dialogs.texts().back(), entries(fresh.m())), std::tuple("Save complete.", "Load complete.", list));
    }
    auto switches = countSwitches(m);
    h.run([&] {
        m.lstCategory.Clear();
        m.CategoryCount = Value::text("before");
        m.lstCategory.AddItem("Kept");
        m.LoadCategoryList();
    });
    // The count kept as text, the list unselected, no file left open, no switch run.
    EXPECT_EQ(std::make_tuple(m.CategoryCount.kind(), m.CategoryCount.asText(), entries(m), m.lstCategory.ListIndex(), anyFileOpen(m), *switches),
              std::make_tuple(Value::Kind::Text, c.count, c.list, -1, false, 0));
    h.dialogs.messages.clear();
    h.dialogs.inputAnswers = {"Gamma"};
    h.click(m.cmdAddCategory);
    if (!c.kept) {
        list = c.list;
        list.insert(std::upper_bound(list.begin(), list.end(), "Gamma"), "Gamma");
        EXPECT_EQ(entries(m), list);
        return;
    }
    h.run([&] { m.lstCategory.setSelected(0); });
    h.click(m.cmdRenameCat);
    h.click(m.cmdDeleteCategory);
    EXPECT_TRUE(h.dialogs.prompts.empty()) << "a command asked for a name";
    for (const auto& text : h.dialogs.texts()) EXPECT_EQ(text, told[0]);
    EXPECT_EQ(entries(m), c.list);
    h.click(m.cmdExit);
    EXPECT_EQ(index(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Index, LoadCategoryListTable,
    ::testing::Values(
        IndexCase{std::nullopt, std::nullopt, "", "before", {"Kept"}, false},                 // no index: a new database
        IndexCase{std::nullopt, "A\r\n", "", "before", {"Kept"}, true},                      // names with no count
        IndexCase{" 2 \r\n", "A\r\nB\r\n", "NumCats.csv", "before", {"Kept"}, true},         // the count can't be read
        IndexCase{" 2 \r\n", "A\r\nB\r\n", "CatFiles.csv", "2 ", {"Kept"}, true},            // the names can't be read
        IndexCase{"", "A\r\n", "", "before", {"Kept"}, true},                               // a count file of 0 bytes
        IndexCase{"   ", "A\r\n", "", "before", {"Kept"}, true},                            // of blanks only
        IndexCase{" 2 \r\n", std::nullopt, "", "2 ", {"Kept"}, true},                        // no names file
        IndexCase{"two\r\n", "A\r\nB\r\n", "", "two", {"Kept"}, true},                       // a count that is no number
        IndexCase{"-1 \r\n", "A\r\n", "", "-1 ", {"Kept"}, true},                            // negative
        IndexCase{"\r\n", "", "", "", {"Kept"}, false},                                        // an empty count: what an exit
        IndexCase{"\r\n", "A\r\n", "", "1", {"A", "Kept"}, false, "gave no count, CatFiles.csv names 1 category"},
        IndexCase{" 5 \r\n", "B\r\nA\r\n", "", "2", {"A", "B", "Kept"}, false, "said 5 categories, CatFiles.csv names 2 categories"},
        IndexCase{" 1 \r\n", "B\r\nA\r\n", "", "2", {"A", "B", "Kept"}, false, "said 1 category, CatFiles.csv names 2 categories"},
        IndexCase{" 3 \r\n", "B\r\n\r\nA\r\n", "", "3 ", {"", "A", "B", "Kept"}, false},       // an empty line is a name
        IndexCase{" 1 \r\n", "A\r\n\r\n", "", "1 ", {"A", "Kept"}, false},                      // but not one at the end
        IndexCase{" 5 \r\n", "A\r\n\r\nB\r\n\r\n", "", "3", {"", "A", "B", "Kept"}, false, "said 5 categories, CatFiles.csv names 3 categories"},
        IndexCase{" 2 \r\n", "\"Tools, misc\"\r\n\" Spaced\"\r\n", "", "2 ", {" Spaced", "Kept", "Tools, misc"}, false}));

// ---- SaveCategoryList -------------------------------------------------------------------

// Three categories whose files are in a form the walk rewrites.
struct IndexWalk : ::testing::Test {
    Harness h;
    void SetUp() override {
        h.writeIndex({"Alpha", "Beta", "Gamma"});
        writeFile(h.data("Alpha.csv"), lfCategory({"a1,1,,,,,"}));
        writeFile(h.data("Beta.csv"), lfCategory({"b1,2,,,,,"}));
        writeFile(h.data("Gamma.csv"), lfCategory({"g1,3,,,,,"}));
    }
};

// Every gain of focus of the list stores the whole database: with no selection
// the walk ends on the last entry, and the focus leaves the list for the editor.
TEST_F(IndexWalk, GainOfFocusWalksEveryCategoryAndEndsOnTheLast) {
    auto& m = h.start();
    auto switches = countSwitches(m);
    h.focus(m.lstCategory);
    EXPECT_WINDOW(h, "Alpha Beta Gamma* | Gamma \"Gamma\" | Item g1 | 2 at 1,6 fixed 11 editor focus T1");
    for (const char* name : {"Alpha", "Beta", "Gamma"}) EXPECT_TRUE(rewritten(h, name)) << name << " not walked";
    // One switch for each entry, the count written as it was read, no file left open.
    EXPECT_EQ(std::make_tuple(*switches, h.text("NumCats.csv"), h.text("CatFiles.csv"), anyFileOpen(m)),
              std::make_tuple(3, "3 \r\n", "Alpha\r\nBeta\r\nGamma\r\n", false));
    // A user's click on the first entry: another walk, then the switch to it.
    writeFile(h.data("Alpha.csv"), lfCategory({"a1,1,,,,,"}));
    h.selectCategory(0);
    EXPECT_TRUE(rewritten(h, "Alpha"));
    EXPECT_WINDOW(h, "Alpha* Beta Gamma | Alpha \"Alpha\" | Item a1 | 2 at 1,6 fixed 11 editor focus T1");
}

TEST_F(IndexWalk, GoesBackToTheSelectionAndStoresItsEdits) {
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(1); });
    writeFile(h.data("Beta.csv"), lfCategory({"b1,2,,,,,"})); // undo the switch's own rewrite
    h.run([&] { m.FG1.setTextMatrix(1, 3, "garage"); });
    h.run([&] { m.SaveCategoryList(); });
    // Beta's file was written behind the window's back before the edit: that version is kept as well.
    EXPECT_WINDOW(h, "Alpha Beta* Beta (changed elsewhere) Gamma | Beta \"Beta\" | Item b1 | 2 at 1,6 fixed 11 editor focus T1");
    EXPECT_EQ(m.FG1.TextMatrix(1, 3), "garage");
    for (const char* name : {"Alpha", "Beta", "Gamma"}) EXPECT_TRUE(rewritten(h, name)) << name << " not walked";
    EXPECT_EQ(readFile(h.data("Beta.csv")), crlf({kHeadingLine, "b1,2,,garage,,,"}));
}

// ---- selection and focus ---------------------------------------------------------------

// Selecting the selected entry again, or a gain of focus of the list that has
// the focus, opens no file and runs no switch.
TEST(IndexSelection, SelectingTheSelectedEntryOrFocusingTheFocusedListRunsNothing) {
    Harness h;
    h.writeIndex({"Alpha", "Beta"});
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    const auto walk = std::exchange(m.lstCategory.GotFocus, nullptr); // the focus given without its walk
    h.run([&] { m.lstCategory.SetFocus(); });
    m.lstCategory.GotFocus = walk;
    ASSERT_TRUE(m.lstCategory.hasFocus());
    auto switches = countSwitches(m);
    h.files.arm(FaultyFiles::OpenRead | FaultyFiles::OpenWrite, -1); // count only
    h.focus(m.lstCategory);
    h.run([&] { m.lstCategory.setSelected(0); });
    h.run([&] { m.lstCategory.setText("Alpha"); });
    h.run([&] { m.lstCategory.setText("No such entry"); });
    EXPECT_EQ(std::make_tuple(h.files.counted(), *switches, m.lstCategory.Text()), std::make_tuple(0L, 0, std::string("Alpha")));
}

TEST(IndexSelection, WalkOverASingleSelectedCategoryStillWritesTheIndex) {
    Harness h;
    h.writeCategories({{"Alpha", {{"a1", "5"}}}});
    auto& m = h.startAndOpen(0);
    h.run([&] { m.FG1.setTextMatrix(1, 1, "6"); });
    std::filesystem::remove(h.data("CatFiles.csv"));
    h.run([&] { m.SaveCategoryList(); });
    EXPECT_EQ(std::make_tuple(h.text("CatFiles.csv"), m.CurrentCategory.value_or("-"), std::string(m.FG1.TextMatrix(1, 1))),
              std::make_tuple("Alpha\r\n", "Alpha", "6"));
}

// ---- another writer of the index ----------------------------------------------------------

// A second program adds "Garden" (file and entry) to the index before or after
// this window deletes "Car", then this window stores the index (Exit, or the
// delete): their new names stay, ours deleted stay deleted, theirs deleted stay in.
struct OtherWriterCase {
    const char* what;
    bool deleteBefore, deleteAfter;
    std::string theirs;
    std::vector<std::string> list;
};

class OtherWriter : public ::testing::TestWithParam<OtherWriterCase> {};

TEST_P(OtherWriter, KeepsTheNamesItAddedAndNoneThisWindowDeleted) {
    const OtherWriterCase& c = GetParam();
    Harness h;
    if (c.theirs != "Garden\r\n") h.writeCategories({{"Bike", {{"b"}}}, {"Car", {{"c"}}}}); // else no index at start
    auto& m = h.start();
    const auto deleteCar = [&] { h.run([&] { m.lstCategory.setSelected(1); }), h.click(m.cmdDeleteCategory); };
    if (c.deleteBefore) deleteCar();
    h.writeCategory("Garden", {{"g"}});
    writeFile(h.data("CatFiles.csv"), c.theirs);
    c.deleteAfter ? deleteCar() : h.click(m.cmdExit);
    std::string names;
    for (const auto& n : c.list) names += n + "\r\n";
    EXPECT_EQ(std::make_tuple(entries(m), h.text("CatFiles.csv"), m.CategoryCount.toInt16()),
              std::make_tuple(c.list, names, std::optional<int>(static_cast<int>(c.list.size()))));
}

INSTANTIATE_TEST_SUITE_P(Index, OtherWriter,
                         ::testing::Values(OtherWriterCase{"TheirNewName", false, false, "Bike\r\nCar\r\nGarden\r\n", {"Bike", "Car", "Garden"}},
                                           OtherWriterCase{"OurDeletionFirst", true, false, "Bike\r\nCar\r\nGarden\r\n", {"Bike", "Garden"}},
                                           OtherWriterCase{"OurDeletionAfter", false, true, "Bike\r\nCar\r\nGarden\r\n", {"Bike", "Garden"}},
                                           OtherWriterCase{"TheirDeletion", false, false, "Bike\r\nGarden\r\n", {"Bike", "Car", "Garden"}},
                                           OtherWriterCase{"NoIndexAtStart", false, false, "Garden\r\n", {"Garden"}}),
                         [](const auto& info) { return std::string(info.param.what); });

// ---- the two files change together -------------------------------------------------------------

// What a start does with the pair file that a change of both index files leaves
// until it is done: the names in place finish the pair, anything else drops it.
struct PairCase {
    const char* what;
    std::string pairFile;
    std::string numCatsAfter;
};

class IndexPair : public ::testing::TestWithParam<PairCase> {};

TEST_P(IndexPair, AStartFinishesOrDropsAPairCutShort) {
    const PairCase& c = GetParam();
    Harness h;
    writeFile(h.data("NumCats.csv"), " 2 \r\n");
    writeFile(h.data("CatFiles.csv"), "A\r\nB\r\nC\r\n");
    writeFile(h.data(".quillmere-index"), c.pairFile);
    auto& m = h.start();
    // The names decide the list: a count the pair left behind is repaired.
    EXPECT_EQ(std::make_tuple(h.text("NumCats.csv"), h.text(".quillmere-index"), entries(m).size()),
              std::make_tuple(c.numCatsAfter, "<missing>", 3u));
}

INSTANTIATE_TEST_SUITE_P(
    Start, IndexPair,
    ::testing::Values(PairCase{"NamesInPlace", "5\r\n 3 \r\nA\r\nB\r\nC\r\n", " 3 \r\n"},
                      PairCase{"NamesNotInPlace", "5\r\n 3 \r\nA\r\nB\r\nD\r\n", " 2 \r\n"},
                      PairCase{"LengthBeyondTheEnd", "99\r\n 3 \r\nA\r\nB\r\nC\r\n", " 2 \r\n"},
                      PairCase{"NoLength", " 3 \r\nA\r\nB\r\nC\r\n", " 2 \r\n"}),
    [](const auto& info) { return std::string(info.param.what); });

} // namespace

// The category index: reading "NumCats.csv" and "CatFiles.csv" into the list,
// writing them back with the walk over every category.
#include <gtest/gtest.h>

#include "storage/value.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using storage::Value;

namespace {

std::vector<std::string> entries(const qm::frmMain& m) { return m.lstCategory.items(); }

bool anyFileOpen(const qm::frmMain& m) {
    for (int n = 1; n <= storage::FileTable::kMaxFiles; ++n)
        if (m.files.isOpen(n)) return true;
    return false;
}

bool rewritten(Harness& h, const std::string& name) {
    return readFile(h.data(name + ".csv")).value_or("").find("\r\n") != std::string::npos;
}

// ---- LoadCategoryList's outcomes ----------------------------------------------------

struct LoadCase {
    const char* what;
    std::optional<std::string> numCats;  // nothing: no file
    std::optional<std::string> catFiles; // nothing: no file
    bool numCatsIsFolder;
    Value::Kind countKind;
    std::string countText;
    std::vector<std::string> list; // after, with the entry "Kept" that was there before
};

class LoadCategoryListTable : public ::testing::TestWithParam<LoadCase> {};

TEST_P(LoadCategoryListTable, LeavesCountAndListAsTold) {
    const LoadCase& c = GetParam();
    Harness h;
    auto& m = h.start();
    if (c.numCats) writeFile(h.data("NumCats.csv"), *c.numCats);
    if (c.numCatsIsFolder) std::filesystem::create_directory(h.data("NumCats.csv"));
    if (c.catFiles) writeFile(h.data("CatFiles.csv"), *c.catFiles);
    auto switches = countSwitches(m);
    h.run([&] {
        m.CategoryCount = Value::text("before");
        m.lstCategory.AddItem("Kept");
        m.LoadCategoryList();
    });
    EXPECT_EQ(m.CategoryCount.kind(), c.countKind) << c.what;
    EXPECT_EQ(m.CategoryCount.asText(), c.countText) << c.what;
    EXPECT_EQ(entries(m), c.list) << c.what;
    EXPECT_EQ(m.lstCategory.ListIndex(), -1) << c.what;
    EXPECT_FALSE(anyFileOpen(m)) << c.what << ": a file was left open";
    EXPECT_EQ(*switches, 0) << c.what << ": loading the list ran a switch";
}

const Value::Kind T = Value::Kind::Text;

INSTANTIATE_TEST_SUITE_P(
    Index, LoadCategoryListTable,
    ::testing::Values(
        LoadCase{"NumCats.csv missing", std::nullopt, "A\r\n", false, T, "before", {"Kept"}},
        LoadCase{"NumCats.csv not readable", std::nullopt, "A\r\n", true, T, "before", {"Kept"}},
        LoadCase{"NumCats.csv of 0 bytes", "", "A\r\n", false, T, "before", {"Kept"}},
        LoadCase{"NumCats.csv of blanks only", "   ", "A\r\n", false, T, "before", {"Kept"}},
        LoadCase{"CatFiles.csv missing", " 2 \r\n", std::nullopt, false, T, "2 ", {"Kept"}},
        LoadCase{"count no number", "two\r\n", "A\r\nB\r\n", false, T, "two", {"Kept"}},
        LoadCase{"count beyond 16 bits", "32768\r\n", "A\r\n", false, T, "32768", {"Kept"}},
        LoadCase{"count an empty line", "\r\n", "A\r\n", false, T, "", {"Kept"}},
        LoadCase{"fewer names than the count", " 5 \r\n", "B\r\nA\r\n", false, T, "5 ", {"A", "B", "Kept"}},
        LoadCase{"more names than the count", " 1 \r\n", "B\r\nA\r\n", false, T, "1 ", {"B", "Kept"}},
        LoadCase{"a count of 0", " 0 \r\n", "A\r\n", false, T, "0 ", {"Kept"}},
        LoadCase{"a negative count", "-1 \r\n", "A\r\n", false, T, "-1 ", {"Kept"}},
        LoadCase{"a count with blanks around it", "   2   \r\n", "A\r\nB\r\nC\r\n", false, T, "2   ", {"A", "B", "Kept"}},
        LoadCase{"the largest count", "32767\r\n", "A\r\n", false, T, "32767", {"A", "Kept"}},
        LoadCase{"an empty line is a name", " 3 \r\n", "B\r\n\r\nA\r\n", false, T, "3 ", {"", "A", "B", "Kept"}},
        LoadCase{"quoted names", " 2 \r\n", "\"Tools, misc\"\r\n\" Spaced\"\r\n", false, T, "2 ",
                 {" Spaced", "Kept", "Tools, misc"}}),
    [](const auto& info) { return "Case" + std::to_string(info.index); });

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

TEST_F(IndexWalk, WithNoSelectionEndsOnTheLastEntry) {
    auto& m = h.start();
    auto switches = countSwitches(m);
    h.run([&] { m.SaveCategoryList(); });
    EXPECT_EQ(m.lstCategory.ListIndex(), 2);
    EXPECT_EQ(m.CurrentCategory, "Gamma");
    EXPECT_EQ(m.lblCategory.Caption(), "Gamma");
    EXPECT_EQ(m.FG1.TextMatrix(1, 0), "g1");
    for (const char* name : {"Alpha", "Beta", "Gamma"}) EXPECT_TRUE(rewritten(h, name)) << name << " not walked";
    EXPECT_EQ(*switches, 3) << "one switch for each entry";
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Alpha\r\nBeta\r\nGamma\r\n");
    EXPECT_FALSE(anyFileOpen(m));
}

TEST_F(IndexWalk, GoesBackToTheSelectionAndStoresItsEdits) {
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(1); });
    writeFile(h.data("Beta.csv"), lfCategory({"b1,2,,,,,"})); // undo the switch's own rewrite
    h.run([&] { m.FG1.setTextMatrix(1, 3, "garage"); });
    h.run([&] { m.SaveCategoryList(); });
    EXPECT_EQ(m.lstCategory.ListIndex(), 1);
    EXPECT_EQ(m.CurrentCategory, "Beta");
    EXPECT_EQ(m.FG1.TextMatrix(1, 3), "garage");
    for (const char* name : {"Alpha", "Beta", "Gamma"}) EXPECT_TRUE(rewritten(h, name)) << name << " not walked";
    EXPECT_EQ(readFile(h.data("Beta.csv")), crlf({kHeadingLine, "b1,2,,garage,,,"}));
}

TEST(IndexSave, CountLargerThanTheListIsWrittenBackAsRead) {
    Harness h;
    h.writeIndex({"Alpha", "Beta"}, " 5 ");
    auto& m = h.start();
    EXPECT_EQ(m.lstCategory.ListCount(), 2);
    h.run([&] { m.SaveCategoryList(); });
    auto again = h.restart();
    EXPECT_EQ(again->m().CategoryCount.toInt16(), 5);
    EXPECT_EQ(entries(again->m()), (std::vector<std::string>{"Alpha", "Beta"}));
}

// Names that hold what the record format uses come back as they were typed, and
// their categories keep their items.
TEST(IndexSave, AwkwardNamesRoundTripWithTheirItems) {
    const std::vector<std::string> names = {"Tools, misc", " Spaced", "\"Quoted\" name", "5\" disks", "Caf\xC3\xA9"};
    Harness h;
    auto& m = h.start();
    for (const auto& n : names) {
        h.writeCategory(n, {{"item of " + n, "1.00"}});
        h.run([&] {
            m.lstCategory.AddItem(n);
            m.CategoryCount = m.CategoryCount.plus(1);
        });
    }
    h.click(m.cmdExit);
    auto again = h.restart();
    std::vector<std::string> sorted = entries(again->m());
    EXPECT_EQ(sorted.size(), names.size());
    for (const auto& n : names) EXPECT_NE(std::find(sorted.begin(), sorted.end(), n), sorted.end()) << n;
    auto seen = openEveryCategory(*again);
    for (const auto& n : names) EXPECT_EQ(seen[n], withHeading({{"item of " + n, "1.00"}})) << n;
}

// ---- selection and focus ---------------------------------------------------------------

TEST(IndexSelection, SelectingTheSelectedEntryRunsNoSwitch) {
    Harness h;
    h.writeIndex({"Alpha", "Beta"});
    auto& m = h.start();
    auto switches = countSwitches(m);
    h.run([&] { m.lstCategory.setSelected(0); });
    ASSERT_EQ(*switches, 1);
    h.files.arm(FaultyFiles::OpenRead | FaultyFiles::OpenWrite, -1); // count only
    h.run([&] { m.lstCategory.setSelected(0); });
    h.run([&] { m.lstCategory.setText("Alpha"); });
    h.run([&] { m.lstCategory.setText("No such entry"); });
    EXPECT_EQ(h.files.counted(), 0);
    EXPECT_EQ(*switches, 1);
    EXPECT_EQ(m.lstCategory.Text(), "Alpha");
}

TEST(IndexSelection, WalkOverASingleSelectedCategoryStillWritesTheIndex) {
    Harness h;
    h.writeCategories({{"Alpha", {{"a1", "5"}}}});
    auto& m = h.startAndOpen(0);
    h.run([&] { m.FG1.setTextMatrix(1, 1, "6"); });
    std::filesystem::remove(h.data("CatFiles.csv"));
    h.run([&] { m.SaveCategoryList(); });
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Alpha\r\n");
    EXPECT_EQ(m.CurrentCategory, "Alpha");
    EXPECT_EQ(m.FG1.TextMatrix(1, 1), "6");
}

TEST(IndexSelection, EveryGainOfFocusStoresTheWholeDatabase) {
    Harness h;
    h.writeIndex({"Alpha", "Beta"});
    writeFile(h.data("Alpha.csv"), lfCategory({"a1,1,,,,,"}));
    writeFile(h.data("Beta.csv"), lfCategory({"b1,2,,,,,"}));
    auto& m = h.start();
    h.focus(m.lstCategory);
    EXPECT_TRUE(rewritten(h, "Alpha"));
    EXPECT_TRUE(rewritten(h, "Beta"));
    EXPECT_EQ(readFile(h.data("NumCats.csv")), "2 \r\n"); // the count as it was read
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Alpha\r\nBeta\r\n");
    // The walk ends on the last entry, and the focus has left the list for the editor.
    EXPECT_EQ(m.CurrentCategory, "Beta");
    EXPECT_FALSE(m.lstCategory.hasFocus());
    // A user's click on the first entry: another walk, then the switch to it.
    writeFile(h.data("Alpha.csv"), lfCategory({"a1,1,,,,,"}));
    h.selectCategory(0);
    EXPECT_TRUE(rewritten(h, "Alpha"));
    EXPECT_EQ(m.CurrentCategory, "Alpha");
    EXPECT_EQ(m.lstCategory.ListIndex(), 0);
}

TEST(IndexSelection, FocusOnTheListThatHasItRunsNothing) {
    Harness h;
    auto& m = h.start();
    h.focus(m.lstCategory);
    ASSERT_TRUE(m.lstCategory.hasFocus());
    h.files.arm(FaultyFiles::OpenWrite, -1); // count only
    h.focus(m.lstCategory);
    EXPECT_EQ(h.files.counted(), 0);
}

// A read that fails anywhere in the index leaves no file open, runs no switch,
// and the index is not written over at exit.
TEST(IndexReadFaults, EveryReadFaultLeavesTheIndexWhole) {
    const std::vector<std::string> names = {"Alpha", "Beta", "Gamma"};
    int faults = 0;
    for (long k = 0; k < 100; ++k) {
        SCOPED_TRACE("fault at read " + std::to_string(k));
        Harness h;
        h.writeCategories({{"Alpha", {{"Alpha item"}}}, {"Beta", {{"Beta item"}}}, {"Gamma", {{"Gamma item"}}}});
        h.files.arm(FaultyFiles::OpenRead | FaultyFiles::Read, k);
        auto& m = h.start();
        const bool fired = h.files.fired();
        h.files.disarm();
        EXPECT_FALSE(anyFileOpen(m));
        EXPECT_FALSE(m.CurrentCategory.has_value());
        h.click(m.cmdExit);
        faults += fired;
        EXPECT_EQ(entries(h.restart()->m()), names);
        if (!fired || HasFailure()) break;
    }
    EXPECT_GT(faults, 2);
}

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
    EXPECT_EQ(readFile(h.data("NumCats.csv")), c.numCatsAfter);
    EXPECT_FALSE(std::filesystem::exists(h.data(".quillmere-index")));
    EXPECT_EQ(entries(m).size(), c.numCatsAfter == " 3 \r\n" ? 3u : 2u);
}

INSTANTIATE_TEST_SUITE_P(
    Start, IndexPair,
    ::testing::Values(PairCase{"NamesInPlace", "5\r\n 3 \r\nA\r\nB\r\nC\r\n", " 3 \r\n"},
                      PairCase{"NamesNotInPlace", "5\r\n 3 \r\nA\r\nB\r\nD\r\n", " 2 \r\n"},
                      PairCase{"LengthBeyondTheEnd", "99\r\n 3 \r\nA\r\nB\r\nC\r\n", " 2 \r\n"},
                      PairCase{"NoLength", " 3 \r\nA\r\nB\r\nC\r\n", " 2 \r\n"}),
    [](const auto& info) { return std::string(info.param.what); });

// ---- an index that exists but can't be read --------------------------------------------------

// An index that exists but can't be read whole is told at start and never
// written over: the category commands answer with the same message and change
// nothing, so no category is left without its entry. A missing index is a new
// database and is told nothing.
struct IndexState {
    const char* what;
    std::optional<std::string> numCats, catFiles; // nothing: no file
    const char* unreadable;                       // a file with a read error, or ""
    bool kept;
};

class UnreadableIndex : public ::testing::TestWithParam<IndexState> {};

TEST_P(UnreadableIndex, IsToldAndNeverWrittenOver) {
    const IndexState& c = GetParam();
    Harness h;
    h.writeCategory("Alpha", {{"a1"}});
    h.writeCategory("Beta", {{"b1"}});
    if (c.numCats) writeFile(h.data("NumCats.csv"), *c.numCats);
    if (c.catFiles) writeFile(h.data("CatFiles.csv"), *c.catFiles);
    if (*c.unreadable) h.files.unreadable.insert(h.data(c.unreadable).string());
    auto& m = h.start();
    const std::vector<std::string> told{m.IndexKeptMessage()};
    EXPECT_EQ(h.dialogs.texts(), c.kept ? told : std::vector<std::string>{});
    const auto index = [&] { return std::pair{readFile(h.data("NumCats.csv")), readFile(h.data("CatFiles.csv"))}; };
    const auto before = index();
    const std::vector<std::string> listed = entries(m);
    h.dialogs.messages.clear();
    h.dialogs.inputAnswers = {"Gamma", "Delta"};
    h.click(m.cmdAddCategory);
    if (!c.kept) {
        EXPECT_EQ(entries(m), (std::vector<std::string>{"Gamma"}));
        return;
    }
    if (!listed.empty()) {
        h.run([&] { m.lstCategory.setSelected(0); });
        h.click(m.cmdRenameCat);
        h.click(m.cmdDeleteCategory);
    }
    EXPECT_TRUE(h.dialogs.prompts.empty()) << "a command asked for a name";
    for (const auto& text : h.dialogs.texts()) EXPECT_EQ(text, told[0]);
    EXPECT_EQ(entries(m), listed);
    h.click(m.cmdExit);
    EXPECT_EQ(index(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Index, UnreadableIndex,
    ::testing::Values(IndexState{"CountReadError", " 2 \r\n", "Alpha\r\nBeta\r\n", "NumCats.csv", true},
                      IndexState{"NamesReadError", " 2 \r\n", "Alpha\r\nBeta\r\n", "CatFiles.csv", true},
                      IndexState{"CountNoNumber", "two\r\n", "Alpha\r\nBeta\r\n", "", true},
                      IndexState{"CountOutOfRange", "40000\r\n", "Alpha\r\nBeta\r\n", "", true},
                      IndexState{"NamesMissing", " 2 \r\n", std::nullopt, "", true},
                      IndexState{"FewerNamesThanTheCount", " 3 \r\n", "Alpha\r\nBeta\r\n", "", true},
                      IndexState{"NamesWithoutACount", std::nullopt, "Alpha\r\nBeta\r\n", "", true},
                      IndexState{"NoIndex", std::nullopt, std::nullopt, "", false},
                      IndexState{"EmptyCountOfANewDatabase", "\r\n", "", "", false}),
    [](const auto& info) { return std::string(info.param.what); });

} // namespace

// Category files: the grid written whole, one line a row, and read back field
// by field; files that can't be read, files too long for the grid.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "storage/value.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

const std::string kWorkedExample = crlf({kHeadingLine, "Jack,25.00,20.00,Hardware store,3/1/1999,3/1/2000,SN 1234", "Wrench,,,,,,"});
const Table kWorkedGrid = withHeading({{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}, {"Wrench"}});

void setGrid(qm::frmMain& m, const Table& t) {
    m.FG1.setRows(static_cast<int>(t.size()));
    for (std::size_t r = 0; r < t.size(); ++r)
        for (std::size_t c = 0; c < 7; ++c)
            m.FG1.setTextMatrix(static_cast<int>(r), static_cast<int>(c), c < t[r].size() ? t[r][c] : "");
}

TEST(CategoryFile, WorkedExampleLoadsAndIsWrittenBackByteForByte) {
    Harness h;
    h.writeIndex({"Car parts"});
    writeFile(h.data("Car parts.csv"), kWorkedExample);
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    EXPECT_EQ(gridCells(m.FG1), kWorkedGrid);
    EXPECT_EQ(m.ItemRowCount, 3);
    EXPECT_EQ(readFile(h.data("Car parts.csv")), kWorkedExample);
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("Car parts.csv")), kWorkedExample);
}

TEST(CategoryFile, GridIsWrittenAsTheWorkedExample) {
    Harness h;
    h.writeIndex({"Car parts"});
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    h.run([&] {
        setGrid(m, kWorkedGrid);
        m.SaveCategoryFile();
    });
    EXPECT_EQ(readFile(h.data("Car parts.csv")), kWorkedExample);
    // Saving moves nothing and changes no cell.
    EXPECT_EQ(gridCells(m.FG1), kWorkedGrid);
}

// ---- LoadCategoryFile's outcomes ------------------------------------------------------------

struct LoadCase {
    const char* what;
    std::optional<std::string> bytes; // nothing: no file
    Table grid;                       // row 0 held old0..old6 before
};

const Row kOld = {"old0", "old1", "old2", "old3", "old4", "old5", "old6"};
const Row kZero = {"0", "", "", "", "", "", ""};

class LoadCategoryFileTable : public ::testing::TestWithParam<LoadCase> {};

TEST_P(LoadCategoryFileTable, LeavesTheGridAsTold) {
    const LoadCase& c = GetParam();
    Harness h;
    h.writeIndex({"C"});
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    if (c.bytes) writeFile(h.data("C.csv"), *c.bytes);
    else std::filesystem::remove(h.data("C.csv"));
    h.run([&] {
        setGrid(m, {kOld, {"stale item", "9"}});
        m.FG1.setFixedRows(1);
        m.FG1.setFixedCols(1);
        m.LoadCategoryFile();
    });
    EXPECT_EQ(gridCells(m.FG1), c.grid) << c.what;
    EXPECT_EQ(m.ItemRowCount, m.FG1.Rows()) << c.what;
    EXPECT_EQ(m.FG1.FixedRows(), 0) << c.what;
    EXPECT_EQ(m.FG1.FixedCols(), 0) << c.what;
    EXPECT_TRUE(m.FG1.Enabled()) << c.what;
    EXPECT_FALSE(m.files.isOpen(m.LoadFileNumber)) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    CategoryFile, LoadCategoryFileTable,
    ::testing::Values(
        LoadCase{"missing", std::nullopt, {kOld}},
        LoadCase{"0 bytes", "", {kOld, kZero}},
        LoadCase{"first line short, nothing behind", "A,B,C\r\n", {{"A", "B", "C", "old3", "old4", "old5", "old6"}, kZero}},
        LoadCase{"heading line only", crlf({kHeadingLine}), {headingRow()}},
        LoadCase{"heading and two items", crlf({kHeadingLine, "a,1,2,3,4,5,6", "b,,,,,,"}),
                 withHeading({{"a", "1", "2", "3", "4", "5", "6"}, {"b"}})},
        LoadCase{"an incomplete last line is dropped", crlf({kHeadingLine, "a,1,2,3,4,5,6", "b,1"}),
                 withHeading({{"a", "1", "2", "3", "4", "5", "6"}})},
        LoadCase{"an incomplete last line with no line end", crlf({kHeadingLine, "a,,,,,,"}) + "b,1,2",
                 withHeading({{"a"}})},
        LoadCase{"a complete last line with no line end", crlf({kHeadingLine}) + "a,,,,,,z", withHeading({{"a", "", "", "", "", "", "z"}})},
        LoadCase{"other headings show as they are", crlf({"N,C,V,L,D,W,S", "a,,,,,,"}),
                 {{"N", "C", "V", "L", "D", "W", "S"}, {"a", "", "", "", "", "", ""}}},
        LoadCase{"an item with an empty name", crlf({kHeadingLine, ",1,,,,,", "b,,,,,,"}), withHeading({{"", "1"}, {"b"}})}),
    [](const auto& info) { return "Case" + std::to_string(info.index); });

// ---- texts that need quoting -------------------------------------------------------------------

// Whatever a user types into a cell, and whatever a category is called, comes
// back unchanged after an exit and a new start.
TEST(CategoryFile, CellsAndNamesRoundTripThroughExitAndStart) {
    const std::string name = "Tools, misc";
    const Table items = {
        {"Jack", "25.00", "20.00", "Main St, Springfield", "3/1/1999", "3/1/2000", "SN 1234"},
        {"\"7\" wide shelf", "5\" disk", " 12.50", "  leading blanks", "\ttab", "", "ends with, comma,"},
        {"", "", "", "", "", "", ""},
        {"Drill \"Pro\"", "1,200.50", "", "two\r\nlines", "lf\nonly", "trailing  ", ""},
        {"\"", ",", " ", "\"\"", "a\"b", "\r", "last, column"},
        {"Caf\xC3\xA9", "\xE2\x82\xAC" "5", "", "", "", "", "\xC3\xA9"},
    };
    TempDir data, floppy;
    {
        Harness h(data.place(), floppy.place());
        h.writeIndex({name});
        auto& m = h.start();
        h.run([&] { m.lstCategory.setSelected(0); });
        h.run([&] { setGrid(m, withHeading(items)); });
        h.click(m.cmdExit);
        auto bytes = readFile(h.data(name + ".csv")).value_or("");
        EXPECT_NE(bytes.find("\r\nJack,25.00,20.00,\"Main St, Springfield\",3/1/1999,3/1/2000,SN 1234\r\n"), std::string::npos)
            << bytes;
        EXPECT_NE(bytes.find("\r\n,,,,,,\r\n"), std::string::npos) << "a row of empty cells is six commas";
    }
    Harness h(data.place(), floppy.place());
    auto& m = h.start();
    ASSERT_EQ(m.lstCategory.items(), std::vector<std::string>{name});
    EXPECT_EQ(openEveryCategory(h)[name], withHeading(items));
}

// ---- files that can't be read -----------------------------------------------------------------

struct UnreadableFileTest : ::testing::Test {
    Harness h;
    const std::string kept = crlf({kHeadingLine, "precious,100.00,90.00,,,,"});
    void SetUp() override {
        h.writeIndex({"Alpha", "X"});
        h.writeCategory("Alpha", {{"a1", "1"}});
        writeFile(h.data("X.csv"), kept);
    }
    // A later run without the fault shows the category whole.
    void expectWholeInAFreshStart() {
        Harness again(h.data("").string(), h.floppy("").string());
        again.start();
        auto seen = openEveryCategory(again);
        EXPECT_EQ(seen["X"], withHeading({{"precious", "100.00", "90.00"}}));
        EXPECT_EQ(seen["Alpha"], withHeading({{"a1", "1"}}));
    }
};

TEST_F(UnreadableFileTest, FailedFirstLoadOfASwitchIsNotWrittenOver) {
    auto& m = h.start();
    h.files.arm(FaultyFiles::OpenRead, 0); // the switch's first load
    h.run([&] { m.lstCategory.setSelected(1); });
    ASSERT_TRUE(h.files.fired());
    EXPECT_EQ(readFile(h.data("X.csv")), kept);
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("X.csv")), kept);
    expectWholeInAFreshStart();
}

TEST_F(UnreadableFileTest, GridHoldingAFailedLoadIsNeverSavedUnderItsName) {
    auto& m = h.start();
    h.files.arm(FaultyFiles::OpenRead, 1); // the switch's second load
    h.run([&] { m.lstCategory.setSelected(1); });
    ASSERT_TRUE(h.files.fired());
    EXPECT_EQ(m.FG1.Rows(), 1);
    h.run([&] { m.SaveCategoryFile(); });
    EXPECT_EQ(readFile(h.data("X.csv")), kept);
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("X.csv")), kept);
    expectWholeInAFreshStart();
}

TEST_F(UnreadableFileTest, FileThatNeverReadsSurvivesWalksAndExit) {
    h.files.unreadable.insert(h.data("X.csv").string());
    auto& m = h.start();
    h.selectCategory(1);
    EXPECT_EQ(m.CurrentCategory, "X");
    EXPECT_EQ(m.ItemRowCount, 1);
    h.selectCategory(0);
    h.selectCategory(1);
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("X.csv")), kept);
    EXPECT_TRUE(leftoverTemporaries(h.data("")).empty());
    expectWholeInAFreshStart();
}

// A read error in the middle of a long file leaves part of it in the grid: that
// part must never replace the file.
TEST_F(UnreadableFileTest, ReadErrorInTheMiddleOfAFileLeavesItWhole) {
    std::string big = std::string(kHeadingLine) + "\r\n";
    for (int i = 0; i < 3000; ++i) big += "row " + std::to_string(i) + ",1.00,,,,," + std::string(30, 'y') + "\r\n";
    writeFile(h.data("X.csv"), big);
    auto& m = h.start();
    // Each load reads the file in pieces, then once more to find its end.
    const long readsPerLoad = static_cast<long>((big.size() + 65535) / 65536) + 1;
    ASSERT_GE(readsPerLoad, 3);
    h.files.arm(FaultyFiles::Read, 1); // the switch's first load stops after one piece
    h.run([&] { m.lstCategory.setSelected(1); });
    ASSERT_TRUE(h.files.fired());
    EXPECT_EQ(readFile(h.data("X.csv")), big);
    EXPECT_EQ(m.FG1.Rows(), 3001) << "the second load reads it whole";
    h.run([&] { m.lstCategory.setSelected(0); });
    h.files.arm(FaultyFiles::Read, readsPerLoad + 1); // now the second load stops after one piece
    h.run([&] { m.lstCategory.setSelected(1); });
    ASSERT_TRUE(h.files.fired());
    EXPECT_LT(m.FG1.Rows(), 3001);
    h.files.disarm();
    // What shows is rows of the file, each whole.
    for (int r = 1; r < m.FG1.Rows(); ++r) {
        const Row expected = {"row " + std::to_string(r - 1), "1.00", "", "", "", "", std::string(30, 'y')};
        ASSERT_EQ(gridCells(m.FG1)[static_cast<std::size_t>(r)], expected) << "row " << r;
    }
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("X.csv")), big);
}

TEST(CategoryFileUnreadable, FolderInPlaceOfTheFileStaysAndOthersAreStored) {
    Harness h;
    h.writeIndex({"Alpha", "X"});
    h.writeCategory("Alpha", {{"a1", "1"}});
    std::filesystem::create_directory(h.data("X.csv"));
    writeFile(h.data("X.csv") / "inside", "keep");
    auto& m = h.start();
    h.selectCategory(1);
    EXPECT_EQ(m.CurrentCategory, "X");
    h.selectCategory(0);
    h.run([&] { m.FG1.setTextMatrix(1, 1, "2"); });
    h.click(m.cmdExit);
    EXPECT_TRUE(std::filesystem::is_directory(h.data("X.csv")));
    EXPECT_EQ(readFile(h.data("X.csv") / "inside"), "keep");
    EXPECT_EQ(readFile(h.data("Alpha.csv")), crlf({kHeadingLine, "a1,2,,,,,"}));
}

TEST(CategoryFileUnreadable, SocketInPlaceOfTheFileIsNotReplaced) {
    Harness h;
    h.writeIndex({"X"});
    const std::string path = h.data("X.csv").string();
    int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof addr.sun_path);
    std::copy(path.begin(), path.end(), addr.sun_path);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    auto& m = h.start();
    h.selectCategory(0);
    h.click(m.cmdExit);
    ::close(fd);
    EXPECT_TRUE(std::filesystem::is_socket(h.data("X.csv")));
}

TEST(CategoryFileMissing, BecomesAnEmptyCategoryWithAHeadingFile) {
    Harness h;
    h.writeIndex({"New"});
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    EXPECT_EQ(m.ItemRowCount, 1);
    EXPECT_FALSE(m.FG1.Visible());
    EXPECT_EQ(gridCells(m.FG1), Table{headingRow()});
    EXPECT_EQ(readFile(h.data("New.csv")), crlf({kHeadingLine}));
}

// ---- the grid's limit ------------------------------------------------------------------------------

std::string linesOfItems(int items) {
    std::string s = std::string(kHeadingLine) + "\r\n";
    for (int i = 1; i <= items; ++i) s += "item " + std::to_string(i) + "," + std::to_string(i) + ".00,,,,,\r\n";
    return s;
}

// Starts the program and opens its first category, "Big": the grid is full to its last row.
qm::frmMain& openFullGrid(Harness& h) {
    auto& m = h.start();
    h.run([&] { m.lstCategory.setSelected(0); });
    EXPECT_EQ(m.FG1.Rows(), 32767);
    EXPECT_EQ(m.ItemRowCount, 32767);
    EXPECT_EQ(m.FG1.TextMatrix(32766, 0), "item 32766");
    return m;
}

TEST(CategoryFileLimit, FileOfExactlyTheGridsRowsRoundTrips) {
    Harness h;
    h.writeIndex({"Big"});
    const std::string bytes = linesOfItems(32766);
    writeFile(h.data("Big.csv"), bytes);
    auto& m = openFullGrid(h);
    h.run([&] { m.FG1.setTextMatrix(32766, 6, "last cell"); });
    h.click(m.cmdExit);
    std::string expected = bytes;
    expected.insert(expected.size() - 2, "last cell");
    EXPECT_EQ(readFile(h.data("Big.csv")), expected);
}

TEST(CategoryFileLimit, LongerFileLoadsWhatFitsAndIsNeverWrittenOver) {
    Harness h;
    h.writeIndex({"Big", "Small"});
    h.writeCategory("Small", {{"s1"}});
    const std::string bytes = linesOfItems(32767);
    writeFile(h.data("Big.csv"), bytes);
    auto& m = openFullGrid(h);
    h.run([&] { m.FG1.setTextMatrix(1, 1, "edited"); });
    h.run([&] { m.lstCategory.setSelected(1); });
    h.run([&] { m.lstCategory.setSelected(0); });
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("Big.csv")), bytes);
    EXPECT_EQ(readFile(h.data("Small.csv")), crlf({kHeadingLine, "s1,,,,,,"}));
}

// ---- names the file system takes otherwise -------------------------------------------------------

// A category called "../victim" must never read or replace a file outside the data folder.
TEST(CategoryFileNames, NameWithAFolderPartNeverReachesAnotherFolder) {
    TempDir root;
    std::filesystem::create_directory(root.path() / "data");
    std::filesystem::create_directory(root.path() / "floppy");
    const auto victim = root.path() / "victim.csv";
    writeFile(victim, "not a category\nkeep me\n");
    const std::string dataPlace = (root.path() / "data").string() + "/", floppyPlace = (root.path() / "floppy").string() + "/";
    {
        Harness h(dataPlace, floppyPlace);
        h.writeIndex({"../victim"});
        auto& m = h.start();
        h.selectCategory(0);
        EXPECT_EQ(m.ItemRowCount, 1) << "read another folder's file";
        h.run([&] { setGrid(m, withHeading({{"kept", "1"}})); });
        h.click(m.cmdExit);
        EXPECT_EQ(readFile(victim), "not a category\nkeep me\n");
    }
    // The category itself keeps its items.
    Harness h(dataPlace, floppyPlace);
    h.start();
    EXPECT_EQ(openEveryCategory(h)["../victim"], withHeading({{"kept", "1"}}));
}

// A name too long for a file name: nothing can be stored under it, silently,
// and the other categories are stored as ever.
TEST(CategoryFileNames, NameTooLongForAFileStoresNothingAndHarmsNothing) {
    const std::string longName(300, 'n');
    Harness h;
    h.writeIndex({"Alpha", longName});
    h.writeCategory("Alpha", {{"a1", "1"}});
    auto& m = h.start();
    h.selectCategory(1);
    EXPECT_EQ(m.CurrentCategory, longName);
    EXPECT_EQ(m.ItemRowCount, 1);
    h.run([&] { setGrid(m, withHeading({{"lost"}})); });
    h.selectCategory(0);
    EXPECT_EQ(gridCells(m.FG1), withHeading({{"a1", "1"}}));
    h.click(m.cmdExit);
    EXPECT_EQ(h.program.ends, 1);
    EXPECT_TRUE(leftoverTemporaries(h.dataDir.path()).empty());
    Harness again(h.dataDir.place(), h.floppyDir.place());
    again.start();
    auto seen = openEveryCategory(again);
    EXPECT_EQ(seen["Alpha"], withHeading({{"a1", "1"}}));
    EXPECT_EQ(seen[longName], Table{headingRow()});
}

// Two different names must never share one file: a "/" stands in file names
// as another character, and a name that holds that character must not meet it.
TEST(CategoryFileNames, DifferentNamesNeverShareAFile_SuspectedBug) {
    const std::string slash = "a/b", lookalike = "a\xE2\x88\x95" "b"; // U+2215 DIVISION SLASH
    TempDir data, floppy;
    {
        Harness h(data.place(), floppy.place());
        h.writeIndex({slash, lookalike});
        auto& m = h.start();
        h.run([&] { m.lstCategory.setText(slash); });
        h.run([&] { setGrid(m, withHeading({{"from slash"}})); });
        h.run([&] { m.lstCategory.setText(lookalike); });
        h.run([&] { setGrid(m, withHeading({{"from lookalike"}})); });
        h.click(m.cmdExit);
    }
    Harness h(data.place(), floppy.place());
    h.start();
    auto seen = openEveryCategory(h);
    EXPECT_EQ(seen[slash], withHeading({{"from slash"}}));
    EXPECT_EQ(seen[lookalike], withHeading({{"from lookalike"}}));
}

} // namespace

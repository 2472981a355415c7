// Category files: the grid written whole, one line a row, and read back field
// by field; files that can't be read, files too long for the grid.
#include <gtest/gtest.h>

#include "forms/failure.h"
#include "forms/std_files.h"
#include "storage/file_table.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

void setGrid(qm::frmMain& m, const Table& t) {
    m.FG1.setRows(static_cast<int>(t.size()));
    for (std::size_t r = 0; r < t.size(); ++r)
        for (std::size_t c = 0; c < 7; ++c)
            m.FG1.setTextMatrix(static_cast<int>(r), static_cast<int>(c), c < t[r].size() ? t[r][c] : "");
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
    settle(h); // nothing is read again to prove a file's state
    h.writeIndex({"C"});
    auto& m = h.startAndOpen(0);
    if (c.bytes) writeFile(h.data("C.csv"), *c.bytes);
    else std::filesystem::remove(h.data("C.csv"));
    h.run([&] {
        setGrid(m, {kOld, {"stale item", "9"}});
        m.FG1.setFixedRows(1);
        m.FG1.setFixedCols(1);
        m.LoadCategoryFile();
    });
    EXPECT_EQ(gridCells(m.FG1), c.grid) << c.what;
    // Rows counted, no fixed rows or columns, the grid enabled, the file closed.
    EXPECT_EQ(std::make_tuple(m.ItemRowCount - m.FG1.Rows(), m.FG1.FixedRows(), m.FG1.FixedCols(), m.FG1.Enabled(), m.files.isOpen(m.LoadFileNumber)),
              std::make_tuple(0, 0, 0, true, false)) << c.what;
    // The save that follows leaves the file in the grid's own form: a file whose
    // bytes were already so stays, any other is written.
    h.run([&] { m.SaveCategoryFile(); });
    EXPECT_EQ(readFile(h.data("C.csv")), recordLines(c.grid)) << c.what;
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
        LoadCase{"other headings show as they are", crlf({"N,C,V,L,D,W,S", "a,,,,,,"}),
                 {{"N", "C", "V", "L", "D", "W", "S"}, {"a", "", "", "", "", "", ""}}},
        LoadCase{"an item with an empty name", crlf({kHeadingLine, ",1,,,,,", "b,,,,,,"}), withHeading({{"", "1"}, {"b"}})}));

// Lines of every form (blanks before a field, quotes needed or not, text
// behind a closing quote, lone CR or LF, short or long lines), on and across
// the edges of the pieces read from the file, and every way a file can end:
// the grid holds the file's fields read one by one, seven to a row, and the
// save that follows writes the grid's own form (bytes already so stay). Every
// fifth file has only lines in that form, so that its end alone decides.
TEST(CategoryFile, LinesOfEveryFormLoadAsTheirFieldsReadOneByOne) {
    const std::vector<std::string> kinds = {",1.00,2.00,Shop,1/1/2000,2/2/2002,SN\r\n", ",1,2,3,4,5,6\n", ",\"a,b\",2,3,4,5,6\r\n",
                                            ", 1,2,3,4,5,6\r\n", ",1,2\r\n", ",1,2,3,4,5,6\r", ",\"\",,,,,\r\n",
                                            ",\"7\" wide,2,3,4,5,6\r\n", ",1,2,3,4,5,6,x,1,2,3,4,5,6\r\n"};
    const std::vector<std::string> ends = {"", "Jack,25.00,,,,,", "a,,,,,,z", "b,1", "  ", "Jack,\"25.00,,,,,\r\n"};
    Harness h;
    h.writeIndex({"C"});
    auto& m = h.startAndOpen(0);
    forms::StdFiles real;
    storage::FileTable reference(real);
    for (std::size_t pad = 0; pad < 60; ++pad) {
        std::string bytes = std::string(kHeadingLine) + "\r\n" + std::string(pad, 'p') + ",,,,,,\r\n";
        for (int i = 0; bytes.size() < 140000; ++i)
            bytes += "item " + std::to_string(i) + kinds[pad % 5 == 0 || i % 13 < 5 ? 0 : static_cast<std::size_t>(i % 13 - 4)];
        writeFile(h.data("C.csv"), bytes + ends[pad % ends.size()]);
        Table expected;
        reference.OpenInput(1, h.data("C.csv"));
        try {
            for (Row row;; row.clear()) {
                while (row.size() < 7) row.push_back(reference.ReadField(1));
                expected.push_back(row);
            }
        } catch (const forms::EndOfFile&) {
        }
        reference.Close(1);
        h.run([&] { m.LoadCategoryFile(); });
        ASSERT_EQ(gridCells(m.FG1), expected) << pad;
        h.run([&] { m.SaveCategoryFile(); });
        ASSERT_EQ(readFile(h.data("C.csv")), recordLines(expected)) << pad;
    }
}

// A file of 32767 lines fills the grid and is stored as ever; one more line and
// the grid holds what fits, and the file is never written over in that run,
// nor copied in part to the floppy, where a later load would bring the cut copy back.
TEST(CategoryFile, GridHoldsAtMost32767RowsAndALongerFileStays) {
    auto linesOfItems = [](int items) {
        std::string s = std::string(kHeadingLine) + "\r\n";
        for (int i = 1; i <= items; ++i) s += "item " + std::to_string(i) + "," + std::to_string(i) + ".00,,,,,\r\n";
        return s;
    };
    Harness h;
    h.writeIndex({"Exact", "Over"});
    const std::string exact = linesOfItems(32766), over = linesOfItems(32767);
    writeFile(h.data("Exact.csv"), exact);
    writeFile(h.data("Over.csv"), over);
    auto& m = h.start();
    for (int i : {0, 1}) {
        h.run([&] { m.lstCategory.setSelected(i); });
        EXPECT_EQ(std::make_tuple(m.FG1.Rows(), m.ItemRowCount, std::string(m.FG1.TextMatrix(32766, 0))), std::make_tuple(32767, 32767, std::string("item 32766")));
        h.run([&] { m.FG1.setTextMatrix(32766, 6, "last cell"); });
    }
    h.run([&] { m.lstCategory.setSelected(0); });
    h.run([&] { m.lstCategory.setSelected(1); });
    m.WriteToFloppy = true;
    h.run([&] { m.SaveCategoryList(); });
    m.WriteToFloppy = false;
    const auto copy = readFile(h.floppy("Over.csv"));
    EXPECT_TRUE(!copy || copy == over) << "a copy of " << copy.value_or("").size() << " bytes";
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("Exact.csv")), exact.substr(0, exact.size() - 2) + "last cell\r\n");
    EXPECT_EQ(readFile(h.data("Over.csv")), over);
}

// A category called "../victim" must never read or replace a file outside the data folder.
TEST(CategoryFile, NameWithAFolderPartNeverReachesAnotherFolder) {
    TempDir root;
    for (const char* sub : {"data", "floppy"}) std::filesystem::create_directory(root.path() / sub);
    const auto victim = root.path() / "victim.csv";
    writeFile(victim, "not a category\nkeep me\n");
    Harness h(root.place() + "data/", root.place() + "floppy/");
    h.writeIndex({"../victim"});
    auto& m = h.startAndClick(0);
    EXPECT_EQ(m.ItemRowCount, 1) << "read another folder's file";
    h.run([&] { setGrid(m, withHeading({{"kept", "1"}})); });
    h.click(m.cmdExit);
    // The category itself keeps its items, in the data folder.
    EXPECT_EQ(categoriesAfterRestart(h)["../victim"], withHeading({{"kept", "1"}}));
    EXPECT_EQ(readFile(victim), "not a category\nkeep me\n");
}

} // namespace

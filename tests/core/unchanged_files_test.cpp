// Files whose content would not change are left in place, and a grid that holds
// a file's content already is not read into again: what proves it is the file's
// state (device, inode, size, modification and change times far enough back) and what the
// program last read or wrote there. Whatever the proof misses must end in a real
// read or write, or in a refused save that leaves the file whole, never in a mix.
#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <tuple>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "storage/chunk_digests.h"
#include "storage/file_table.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
namespace fs = std::filesystem;

namespace {

// The file's inode and modification time.
using FileState = std::tuple<ino_t, time_t, long>;

FileState stateOf(const fs::path& p) {
    struct stat st {};
    EXPECT_EQ(::stat(p.c_str(), &st), 0) << p;
    return {st.st_ino, st.st_mtim.tv_sec, st.st_mtim.tv_nsec};
}

// Gives the file another modification time, still far enough back.
void setTimeBack(const fs::path& p, int secondsAgo) {
    fs::last_write_time(p, fs::file_time_type::clock::now() - std::chrono::seconds(secondsAgo));
}

// ---- the file table: a save over a file it has read whole --------------------------

constexpr std::size_t kChunk = storage::ChunkDigests::kChunk;

enum class Change { None, Visible, HiddenInPlace }; // one byte changed in place; Hidden: the time set back as it was

// A byte of the file changed where it stands: same inode, same size.
void applyChange(Change c, const fs::path& p) {
    if (c == Change::None) return;
    struct stat st {};
    ASSERT_EQ(::stat(p.c_str(), &st), 0);
    std::fstream f(p, std::ios::in | std::ios::out | std::ios::binary);
    f.seekg(20);
    const char was = static_cast<char>(f.get());
    f.seekp(20);
    f.put(was == 'x' ? 'y' : 'x');
    f.close();
    const timespec times[2] = {{0, UTIME_OMIT}, st.st_mtim};
    if (c == Change::HiddenInPlace) ASSERT_EQ(::utimensat(AT_FDCWD, p.c_str(), times, 0), 0);
    else setTimeBack(p, 30);
}

// Every state of a save over a file the table read whole: the file's time far
// back or recent at the read; no change, or a change before the save or after
// its first two chunks were handed over; new bytes the same, or changed in the
// first or a later chunk, or longer. The same bytes over an untouched file
// leave it, a recent one proved by reading it back; other bytes, or a change
// before the save (a hidden one still moves the change time), replace it. A
// change during a save that is still proving the file holds the bytes known
// refuses it; a save that writes anyway replaces the file. Never a mix.
TEST(SaveOverKnownFile, KeepsWritesOrRefusesWholeInEveryState) {
    std::string base;
    for (int i = 0; base.size() < 3 * kChunk + kChunk / 2; ++i) base += "item " + std::to_string(i) + ",1.25,,shelf,,,note\r\n";
    // The same bytes, a change in the first or a later chunk, or longer.
    const std::string contents[] = {base, "#" + base.substr(1), base.substr(0, 3 * kChunk) + "#" + base.substr(3 * kChunk + 1),
                                    base + "one more,,,,,,\r\n"};
    for (bool settled : {true, false})
        for (Change change : {Change::None, Change::Visible, Change::HiddenInPlace})
            for (bool during : {false, true})
                for (int content = 0; content < 4; ++content) {
                    if (change == Change::None && during) continue;
                    SCOPED_TRACE(::testing::Message() << "settled " << settled << ", change " << int(change) << ", during " << during
                                                      << ", content " << content);
                    // Still comparing when the change comes: refused.
                    const bool refused = change != Change::None && during && settled && content != 1;
                    const bool written = !refused && (change != Change::None || content != 0);
                    TempDir dir;
                    const fs::path path = dir.path() / "Tools.csv";
                    writeFile(path, base);
                    forms::StdFiles real;
                    if (settled) real.clockAheadNs = kSettledNs;
                    storage::FileTable table(real);
                    const int in = table.FreeFile();
                    table.OpenInput(in, path.string());
                    try { for (;;) table.ReadFieldView(in); } catch (const forms::EndOfFile&) {}
                    table.Close(in);
                    if (!during) applyChange(change, path);
                    const std::string_view next = contents[content];
                    const int out = table.FreeFile();
                    table.OpenOutput(out, path.string());
                    std::string before;
                    try {
                        table.WriteBytes(out, next.substr(0, 2 * kChunk));
                        if (during) applyChange(change, path);
                        before = readFile(path).value();
                        const FileState stateBefore = stateOf(path);
                        table.WriteBytes(out, next.substr(2 * kChunk));
                        table.Close(out);
                        EXPECT_FALSE(refused);
                        if (written) { EXPECT_NE(std::get<0>(stateOf(path)), std::get<0>(stateBefore)) << "not replaced"; }
                        else { EXPECT_EQ(stateOf(path), stateBefore) << "the file was replaced"; }
                    } catch (const forms::Failure&) {
                        table.Abandon(out);
                        EXPECT_TRUE(refused);
                    }
                    // Never a mix: the bytes written, or the file exactly as it was just before.
                    EXPECT_TRUE(readFile(path).value() == (written ? next : before)) << "not what it should be";
                    EXPECT_TRUE(leftoverTemporaries(dir.path()).empty());
                }
}

// A time is trusted only once the file system's clock has stepped past it:
// whole-second times (FAT keeps two-second ones) wait two seconds, finer ones
// a tenth; the later of the two times counts.
TEST(FileTimes, AreTrustedOnlyPastTheirClocksStep) {
    constexpr std::int64_t s = 1'000'000'000, ms = 1'000'000;
    struct Row { std::int64_t mtime, ctime, now; bool settled; };
    for (const Row& r : {Row{10 * s + 5 * ms, 10 * s + 5 * ms, 10 * s + 99 * ms, false},
                         Row{10 * s + 5 * ms, 10 * s + 5 * ms, 10 * s + 106 * ms, true},
                         Row{0, 10 * s + 5 * ms, 10 * s + 50 * ms, false},
                         Row{10 * s, 10 * s, 11 * s + 900 * ms, false},
                         Row{10 * s, 10 * s, 12 * s, false},
                         Row{10 * s, 10 * s, 12 * s + 1, true},
                         Row{10 * s, 12 * s, 13 * s, false}})
        EXPECT_EQ(forms::TimesSettled(r.mtime, r.ctime, r.now), r.settled) << r.mtime << " " << r.ctime << " " << r.now;
}

// ---- the grid: saves that build nothing, loads that read nothing ------------------

Table items(int n, const std::string& where) {
    Table t;
    for (int i = 1; i <= n; ++i)
        t.push_back({"thing " + std::to_string(i), std::to_string(i) + ".50", "", where + ", shelf " + std::to_string(i % 5),
                     "", "", i % 3 ? "" : "\"boxed\""});
    return t;
}

// Both categories on disk with their times far back (or not), the program started.
qm::frmMain& startSettled(Harness& h, bool settled = true) {
    h.writeCategories({{"Attic", items(40, "attic")}, {"Garage", items(3000, "garage")}});
    if (settled) settle(h);
    return h.start();
}

struct Settled : ::testing::Test {
    Harness h;
    qm::frmMain& m = startSettled(h);
    void select(int k) { h.run([&] { m.lstCategory.setSelected(k); }); }
};

// The switch away from a category loaded into the grid: with no change of the
// grid's texts or shape since the load it opens no file for writing and leaves
// both files in place; any change makes it write the grid, and what it wrote
// is known.
using Edit = std::pair<const char*, void (*)(forms::Grid&)>;

class EditAfterLoad : public Settled, public ::testing::WithParamInterface<Edit> {};

TEST_P(EditAfterLoad, SwitchAwayWritesTheGridOnlyWhenItChanged) {
    const bool edited = GetParam().second != nullptr;
    select(0); // the first switch writes ".csv" from the empty grid
    select(1);
    const FileState attic = stateOf(h.data("Attic.csv")), garage = stateOf(h.data("Garage.csv"));
    if (edited) h.run([&] { GetParam().second(m.FG1); });
    const Table shown = gridCells(m.FG1);
    h.files.arm(FaultyFiles::OpenWrite, -1); // count only
    select(0);
    EXPECT_EQ(h.files.counted() > 0, edited) << "files opened for writing: " << h.files.counted();
    h.files.disarm();
    EXPECT_EQ(readFile(h.data("Garage.csv")).value(), recordLines(shown));
    EXPECT_EQ(shown != withHeading(items(3000, "garage")), edited);
    EXPECT_EQ(std::make_tuple(stateOf(h.data("Garage.csv")) == garage, stateOf(h.data("Attic.csv")) == attic, gridCells(m.FG1)),
              std::make_tuple(!edited, true, withHeading(items(40, "attic"))));
    // What was just written is known: the switch back reads nothing (a grid
    // that ends in an added empty row is read again, which is harmless).
    h.files.arm(FaultyFiles::Read, -1); // count only
    select(1);
    if (GetParam().first != std::string("RowAdded")) { EXPECT_EQ(h.files.counted(), 0) << "the file just written was read again"; }
    EXPECT_EQ(gridCells(m.FG1), shown);
}

INSTANTIATE_TEST_SUITE_P(Storage, EditAfterLoad,
                         ::testing::Values(Edit{"Unchanged", nullptr},
                                           Edit{"CellInTheLastRow", [](forms::Grid& g) { g.setTextMatrix(g.Rows() - 1, 6, "new note"); }},
                                           Edit{"CurrentCellText", [](forms::Grid& g) { g.setText("typed"); }},
                                           Edit{"RowRemoved", [](forms::Grid& g) { g.RemoveItem(1); }},
                                           Edit{"RowAdded", [](forms::Grid& g) { g.setRows(g.Rows() + 1); }},
                                           Edit{"HeadingRowOnly", [](forms::Grid& g) { g.setRows(1); }}),
                         [](const auto& info) { return std::string(info.param.first); });

// What a grid shows after a load, as far as anyone can tell: the window, the
// view, the tag, the totals, and every cell with its style and row height.
std::string loadedState(Harness& h) {
    const forms::Grid& g = h.m().FG1;
    std::ostringstream s;
    s << window(h).line() << " sel " << g.RowSel() << " view " << g.TopRow() << "," << g.LeftCol() << " tag " << g.Tag() << " "
      << h.m().txtCost.Text() << " / " << h.m().txtValue.Text() << "\n";
    for (int r = 0; r < g.Rows(); ++r, s << "\n") {
        s << g.RowHeight(r);
        for (int c = 0; c < g.Cols(); ++c) s << " " << g.TextMatrix(r, c) << "|" << g.CellBackColor(r, c) << "|" << g.CellAlignment(r, c);
    }
    return s.str();
}

// A load of the category the grid holds (after the user has moved about, aligned
// cells, sized a row and scrolled), or a switch back to one shown before whose
// texts are kept: with the file's time far back and a category kept, it reads
// nothing; else it reads the file. Both leave the same window and totals.
class LoadOfWhatIsHeld : public ::testing::TestWithParam<bool> {}; // a switch back, or a load of the grid

TEST_P(LoadOfWhatIsHeld, LeavesWhatAReadingLeaves) {
    const bool switchBack = GetParam();
    std::string states[2];
    for (bool replay : {true, false}) {
        Harness h;
        auto& m = startSettled(h, replay || switchBack);
        if (!replay) m.keptCategories.setLimit(0);
        // Cells a load passes take the editor's colour: make that tell.
        m.FG1.setBackColor(0x00123456);
        h.run([&] { m.lstCategory.setSelected(0); });
        h.run([&] { m.FG1.setRow(5), m.FG1.setCol(3), m.FG1.setCellAlignment(forms::Grid::AlignRightCenter), m.FG1.setRowHeight(7, 600), m.FG1.userScrollTo(10, 2); });
        if (switchBack) h.run([&] { m.lstCategory.setSelected(1); });
        // The same bytes written anew: the file is no longer known, and is read.
        if (!replay) writeFile(h.data("Attic.csv"), h.text("Attic.csv"));
        h.files.arm(FaultyFiles::Read, -1); // count only
        h.run([&] { switchBack ? m.lstCategory.setSelected(0) : m.LoadCategoryFile(); });
        EXPECT_EQ(h.files.counted() == 0, replay) << "reads of the file: " << h.files.counted();
        h.files.disarm();
        states[replay] = loadedState(h);
        EXPECT_EQ(gridCells(m.FG1), withHeading(items(40, "attic")));
    }
    EXPECT_EQ(states[1], states[0]);
}

INSTANTIATE_TEST_SUITE_P(Storage, LoadOfWhatIsHeld, ::testing::Bool(),
                         [](const auto& info) { return std::string(info.param ? "SwitchBack" : "LoadOfTheGrid"); });

// After the switch back, edits give the grid revisions that no file's content
// was ever known by: as many edits as the other category's load took would
// otherwise make the grid pass for that category.
TEST_F(Settled, EditsAfterASwitchBackNeverPassForAnotherCategory) {
    select(0);
    select(1);
    const std::uint64_t garage = m.FG1.Revision();
    select(0);
    ASSERT_LT(m.FG1.Revision(), garage);
    h.run([&] {
        for (int i = 0; m.FG1.Revision() < garage; ++i) m.FG1.setTextMatrix(1 + i % 40, 6, "edit " + std::to_string(i));
    });
    select(1);
    EXPECT_EQ(gridCells(m.FG1), withHeading(items(3000, "garage")));
    select(0);
    EXPECT_EQ(m.FG1.TextMatrix(1, 6).substr(0, 5), "edit ");
}

// Between two loads the file changes, goes, or can no longer be read: the
// second load reads (or fails to read) the file as it is, whether the category
// is in the grid or kept while the grid shows another one.
struct Between {
    const char* name;
    void (*apply)(Harness&, const fs::path&);
    int rows;        // the grid's rows afterwards
    bool unreadable; // never written over in this run
};

class ChangeBetweenLoads : public ::testing::TestWithParam<Between> {};

TEST_P(ChangeBetweenLoads, IsReadForReal) {
    for (bool kept : {false, true}) {
        SCOPED_TRACE(kept ? "kept" : "in the grid");
        Harness h;
        auto& m = startSettled(h);
        const fs::path path = h.data("Attic.csv");
        h.run([&] { m.lstCategory.setSelected(0); });
        if (kept) h.run([&] { m.lstCategory.setSelected(1); });
        GetParam().apply(h, path);
        h.run([&] { kept ? m.lstCategory.setSelected(0) : m.LoadCategoryFile(); });
        EXPECT_EQ(std::make_tuple(m.FG1.Rows(), m.ItemRowCount, m.UnreadableFiles.count(path.string()) == 1),
                  std::make_tuple(GetParam().rows, GetParam().rows, GetParam().unreadable));
        if (GetParam().rows > 1) { EXPECT_EQ(recordLines(gridCells(m.FG1)), readFile(path)) << "the grid is not the file"; }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Storage, ChangeBetweenLoads,
    ::testing::Values(Between{"ContentChanged", [](Harness& h, const fs::path& p) { h.writeCategory("Attic", {{"changed"}, {"b"}}), setTimeBack(p, 30); }, 3, false},
                      Between{"HiddenChangeInPlace", [](Harness&, const fs::path& p) { applyChange(Change::HiddenInPlace, p); }, 41, false},
                      Between{"Removed", [](Harness&, const fs::path& p) { fs::remove(p); }, 1, false},
                      Between{"Unreadable", [](Harness& h, const fs::path& p) { h.files.unreadable.insert(p.string()); }, 1, true}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace

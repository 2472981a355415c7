// Files whose content would not change are left in place, and a grid that holds
// a file's content already is not read into again: what proves it is the file's
// state (device, inode, size, modification and change times far enough back) and what the
// program last read or wrote there. Whatever the proof misses must end in a real
// read or write, or in a refused save that leaves the file whole, never in a mix.
#include <fcntl.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>

#include <gtest/gtest.h>

#include "storage/chunk_digests.h"
#include "storage/file_table.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
namespace fs = std::filesystem;

namespace {

struct FileState {
    ino_t inode = 0;
    timespec mtime{};
    bool operator==(const FileState& o) const {
        return inode == o.inode && mtime.tv_sec == o.mtime.tv_sec && mtime.tv_nsec == o.mtime.tv_nsec;
    }
};

FileState stateOf(const fs::path& p) {
    struct stat st {};
    EXPECT_EQ(::stat(p.c_str(), &st), 0) << p;
    return {st.st_ino, st.st_mtim};
}

// Gives the file another modification time, still far enough back.
void setTimeBack(const fs::path& p, int secondsAgo) {
    fs::last_write_time(p, fs::file_time_type::clock::now() - std::chrono::seconds(secondsAgo));
}

// A file's change time can't be set back: states are made old enough to be
// trusted by judging them against a clock an hour ahead.
constexpr std::int64_t kHourNs = 3600'000'000'000;
void settleAll(Harness& h) { h.files.setClockAhead(kHourNs); }

// One byte changed where it stands: same inode, same size.
void overwriteByteInPlace(const fs::path& p, std::size_t at) {
    std::fstream f(p, std::ios::in | std::ios::out | std::ios::binary);
    f.seekg(static_cast<std::streamoff>(at));
    const char c = static_cast<char>(f.get());
    f.seekp(static_cast<std::streamoff>(at));
    f.put(c == 'x' ? 'y' : 'x');
}

// ---- the file table: a save over a file it has read whole --------------------------

constexpr std::size_t kChunk = storage::ChunkDigests::kChunk;

enum class Change { None, HiddenInPlace, Visible }; // HiddenInPlace: the time set back as it was
enum class When { BeforeSave, DuringSave };         // DuringSave: after the first two chunks were handed over
enum class Content { Same, LaterChunk, FirstChunk, Longer };
enum class Outcome { Kept, Written, Refused };      // Refused: the save fails, the file stays as it is

struct SaveCase {
    const char* name;
    bool settled; // the file's time lay back when the table read it
    Change change;
    When when;
    Content content;
    Outcome outcome;
};

std::string baseBytes() {
    std::string s;
    for (int i = 0; s.size() < 3 * kChunk + kChunk / 2; ++i) s += "item " + std::to_string(i) + ",1.25,,shelf,,,note\r\n";
    return s;
}

std::string contentFor(Content c, const std::string& base) {
    std::string s = base;
    switch (c) {
    case Content::Same: break;
    case Content::LaterChunk: s[3 * kChunk + 10] = '#'; break;
    case Content::FirstChunk: s[10] = '#'; break;
    case Content::Longer: s += "one more,,,,,,\r\n"; break;
    }
    return s;
}

void applyChange(Change c, const fs::path& p) {
    if (c == Change::None) return;
    const FileState before = stateOf(p);
    overwriteByteInPlace(p, 20);
    if (c == Change::HiddenInPlace) {
        const timespec times[2] = {{0, UTIME_OMIT}, before.mtime};
        ASSERT_EQ(::utimensat(AT_FDCWD, p.c_str(), times, 0), 0);
    } else {
        setTimeBack(p, 30);
    }
}

class SaveOverKnownFile : public ::testing::TestWithParam<SaveCase> {};

TEST_P(SaveOverKnownFile, KeepsWritesOrRefusesWhole) {
    const SaveCase& tc = GetParam();
    TempDir dir;
    const fs::path path = dir.path() / "Tools.csv";
    const std::string base = baseBytes();
    writeFile(path, base);
    forms::StdFiles real;
    if (tc.settled) real.clockAheadNs = kHourNs;
    storage::FileTable table(real);
    const int in = table.FreeFile();
    table.OpenInput(in, path.string());
    try {
        for (;;) table.ReadFieldView(in);
    } catch (const forms::EndOfFile&) {
    }
    table.Close(in);

    if (tc.when == When::BeforeSave) applyChange(tc.change, path);
    const std::string next = contentFor(tc.content, base);
    const int out = table.FreeFile();
    table.OpenOutput(out, path.string());
    bool refused = false;
    std::string before;
    FileState stateBefore;
    try {
        table.WriteBytes(out, std::string_view(next).substr(0, 2 * kChunk));
        if (tc.when == When::DuringSave) applyChange(tc.change, path);
        before = readFile(path).value();
        stateBefore = stateOf(path);
        table.WriteBytes(out, std::string_view(next).substr(2 * kChunk));
        table.Close(out);
        if (tc.outcome == Outcome::Kept) {
            EXPECT_EQ(stateOf(path), stateBefore) << "the file was replaced";
        } else if (tc.outcome == Outcome::Written) {
            EXPECT_NE(stateOf(path).inode, stateBefore.inode) << "the file was not replaced";
        }
    } catch (const forms::Failure&) {
        table.Abandon(out);
        refused = true;
    }
    EXPECT_EQ(refused, tc.outcome == Outcome::Refused);
    const std::string now = readFile(path).value();
    // Never a mix: the bytes written, or the file exactly as it was just before.
    EXPECT_EQ(now, tc.outcome == Outcome::Written ? next : before);
    EXPECT_TRUE(leftoverTemporaries(dir.path()).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Storage, SaveOverKnownFile,
    ::testing::Values(
        SaveCase{"SameBytesLeaveTheFile", true, Change::None, When::BeforeSave, Content::Same, Outcome::Kept},
        SaveCase{"ChangeInALaterChunkIsWritten", true, Change::None, When::BeforeSave, Content::LaterChunk, Outcome::Written},
        SaveCase{"ChangeInTheFirstChunkIsWritten", true, Change::None, When::BeforeSave, Content::FirstChunk, Outcome::Written},
        SaveCase{"LongerContentIsWritten", true, Change::None, When::BeforeSave, Content::Longer, Outcome::Written},
        // A recent time proves nothing by itself: the file is read back, and
        // stays only if it holds the bytes known, hidden change or not.
        SaveCase{"RecentFileWithTheSameBytesStays", false, Change::None, When::BeforeSave, Content::Same, Outcome::Kept},
        SaveCase{"HiddenChangeOfARecentFileIsWrittenOver", false, Change::HiddenInPlace, When::BeforeSave, Content::Same,
                 Outcome::Written},
        SaveCase{"VisibleChangeBeforeTheSaveIsWrittenOver", true, Change::Visible, When::BeforeSave, Content::Same, Outcome::Written},
        // A change made in place with the time set back still moves the change
        // time: the file is written over whatever the new content.
        SaveCase{"HiddenChangeIsSeenOnAnEqualSave", true, Change::HiddenInPlace, When::BeforeSave, Content::Same, Outcome::Written},
        SaveCase{"HiddenChangeIsSeenOnAChangedSave", true, Change::HiddenInPlace, When::BeforeSave, Content::LaterChunk, Outcome::Written},
        SaveCase{"HiddenChangeDuringTheSaveRefuses", true, Change::HiddenInPlace, When::DuringSave, Content::LaterChunk, Outcome::Refused},
        SaveCase{"VisibleChangeDuringAnEqualSaveRefuses", true, Change::Visible, When::DuringSave, Content::Same, Outcome::Refused},
        SaveCase{"VisibleChangeDuringTheSaveRefuses", true, Change::Visible, When::DuringSave, Content::LaterChunk, Outcome::Refused}),
    [](const auto& info) { return std::string(info.param.name); });

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

const std::vector<std::string> kNames = {"Attic", "Garage"};

Table items(int n, const std::string& where) {
    Table t;
    for (int i = 1; i <= n; ++i)
        t.push_back({"thing " + std::to_string(i), std::to_string(i) + ".50", "", where + ", shelf " + std::to_string(i % 5),
                     "", "", i % 3 ? "" : "\"boxed\""});
    return t;
}

// Both categories on disk with their times far back, the program started.
qm::frmMain& startSettled(Harness& h, bool settled = true) {
    h.writeCategories({{"Attic", items(40, "attic")}, {"Garage", items(3000, "garage")}});
    if (settled) settleAll(h);
    return h.start();
}

TEST(UnchangedCategories, SwitchesLeaveTheirFilesInPlaceAndOpenNoneForWriting) {
    Harness h;
    auto& m = startSettled(h);
    h.run([&] { m.lstCategory.setSelected(0); }); // the first switch writes ".csv" from the empty grid
    const FileState attic = stateOf(h.data("Attic.csv")), garage = stateOf(h.data("Garage.csv"));
    h.files.arm(FaultyFiles::OpenWrite, -1);
    h.run([&] { m.lstCategory.setSelected(1); });
    h.run([&] { m.lstCategory.setSelected(0); });
    EXPECT_EQ(h.files.counted(), 0);
    h.files.disarm();
    EXPECT_EQ(stateOf(h.data("Attic.csv")), attic);
    EXPECT_EQ(stateOf(h.data("Garage.csv")), garage);
    EXPECT_EQ(gridCells(m.FG1), withHeading(items(40, "attic")));
}

// Any change of the grid's texts or shape after the load makes the next save write.
struct Edit {
    const char* name;
    void (*apply)(forms::Grid&);
};

class EditAfterLoad : public ::testing::TestWithParam<Edit> {};

TEST_P(EditAfterLoad, NextSaveWritesTheGrid) {
    Harness h;
    auto& m = startSettled(h);
    h.run([&] { m.lstCategory.setSelected(1); });
    h.run([&] {
        GetParam().apply(m.FG1);
        m.SaveCategoryFile();
    });
    EXPECT_FALSE(m.SaveFailed);
    EXPECT_EQ(readFile(h.data("Garage.csv")).value(), recordLines(gridCells(m.FG1)));
    EXPECT_NE(gridCells(m.FG1), withHeading(items(3000, "garage")));
}

INSTANTIATE_TEST_SUITE_P(
    Storage, EditAfterLoad,
    ::testing::Values(Edit{"CellInTheLastRow", [](forms::Grid& g) { g.setTextMatrix(g.Rows() - 1, 6, "new note"); }},
                      Edit{"CurrentCellText", [](forms::Grid& g) { g.setText("typed"); }},
                      Edit{"RowRemoved", [](forms::Grid& g) { g.RemoveItem(1); }},
                      Edit{"RowAdded", [](forms::Grid& g) { g.setRows(g.Rows() + 1); }},
                      Edit{"HeadingRowOnly", [](forms::Grid& g) { g.setRows(1); }}),
    [](const auto& info) { return std::string(info.param.name); });

// What a grid shows after a load, as far as anyone can tell.
struct LoadedState {
    Table cells;
    std::vector<std::vector<std::uint32_t>> colours;
    std::vector<std::vector<int>> alignment;
    std::vector<int> heights;
    int row, col, rowSel, topRow, leftCol, fixedRows, fixedCols, itemRowCount;
    std::string tag, focused;
    bool operator==(const LoadedState&) const = default;
};

LoadedState loadedState(qm::frmMain& m) {
    forms::Grid& g = m.FG1;
    LoadedState s{gridCells(g), {}, {}, {}, g.Row(), g.Col(), g.RowSel(), g.TopRow(), g.LeftCol(), g.FixedRows(),
                  g.FixedCols(), m.ItemRowCount, g.Tag(), ""};
    for (int r = 0; r < g.Rows(); ++r) {
        s.colours.emplace_back();
        s.alignment.emplace_back();
        s.heights.push_back(g.RowHeight(r));
        for (int c = 0; c < g.Cols(); ++c) {
            s.colours.back().push_back(g.CellBackColor(r, c));
            s.alignment.back().push_back(g.CellAlignment(r, c));
        }
    }
    if (auto* f = m.platform.runtime.focused()) s.focused = f->name();
    return s;
}

// A load of the category the grid holds (after the user has moved about, aligned
// cells, sized a row and scrolled), or a switch back to one shown before whose
// texts are kept: with the file's time far back and a category kept, it reads
// nothing; else it reads the file. Both leave the same window and totals.
enum class Again { LoadOfTheGrid, SwitchBack };

class LoadOfWhatIsHeld : public ::testing::TestWithParam<Again> {};

TEST_P(LoadOfWhatIsHeld, LeavesWhatAReadingLeaves) {
    const bool switchBack = GetParam() == Again::SwitchBack;
    std::optional<LoadedState> states[2];
    std::string totals[2];
    for (bool replay : {true, false}) {
        Harness h;
        auto& m = startSettled(h, replay || switchBack);
        if (!replay && switchBack) m.keptCategories.setLimit(0);
        h.run([&] { m.lstCategory.setSelected(0); });
        h.run([&] {
            m.FG1.setRow(5);
            m.FG1.setCol(3);
            m.FG1.setCellAlignment(forms::Grid::AlignRightCenter);
            m.FG1.setRowHeight(7, 600);
            m.FG1.userScrollTo(10, 2);
        });
        if (switchBack) h.run([&] { m.lstCategory.setSelected(1); });
        h.files.arm(FaultyFiles::Read, -1); // count only
        if (switchBack) h.run([&] { m.lstCategory.setSelected(0); });
        else h.run([&] { m.LoadCategoryFile(); });
        EXPECT_EQ(h.files.counted() == 0, replay) << "reads of the file: " << h.files.counted();
        h.files.disarm();
        states[replay] = loadedState(m);
        totals[replay] = std::string(m.txtCost.Text()) + " / " + std::string(m.txtValue.Text());
    }
    EXPECT_EQ(states[1]->cells, withHeading(items(40, "attic")));
    EXPECT_TRUE(*states[1] == *states[0]) << "the cells, their styles, the current cell, the view or the focus differ";
    EXPECT_EQ(totals[1], totals[0]);
}

INSTANTIATE_TEST_SUITE_P(Storage, LoadOfWhatIsHeld, ::testing::Values(Again::LoadOfTheGrid, Again::SwitchBack),
                         [](const auto& info) { return std::string(info.param == Again::SwitchBack ? "SwitchBack" : "LoadOfTheGrid"); });

// After the switch back, edits give the grid revisions that no file's content
// was ever known by: as many edits as the other category's load took would
// otherwise make the grid pass for that category.
TEST(KeptCategories, EditsAfterASwitchBackNeverPassForAnotherCategory) {
    Harness h;
    auto& m = startSettled(h);
    h.run([&] { m.lstCategory.setSelected(0); });
    h.run([&] { m.lstCategory.setSelected(1); });
    const std::uint64_t garage = m.FG1.Revision();
    h.run([&] { m.lstCategory.setSelected(0); });
    ASSERT_LT(m.FG1.Revision(), garage);
    h.run([&] {
        for (int i = 0; m.FG1.Revision() < garage; ++i) m.FG1.setTextMatrix(1 + i % 40, 6, "edit " + std::to_string(i));
    });
    h.run([&] { m.lstCategory.setSelected(1); });
    EXPECT_EQ(gridCells(m.FG1), withHeading(items(3000, "garage")));
    h.run([&] { m.lstCategory.setSelected(0); });
    EXPECT_EQ(m.FG1.TextMatrix(1, 6).substr(0, 5), "edit ");
}

// The totals of a category switched back to are its own, also among
// categories of as many rows.
TEST(KeptCategories, TotalsComeBackWithTheirCategory) {
    Harness h;
    const std::vector<std::string> names = {"Attic", "Cellar", "Garage"};
    h.writeIndex(names);
    for (std::size_t k = 0; k < names.size(); ++k) {
        Table t;
        for (int i = 0; i < 5; ++i) t.push_back({"thing", std::to_string(100 * (k + 1) + i) + ".25", "1", "", "", "", ""});
        h.writeCategory(names[k], t);
    }
    settleAll(h);
    auto& m = h.start();
    const std::string cost[] = {"$511.25", "$1,011.25", "$1,511.25"};
    for (int k : {0, 1, 2, 0, 2, 1, 0}) {
        h.run([&] { m.lstCategory.setSelected(k); });
        EXPECT_EQ(m.txtCost.Text(), cost[k]) << names[static_cast<std::size_t>(k)];
        EXPECT_EQ(m.txtValue.Text(), "$5.00");
    }
}

// Between two loads the file changes, goes, or can no longer be read: the
// second load reads (or fails to read) the file as it is.
struct Between {
    const char* name;
    void (*apply)(Harness&, const fs::path&);
    int rows;        // the grid's rows afterwards
    bool unreadable; // never written over in this run
};

class ChangeBetweenLoads : public ::testing::TestWithParam<Between> {};

// The same while the category is kept and the grid shows another one.
TEST_P(ChangeBetweenLoads, IsReadForReal) {
    for (bool kept : {false, true}) {
        SCOPED_TRACE(kept ? "kept" : "in the grid");
        Harness h;
        auto& m = startSettled(h);
        h.run([&] { m.lstCategory.setSelected(0); });
        if (kept) h.run([&] { m.lstCategory.setSelected(1); });
        const fs::path path = h.data("Attic.csv");
        GetParam().apply(h, path);
        if (kept) h.run([&] { m.lstCategory.setSelected(0); });
        else h.run([&] { m.LoadCategoryFile(); });
        EXPECT_EQ(m.FG1.Rows(), GetParam().rows);
        EXPECT_EQ(m.ItemRowCount, GetParam().rows);
        EXPECT_EQ(m.UnreadableFiles.count(path.string()), GetParam().unreadable ? 1u : 0u);
        if (GetParam().rows > 1) {
            EXPECT_EQ(m.FG1.TextMatrix(1, 0), "changed");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Storage, ChangeBetweenLoads,
    ::testing::Values(
        Between{"ContentChanged",
                [](Harness& h, const fs::path& p) {
                    h.writeCategory("Attic", {{"changed"}, {"b"}});
                    setTimeBack(p, 30);
                },
                3, false},
        Between{"SameSizeChangedInPlace",
                [](Harness&, const fs::path& p) {
                    std::string bytes = readFile(p).value();
                    const std::size_t at = bytes.find("thing 1,");
                    bytes.replace(at, 7, "changed");
                    std::fstream f(p, std::ios::in | std::ios::out | std::ios::binary);
                    f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
                },
                41, false},
        Between{"Removed", [](Harness&, const fs::path& p) { fs::remove(p); }, 1, false},
        Between{"Unreadable", [](Harness& h, const fs::path& p) { h.files.unreadable.insert(p.string()); }, 1, true}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <vector>

#include "forms/failure.h"
#include "mainwindow/frm_main.h"
#include "storage/field_rules.h"

namespace qm {

using forms::Failure;

namespace {
constexpr int kFieldsPerRow = 7;
constexpr std::size_t kSavePiece = 32 * 1024;

} // namespace

// The moves of the current cell a reading of the grid's own rows makes, with
// their cell events (replayed once they only colour: ReplayCellEvents in
// mainwindow/cell_editor.cpp), on rows that lose their colours as a reading's would.
// False if a handler changed the grid on the way: then it must be read for real.
// The caller points the tag at the cell the pass ends on.
bool frmMain::passHeldCells() {
    const std::uint64_t revision = FG1.Revision();
    const int rows = FG1.Rows();
    FG1.renewRows();
    try {
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < kFieldsPerRow; ++c) {
                FG1.setCol(c);
                FG1.setRow(r);
            }
            // Usually true after the first row, whose first cell takes the
            // focus: the rest of the pass (a walk makes two for every
            // category) then runs no handler.
            if (ReplayCellEvents(rows - 1, kFieldsPerRow - 1)) break;
        }
    } catch (const Failure&) {
        return false;
    }
    return FG1.Revision() == revision;
}

// Writes the whole grid, one line a row, to the file of CurrentCategory.
void frmMain::SaveCategoryFile() {
    SaveFailed = false;
    const std::string path = CategoryPath(WriteToFloppy ? platform.places.floppyRoot : platform.places.dataFolder,
                                          CurrentCategory.value_or(""));
    // A file that exists but could not be read is never replaced by what the
    // grid shows of it, and a category never takes the place of the index.
    if (UnreadableFiles.count(path) || IsIndexFile(path)) return;
    // Nor is a category that could not be read whole copied in part anywhere else.
    if (UnreadableFiles.count(CategoryPath(platform.places.dataFolder, CurrentCategory.value_or("")))) return;
    SaveFileNumber = 0;
    try {
        SaveFileNumber = files.FreeFile();
        // The grid has not changed since the file was read into it or written
        // from it, and the file is as it was then: it holds these bytes already.
        if (files.WouldWriteSame(path, FG1.Revision())) return;
        // Another program changed the file since it was read or written here.
        // With nothing changed in the grid since then, its version stays and
        // the next load reads it; with both changed, it is kept as a category
        // of its own before the grid is written.
        if (!WriteToFloppy && CurrentCategory && files.ChangedElsewhere(path)) {
            if (files.HeldAs(path) == FG1.Revision()) return;
            KeepOtherVersion(*CurrentCategory, path);
        }
        files.OpenOutput(SaveFileNumber, path);
        // What is read back from a grid of seven columns is the grid itself.
        files.NoteSaving(SaveFileNumber, FG1.Revision(), FG1.Cols() == kFieldsPerRow);
        // Lines are built in a piece of fixed size and handed over when it is
        // full, so a big category never sits in memory twice.
        std::vector<char> piece(kSavePiece);
        std::size_t used = 0;
        auto handOver = [&] {
            files.WriteBytes(SaveFileNumber, std::string_view(piece.data(), used));
            used = 0;
        };
        const int rows = FG1.Rows(), cols = FG1.Cols();
        for (int row = 0; row < rows; ++row) {
            for (int col = 0; col < cols; ++col) {
                const std::string_view text = FG1.TextMatrix(row, col);
                // A comma, the text in quotes with each quote doubled, the line end.
                const std::size_t room = 2 * text.size() + 5;
                if (piece.size() - used < room) {
                    handOver();
                    if (piece.size() < room) piece.resize(room);
                }
                char* out = piece.data() + used;
                if (col != 0) *out++ = ',';
                used = static_cast<std::size_t>(storage::EncodeFieldTo(out, text) - piece.data());
            }
            if (piece.size() - used < 2) handOver();
            piece[used++] = '\r';
            piece[used++] = '\n';
        }
        handOver();
        files.Close(SaveFileNumber);
    } catch (const Failure&) {
        files.Abandon(SaveFileNumber);
        SaveFailed = true;
    }
}

// Opens a category's file under LoadFileNumber. A backup disk written before
// names were escaped for removable disks holds the file under the data
// folder's form of the name.
void frmMain::openCategoryFile(const std::string& path) {
    try {
        files.OpenInput(LoadFileNumber, path);
    } catch (const forms::FileNotFound&) {
        const std::string older = platform.places.floppyRoot + storage::FileStem(lstCategory.Text()) + ".csv";
        if (!ReadFromFloppy || older == path) throw;
        files.OpenInput(LoadFileNumber, older);
    }
}

// Fills the grid from the file of the selected entry, field by field through
// the current cell, until a read fails: the end of the file is found only that
// way. The grid is left without fixed rows or columns.
void frmMain::LoadCategoryFile() {
    FG1.setEnabled(true);
    FG1.setFixedRows(0);
    FG1.setFixedCols(0);

    const std::string path = CategoryPath(ReadFromFloppy ? platform.places.floppyRoot : platform.places.dataFolder,
                                          lstCategory.Text());
    bool unreadable = false, opened = false;
    LoadFileNumber = 0;
    // Nothing between here and the loop depends on the order: the rows go
    // before a failed open as they would after it.
    try {
        LoadFileNumber = files.FreeFile();
        // A category named like an index file would show the index as its items.
        if (IsIndexFile(path)) throw Failure("an index file is no category file: " + path);
        openCategoryFile(path);
        opened = true;
    } catch (const forms::FileNotFound&) {
        // A new category: no file yet.
    } catch (const Failure&) {
        unreadable = true;
    }
    // Texts the grid gives up are kept while a file is known to hold them.
    const auto keep = [this](forms::Grid::Texts texts) {
        const std::uint64_t revision = texts.revision();
        const std::size_t bytes = texts.bytes();
        if (files.Describes(revision))
            keptCategories.keep(revision, std::move(texts), bytes, [this](std::uint64_t r) { return !files.Describes(r); });
    };
    // The grid, or a category kept from before, holds what this file gave it
    // (or what was written to it), and the file is as it was then: the cells
    // pass through the current cell as a reading would take them, without
    // being read again.
    const auto heldHere = [this](std::uint64_t revision) { return revision == FG1.Revision() || keptCategories.holds(revision); };
    const std::optional<std::uint64_t> held =
        opened && FG1.Cols() == kFieldsPerRow ? files.LoadsAs(LoadFileNumber, heldHere) : std::nullopt;
    if (held && *held != FG1.Revision()) {
        forms::Grid::Texts texts = std::move(*keptCategories.take(*held));
        FG1.swapTexts(texts);
        keep(std::move(texts));
    }
    if (held && passHeldCells()) {
        files.Close(LoadFileNumber);
        ItemRowCount = FG1.Rows();
        UnreadableFiles.erase(path);
        FG1.setTag(FG1.Text());
        return;
    }
    // All rows but row 0 go, whatever the file holds; row 0 keeps its texts.
    // The texts that go are kept while a file holds them, for a switch back.
    if (FG1.Rows() > 1 && files.Describes(FG1.Revision())) keep(FG1.takeTexts());
    FG1.setRows(1);

    int r = 0;
    bool lineEnded = false; // the last read failed at the start of a line
    if (opened) {
        try {
            for (;;) {
                // Each pass adds the row the next pass fills, so Rows keeps ahead of r.
                // In a full grid there is no room for it: that pass fills the last row,
                // and the file must end right behind it.
                const bool room = FG1.Rows() < forms::Grid::kMaxRows;
                if (room) {
                    char number[12];
                    FG1.AddItem(std::string_view(number, static_cast<std::size_t>(std::to_chars(number, number + sizeof number, r).ptr - number)));
                }
                lineEnded = true;
                for (int c = 0; c < kFieldsPerRow; ++c) {
                    // The field stays in the file's buffer until the next read:
                    // the cell handlers that run in between read no file.
                    const std::string_view field = files.ReadLineField(LoadFileNumber, c == kFieldsPerRow - 1);
                    lineEnded = false;
                    FG1.setCol(c);
                    FG1.setRow(r);
                    FG1.setText(field);
                }
                ++r;
                if (!room) {
                    lineEnded = true;
                    files.ReadLineField(LoadFileNumber, false); // ends in EndOfFile when the file fits
                    unreadable = true;               // more lines than a grid holds
                    break;
                }
            }
        } catch (const forms::EndOfFile&) {
            // The ordinary end.
        } catch (const Failure&) {
            unreadable = true;
        }
    }
    const bool exact = opened && files.isOpen(LoadFileNumber) && files.ReadExactly(LoadFileNumber);
    files.Close(LoadFileNumber);

    // Takes away the row of the failed pass and the one added ahead of it; with
    // two rows or fewer the surplus stays. A file that could not be read shows
    // only the rows read whole.
    if (FG1.Rows() > 2 || unreadable) {
        try {
            for (int surplus = FG1.Rows() - std::max(r, 1); surplus > 0; --surplus) FG1.RemoveItem(FG1.Rows() - 1);
        } catch (const Failure&) {
        }
    }
    ItemRowCount = FG1.Rows();

    if (unreadable) UnreadableFiles.insert(path);
    else UnreadableFiles.erase(path);
    // A file of whole lines of seven fields fills a row each: reading it again
    // gives what the grid now holds, and when its bytes are those a save writes,
    // saving the grid gives the file. Any file read whole is what the grid came
    // from: a save can tell whether the grid changed since.
    if (opened && !unreadable)
        files.NoteLoaded(path, FG1.Revision(), lineEnded && r >= 1 && FG1.Rows() == r && FG1.Cols() == kFieldsPerRow, exact);
    // Esc in the editor that opens next must bring back the text as loaded.
    FG1.setTag(FG1.Text());
}

} // namespace qm

#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "storage/file_table.h"

namespace qm {

class frmMain;

// Every cell of every category as Find searches it: the category files as the
// program reads them, and the open category as the grid holds it now (what was
// typed a moment ago included). Each category keeps its cells twice, folded
// (text_fold.h) to be searched and as typed to be shown, each cell closed by a
// 0 byte, seven a row. Nothing is trusted that was not read: before every
// search each file is asked through the file cache of its own file table
// (storage::FileTable, the fingerprint and, for a recent file, the chunk
// digests) whether it is still what was read, and read again if not; the open
// category is taken again when the grid's revision moved.
class FindIndex {
public:
    static constexpr int kColumns = 7;

    explicit FindIndex(forms::FilesPort& files) : files_(files) {}

    // Brings every category of the main window's list up to date.
    void refresh(frmMain& main);

    // A cell found: the category (its place in the list), the grid row (from 1) and column.
    struct Cell {
        int category = 0;
        int row = 0;
        int col = 0;
    };
    // The cells holding the folded needle, in the order of the list, then of
    // rows and columns; at most limit of them (the caller asks for one more
    // than it shows to know there are more).
    std::vector<Cell> search(std::string_view foldedNeedle, std::size_t limit) const;

    int categories() const { return static_cast<int>(categories_.size()); }
    const std::string& name(int category) const { return categories_[static_cast<std::size_t>(category)].name; }
    int rows(int category) const { return categories_[static_cast<std::size_t>(category)].rows; }
    // A cell as typed.
    std::string_view text(int category, int row, int col) const;
    // Every row of a category in turn, its cells as typed: f(row, cells).
    template <class F>
    void forEachRow(int category, F&& f) const {
        const std::string& s = categories_[static_cast<std::size_t>(category)].original;
        std::string_view cells[kColumns];
        std::size_t pos = 0;
        for (int row = 1; pos < s.size(); ++row) {
            for (std::string_view& cell : cells) {
                const std::size_t end = s.find('\0', pos);
                cell = std::string_view(s).substr(pos, end - pos);
                pos = end + 1;
            }
            f(row, cells);
        }
    }

    // The bytes held, both copies and their tables.
    std::size_t bytes() const;

private:
    static constexpr int kBlockRows = 16;
    struct Category {
        std::string name, path;
        std::string folded, original;
        // Where every kBlockRows-th row begins in each copy.
        std::vector<std::uint32_t> foldedBlocks, originalBlocks;
        int rows = 0; // item rows
        bool fromGrid = false;
        std::uint64_t gridRevision = 0;
        bool missing = false; // no file: a new category
        bool known = false;   // read whole, so the file cache can vouch for it
    };
    void beginRow(Category& c) const;
    void addCell(Category& c, std::string_view text) const;
    void takeGrid(Category& c, frmMain& main) const;
    void readFile(Category& c);
    bool stillAsRead(Category& c);
    static std::size_t skipCells(const std::string& s, std::size_t from, int cells);

    storage::FileTable files_;
    std::vector<Category> categories_;
};

} // namespace qm

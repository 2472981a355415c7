#include "find/find_index.h"

#include <algorithm>
#include <cstring>

#include "find/text_fold.h"
#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

namespace {
constexpr int kFile = 1; // the index's own file table: one file open at a time
} // namespace

void FindIndex::refresh(frmMain& main) {
    std::vector<Category> before = std::move(categories_);
    categories_.clear();
    std::unordered_map<std::string_view, Category*> byName;
    for (Category& c : before) byName.emplace(c.name, &c);

    // The grid holds the category it was loaded with while that stays selected.
    const bool gridOpen = main.CurrentCategory && main.lstCategory.Text() == *main.CurrentCategory;
    const auto& names = main.lstCategory.items();
    categories_.reserve(names.size());
    for (const std::string& name : names) {
        Category c;
        if (auto it = byName.find(name); it != byName.end()) {
            Category* kept = it->second;
            byName.erase(it); // a name listed twice is read twice
            c = std::move(*kept);
        }
        c.name = name;
        if (gridOpen && name == *main.CurrentCategory) {
            if (!c.fromGrid || c.gridRevision != main.FG1.Revision()) takeGrid(c, main);
        } else {
            const std::string path = main.CategoryPath(main.platform.places.dataFolder, name);
            // A category named like an index file has no items: a load shows none either.
            if (main.IsIndexFile(path)) {
                c = Category();
                c.name = name;
            } else if (c.fromGrid || c.path != path || !stillAsRead(c)) {
                c.path = path;
                readFile(c);
            }
        }
        categories_.push_back(std::move(c));
    }
}

bool FindIndex::stillAsRead(Category& c) {
    if (c.missing) return !files_.files().exists(c.path);
    return c.known && files_.KnownUnchanged(c.path);
}

void FindIndex::beginRow(Category& c) const {
    if (c.rows % kBlockRows == 0) {
        c.foldedBlocks.push_back(static_cast<std::uint32_t>(c.folded.size()));
        c.originalBlocks.push_back(static_cast<std::uint32_t>(c.original.size()));
    }
}

void FindIndex::addCell(Category& c, std::string_view text) const {
    if (text.find('\0') != std::string_view::npos) {
        // The 0 byte closes a cell here: one inside a cell reads as a blank.
        std::string blanked(text);
        std::replace(blanked.begin(), blanked.end(), '\0', ' ');
        addCell(c, blanked);
        return;
    }
    FoldAppend(c.folded, text);
    c.folded.push_back('\0');
    c.original.append(text);
    c.original.push_back('\0');
}

namespace {
void clearCells(std::string& folded, std::string& original, std::vector<std::uint32_t>& fb, std::vector<std::uint32_t>& ob) {
    folded.clear();
    original.clear();
    fb.clear();
    ob.clear();
}
// Held exactly: a string grown while reading may have twice the room it needs,
// and one reserved for the file's size more than its cells take.
void fit(std::string& s) {
    if (s.capacity() > s.size()) s.shrink_to_fit();
}
} // namespace

void FindIndex::takeGrid(Category& c, frmMain& main) const {
    const forms::Grid& grid = main.FG1;
    clearCells(c.folded, c.original, c.foldedBlocks, c.originalBlocks);
    c.rows = 0;
    const int cols = std::min(grid.Cols(), kColumns);
    for (int r = 1; r < grid.Rows(); ++r) {
        beginRow(c);
        for (int col = 0; col < kColumns; ++col) addCell(c, col < cols ? grid.TextMatrix(r, col) : std::string_view());
        ++c.rows;
    }
    fit(c.folded);
    fit(c.original);
    c.fromGrid = true;
    c.gridRevision = grid.Revision();
    c.missing = c.known = false;
}

// The rows a load of the file gives the grid: the heading line skipped, whole
// lines of seven fields, an unfinished last one left out.
void FindIndex::readFile(Category& c) {
    clearCells(c.folded, c.original, c.foldedBlocks, c.originalBlocks);
    c.rows = 0;
    c.fromGrid = c.missing = c.known = false;
    try {
        files_.OpenInput(kFile, c.path);
    } catch (const forms::FileNotFound&) {
        c.missing = true;
        return;
    } catch (const forms::Failure&) {
        return; // tried again at the next search
    }
    if (auto state = files_.files().fingerprint(c.path)) {
        c.original.reserve(state->size);
        c.folded.reserve(state->size);
    }
    std::size_t foldedEnd = 0, originalEnd = 0;
    bool whole = false;
    try {
        for (int col = 0; col < kColumns; ++col) files_.ReadLineField(kFile, col == kColumns - 1);
        for (;;) {
            beginRow(c);
            for (int col = 0; col < kColumns; ++col) addCell(c, files_.ReadLineField(kFile, col == kColumns - 1));
            ++c.rows;
            foldedEnd = c.folded.size();
            originalEnd = c.original.size();
        }
    } catch (const forms::EndOfFile&) {
        whole = true;
    } catch (const forms::Failure&) {
    }
    files_.Close(kFile);
    // The row begun and not finished.
    c.folded.resize(foldedEnd);
    c.original.resize(originalEnd);
    const std::size_t blocks = static_cast<std::size_t>((c.rows + kBlockRows - 1) / kBlockRows);
    c.foldedBlocks.resize(blocks);
    c.originalBlocks.resize(blocks);
    fit(c.folded);
    fit(c.original);
    c.known = whole;
}

std::size_t FindIndex::skipCells(const std::string& s, std::size_t from, int cells) {
    for (; cells > 0; --cells) from = s.find('\0', from) + 1;
    return from;
}

std::vector<FindIndex::Cell> FindIndex::search(std::string_view needle, std::size_t limit) const {
    std::vector<Cell> found;
    if (needle.empty() || needle.find('\0') != std::string_view::npos || limit == 0) return found;
    constexpr int kBlockCells = kBlockRows * kColumns;
    for (std::size_t k = 0; k < categories_.size(); ++k) {
        const Category& c = categories_[k];
        const char* s = c.folded.data();
        const std::size_t n = c.folded.size();
        // The cell where the last hit ended: the next hit is counted on from there.
        std::size_t pos = 0, cursor = 0;
        int cursorCell = 0;
        while (pos < n) {
            const void* hit = memmem(s + pos, n - pos, needle.data(), needle.size());
            if (!hit) break;
            const std::size_t p = static_cast<std::size_t>(static_cast<const char*>(hit) - s);
            const std::size_t block =
                static_cast<std::size_t>(std::upper_bound(c.foldedBlocks.begin(), c.foldedBlocks.end(), p) - c.foldedBlocks.begin()) - 1;
            std::size_t from = c.foldedBlocks[block];
            int cell = static_cast<int>(block) * kBlockCells;
            if (cursor >= from) {
                from = cursor;
                cell = cursorCell;
            }
            cell += static_cast<int>(std::count(s + from, s + p, '\0'));
            found.push_back({static_cast<int>(k), cell / kColumns + 1, cell % kColumns});
            if (found.size() >= limit) return found;
            pos = static_cast<std::size_t>(static_cast<const char*>(std::memchr(s + p, '\0', n - p)) - s) + 1;
            cursor = pos;
            cursorCell = cell + 1;
        }
    }
    return found;
}

std::string_view FindIndex::text(int category, int row, int col) const {
    const Category& c = categories_[static_cast<std::size_t>(category)];
    const int cell = (row - 1) * kColumns + col;
    const int block = cell / (kBlockRows * kColumns);
    const std::size_t start = skipCells(c.original, c.originalBlocks[static_cast<std::size_t>(block)], cell - block * kBlockRows * kColumns);
    return std::string_view(c.original).substr(start, c.original.find('\0', start) - start);
}

std::size_t FindIndex::bytes() const {
    std::size_t total = categories_.capacity() * sizeof(Category);
    for (const Category& c : categories_)
        total += c.folded.capacity() + c.original.capacity() + c.name.capacity() + c.path.capacity() +
                 (c.foldedBlocks.capacity() + c.originalBlocks.capacity()) * sizeof(std::uint32_t);
    return total;
}

} // namespace qm

#include "forms/grid.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

#include "forms/failure.h"
#include "forms/form.h"
#include "forms/runtime.h"

namespace forms {

namespace {
// Each grid counts its revisions from a base of its own.
std::uint64_t newRevisionBase() {
    static std::atomic<std::uint64_t> grids{0};
    return (grids.fetch_add(1, std::memory_order_relaxed) + 1) << 40;
}
} // namespace

Grid::Grid(Form& form, Control* container, std::string name)
    : Control(form, container, std::move(name), Kind::Grid), revision_(newRevisionBase()), issued_(revision_) {
    growCells(static_cast<std::size_t>(rows_) * cols_);
    colWidth_.assign(static_cast<std::size_t>(cols_), kDefaultColWidth);
    rowHeight_.assign(static_cast<std::size_t>(rows_), -1);
}

void Grid::addListener(GridListener* l) {
    listeners_.push_back(l);
    if (l->wantsLayout()) {
        layoutListeners_.push_back(l);
        layoutTold_ = false;
    }
}

void Grid::removeListener(GridListener* l) {
    std::erase(listeners_, l);
    std::erase(layoutListeners_, l);
}

void Grid::tellLayout() {
    layoutTold_ = true;
    for (auto* l : layoutListeners_) l->layoutChanged();
}

void Grid::setRows(int n) {
    if (n < 1 || n > kMaxRows) throw Failure("invalid row value");
    if (n == rows_) return;
    int old = rows_;
    std::size_t cells = static_cast<std::size_t>(n) * cols_;
    const std::size_t used = static_cast<std::size_t>(old) * cols_;
    if (n < old) {
        // The spans of the rows that go are emptied only when a row takes
        // them again, so a reload touches each cell once. The bytes in use
        // are counted over whichever part is smaller: a reload keeps one row.
        if (cells < used - cells) {
            live_ = 0;
            for (std::size_t i = 0; i < cells; ++i) live_ += spans_[i].len;
        } else {
            for (std::size_t i = cells; i < used; ++i) live_ -= spans_[i].len;
        }
        dirty_ = std::max(dirty_, used);
        std::fill(back_.begin() + static_cast<std::ptrdiff_t>(cells), back_.begin() + static_cast<std::ptrdiff_t>(used), 0);
        std::fill(align_.begin() + static_cast<std::ptrdiff_t>(cells), align_.begin() + static_cast<std::ptrdiff_t>(used), AlignGeneral);
    } else {
        if (spans_.size() < cells) growCells(cells);
        clearSpare(used, cells);
    }
    rowHeight_.resize(static_cast<std::size_t>(n), -1);
    rows_ = n;
    ++shape_;
    revision_ = ++issued_;
    compactIfWasteful();
    if (fixedRows_ > n - 1) fixedRows_ = n - 1;
    clampCurrent();
    if (n > old) for (auto* l : listeners_) l->rowsInserted(old, n - old);
    else for (auto* l : listeners_) l->rowsRemoved(n, old - n);
    notifyLayout();
}

void Grid::renewRows() {
    const std::size_t from = static_cast<std::size_t>(cols_), used = static_cast<std::size_t>(rows_) * cols_;
    std::fill(back_.begin() + static_cast<std::ptrdiff_t>(from), back_.begin() + static_cast<std::ptrdiff_t>(used), 0);
    std::fill(align_.begin() + static_cast<std::ptrdiff_t>(from), align_.begin() + static_cast<std::ptrdiff_t>(used), AlignGeneral);
    std::fill(rowHeight_.begin() + 1, rowHeight_.end(), -1);
    if (fixedRows_ > 0) fixedRows_ = 0;
    ++shape_;
    row_ = rowSel_ = topRow_ = 0;
    clampCurrent();
    notifyLayout();
}

void Grid::passTo(int r, int c, Color left) {
    checkCell(r, c);
    const std::size_t from = index(row_, col_), to = index(r, c);
    if (to < from) throw Failure("invalid procedure call: a pass goes forward");
    const std::uint8_t slot = paletteIndex(left);
    std::fill(back_.begin() + static_cast<std::ptrdiff_t>(from), back_.begin() + static_cast<std::ptrdiff_t>(to), slot);
    row_ = rowSel_ = r;
    col_ = colSel_ = c;
    notifyLayout();
}

Grid::Texts Grid::takeTexts() {
    Texts first;
    first.cols_ = cols_;
    first.rows_ = 1;
    first.revision_ = ++issued_;
    std::size_t bytes = 0;
    for (int c = 0; c < cols_; ++c) bytes += spans_[static_cast<std::size_t>(c)].len;
    first.room_ = std::max<std::size_t>(bytes, 64);
    first.arena_.reset(new char[first.room_]);
    first.spans_.resize(static_cast<std::size_t>(cols_));
    for (int c = 0; c < cols_; ++c) {
        const Span s = spans_[static_cast<std::size_t>(c)];
        if (s.len) std::memcpy(first.arena_.get() + first.used_, arena_.get() + s.at, s.len);
        first.spans_[static_cast<std::size_t>(c)] = Span{static_cast<std::uint32_t>(first.used_), s.len};
        first.used_ += s.len;
    }
    first.live_ = first.used_;
    first.dirty_ = first.spans_.size();
    swapTexts(first);
    return first;
}

void Grid::swapTexts(Texts& t) {
    if (t.cols_ != cols_) throw Failure("invalid column value");
    settleTag(); // it refers to bytes that go
    std::swap(arena_, t.arena_);
    std::swap(arenaUsed_, t.used_);
    std::swap(arenaRoom_, t.room_);
    std::swap(live_, t.live_);
    std::swap(dirty_, t.dirty_);
    std::swap(spans_, t.spans_);
    std::swap(rows_, t.rows_);
    std::swap(revision_, t.revision_);
    // The styles go with the cells that stay; the rows below the first lose theirs.
    back_.resize(spans_.size(), 0);
    align_.resize(spans_.size(), AlignGeneral);
    rowHeight_.resize(static_cast<std::size_t>(rows_), -1);
    const auto from = static_cast<std::ptrdiff_t>(cols_), used = static_cast<std::ptrdiff_t>(usedCells());
    std::fill(back_.begin() + from, back_.begin() + used, 0);
    std::fill(align_.begin() + from, align_.begin() + used, AlignGeneral);
    std::fill(rowHeight_.begin() + 1, rowHeight_.end(), -1);
    if (fixedRows_ > rows_ - 1) fixedRows_ = rows_ - 1;
    ++shape_;
    clampCurrent();
    for (auto* l : listeners_) l->textsSwapped(t.revision_, revision_);
    notifyLayout();
}

void Grid::clearSpare(std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < std::min(to, dirty_); ++i) spans_[i] = Span{};
}

void Grid::growCells(std::size_t cells) {
    spans_.resize(cells);
    back_.resize(cells, 0);
    align_.resize(cells, AlignGeneral);
}

void Grid::setCols(int n) {
    if (n < 1 || n > 5000) throw Failure("invalid column value");
    if (n == cols_) return;
    std::vector<Span> spans(static_cast<std::size_t>(rows_) * n);
    std::vector<std::uint8_t> back(spans.size(), 0), align(spans.size(), AlignGeneral);
    live_ = 0;
    for (int r = 0; r < rows_; ++r)
        for (int c = 0; c < std::min(n, cols_); ++c) {
            std::size_t from = static_cast<std::size_t>(r) * cols_ + c, to = static_cast<std::size_t>(r) * n + c;
            spans[to] = spans_[from];
            live_ += spans[to].len;
            back[to] = back_[from];
            align[to] = align_[from];
        }
    spans_ = std::move(spans);
    dirty_ = 0; // no spare cells are left
    back_ = std::move(back);
    align_ = std::move(align);
    colWidth_.resize(static_cast<std::size_t>(n), kDefaultColWidth);
    cols_ = n;
    ++shape_;
    revision_ = ++issued_;
    compactIfWasteful();
    if (fixedCols_ > n - 1) fixedCols_ = n - 1;
    clampCurrent();
    for (auto* l : listeners_) l->gridReset();
}

void Grid::setFixedRows(int n) {
    if (n < 0 || n >= rows_) throw Failure("invalid fixed row value");
    if (n == fixedRows_) return;
    fixedRows_ = n;
    ++shape_;
    clampCurrent();
    notifyLayout();
}

void Grid::setFixedCols(int n) {
    if (n < 0 || n >= cols_) throw Failure("invalid fixed column value");
    if (n == fixedCols_) return;
    fixedCols_ = n;
    ++shape_;
    clampCurrent();
    notifyLayout();
}

// Keeps the current cell and the view inside the grid after a change of its
// shape; this moves the cell without any event, as the control does itself.
void Grid::clampCurrent() {
    row_ = std::clamp(row_, fixedRows_, rows_ - 1);
    col_ = std::clamp(col_, fixedCols_, cols_ - 1);
    rowSel_ = std::clamp(rowSel_, fixedRows_, rows_ - 1);
    colSel_ = std::clamp(colSel_, fixedCols_, cols_ - 1);
    topRow_ = std::clamp(topRow_, fixedRows_, rows_ - 1);
    leftCol_ = std::clamp(leftCol_, fixedCols_, cols_ - 1);
}

void Grid::invalidCell() { throw Failure("invalid row or column value"); }

void Grid::setTextMatrix(int r, int c, std::string_view t) {
    checkCell(r, c);
    store(index(r, c), t);
    revision_ = ++issued_;
    for (auto* l : listeners_) l->cellChanged(r, c);
}

void Grid::storeSlow(Span& s, std::string_view t) {
    settleTag(); // its bytes may be written over
    if (t.size() <= s.len) {
        if (!t.empty()) std::memmove(arena_.get() + s.at, t.data(), t.size());
        live_ -= s.len - t.size();
        s.len = static_cast<std::uint32_t>(t.size());
        return;
    }
    // A text taken from the arena itself must outlive a compaction or a move of the arena.
    std::string copy;
    const auto from = reinterpret_cast<std::uintptr_t>(t.data()) - reinterpret_cast<std::uintptr_t>(arena_.get());
    if (from < arenaRoom_) {
        copy.assign(t);
        t = copy;
    }
    live_ -= s.len;
    s = Span{};
    if (t.size() > arenaRoom_ - arenaUsed_) {
        compactIfWasteful();
        if (t.size() > arenaRoom_ - arenaUsed_) {
            constexpr std::size_t kLimit = std::numeric_limits<std::uint32_t>::max();
            if (arenaUsed_ + t.size() > kLimit) throw Failure("out of memory");
            const std::size_t room = std::min(kLimit, std::max({arenaRoom_ * 2, arenaUsed_ + t.size(), std::size_t{4096}}));
            moveArena(room);
        }
    }
    s.at = static_cast<std::uint32_t>(arenaUsed_);
    s.len = static_cast<std::uint32_t>(t.size());
    std::memcpy(arena_.get() + arenaUsed_, t.data(), t.size());
    arenaUsed_ += t.size();
    live_ += t.size();
}

// Into a new piece of memory of this size (not cleared: only written bytes are read).
void Grid::moveArena(std::size_t room) {
    std::unique_ptr<char[]> bigger(new char[room]);
    if (arenaUsed_ > 0) std::memcpy(bigger.get(), arena_.get(), arenaUsed_);
    arena_ = std::move(bigger);
    arenaRoom_ = room;
}

void Grid::compactIfWasteful() {
    constexpr std::size_t kSlack = 4096;
    if (arenaUsed_ - live_ > live_ + kSlack) compact();
}

// The texts of the cells in use, packed in their order. Spare cells may keep
// spans into the old arena: each is emptied before a row takes it again.
void Grid::compact() {
    settleTag();
    std::unique_ptr<char[]> packed(new char[std::max<std::size_t>(live_, 1)]);
    std::size_t at = 0;
    for (std::size_t i = 0; i < usedCells(); ++i) {
        Span& sp = spans_[i];
        if (sp.len) std::memcpy(packed.get() + at, arena_.get() + sp.at, sp.len);
        sp.at = static_cast<std::uint32_t>(at);
        at += sp.len;
    }
    live_ = at;
    // Back into the arena, which keeps its room for the texts to come.
    if (at > 0) std::memcpy(arena_.get(), packed.get(), at);
    arenaUsed_ = at;
}

void Grid::AddItem(std::string_view text) {
    if (rows_ >= kMaxRows) throw Failure("too many rows");
    const std::size_t at = usedCells();
    // The row's cells are emptied only if they still hold a text of an earlier row.
    if (spans_.size() < at + cols_) growCells(at + cols_);
    clearSpare(at, at + cols_);
    rowHeight_.push_back(-1);
    ++rows_;
    ++shape_;
    revision_ = ++issued_;
    store(at, text);
    for (auto* l : listeners_) l->rowsInserted(rows_ - 1, 1);
}

void Grid::RemoveItem(int r) {
    if (r < 0 || r >= rows_) throw Failure("subscript out of range");
    // There is always a row below the fixed ones.
    if (rows_ - 1 <= fixedRows_) throw Failure("cannot remove last non-fixed row");
    const auto at = static_cast<std::ptrdiff_t>(r) * cols_;
    const auto end = static_cast<std::ptrdiff_t>(rows_) * cols_;
    for (auto i = at; i < at + cols_; ++i) live_ -= spans_[static_cast<std::size_t>(i)].len;
    // The row's cells move behind the last row and become spare, emptied.
    std::rotate(spans_.begin() + at, spans_.begin() + at + cols_, spans_.begin() + end);
    std::rotate(back_.begin() + at, back_.begin() + at + cols_, back_.begin() + end);
    std::rotate(align_.begin() + at, align_.begin() + at + cols_, align_.begin() + end);
    for (auto i = end - cols_; i < end; ++i) {
        spans_[static_cast<std::size_t>(i)] = Span{};
        back_[static_cast<std::size_t>(i)] = 0;
        align_[static_cast<std::size_t>(i)] = AlignGeneral;
    }
    rowHeight_.erase(rowHeight_.begin() + r);
    --rows_;
    ++shape_;
    revision_ = ++issued_;
    compactIfWasteful();
    if (row_ > r) --row_;
    if (rowSel_ > r) --rowSel_;
    clampCurrent();
    for (auto* l : listeners_) l->rowsRemoved(r, 1);
}

int Grid::ColWidth(int c) const {
    if (c < 0 || c >= cols_) throw Failure("subscript out of range");
    return colWidth_[static_cast<std::size_t>(c)];
}
void Grid::setColWidth(int c, int twips) {
    if (c < 0 || c >= cols_ || twips < 0) throw Failure("subscript out of range");
    colWidth_[static_cast<std::size_t>(c)] = twips;
    notifyLayout();
}
int Grid::RowHeight(int r) const {
    if (r < 0 || r >= rows_) throw Failure("subscript out of range");
    int h = rowHeight_[static_cast<std::size_t>(r)];
    return h < 0 ? kDefaultRowHeight : h;
}
void Grid::setRowHeight(int r, int twips) {
    if (r < 0 || r >= rows_ || twips < 0) throw Failure("subscript out of range");
    rowHeight_[static_cast<std::size_t>(r)] = twips;
    notifyLayout();
}

int Grid::viewportWidth() const { return viewportW_ >= 0 ? viewportW_ : std::max(0, Width() - 2 * kBorder - kScrollBar); }
int Grid::viewportHeight() const { return viewportH_ >= 0 ? viewportH_ : std::max(0, Height() - 2 * kBorder - kScrollBar); }

void Grid::setViewport(int widthTwips, int heightTwips) {
    viewportW_ = widthTwips;
    viewportH_ = heightTwips;
}

void Grid::ensureVisible() {
    int top = topRow_, left = leftCol_;
    if (row_ >= fixedRows_) {
        if (row_ < top) top = row_;
        int fixedH = 0;
        for (int r = 0; r < fixedRows_; ++r) fixedH += RowHeight(r);
        int room = viewportHeight() - fixedH;
        int used = 0;
        for (int r = top; r <= row_; ++r) used += RowHeight(r);
        while (top < row_ && used > room) used -= RowHeight(top++);
    }
    if (col_ >= fixedCols_) {
        if (col_ < left) left = col_;
        int fixedW = 0;
        for (int c = 0; c < fixedCols_; ++c) fixedW += ColWidth(c);
        int room = viewportWidth() - fixedW;
        int used = 0;
        for (int c = left; c <= col_; ++c) used += ColWidth(c);
        while (left < col_ && used > room) used -= ColWidth(left++);
    }
    if (top != topRow_ || left != leftCol_) {
        topRow_ = top;
        leftCol_ = left;
        notifyLayout();
        runtime().raise(Scroll);
    }
}

int Grid::CellLeft() {
    ensureVisible();
    int x = kBorder;
    if (col_ < fixedCols_) {
        for (int c = 0; c < col_; ++c) x += ColWidth(c);
        return x;
    }
    for (int c = 0; c < fixedCols_; ++c) x += ColWidth(c);
    for (int c = leftCol_; c < col_; ++c) x += ColWidth(c);
    return x;
}

int Grid::CellTop() {
    ensureVisible();
    int y = kBorder;
    if (row_ < fixedRows_) {
        for (int r = 0; r < row_; ++r) y += RowHeight(r);
        return y;
    }
    for (int r = 0; r < fixedRows_; ++r) y += RowHeight(r);
    for (int r = topRow_; r < row_; ++r) y += RowHeight(r);
    return y;
}

int Grid::CellWidth() { ensureVisible(); return ColWidth(col_); }
int Grid::CellHeight() { ensureVisible(); return RowHeight(row_); }

std::uint8_t Grid::paletteIndex(Color c) {
    for (std::size_t i = 1; i < palette_.size(); ++i)
        if (palette_[i] == c) return lastColor_ = static_cast<std::uint8_t>(i);
    if (palette_.size() >= 255) return 0; // more distinct colours than a grid ever shows
    palette_.push_back(c);
    return lastColor_ = static_cast<std::uint8_t>(palette_.size() - 1);
}

void Grid::newCellBackColor(std::uint8_t& slot, Color c) {
    slot = paletteIndex(c);
    notifyLayout();
}

Color Grid::CellBackColor(int r, int c) const {
    checkCell(r, c);
    std::uint8_t i = back_[static_cast<std::size_t>(r) * cols_ + c];
    return i == 0 ? BackColor() : palette_[i];
}

int Grid::CellAlignment(int r, int c) const {
    checkCell(r, c);
    return align_[static_cast<std::size_t>(r) * cols_ + c];
}

void Grid::setCellAlignment(int a) {
    if (a < 0 || a > 9) throw Failure("invalid property value");
    std::uint8_t& slot = align_[static_cast<std::size_t>(row_) * cols_ + col_];
    if (slot == a) return;
    slot = static_cast<std::uint8_t>(a);
    notifyLayout();
}

void Grid::userClickCell(int r, int c) {
    if (!reachable(r, c) || (r == row_ && c == col_)) return;
    moveCurrent(r, c);
}

void Grid::userScrollTo(int topRow, int leftCol) {
    topRow = std::clamp(topRow, fixedRows_, rows_ - 1);
    leftCol = std::clamp(leftCol, fixedCols_, cols_ - 1);
    if (topRow == topRow_ && leftCol == leftCol_) return;
    topRow_ = topRow;
    leftCol_ = leftCol;
    notifyLayout();
    runtime().raise(Scroll);
}

} // namespace forms

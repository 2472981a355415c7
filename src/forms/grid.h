#pragma once
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "forms/control.h"
#include "forms/failure.h"

namespace forms {

// What a grid tells those who show or summarise it. Row numbers are those after the change.
class GridListener {
public:
    virtual ~GridListener() = default;
    virtual void cellChanged(int row, int col) = 0;
    virtual void rowsInserted(int first, int count) = 0;
    virtual void rowsRemoved(int first, int count) = 0;
    // Anything else: fixed rows and columns, sizes, scroll position, cell styles,
    // the current cell. Told once, and not again until a listener has taken the
    // layout in and says so (Grid::layoutHeard): a load moves the current cell
    // for every field it reads, and no listener looks before the event ends.
    virtual void layoutChanged() = 0;
    // Every cell may have changed (the number of columns changed).
    virtual void gridReset() = 0;
    // The grid took other texts in exchange for those it had (Grid::swapTexts):
    // the revisions of those that went and of those that came.
    virtual void textsSwapped(std::uint64_t /*out*/, std::uint64_t /*in*/) { gridReset(); }
    // Asked once, when the listener is added: false spares it layoutChanged.
    virtual bool wantsLayout() const { return true; }
};

// A table of text cells with a current cell, fixed heading rows and columns and
// the cell events of a spreadsheet-like grid.
class Grid : public Control {
    // Where a cell's text lies in arena_.
    struct Span {
        std::uint32_t at = 0, len = 0;
    };

public:
    // Row numbers and Rows itself stay signed 16-bit.
    static constexpr int kMaxRows = 32767;
    static constexpr int kDefaultRowHeight = 270;
    static constexpr int kDefaultColWidth = 960;
    static constexpr int kBorder = 30;     // frame around the cells, each side
    static constexpr int kScrollBar = 255; // a scroll bar's breadth

    enum Alignment : std::uint8_t { AlignGeneral = 0, AlignLeftCenter = 1, AlignCenterCenter = 4, AlignRightCenter = 7 };

    Grid(Form& form, Control* container, std::string name);

    int Rows() const { return rows_; }
    void setRows(int n);
    int Cols() const { return cols_; }
    void setCols(int n);
    int FixedRows() const { return fixedRows_; }
    void setFixedRows(int n);
    int FixedCols() const { return fixedCols_; }
    void setFixedCols(int n);

    int Row() const { return row_; }
    int Col() const { return col_; }
    // Moving the current cell runs LeaveCell (old cell current), then EnterCell
    // (new cell current), before it returns. The same value runs nothing.
    void setRow(int r) {
        if (r != row_) moveCurrent(r, col_);
    }
    void setCol(int c) {
        if (c != col_) moveCurrent(row_, c);
    }
    int RowSel() const { return rowSel_; }
    int ColSel() const { return colSel_; }

    // A cell's text stays valid until the next change of any cell or of the
    // grid's shape: copy it to keep it longer.
    std::string_view Text() const { return cell(row_, col_); }
    void setText(std::string_view t) {
        store(index(row_, col_), t);
        revision_ = ++issued_;
        for (auto* l : listeners_) l->cellChanged(row_, col_);
    }
    std::string_view TextMatrix(int r, int c) const {
        checkCell(r, c);
        return cell(r, c);
    }
    void setTextMatrix(int r, int c, std::string_view t);

    void AddItem(std::string_view text);
    void RemoveItem(int r);

    // Changes with every write of a cell's text and every change of Rows or
    // Cols, and is never the same for two grids: the same value means the same
    // texts in the same shape: caches of a grid's content use it as their key.
    std::uint64_t Revision() const { return revision_; }
    // What removing every row below row 0 and adding them again with the texts
    // they hold leaves, without touching a text: those rows lose their colours,
    // alignment and heights, and the current cell goes to row 0 with no event.
    void renewRows();
    // What moving the current cell forward through every cell, in reading
    // order, to (r, c) leaves when LeaveCell only gives the cell it leaves
    // `left` and EnterCell leaves nothing that lasts: for a caller that knows
    // its handlers do just that, the cells get their colour and no event runs.
    void passTo(int r, int c, Color left);

    // The texts of all cells and the number of rows, as they stood when taken
    // out of a grid, with the revision they had there.
    class Texts {
    public:
        std::uint64_t revision() const { return revision_; }
        // The memory they hold.
        std::size_t bytes() const { return room_ + spans_.capacity() * sizeof(Span); }

    private:
        friend class Grid;
        std::unique_ptr<char[]> arena_;
        std::size_t used_ = 0, room_ = 0, live_ = 0, dirty_ = 0;
        std::vector<Span> spans_;
        int rows_ = 0, cols_ = 0;
        std::uint64_t revision_ = 0;
    };
    // Takes the texts out, leaving what Rows = 1 would: the first row's texts.
    Texts takeTexts();
    // Gives the grid these texts (taken from a grid of as many columns), with
    // their rows and revision, in exchange for its own: the rows below the
    // first come as a reload brings them, without colours, alignment or heights.
    void swapTexts(Texts& texts);

    int ColWidth(int c) const;
    void setColWidth(int c, int twips);
    int RowHeight(int r) const;
    void setRowHeight(int r, int twips);

    // The current cell's rectangle in twips inside the grid. Reading it scrolls
    // a cell that lies outside the visible part into view, which runs Scroll.
    int CellLeft();
    int CellTop();
    int CellWidth();
    int CellHeight();

    Color CellBackColor(int r, int c) const;
    // A cell that has this colour already is left alone, and nobody is told.
    // (A load colours every cell it passes: this stays inline.)
    void setCellBackColor(Color c) {
        std::uint8_t& slot = back_[static_cast<std::size_t>(row_) * cols_ + col_];
        if (slot != 0 && palette_[slot] == c) return;
        if (lastColor_ == 0 || palette_[lastColor_] != c) return newCellBackColor(slot, c);
        slot = lastColor_;
        notifyLayout();
    }
    int CellAlignment(int r, int c) const;
    void setCellAlignment(int a);

    // The first scrollable row and column in view.
    int TopRow() const { return topRow_; }
    int LeftCol() const { return leftCol_; }
    // The size of the area that shows cells, in twips; the desktop face tells
    // the real one, else it is worked out from the grid's size.
    void setViewport(int widthTwips, int heightTwips);

    Color BackColorFixed = syscolor::ButtonFace;
    Color ForeColorFixed = syscolor::ButtonText;
    Color BackColorSel = syscolor::Highlight;
    Color ForeColorSel = syscolor::HighlightText;
    Color BackColorBkg = 0x00808080;
    Color GridColor = 0x00C0C0C0;
    Color GridColorFixed = 0x00000000;

    std::function<void()> EnterCell;
    std::function<void()> LeaveCell;
    std::function<void()> Scroll;
    std::function<void(int& keyAscii)> KeyPress;
    // Every key that goes down while the grid holds the focus, before the grid's own handling.
    std::function<void(int& keyCode, int shift)> KeyDown;
    // A user's click on a cell, after it has become current (also when it was already).
    std::function<void()> Click;

    // User input: a click on a cell moves the current cell as code does; the
    // scroll bars move the view.
    void userClickCell(int r, int c);
    void userScrollTo(int topRow, int leftCol);

    void addListener(GridListener* l);
    void removeListener(GridListener* l);
    // A listener has taken in the layout: the next change of it is told again.
    void layoutHeard() { layoutTold_ = false; }

protected:
    // Tag = Text on the current cell copies nothing: the tag keeps the cell's
    // span and reads its bytes from the arena, where they stay when the cell
    // gets a new text (settleTag copies them before they are written over or
    // moved). A load sets the tag at every cell it passes.
    void copyTag(std::string_view t) override {
        const std::string_view current = cell(row_, col_);
        if (t.data() != current.data() || t.size() != current.size()) return Control::copyTag(t);
        tagSpan_ = spans_[index(row_, col_)];
        referTag();
    }
    std::string_view lazyTag() const override { return {arena_.get() + tagSpan_.at, tagSpan_.len}; }

private:
    std::size_t index(int r, int c) const { return static_cast<std::size_t>(r) * cols_ + c; }
    std::string_view text(std::size_t i) const { return {arena_.get() + spans_[i].at, spans_[i].len}; }
    std::string_view cell(int r, int c) const { return text(index(r, c)); }
    // Gives cell i this text: in place if it is not longer, else at the end of
    // the arena. Inline for the usual case, a new text that fits in the room
    // left and comes from outside the arena: a load stores every field so.
    void store(std::size_t i, std::string_view t) {
        Span& s = spans_[i];
        const std::size_t used = arenaUsed_;
        const auto from = reinterpret_cast<std::uintptr_t>(t.data()) - reinterpret_cast<std::uintptr_t>(arena_.get());
        if (t.size() > s.len && t.size() <= arenaRoom_ - used && from >= arenaRoom_) {
            std::memcpy(arena_.get() + used, t.data(), t.size());
            live_ += t.size() - s.len;
            s = Span{static_cast<std::uint32_t>(used), static_cast<std::uint32_t>(t.size())};
            arenaUsed_ = used + t.size();
            return;
        }
        storeSlow(s, t);
    }
    [[gnu::noinline]] void storeSlow(Span& s, std::string_view t);
    std::size_t usedCells() const { return static_cast<std::size_t>(rows_) * cols_; }
    // Drops the bytes no cell in use refers to, when they outweigh those in use.
    void compactIfWasteful();
    void compact();
    void moveArena(std::size_t room);
    void checkCell(int r, int c) const {
        if (r < 0 || r >= rows_ || c < 0 || c >= cols_) throw Failure("subscript out of range");
    }
    bool reachable(int r, int c) const {
        return static_cast<unsigned>(r - fixedRows_) < static_cast<unsigned>(rows_ - fixedRows_) &&
               static_cast<unsigned>(c - fixedCols_) < static_cast<unsigned>(cols_ - fixedCols_);
    }
    [[noreturn, gnu::cold]] static void invalidCell();
    // To another cell. Inline: a load moves the current cell twice for every field it reads.
    void moveCurrent(int r, int c) {
        if (!reachable(r, c)) invalidCell();
        Runtime& events = runtime();
        const std::uint32_t shape = shape_;
        events.raise(LeaveCell);
        // The handler may have changed the grid's shape.
        if (shape_ != shape && !reachable(r, c)) invalidCell();
        row_ = rowSel_ = r;
        col_ = colSel_ = c;
        notifyLayout();
        events.raise(EnterCell);
    }
    void growCells(std::size_t cells);
    // Empties the texts of spare cells in [from, to) that may still hold one.
    void clearSpare(std::size_t from, std::size_t to);
    void clampCurrent();
    void ensureVisible();
    int viewportWidth() const;
    int viewportHeight() const;
    // Cell events and colours ask this for every cell a load passes, and
    // usually nobody listens: the telling itself stays out of line.
    void notifyLayout() {
        if (!layoutTold_ && !layoutListeners_.empty()) tellLayout();
    }
    [[gnu::noinline]] void tellLayout();
    std::uint8_t paletteIndex(Color c);
    [[gnu::noinline]] void newCellBackColor(std::uint8_t& slot, Color c);

    std::uint64_t revision_;
    std::uint64_t issued_; // the highest revision given out: texts swapped in bring back an older one
    int rows_ = 1, cols_ = 2;
    int fixedRows_ = 0, fixedCols_ = 0;
    int row_ = 0, col_ = 0;
    std::uint32_t shape_ = 0; // moves on with every change of Rows, Cols and the fixed ones
    int rowSel_ = 0, colSel_ = 0;
    int topRow_ = 0, leftCol_ = 0;
    int viewportW_ = -1, viewportH_ = -1;
    // The text store: every cell's text lies in one piece of memory, the arena,
    // and a cell keeps only a span (offset, length) into it. A load of a big
    // category appends the texts in order and touches nothing else. A shorter
    // new text is written in place; a longer one goes to the end and leaves a
    // hole. When the holes outweigh the texts in use (by 4 KiB), compact()
    // packs the texts in use together again.
    std::unique_ptr<char[]> arena_;
    std::size_t arenaUsed_ = 0, arenaRoom_ = 0; // bytes written, bytes there
    std::size_t live_ = 0; // bytes of arena_ that cells in use refer to
    // Row by row; cells behind the last row are spare, with no colour or
    // alignment of their own, and empty from dirty_ on.
    std::vector<Span> spans_;
    std::size_t dirty_ = 0;
    // The bytes the tag refers to: they stay where they are until a text is
    // written over them in place or the arena is compacted.
    Span tagSpan_;
    // Per cell: background as an index into palette_ (0: the grid's own) and alignment.
    std::vector<std::uint8_t> back_;
    std::vector<std::uint8_t> align_;
    std::vector<Color> palette_{0};
    std::uint8_t lastColor_ = 0; // the index paletteIndex gave last
    std::vector<int> colWidth_;
    std::vector<int> rowHeight_; // -1: the default height
    std::vector<GridListener*> listeners_;
    std::vector<GridListener*> layoutListeners_; // those of listeners_ that want layoutChanged
    bool layoutTold_ = false;                     // told, and not yet heard
};

} // namespace forms

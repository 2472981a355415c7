#pragma once
#include <cstdint>
#include <functional>
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
    // Anything else: fixed rows and columns, sizes, scroll position, cell styles, the current cell.
    virtual void layoutChanged() = 0;
    // Every cell may have changed (the number of columns changed).
    virtual void gridReset() = 0;
    // Asked once, when the listener is added: false spares it layoutChanged,
    // which a load sends twice for every field it reads.
    virtual bool wantsLayout() const { return true; }
};

// A table of text cells with a current cell, fixed heading rows and columns and
// the cell events of a spreadsheet-like grid.
class Grid : public Control {
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

    const std::string& Text() const { return cell(row_, col_); }
    // Assigned into the cell's own storage, which a reload reuses.
    void setText(std::string_view t) {
        settleTag();
        assignInto(cell(row_, col_), t);
        ++revision_;
        for (auto* l : listeners_) l->cellChanged(row_, col_);
    }
    const std::string& TextMatrix(int r, int c) const {
        checkCell(r, c);
        return cell(r, c);
    }
    void setTextMatrix(int r, int c, std::string t);

    void AddItem(const std::string& text);
    void RemoveItem(int r);

    // Changes with every write of a cell's text and every change of Rows or
    // Cols, and is never the same for two grids: the same value means the same
    // texts in the same shape.
    std::uint64_t Revision() const { return revision_; }
    // What removing every row below row 0 and adding them again with the texts
    // they hold leaves, without touching a text: those rows lose their colours,
    // alignment and heights, and the current cell goes to row 0 with no event.
    void renewRows();

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
        slot = lastColor_ != 0 && palette_[lastColor_] == c ? lastColor_ : paletteIndex(c);
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

    // User input: a click on a cell moves the current cell as code does; the
    // scroll bars move the view.
    void userClickCell(int r, int c);
    void userScrollTo(int topRow, int leftCol);

    void addListener(GridListener* l);
    void removeListener(GridListener* l);

protected:
    // Tag = Text on the current cell refers to the cell's text until the cell
    // changes: a load passes every cell through the tag, and this way it need
    // not even look at the text.
    void copyTag(const std::string& t) override {
        if (&t == &cell(row_, col_)) referTag(&t);
        else Control::copyTag(t);
    }

private:
    const std::string& cell(int r, int c) const { return text_[static_cast<std::size_t>(r) * cols_ + c]; }
    std::string& cell(int r, int c) { return text_[static_cast<std::size_t>(r) * cols_ + c]; }
    // A plain copy unless the text lies in the cell itself.
    static void assignInto(std::string& cell, std::string_view t) {
        const auto offset = reinterpret_cast<std::uintptr_t>(t.data()) - reinterpret_cast<std::uintptr_t>(cell.data());
        if (offset <= cell.size()) {
            cell.assign(t.data(), t.size());
            return;
        }
        cell.clear();
        cell.append(t.data(), t.size());
    }
    void checkCell(int r, int c) const {
        if (r < 0 || r >= rows_ || c < 0 || c >= cols_) throw Failure("subscript out of range");
    }
    void moveCurrent(int r, int c);
    void growCells(std::size_t cells);
    // Empties the texts of spare cells in [from, to) that may still hold one.
    void clearSpare(std::size_t from, std::size_t to);
    void clampCurrent();
    void ensureVisible();
    int viewportWidth() const;
    int viewportHeight() const;
    void notifyLayout() {
        for (auto* l : layoutListeners_) l->layoutChanged();
    }
    std::uint8_t paletteIndex(Color c);

    std::uint64_t revision_;
    int rows_ = 1, cols_ = 2;
    int fixedRows_ = 0, fixedCols_ = 0;
    int row_ = 0, col_ = 0;
    int rowSel_ = 0, colSel_ = 0;
    int topRow_ = 0, leftCol_ = 0;
    int viewportW_ = -1, viewportH_ = -1;
    // Row by row; cells behind the last row are spare: with no colour or
    // alignment of their own, kept for their storage, and empty from dirty_ on.
    std::vector<std::string> text_;
    std::size_t dirty_ = 0;
    // Per cell: background as an index into palette_ (0: the grid's own) and alignment.
    std::vector<std::uint8_t> back_;
    std::vector<std::uint8_t> align_;
    std::vector<Color> palette_{0};
    std::uint8_t lastColor_ = 0; // the index paletteIndex gave last
    std::vector<int> colWidth_;
    std::vector<int> rowHeight_; // -1: the default height
    std::vector<GridListener*> listeners_;
    std::vector<GridListener*> layoutListeners_; // those of listeners_ that want layoutChanged
};

} // namespace forms

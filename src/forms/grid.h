#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "forms/control.h"

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
    void setRow(int r);
    void setCol(int c);
    int RowSel() const { return rowSel_; }
    int ColSel() const { return colSel_; }

    const std::string& Text() const { return cell(row_, col_); }
    void setText(const std::string& t);
    const std::string& TextMatrix(int r, int c) const;
    void setTextMatrix(int r, int c, std::string t);

    void AddItem(const std::string& text);
    void RemoveItem(int r);

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
    void setCellBackColor(Color c);
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

private:
    const std::string& cell(int r, int c) const { return text_[static_cast<std::size_t>(r) * cols_ + c]; }
    std::string& cell(int r, int c) { return text_[static_cast<std::size_t>(r) * cols_ + c]; }
    void checkCell(int r, int c) const;
    void moveCurrent(int r, int c);
    void clampCurrent();
    void ensureVisible();
    int viewportWidth() const;
    int viewportHeight() const;
    void notifyLayout();
    std::uint8_t paletteIndex(Color c);

    int rows_ = 1, cols_ = 2;
    int fixedRows_ = 0, fixedCols_ = 0;
    int row_ = 0, col_ = 0;
    int rowSel_ = 0, colSel_ = 0;
    int topRow_ = 0, leftCol_ = 0;
    int viewportW_ = -1, viewportH_ = -1;
    // Row by row; cells behind the last row are spare: empty, kept for their storage.
    std::vector<std::string> text_;
    // Per cell: background as an index into palette_ (0: the grid's own) and alignment.
    std::vector<std::uint8_t> back_;
    std::vector<std::uint8_t> align_;
    std::vector<Color> palette_{0};
    std::vector<int> colWidth_;
    std::vector<int> rowHeight_; // -1: the default height
    std::vector<GridListener*> listeners_;
};

} // namespace forms

#pragma once
#include <QAccessibleWidget>
#include <unordered_map>

namespace qtface {

class GridView;

// The grid as assistive technology sees it: a table whose children are the
// grid's cells, row by row (the fixed heading rows first, as column headers),
// so child i is cell (i / Cols, i % Cols). The table's own rows are the item
// rows; the current cell, and the block from it to RowSel/ColSel, are its
// selection. Cell objects are made on demand and kept, so that a reader sees the
// same object for the same cell, until the grid changes shape.
class GridAccessible : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit GridAccessible(GridView* view);
    ~GridAccessible() override;

    QAccessible::Role role() const override { return QAccessible::Table; }
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    void* interface_cast(QAccessible::InterfaceType t) override;

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override;
    int selectedCellCount() const override;
    QList<QAccessibleInterface*> selectedCells() const override;
    QString columnDescription(int column) const override;
    QString rowDescription(int row) const override;
    int selectedColumnCount() const override { return static_cast<int>(selectedColumns().size()); }
    int selectedRowCount() const override { return static_cast<int>(selectedRows().size()); }
    int columnCount() const override;
    int rowCount() const override;
    QList<int> selectedColumns() const override;
    QList<int> selectedRows() const override;
    bool isColumnSelected(int column) const override { return selectedColumns().contains(column); }
    bool isRowSelected(int row) const override { return selectedRows().contains(row); }
    // The selection is the program's: a reader can't change it.
    bool selectRow(int) override { return false; }
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent* event) override;

    GridView* view() const;
    // The object of a grid cell (grid rows, headings included); null outside the grid.
    QAccessibleInterface* gridCell(int gridRow, int col) const;
    // Whether (gridRow, col) lies in the selection block.
    bool inSelection(int gridRow, int col) const;
    // Tells readers where the current cell went, if it moved since last told.
    void currentMoved();

private:
    void forgetCells();
    mutable std::unordered_map<qint64, QAccessible::Id> cells_;
    int toldRow_ = -1, toldCol_ = -1;
};

// Makes the grid's accessibility known to Qt; once is enough, more is harmless.
void installGridAccessibility();

// Called by the view when its layout or current cell moved.
void gridCurrentMoved(GridView* view);

} // namespace qtface

#include "qt/grid_accessible.h"

#include <QWidget>
#include <algorithm>

#include "forms/grid.h"
#include "qt/grid_view.h"

namespace qtface {

namespace {

QString qs(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

// One cell of the grid, by its place in the grid (heading rows included). It
// holds no text of its own: every answer is read from the grid when asked.
class GridCellAccessible : public QAccessibleInterface, public QAccessibleTableCellInterface {
public:
    GridCellAccessible(GridView* view, int gridRow, int col) : view_(view), row_(gridRow), col_(col) {}

    bool isValid() const override { return view_ && row_ < grid().Rows() && col_ < grid().Cols(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return view_ ? view_->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(view_); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }

    QString text(QAccessible::Text t) const override {
        if (!isValid() || t != QAccessible::Name) return {};
        return qs(grid().TextMatrix(row_, col_));
    }
    void setText(QAccessible::Text, const QString&) override {}

    QRect rect() const override {
        if (!isValid() || !view_->isVisible()) return {};
        const QRect r = view_->cellRect(row_, col_);
        return r.isEmpty() ? QRect() : QRect(view_->viewport()->mapToGlobal(r.topLeft()), r.size());
    }

    QAccessible::Role role() const override { return heading() ? QAccessible::ColumnHeader : QAccessible::Cell; }

    QAccessible::State state() const override {
        QAccessible::State s;
        if (!isValid()) return s;
        if (rect().isEmpty()) {
            s.invisible = true;
            s.offscreen = true;
        }
        if (heading() || col_ < grid().FixedCols()) return s;
        s.focusable = s.selectable = true;
        s.selected = owner()->inSelection(row_, col_);
        s.focused = view_->hasFocus() && row_ == grid().Row() && col_ == grid().Col();
        return s;
    }

    // A heading is no cell of the table's rows (as with Qt's own tables).
    void* interface_cast(QAccessible::InterfaceType t) override {
        if (t != QAccessible::TableCellInterface || !isValid() || heading()) return nullptr;
        return static_cast<QAccessibleTableCellInterface*>(this);
    }

    bool isSelected() const override { return isValid() && owner()->inSelection(row_, col_); }
    QList<QAccessibleInterface*> columnHeaderCells() const override {
        QList<QAccessibleInterface*> cells;
        for (int r = 0; isValid() && r < grid().FixedRows(); ++r) cells.append(owner()->gridCell(r, col_));
        return cells;
    }
    QList<QAccessibleInterface*> rowHeaderCells() const override {
        QList<QAccessibleInterface*> cells;
        if (isValid())
            for (int c = 0; c < grid().FixedCols() && c != col_; ++c) cells.append(owner()->gridCell(row_, c));
        return cells;
    }
    // In the table's own numbering: the heading rows are not rows of the table.
    int rowIndex() const override { return row_ - grid().FixedRows(); }
    int columnIndex() const override { return col_; }
    int rowExtent() const override { return 1; }
    int columnExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return parent(); }

    int gridRow() const { return row_; }
    int col() const { return col_; }

private:
    forms::Grid& grid() const { return view_->grid(); }
    bool heading() const { return row_ < grid().FixedRows(); }
    const GridAccessible* owner() const { return static_cast<GridAccessible*>(parent()); }

    QPointer<GridView> view_;
    int row_, col_;
};

qint64 keyOf(int row, int col) { return (static_cast<qint64>(row) << 16) | col; }

QAccessibleInterface* gridFactory(const QString&, QObject* object) {
    if (auto* view = qobject_cast<GridView*>(object)) return new GridAccessible(view);
    return nullptr;
}

} // namespace

GridAccessible::GridAccessible(GridView* view) : QAccessibleWidget(view, QAccessible::Table) {}

GridAccessible::~GridAccessible() { forgetCells(); }

GridView* GridAccessible::view() const { return static_cast<GridView*>(widget()); }

void GridAccessible::forgetCells() {
    for (const auto& [key, id] : cells_) QAccessible::deleteAccessibleInterface(id);
    cells_.clear();
}

QAccessibleInterface* GridAccessible::gridCell(int gridRow, int col) const {
    const forms::Grid& g = view()->grid();
    if (gridRow < 0 || col < 0 || gridRow >= g.Rows() || col >= g.Cols()) return nullptr;
    const qint64 key = keyOf(gridRow, col);
    if (auto it = cells_.find(key); it != cells_.end())
        if (QAccessibleInterface* known = QAccessible::accessibleInterface(it->second)) return known;
    auto* cell = new GridCellAccessible(view(), gridRow, col);
    cells_.insert_or_assign(key, QAccessible::registerAccessibleInterface(cell));
    return cell;
}

int GridAccessible::childCount() const { return view()->grid().Rows() * view()->grid().Cols(); }

QAccessibleInterface* GridAccessible::child(int index) const {
    const int cols = view()->grid().Cols();
    return index < 0 || cols == 0 ? nullptr : gridCell(index / cols, index % cols);
}

int GridAccessible::indexOfChild(const QAccessibleInterface* child) const {
    auto* cell = dynamic_cast<const GridCellAccessible*>(child);
    if (!cell || !cell->isValid() || cell->parent() != this) return -1;
    return cell->gridRow() * view()->grid().Cols() + cell->col();
}

QAccessibleInterface* GridAccessible::childAt(int x, int y) const {
    int row, col;
    if (!view()->cellAt(view()->viewport()->mapFromGlobal(QPoint(x, y)), row, col)) return nullptr;
    return gridCell(row, col);
}

QAccessibleInterface* GridAccessible::focusChild() const {
    const forms::Grid& g = view()->grid();
    return view()->hasFocus() ? gridCell(g.Row(), g.Col()) : nullptr;
}

void* GridAccessible::interface_cast(QAccessible::InterfaceType t) {
    if (t == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
    return QAccessibleWidget::interface_cast(t);
}

int GridAccessible::rowCount() const { return view()->grid().Rows() - view()->grid().FixedRows(); }
int GridAccessible::columnCount() const { return view()->grid().Cols(); }

QAccessibleInterface* GridAccessible::cellAt(int row, int column) const {
    return row < 0 ? nullptr : gridCell(row + view()->grid().FixedRows(), column);
}

QString GridAccessible::columnDescription(int column) const {
    const forms::Grid& g = view()->grid();
    QStringList headings;
    for (int r = 0; r < g.FixedRows() && column >= 0 && column < g.Cols(); ++r) headings.append(qs(g.TextMatrix(r, column)));
    return headings.join(QLatin1Char(' '));
}

QString GridAccessible::rowDescription(int row) const {
    const forms::Grid& g = view()->grid();
    const int gridRow = row + g.FixedRows();
    QStringList names;
    for (int c = 0; c < g.FixedCols() && row >= 0 && gridRow < g.Rows(); ++c) names.append(qs(g.TextMatrix(gridRow, c)));
    return names.join(QLatin1Char(' '));
}

// The block between the current cell and RowSel/ColSel, without the fixed
// rows and columns, which the current cell can't enter; none while the grid
// holds only its headings.
bool GridAccessible::inSelection(int gridRow, int col) const {
    const forms::Grid& g = view()->grid();
    if (g.Rows() <= g.FixedRows() || gridRow < g.FixedRows() || col < g.FixedCols()) return false;
    return gridRow >= std::min(g.Row(), g.RowSel()) && gridRow <= std::max(g.Row(), g.RowSel()) &&
           col >= std::min(g.Col(), g.ColSel()) && col <= std::max(g.Col(), g.ColSel());
}

int GridAccessible::selectedCellCount() const { return static_cast<int>(selectedCells().size()); }

QList<QAccessibleInterface*> GridAccessible::selectedCells() const {
    const forms::Grid& g = view()->grid();
    QList<QAccessibleInterface*> cells;
    for (int r = std::min(g.Row(), g.RowSel()); r <= std::max(g.Row(), g.RowSel()); ++r)
        for (int c = std::min(g.Col(), g.ColSel()); c <= std::max(g.Col(), g.ColSel()); ++c)
            if (inSelection(r, c)) cells.append(gridCell(r, c));
    return cells;
}

QList<int> GridAccessible::selectedRows() const {
    const forms::Grid& g = view()->grid();
    QList<int> rows;
    for (int r = g.FixedRows(); r < g.Rows(); ++r) {
        bool whole = true;
        for (int c = g.FixedCols(); c < g.Cols() && whole; ++c) whole = inSelection(r, c);
        if (whole && g.Cols() > g.FixedCols()) rows.append(r - g.FixedRows());
    }
    return rows;
}

QList<int> GridAccessible::selectedColumns() const {
    const forms::Grid& g = view()->grid();
    QList<int> cols;
    for (int c = g.FixedCols(); c < g.Cols(); ++c) {
        bool whole = g.Rows() > g.FixedRows();
        for (int r = g.FixedRows(); r < g.Rows() && whole; ++r) whole = inSelection(r, c);
        if (whole) cols.append(c);
    }
    return cols;
}

void GridAccessible::modelChange(QAccessibleTableModelChangeEvent* event) {
    if (event->modelChangeType() != QAccessibleTableModelChangeEvent::DataChanged) {
        forgetCells();
        toldRow_ = toldCol_ = -1;
        return;
    }
    // A reader that holds a cell hears that its text changed.
    for (int r = event->firstRow(); r <= event->lastRow(); ++r)
        for (int c = event->firstColumn(); c <= event->lastColumn(); ++c)
            if (auto it = cells_.find(keyOf(r, c)); it != cells_.end())
                if (QAccessibleInterface* cell = QAccessible::accessibleInterface(it->second)) {
                    QAccessibleEvent changed(cell, QAccessible::NameChanged);
                    QAccessible::updateAccessibility(&changed);
                }
}

void GridAccessible::currentMoved() {
    const forms::Grid& g = view()->grid();
    if (g.Row() == toldRow_ && g.Col() == toldCol_) return;
    toldRow_ = g.Row();
    toldCol_ = g.Col();
    // The grid itself holds the focus only while the editor is closed; then the
    // current cell is what has it. (With the editor open, the editor's name says it.)
    if (view()->hasFocus()) {
        QAccessibleEvent focus(view(), QAccessible::Focus);
        focus.setChild(g.Row() * g.Cols() + g.Col());
        QAccessible::updateAccessibility(&focus);
    }
}

void installGridAccessibility() {
    static const bool installed = (QAccessible::installFactory(gridFactory), true);
    (void)installed;
}

void gridCurrentMoved(GridView* view) {
    if (!QAccessible::isActive()) return;
    if (auto* table = dynamic_cast<GridAccessible*>(QAccessible::queryAccessibleInterface(view))) table->currentMoved();
}

} // namespace qtface

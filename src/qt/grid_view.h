#pragma once
#include <QAbstractItemView>
#include <functional>
#include <vector>

#include "forms/grid.h"
#include "qt/grid_model.h"
#include "qt/qt_host.h"

namespace qtface {

// Draws a forms::Grid through its table model. Every cell edge comes from the
// grid's own sizes in twips, rounded from the grid's place in the window, so a
// cell drawn here lies exactly where the grid's CellLeft/CellTop/CellWidth/
// CellHeight put it: a text box laid over the current cell by those numbers
// covers it to the pixel. The grid decides its first visible row and column; the
// scroll bars only show them, and a user's scroll goes back as userScrollTo.
class GridView : public QAbstractItemView {
    Q_OBJECT
public:
    GridView(QtHost& host, forms::Grid& grid, QWidget* parent);

    forms::Grid& grid() const { return grid_; }
    GridTableModel* gridModel() const { return model_; }

    // The grid's position in twips measured from the window's client area.
    void setOriginTwips(QPoint origin);
    // A cell's rectangle in viewport pixels; empty when it is not in view.
    QRect cellRect(int row, int col) const;
    // The cell under a viewport point.
    bool cellAt(QPoint p, int& row, int& col) const;

    // A user's scroll (bars or wheel): the first scrollable row and column wanted.
    std::function<void(int topRow, int leftCol)> userScrolled;

    QRect visualRect(const QModelIndex& index) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    QModelIndex indexAt(const QPoint& point) const override;

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override { return 0; }
    int verticalOffset() const override { return 0; }
    bool isIndexHidden(const QModelIndex&) const override { return false; }
    void setSelection(const QRect&, QItemSelectionModel::SelectionFlags) override {}
    QRegion visualRegionForSelection(const QItemSelection&) const override { return {}; }

    void paintEvent(QPaintEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    void scrollContentsBy(int dx, int dy) override;
    void updateGeometries() override;

private:
    struct Span {
        int index;
        int start; // pixels, inclusive
        int end;   // pixels, exclusive
    };
    std::vector<Span> visibleRows() const;
    std::vector<Span> visibleCols() const;
    void layoutMoved();
    void syncScrollBars();
    void tellViewport();
    int x(int twips) const { return twips_.edge(origin_.x(), twips); }
    int y(int twips) const { return twips_.edge(origin_.y(), twips); }

    QtHost& host_;
    forms::Grid& grid_;
    const Twips& twips_;
    GridTableModel* model_;
    QPoint origin_;
    bool applying_ = false;
};

} // namespace qtface

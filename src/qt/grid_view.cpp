#include "qt/grid_view.h"

#include <QApplication>
#include <QPainter>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>

#include "qt/colors_fonts.h"

namespace qtface {

using forms::Grid;

GridView::GridView(QtHost& host, Grid& grid, QWidget* parent)
    : QAbstractItemView(parent), host_(host), grid_(grid), twips_(host.twips()),
      model_(new GridTableModel(host, grid, this)) {
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setAutoScroll(false);
    setModel(model_);
    connect(model_, &GridTableModel::layoutMoved, this, &GridView::layoutMoved);
}

void GridView::setOriginTwips(QPoint origin) {
    if (origin == origin_) return;
    origin_ = origin;
    tellViewport();
    viewport()->update();
}

std::vector<GridView::Span> GridView::visibleRows() const {
    std::vector<Span> spans;
    const int limit = viewport()->height();
    const int rows = grid_.Rows();
    int t = Grid::kBorder;
    for (int r = 0; r < grid_.FixedRows() && r < rows; ++r) {
        int s = y(t);
        if (s >= limit) return spans;
        t += grid_.RowHeight(r);
        spans.push_back({r, s, y(t)});
    }
    for (int r = std::max(grid_.TopRow(), grid_.FixedRows()); r < rows; ++r) {
        int s = y(t);
        if (s >= limit) break;
        t += grid_.RowHeight(r);
        spans.push_back({r, s, y(t)});
    }
    return spans;
}

std::vector<GridView::Span> GridView::visibleCols() const {
    std::vector<Span> spans;
    const int limit = viewport()->width();
    const int cols = grid_.Cols();
    int t = Grid::kBorder;
    for (int c = 0; c < grid_.FixedCols() && c < cols; ++c) {
        int s = x(t);
        if (s >= limit) return spans;
        t += grid_.ColWidth(c);
        spans.push_back({c, s, x(t)});
    }
    for (int c = std::max(grid_.LeftCol(), grid_.FixedCols()); c < cols; ++c) {
        int s = x(t);
        if (s >= limit) break;
        t += grid_.ColWidth(c);
        spans.push_back({c, s, x(t)});
    }
    return spans;
}

QRect GridView::cellRect(int row, int col) const {
    if (row < 0 || col < 0 || row >= grid_.Rows() || col >= grid_.Cols()) return {};
    QRect r;
    bool haveRow = false, haveCol = false;
    for (const Span& s : visibleRows())
        if (s.index == row && s.end > s.start) {
            r.setTop(s.start);
            r.setBottom(s.end - 1);
            haveRow = true;
        }
    for (const Span& s : visibleCols())
        if (s.index == col && s.end > s.start) {
            r.setLeft(s.start);
            r.setRight(s.end - 1);
            haveCol = true;
        }
    return haveRow && haveCol ? r : QRect();
}

bool GridView::cellAt(QPoint p, int& row, int& col) const {
    row = col = -1;
    for (const Span& s : visibleRows())
        if (p.y() >= s.start && p.y() < s.end) row = s.index;
    for (const Span& s : visibleCols())
        if (p.x() >= s.start && p.x() < s.end) col = s.index;
    return row >= 0 && col >= 0;
}

QRect GridView::visualRect(const QModelIndex& index) const {
    return index.isValid() ? cellRect(index.row(), index.column()) : QRect();
}

void GridView::scrollTo(const QModelIndex&, ScrollHint) {
    // The grid scrolls itself (reading a cell's position brings it into view).
}

QModelIndex GridView::indexAt(const QPoint& point) const {
    int r, c;
    if (!cellAt(point, r, c) || r >= model_->rowCount() || c >= model_->columnCount()) return {};
    return model_->index(r, c);
}

QModelIndex GridView::moveCursor(CursorAction, Qt::KeyboardModifiers) { return currentIndex(); }

void GridView::paintEvent(QPaintEvent* e) {
    QPainter p(viewport());
    const QPalette& pal = QApplication::palette();
    const QRect area = viewport()->rect();
    p.fillRect(area, toQColor(grid_.BackColorBkg, pal));

    const int border = x(Grid::kBorder);
    p.save();
    p.setClipRect(area.adjusted(border, border, 0, 0));
    p.setFont(toQFont(grid_.font()));
    const QColor lines = toQColor(grid_.GridColor, pal), fixedLines = toQColor(grid_.GridColorFixed, pal);
    const int pad = std::max(1, twips_.px(30));
    const auto rows = visibleRows();
    const auto cols = visibleCols();
    for (const Span& rs : rows) {
        for (const Span& cs : cols) {
            QRect r(QPoint(cs.start, rs.start), QPoint(cs.end - 1, rs.end - 1));
            if (r.isEmpty() || !r.intersects(e->rect())) continue;
            bool fixed = rs.index < grid_.FixedRows() || cs.index < grid_.FixedCols();
            p.fillRect(r, model_->cellData(rs.index, cs.index, Qt::BackgroundRole).value<QColor>());
            p.setPen(model_->cellData(rs.index, cs.index, Qt::ForegroundRole).value<QColor>());
            int align = model_->cellData(rs.index, cs.index, Qt::TextAlignmentRole).toInt();
            p.drawText(r.adjusted(pad, 0, -pad - 1, -1), align | Qt::TextSingleLine,
                       model_->cellData(rs.index, cs.index, Qt::DisplayRole).toString());
            p.setPen(fixed ? fixedLines : lines);
            p.drawLine(r.topRight(), r.bottomRight());
            p.drawLine(r.bottomLeft(), r.bottomRight());
        }
    }
    if (grid_.hasFocus()) {
        QRect cur = cellRect(grid_.Row(), grid_.Col());
        if (!cur.isEmpty()) {
            QPen pen(pal.color(QPalette::Text), 1, Qt::DotLine);
            p.setPen(pen);
            p.drawRect(cur.adjusted(1, 1, -2, -2));
        }
    }
    p.restore();

    // A sunken edge, as wide as the grid's border.
    if (border > 0) {
        p.setPen(pal.color(QPalette::Dark));
        p.drawLine(area.topLeft(), area.topRight());
        p.drawLine(area.topLeft(), area.bottomLeft());
        p.setPen(pal.color(QPalette::Light));
        p.drawLine(area.bottomLeft(), area.bottomRight());
        p.drawLine(area.topRight(), area.bottomRight());
        if (border > 1) {
            p.setPen(pal.color(QPalette::Shadow));
            p.drawLine(area.left() + 1, area.top() + 1, area.right() - 1, area.top() + 1);
            p.drawLine(area.left() + 1, area.top() + 1, area.left() + 1, area.bottom() - 1);
        }
    }
}

void GridView::resizeEvent(QResizeEvent* e) {
    QAbstractItemView::resizeEvent(e);
    tellViewport();
    syncScrollBars();
}

void GridView::updateGeometries() {
    QAbstractItemView::updateGeometries();
    tellViewport();
    syncScrollBars();
}

void GridView::scrollContentsBy(int, int) {
    if (!applying_ && userScrolled)
        userScrolled(verticalScrollBar()->value() + grid_.FixedRows(), horizontalScrollBar()->value() + grid_.FixedCols());
    viewport()->update();
}

void GridView::layoutMoved() {
    syncScrollBars();
    viewport()->update();
}

// The area that shows cells, in twips, as the grid needs it to bring a cell into view.
void GridView::tellViewport() {
    int extent = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    int w = width() - (verticalScrollBar()->isVisibleTo(this) ? extent : 0);
    int h = height() - (horizontalScrollBar()->isVisibleTo(this) ? extent : 0);
    grid_.setViewport(std::max(0, twips_.twips(w) - 2 * Grid::kBorder), std::max(0, twips_.twips(h) - 2 * Grid::kBorder));
}

void GridView::syncScrollBars() {
    applying_ = true;
    const int extent = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    const int roomH = twips_.twips(height() - (horizontalScrollBar()->isVisibleTo(this) ? extent : 0)) - 2 * Grid::kBorder;
    const int roomW = twips_.twips(width() - (verticalScrollBar()->isVisibleTo(this) ? extent : 0)) - 2 * Grid::kBorder;

    // Rows: the furthest first row that still fills the view with the last rows.
    const int rows = grid_.Rows(), fixedRows = grid_.FixedRows();
    int fixedH = 0;
    for (int r = 0; r < fixedRows; ++r) fixedH += grid_.RowHeight(r);
    int total = fixedH;
    bool fits = true;
    for (int r = fixedRows; r < rows && fits; ++r) fits = (total += grid_.RowHeight(r)) <= roomH;
    int vmax = 0;
    if (!fits) {
        int maxTop = rows - 1, used = grid_.RowHeight(rows - 1);
        while (maxTop - 1 >= fixedRows && used + grid_.RowHeight(maxTop - 1) <= roomH - fixedH)
            used += grid_.RowHeight(--maxTop);
        vmax = maxTop - fixedRows;
    }
    vmax = std::max(vmax, grid_.TopRow() - fixedRows);
    int pageRows = 0;
    for (int r = grid_.TopRow(), h = fixedH; r < rows && (h += grid_.RowHeight(r)) <= roomH; ++r) ++pageRows;
    verticalScrollBar()->setRange(0, std::max(0, vmax));
    verticalScrollBar()->setPageStep(std::max(1, pageRows));
    verticalScrollBar()->setSingleStep(1);
    verticalScrollBar()->setValue(grid_.TopRow() - fixedRows);

    // Columns, the same way.
    const int cols = grid_.Cols(), fixedCols = grid_.FixedCols();
    int fixedW = 0;
    for (int c = 0; c < fixedCols; ++c) fixedW += grid_.ColWidth(c);
    int totalW = fixedW;
    for (int c = fixedCols; c < cols && totalW <= roomW; ++c) totalW += grid_.ColWidth(c);
    int hmax = 0;
    if (totalW > roomW) {
        int maxLeft = cols - 1, usedW = grid_.ColWidth(cols - 1);
        while (maxLeft - 1 >= fixedCols && usedW + grid_.ColWidth(maxLeft - 1) <= roomW - fixedW)
            usedW += grid_.ColWidth(--maxLeft);
        hmax = maxLeft - fixedCols;
    }
    hmax = std::max(hmax, grid_.LeftCol() - fixedCols);
    horizontalScrollBar()->setRange(0, std::max(0, hmax));
    horizontalScrollBar()->setPageStep(1);
    horizontalScrollBar()->setSingleStep(1);
    horizontalScrollBar()->setValue(grid_.LeftCol() - fixedCols);
    applying_ = false;
}

} // namespace qtface

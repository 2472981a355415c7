#include "qt/grid_view.h"

#include <QApplication>
#include <QPainter>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyle>
#include <algorithm>
#include <tuple>

#include "qt/colors_fonts.h"
#include "qt/grid_accessible.h"

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
    installGridAccessibility();
}

void GridView::setOriginTwips(QPoint origin) {
    if (origin == origin_) return;
    origin_ = origin;
    tellViewport();
    viewport()->update();
}

namespace {

// The items of one direction of the grid (rows down, columns across) that lie
// in view: the fixed ones, then the scrollable ones from the first in view, up
// to `limit` pixels. `size` gives an item's twips, `edge` a twips offset's pixel.
template <class Span, class SizeOf, class EdgeOf>
std::vector<Span> spansInView(int count, int fixed, int first, int limit, SizeOf size, EdgeOf edge) {
    std::vector<Span> spans;
    int t = Grid::kBorder;
    auto add = [&](int i) {
        const int start = edge(t);
        if (start >= limit) return false;
        t += size(i);
        spans.push_back({i, start, edge(t)});
        return true;
    };
    for (int i = 0; i < fixed && i < count; ++i)
        if (!add(i)) return spans;
    for (int i = std::max(first, fixed); i < count; ++i)
        if (!add(i)) break;
    return spans;
}

struct ScrollRange {
    int max;  // the furthest first item, counted from the first scrollable one
    int page; // whole items a page shows
};

// How far a scroll bar goes: as far as the first item that still fills the
// view with the last ones, or further if the grid itself has scrolled further.
template <class SizeOf>
ScrollRange scrollRange(int count, int fixed, int first, int room, SizeOf size) {
    for (int i = 0; i < fixed; ++i) room -= size(i);
    int total = 0;
    bool fits = true;
    for (int i = fixed; i < count && fits; ++i) fits = (total += size(i)) <= room;
    int max = 0;
    if (!fits) {
        int last = count - 1, used = size(last);
        while (last - 1 >= fixed && used + size(last - 1) <= room) used += size(--last);
        max = last - fixed;
    }
    int page = 0;
    for (int i = first, used = 0; i < count && (used += size(i)) <= room; ++i) ++page;
    return {std::max(max, first - fixed), std::max(1, page)};
}

} // namespace

std::vector<GridView::Span> GridView::visibleRows() const {
    return spansInView<Span>(grid_.Rows(), grid_.FixedRows(), grid_.TopRow(), viewport()->height(),
                             [this](int r) { return grid_.RowHeight(r); }, [this](int t) { return y(t); });
}

std::vector<GridView::Span> GridView::visibleCols() const {
    return spansInView<Span>(grid_.Cols(), grid_.FixedCols(), grid_.LeftCol(), viewport()->width(),
                             [this](int c) { return grid_.ColWidth(c); }, [this](int t) { return x(t); });
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
    gridCurrentMoved(this);
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
    const ScrollRange rows = scrollRange(grid_.Rows(), grid_.FixedRows(), grid_.TopRow(), roomH,
                                         [this](int r) { return grid_.RowHeight(r); });
    const ScrollRange cols = scrollRange(grid_.Cols(), grid_.FixedCols(), grid_.LeftCol(), roomW,
                                         [this](int c) { return grid_.ColWidth(c); });
    for (auto [bar, range, value] : {std::tuple{verticalScrollBar(), rows, grid_.TopRow() - grid_.FixedRows()},
                                     std::tuple{horizontalScrollBar(), cols, grid_.LeftCol() - grid_.FixedCols()}}) {
        bar->setRange(0, range.max);
        bar->setPageStep(range.page);
        bar->setSingleStep(1);
        bar->setValue(value);
    }
    applying_ = false;
}

} // namespace qtface

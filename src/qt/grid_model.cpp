#include "qt/grid_model.h"

#include <QApplication>
#include <algorithm>
#include <charconv>

#include "qt/colors_fonts.h"

namespace qtface {

GridTableModel::GridTableModel(QtHost& host, forms::Grid& grid, QObject* parent)
    : QAbstractTableModel(parent), host_(host), grid_(grid), rows_(grid.Rows()), cols_(grid.Cols()) {
    grid_.addListener(this);
}

GridTableModel::~GridTableModel() { detach(); }

void GridTableModel::detach() {
    if (detached_) return;
    detached_ = true;
    grid_.removeListener(this);
    host_.dequeue(this);
}

int GridTableModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }
int GridTableModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : cols_; }

Qt::ItemFlags GridTableModel::flags(const QModelIndex& index) const {
    return index.isValid() ? Qt::ItemIsEnabled : Qt::NoItemFlags;
}

QVariant GridTableModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    return cellData(index.row(), index.column(), role);
}

namespace {

bool looksNumeric(std::string_view s) {
    std::size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
    if (b == std::string_view::npos) return false;
    double v = 0;
    auto res = std::from_chars(s.data() + b, s.data() + e + 1, v);
    return res.ec == std::errc() && res.ptr == s.data() + e + 1;
}

// The grid's alignments: 0 and 9 general (numbers right, text left), 1 to 8
// left/centre/right by top/centre/bottom.
Qt::Alignment alignmentOf(int a, std::string_view text) {
    if (a == 0 || a > 8) a = looksNumeric(text) ? 7 : 1;
    Qt::Alignment h = a <= 2 ? Qt::AlignLeft : a <= 5 ? Qt::AlignHCenter : Qt::AlignRight;
    Qt::Alignment v = a % 3 == 0 ? Qt::AlignTop : a % 3 == 1 ? Qt::AlignVCenter : Qt::AlignBottom;
    return h | v;
}

} // namespace

QVariant GridTableModel::cellData(int r, int c, int role) const {
    if (detached_ || r < 0 || c < 0 || r >= grid_.Rows() || c >= grid_.Cols()) return {};
    bool fixed = r < grid_.FixedRows() || c < grid_.FixedCols();
    const QPalette& pal = QApplication::palette();
    switch (role) {
    case Qt::DisplayRole: {
        const std::string_view text = grid_.TextMatrix(r, c);
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }
    case Qt::BackgroundRole: {
        // A fixed cell shows the fixed colour unless a colour of its own was given.
        const forms::Color own = grid_.CellBackColor(r, c);
        return toQColor(fixed && own == grid_.BackColor() ? grid_.BackColorFixed : own, pal);
    }
    case Qt::ForegroundRole:
        return toQColor(fixed ? grid_.ForeColorFixed : grid_.ForeColor(), pal);
    case Qt::TextAlignmentRole:
        return static_cast<int>(alignmentOf(grid_.CellAlignment(r, c), grid_.TextMatrix(r, c)));
    case Qt::FontRole:
        return toQFont(grid_.font());
    default:
        return {};
    }
}

void GridTableModel::touch() { host_.enqueue(this); }

void GridTableModel::cellChanged(int row, int col) {
    if (bottom_ < top_) {
        top_ = bottom_ = row;
        left_ = right_ = col;
    } else {
        top_ = std::min(top_, row);
        bottom_ = std::max(bottom_, row);
        left_ = std::min(left_, col);
        right_ = std::max(right_, col);
    }
    if (!queued) touch();
}

void GridTableModel::rowsInserted(int, int) {
    shape_ = true;
    if (!queued) touch();
}

void GridTableModel::rowsRemoved(int, int) {
    shape_ = true;
    if (!queued) touch();
}

void GridTableModel::layoutChanged() {
    layout_ = true;
    if (!queued) touch();
}

void GridTableModel::gridReset() {
    shape_ = true;
    if (!queued) touch();
}

void GridTableModel::sync() {
    if (detached_) return;
    bool shape = shape_ || rows_ != grid_.Rows() || cols_ != grid_.Cols();
    bool cells = bottom_ >= top_;
    bool layout = layout_;
    shape_ = layout_ = false;
    grid_.layoutHeard();
    int top = top_, left = left_, bottom = bottom_, right = right_;
    top_ = left_ = 0;
    bottom_ = right_ = -1;
    if (shape) {
        beginResetModel();
        rows_ = grid_.Rows();
        cols_ = grid_.Cols();
        endResetModel();
        ++resets_;
    } else if (cells) {
        bottom = std::min(bottom, rows_ - 1);
        right = std::min(right, cols_ - 1);
        if (top <= bottom && left <= right) {
            emit dataChanged(index(top, left), index(bottom, right));
            ++dataChanges_;
        }
    }
    if (shape || cells || layout) emit layoutMoved();
}

} // namespace qtface

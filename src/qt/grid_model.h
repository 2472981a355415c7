#pragma once
#include <QAbstractTableModel>

#include "forms/grid.h"
#include "qt/qt_host.h"

namespace qtface {

// Qt's table model over a forms::Grid. The grid reports every cell it touches
// (a category switch reports hundreds of thousands); the adapter only notes the
// span and shape of the changes and tells Qt once per sync: one model reset when
// the shape changed, else one dataChanged over the touched block.
class GridTableModel : public QAbstractTableModel, public forms::GridListener, public Syncable {
    Q_OBJECT
public:
    GridTableModel(QtHost& host, forms::Grid& grid, QObject* parent = nullptr);
    ~GridTableModel() override;

    forms::Grid& grid() const { return grid_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The same as data(), straight from the grid, for any cell it holds now.
    QVariant cellData(int row, int col, int role) const;

    void cellChanged(int row, int col) override;
    void rowsInserted(int first, int count) override;
    void rowsRemoved(int first, int count) override;
    void layoutChanged() override;
    void gridReset() override;

    // Stops listening: the grid is going.
    void detach();

    // Tells Qt what changed since the last sync.
    void sync() override;
    bool pending() const { return queued; }

    // How many times Qt was told, for those who check the batching.
    int resets() const { return resets_; }
    int dataChanges() const { return dataChanges_; }

signals:
    // Scroll position, fixed rows and columns, sizes, styles or the current cell moved.
    void layoutMoved();

private:
    void touch();
    QtHost& host_;
    forms::Grid& grid_;
    int rows_ = 0, cols_ = 0;
    bool shape_ = false, layout_ = false;
    int top_ = 0, left_ = 0, bottom_ = -1, right_ = -1; // touched cells
    int resets_ = 0, dataChanges_ = 0;
    bool detached_ = false;
};

} // namespace qtface

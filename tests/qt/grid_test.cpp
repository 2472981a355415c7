// The grid in the window: Qt's model over the core grid told in batches, its
// headings, and a category of 32767 rows drawn where the grid's own numbers put
// it. (Cells of smaller grids and the user's scrolling: the typing test.)
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "forms/grid.h"
#include "qt/colors_fonts.h"
#include "support/qt_harness.h"

using qttest::pixels;
using qttest::QtHarness;

namespace {

// The current cell's rectangle from the grid's own numbers, in viewport pixels.
QRect modelCellRect(QtHarness& h) {
    forms::Grid& g = h.m().FG1;
    QRect r;
    h.host.dispatch([&] {
        const QPoint abs = qtface::absoluteTwips(g);
        const int left = g.CellLeft(), top = g.CellTop(), w = g.CellWidth(), ht = g.CellHeight();
        r = QRect(QPoint(pixels(abs.x() + left) - pixels(abs.x()), pixels(abs.y() + top) - pixels(abs.y())),
                  QPoint(pixels(abs.x() + left + w) - pixels(abs.x()) - 1, pixels(abs.y() + top + ht) - pixels(abs.y()) - 1));
    });
    return r;
}

// A form with a bare grid, for the adapter alone.
struct GridForm {
    explicit GridForm(forms::Runtime& rt) : form(rt, "frmGrid"), grid(form, nullptr, "grdGrid") {
        form.ClientWidth = 6000;
        form.ClientHeight = 4000;
        grid.move(120, 120, 5000, 3000);
        grid.setCols(5);
        grid.setRows(50);
        grid.setFixedRows(1);
        grid.setFixedCols(1);
        form.announce();
    }
    ~GridForm() { form.retire(); }
    forms::Form form;
    forms::Grid grid;
};

} // namespace

class GridTest : public QObject {
    Q_OBJECT
private slots:
    // Hundreds of thousands of cell changes in one event reach Qt once; rows
    // added and the count changed, as one reset.
    void changesReachQtOncePerEvent() {
        qttest::BareFace face;
        GridForm f(face.rt);
        auto* model = qobject_cast<qtface::GridView*>(face.host.window(f.form)->widgetOf(f.grid))->gridModel();
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(model, &QAbstractItemModel::modelReset);
        face.host.dispatch([&] {
            for (int round = 0; round < 1000; ++round)
                for (int r = 1; r < 50; ++r)
                    for (int c = 1; c < 5; ++c) f.grid.setTextMatrix(r, c, std::to_string(round));
        });
        QCOMPARE(changed.count(), 1);
        QCOMPARE(reset.count(), 0);
        QCOMPARE(model->index(49, 4).data().toString(), QString("999"));
        const auto args = changed.takeFirst();
        QCOMPARE(args[0].toModelIndex(), model->index(1, 1));
        QCOMPARE(args[1].toModelIndex(), model->index(49, 4));
        face.host.dispatch([&] {
            for (int i = 0; i < 1000; ++i) f.grid.AddItem("row");
            f.grid.setRows(200);
        });
        QCOMPARE(reset.count(), 1);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(model->rowCount(), 200);
        QVERIFY(!model->index(200, 0).data().isValid() && !model->index(0, 5).data().isValid()); // outside: nothing
    }

    void fixedHeadingsOnlyWhileTheGridSaysSo() {
        qttest::BareFace face;
        GridForm f(face.rt);
        auto* model = qobject_cast<qtface::GridView*>(face.host.window(f.form)->widgetOf(f.grid))->gridModel();
        auto back = [&](int r, int c) { return model->index(r, c).data(Qt::BackgroundRole).value<QColor>(); };
        const QColor fixed = qtface::toQColor(f.grid.BackColorFixed, QApplication::palette());
        face.host.dispatch([&] {
            f.grid.setRow(2);
            f.grid.setCol(3);
            f.grid.setCellBackColor(0x000000FF);
            f.grid.setCellAlignment(forms::Grid::AlignRightCenter);
        });
        QCOMPARE(back(0, 2), fixed);
        QCOMPARE(back(3, 0), fixed);
        QCOMPARE(back(2, 3), QColor(255, 0, 0));
        QCOMPARE(model->index(2, 3).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        // A heading cell given a colour of its own shows it.
        face.host.dispatch([&] {
            f.grid.setFixedRows(0);
            f.grid.setRow(0);
            f.grid.setCellBackColor(0x00FF0000);
            f.grid.setRow(2);
            f.grid.setFixedRows(1);
        });
        QCOMPARE(back(0, 3), QColor(0, 0, 255));
        face.host.dispatch([&] {
            f.grid.setFixedRows(0);
            f.grid.setFixedCols(0);
        });
        const QColor plain = qtface::toQColor(f.grid.BackColor(), QApplication::palette());
        QCOMPARE(back(0, 2), plain);
        QCOMPARE(back(3, 0), plain);
    }

    void categoryOf32767RowsOpens() {
        QtHarness h;
        h.core.writeCategories({{"Big", qttest::itemRows(forms::Grid::kMaxRows - 1)}, {"Small", qttest::itemRows(3)}});
        QVERIFY(h.startAndClick(1));
        auto& m = h.m();
        auto* model = h.grid()->gridModel();
        const int told = model->resets() + model->dataChanges();
        h.clickListEntry(0);
        QCOMPARE(model->rowCount(), forms::Grid::kMaxRows);
        // Hundreds of thousands of cell changes reached Qt a handful of times.
        QVERIFY2(model->resets() + model->dataChanges() - told <= 6, qPrintable(QString::number(model->resets() + model->dataChanges() - told)));
        // The editor stands on the last cell, in view: the cell where the grid's
        // numbers put it, the view scrolled to the grid's first row, the bar at its end.
        QVERIFY(h.grid()->isVisible() && h.widget(m.T1)->isVisible());
        QCOMPARE(h.grid()->cellRect(m.FG1.Row(), 6), modelCellRect(h));
        QScrollBar* bar = h.grid()->verticalScrollBar();
        QCOMPARE(bar->value(), m.FG1.TopRow() - 1);
        QCOMPARE(bar->value(), bar->maximum());
        QCOMPARE(h.widgetAs<QLineEdit>(m.T1)->text(), QString("SN32766"));
        QVERIFY(!h.topWidget()->grab().isNull()); // it paints (its cost: bench/qt/qt_switch_bench)
    }
};

QTEST_MAIN(GridTest)
#include "grid_test.moc"

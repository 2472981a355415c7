// The grid in the window: Qt's model over the core grid told in batches, cells
// drawn where the grid's own numbers put them with the view scrolled to the
// grid's first row (the user's scrolling is in the typing test), and a category
// of 32767 rows.
#include <QApplication>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "forms/form.h"
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

// A category of n items, opened by a click on its entry.
bool openShelf(QtHarness& h, int n) {
    h.core.writeCategories({{"Shelf", qttest::itemRows(n)}});
    return h.startAndClick(0);
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
    void changesReachQtOncePerEvent();
    void fixedHeadingsOnlyWhileTheGridSaysSo();
    void cellsLieWhereTheGridsNumbersPutThem();
    void categoryOf32767RowsOpens();
};

void GridTest::changesReachQtOncePerEvent() {
    qttest::BareFace face;
    GridForm f(face.rt);
    auto* view = qobject_cast<qtface::GridView*>(face.host.window(f.form)->widgetOf(f.grid));
    QVERIFY(view);
    auto* model = view->gridModel();
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
}

void GridTest::fixedHeadingsOnlyWhileTheGridSaysSo() {
    qttest::BareFace face;
    GridForm f(face.rt);
    auto* model = qobject_cast<qtface::GridView*>(face.host.window(f.form)->widgetOf(f.grid))->gridModel();
    const QPalette& pal = QApplication::palette();
    const QColor fixed = qtface::toQColor(f.grid.BackColorFixed, pal);
    face.host.dispatch([&] {
        f.grid.setRow(2);
        f.grid.setCol(3);
        f.grid.setCellBackColor(0x000000FF);
        f.grid.setCellAlignment(forms::Grid::AlignRightCenter);
    });
    QCOMPARE(model->index(0, 2).data(Qt::BackgroundRole).value<QColor>(), fixed);
    QCOMPARE(model->index(3, 0).data(Qt::BackgroundRole).value<QColor>(), fixed);
    QCOMPARE(model->index(2, 3).data(Qt::BackgroundRole).value<QColor>(), QColor(255, 0, 0));
    QCOMPARE(model->index(2, 3).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
    // A heading cell given a colour of its own shows it.
    face.host.dispatch([&] {
        f.grid.setFixedRows(0);
        f.grid.setRow(0);
        f.grid.setCellBackColor(0x00FF0000);
        f.grid.setRow(2);
        f.grid.setFixedRows(1);
    });
    QCOMPARE(model->index(0, 3).data(Qt::BackgroundRole).value<QColor>(), QColor(0, 0, 255));
    face.host.dispatch([&] {
        f.grid.setFixedRows(0);
        f.grid.setFixedCols(0);
    });
    QCOMPARE(model->index(0, 2).data(Qt::BackgroundRole).value<QColor>(), qtface::toQColor(f.grid.BackColor(), pal));
    QCOMPARE(model->index(3, 0).data(Qt::BackgroundRole).value<QColor>(), qtface::toQColor(f.grid.BackColor(), pal));
}

void GridTest::cellsLieWhereTheGridsNumbersPutThem() {
    QtHarness h;
    QVERIFY(openShelf(h, 60));
    auto& g = h.m().FG1;
    for (auto [r, c] : {std::pair{60, 6}, std::pair{55, 1}, std::pair{30, 3}, std::pair{1, 2}, std::pair{12, 5}}) {
        h.host.dispatch([&] {
            g.setRow(r);
            g.setCol(c);
        });
        const QRect want = modelCellRect(h);
        QCOMPARE(h.grid()->cellRect(r, c), want);
        QCOMPARE(h.grid()->verticalScrollBar()->value(), g.TopRow() - g.FixedRows());
        // At the last row the bar is at its end: the last rows fill the view.
        if (r == 60) QCOMPARE(h.grid()->verticalScrollBar()->value(), h.grid()->verticalScrollBar()->maximum());
    }
}

void GridTest::categoryOf32767RowsOpens() {
    QtHarness h;
    h.core.writeCategories({{"Big", qttest::itemRows(forms::Grid::kMaxRows - 1)}, {"Small", qttest::itemRows(3)}});
    QVERIFY(h.startAndClick(1));
    auto& m = h.m();
    auto* model = h.grid()->gridModel();
    const int told = model->resets() + model->dataChanges();

    h.clickListEntry(0);

    QCOMPARE(m.FG1.Rows(), forms::Grid::kMaxRows);
    QCOMPARE(model->rowCount(), forms::Grid::kMaxRows);
    // Hundreds of thousands of cell changes reached Qt a handful of times.
    QVERIFY2(model->resets() + model->dataChanges() - told <= 6, qPrintable(QString::number(model->resets() + model->dataChanges() - told)));
    QVERIFY(h.grid()->isVisible());
    // The editor stands on the last cell, in view, and the view shows the grid's rows.
    QCOMPARE(m.FG1.Row(), forms::Grid::kMaxRows - 1);
    QWidget* t1 = h.widget(m.T1);
    QVERIFY(t1->isVisible());
    QCOMPARE(h.grid()->cellRect(m.FG1.Row(), 6), modelCellRect(h));
    QCOMPARE(h.grid()->verticalScrollBar()->value(), m.FG1.TopRow() - 1);
    QCOMPARE(h.widgetAs<QLineEdit>(m.T1)->text(), QString("SN32766"));
    // It paints (its cost: bench/qt/qt_switch_bench).
    QVERIFY(!h.topWidget()->grab().isNull());
}

QTEST_MAIN(GridTest)
#include "grid_test.moc"

// The main window as the face builds it and as a user meets it: where its
// controls stand, its menu, border and fonts; the widgets following a click on
// a category, one of 32767 rows among them; and the keys that reach the menu
// from every widget. What the commands then do is the core tests' business.
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <filesystem>
#include <map>

#include "forms/grid.h"
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

// The menu one line per entry: indented by its level, caption and shortcut.
void walk(const QList<QAction*>& actions, const QString& indent, QStringList& out) {
    for (QAction* a : actions) {
        const QString keys = a->shortcut().toString(QKeySequence::PortableText);
        out << indent + (a->isSeparator() ? QString("-") : keys.isEmpty() ? a->text() : a->text() + " " + keys);
        if (a->menu()) walk(a->menu()->actions(), indent + " ", out);
    }
}

std::vector<qmtest::Harness::Category> categories() { return {{"Garage", qttest::kGarage}, {"Kitchen", {}}}; }

// The menu, an entry a row in the order shown: its level, caption, shortcut and name.
struct MenuEntry {
    int level;
    const char *caption, *keys, *name;
};
const MenuEntry kMenu[] = {
    {0, "&File", "", "mnuFile"}, {1, "&Save to Floppy", "Ctrl+S", "mnuSave"}, {1, "&Load from Floppy", "Ctrl+L", "mnuLoad"},
    {1, "-", "", ""}, {1, "Print", "Ctrl+P", "mnuPrint"}, {1, "-", "", ""}, {1, "Exit", "Ctrl+X", "mnuExit"},
    {0, "&Edit", "", "mnuEdit"}, {1, "&Categories", "", "mnuCategories"}, {2, "Add Category", "F1", "mnuAddCat"},
    {2, "Delete Category", "Shift+F1", "mnuDelCat"}, {2, "Rename Category", "Ctrl+F1", "mnuRenameCat"}, {2, "-", "", ""},
    {2, "Delete All Categories", "", "mnuDelAllCats"}, {1, "&Items", "", "mnuItems"}, {2, "Add Item", "F2", "mnuAddItem"},
    {2, "Delete Item", "Shift+F2", "mnuDelItem"}, {2, "Rename Item", "Ctrl+F2", "mnuRenameItem"}, {2, "-", "", ""},
    {2, "Delete All Items", "Ctrl+Shift+F2", "mnuDelItems"}, {1, "-", "", ""}, {1, "Properties", "Ctrl+R", "mnuProperties"},
    {0, "&Help", "", "mnuHelp"}, {1, "Contents", "Ctrl+H", "mnuContents"}, {1, "-", "", ""}, {1, "Contact Me", "Ctrl+C", "mnuContact"},
    {1, "-", "", ""}, {1, "About Quillmere", "Ctrl+A", "mnuAbout"},
};

} // namespace

class MainWindowTest : public QObject {
    Q_OBJECT
private slots:
    void firstWindowAsTheFaceBuildsIt() {
        QtHarness h;
        h.core.writeIndex({"Tools", "Books", "apples"});
        QVERIFY(h.start());
        auto& m = h.m();
        QCOMPARE(h.listTexts(), (QStringList{"apples", "Books", "Tools"}));
        QVERIFY(h.list()->isVisible() && h.list()->selectedItems().isEmpty());
        QCOMPARE(h.widgetAs<QPushButton>(m.cmdExit)->text(), QString("E&xit"));
        QVERIFY(h.widget(m.cmdExit)->isVisible());
        QVERIFY(!h.grid()->isVisible() && !h.widget(m.T1)->isVisible() && !h.widget(m.txtLoading)->isVisible());
        QCOMPARE(h.widgetAs<QLabel>(m.lblCategory)->text(), QString());
        QCOMPARE(h.topWidget()->windowTitle(), QString("Quillmere"));
        // The first control in the tab order holds the focus, in the runtime and on the screen.
        QCOMPARE(h.core.runtime.focused(), &m.cmdAddCategory);
        QCOMPARE(QApplication::focusWidget(), h.widget(m.cmdAddCategory));

        // Fixed size, no control box, centred on the screen.
        QWidget* top = h.topWidget();
        const Qt::WindowFlags flags = top->windowFlags();
        for (Qt::WindowType hint : {Qt::WindowCloseButtonHint, Qt::WindowMinimizeButtonHint, Qt::WindowMaximizeButtonHint, Qt::WindowSystemMenuHint})
            QVERIFY(!(flags & hint));
        QCOMPARE(top->minimumSize(), top->maximumSize());
        QVERIFY(qAbs(top->geometry().center().x() - QGuiApplication::primaryScreen()->availableGeometry().center().x()) <= 2);

        // Fonts asked for by name: "Comic Sans MS" keeps its name (fontconfig's
        // look-alike takes its place), "MS Sans Serif" is the desktop's sans-serif.
        QCOMPARE(h.grid()->font().families().value(0), QString("Comic Sans MS"));
        QCOMPARE(h.grid()->font().pointSizeF(), 8.25);
        QCOMPARE(h.widget(m.lblCategory)->font().pointSizeF(), 36.0);
        QCOMPARE(h.widget(m.Label1)->font().pointSizeF(), 12.0);
        QCOMPARE(h.widget(m.cmdExit)->font().family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
        QCOMPARE(h.widget(m.cmdExit)->font().pointSizeF(), 8.25);

        // The menu with every entry and its shortcut.
        auto* bar = top->findChild<QMenuBar*>();
        QVERIFY(bar && bar->isVisible());
        QStringList lines, menu;
        walk(bar->actions(), "", lines);
        for (const MenuEntry& e : kMenu) menu << QString(e.level, ' ') + e.caption + (*e.keys ? QString(" ") + e.keys : QString());
        QCOMPARE(lines, menu);

        // Frames at their places, and controls inside them measured from the client area.

        QCOMPARE(h.window()->client()->size(), QSize(pixels(11025), pixels(7200)));
        struct Expect {
            const forms::Control* c;
            int left, top, width, height; // twips in the client area
        };
        const Expect expected[] = {
            {&m.fraCategory, 120, 120, 10815, 1815},           {&m.fraFlexGrid, 120, 2040, 10815, 4215},
            {&m.fraButtons, 120, 6240, 10815, 855},            {&m.cmdAddCategory, 120 + 120, 120 + 240, 1575, 495},
            {&m.lstCategory, 120 + 1800, 120 + 240, 2535, 1425}, {&m.chkPic, 120 + 4680, 120 + 1440, 2415, 255},
            {&m.FG1, 120 + 120, 2040 + 240, 10575, 3255},      {&m.txtCost, 120 + 3720, 2040 + 3600, 1575, 405},
            {&m.txtValue, 120 + 9120, 2040 + 3600, 1575, 375}, {&m.cmdExit, 120 + 9240, 6240 + 240, 1455, 495},
        };
        for (const Expect& e : expected) {
            QWidget* w = h.widget(*e.c);
            QVERIFY2(w, e.c->name().c_str());
            const QRect want(QPoint(pixels(e.left), pixels(e.top)), QPoint(pixels(e.left + e.width) - 1, pixels(e.top + e.height) - 1));
            QCOMPARE(QRect(h.inClient(w), w->size()), want);
        }
        // Containers hold their controls.
        QCOMPARE(h.widget(m.lstCategory)->parentWidget(), h.widget(m.fraCategory));
        QCOMPARE(h.widget(m.T1)->parentWidget(), h.widget(m.fraFlexGrid));
    }

    // The widgets follow a click on an entry: the list's selection, the grid,
    // the totals, the heading back from its parking place, and the focus the
    // switch leaves; also for a category of 32767 rows.
    void aClickOnAnEntryShowsTheCategory() {
        QtHarness h;
        QVERIFY(h.open({{"Garage", qttest::kGarage}, {"Kitchen", {}}, {"Zoo", qmtest::numberedItems(forms::Grid::kMaxRows - 1)}}));
        auto& m = h.m();
        QCOMPARE(h.list()->currentRow(), 0);
        QVERIFY(h.list()->item(0)->isSelected());
        QVERIFY(h.grid()->isVisible());
        QCOMPARE(h.grid()->model()->index(2, 0).data().toString(), QString("Saw"));
        QCOMPARE(h.widgetAs<QLineEdit>(m.txtValue)->text(), QString("$1,084.99")); // the C locale: US rules
        auto* heading = h.widgetAs<QLabel>(m.lblCategory);
        QCOMPARE(heading->text(), QString("Garage"));
        QVERIFY(heading->isVisible());
        QCOMPARE(h.inClient(heading).y(), pixels(120 + 240));
        QVERIFY(heading->width() > pixels(210)); // sized to its text
        QVERIFY(!h.widget(m.txtLoading)->isVisible());

        h.clickListEntry(1); // empty: no grid, the focus on the add button
        QVERIFY(!h.grid()->isVisible());
        QCOMPARE(heading->text(), QString("Kitchen"));
        QCOMPARE(QApplication::focusWidget(), h.widget(m.cmdAddAsset));

        auto* model = h.grid()->gridModel();
        const int told = model->resets() + model->dataChanges();
        h.clickListEntry(2);
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

    // Every entry's keys reach it from the editor, where they are no select-all,
    // copy or cut; and from a button and the list.
    void menuKeysReachTheMenuFromEveryWidget() {
        QtHarness h;
        h.core.writeCategories(categories());
        QVERIFY(h.start());
        auto& m = h.m();
        std::map<std::string, int> runs;
        for (const MenuEntry& e : kMenu)
            if (*e.keys) m.form.menuBar().find(e.name)->Click = [&runs, &e] { ++runs[e.name]; }; // a probe, whatever the program runs there
        QTest::keyClick(h.widget(m.cmdAddCategory), Qt::Key_X, Qt::ControlModifier); // the focus is there at the start
        // A click below the entries only gives the list the focus: that runs the
        // walk, whose last switch leaves the empty Kitchen open.
        QListWidget* list = h.list();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(5, list->viewport()->height() - 3));
        QCOMPARE(list->currentRow(), 1);
        QCOMPARE(QApplication::focusWidget(), h.widget(m.cmdAddAsset));
        QTest::keyClick(list, Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(runs["mnuExit"], 2);
        h.clickListEntry(0);
        QCOMPARE(QApplication::focusWidget(), h.widget(m.T1));
        h.host.dispatch([&] { m.T1.placeCaret(0, m.T1.length()); }); // all selected: a cut would empty it
        const std::string before = m.T1.Text();
        for (const MenuEntry& e : kMenu) {
            if (!*e.keys) continue;
            const int was = runs[e.name];
            QTest::keySequence(h.widget(m.T1), QKeySequence(e.keys));
            QVERIFY2(runs[e.name] == was + 1, e.keys);
            QCOMPARE(m.T1.Text(), before);
            QCOMPARE(m.T1.SelLength(), m.T1.length());
        }
    }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"

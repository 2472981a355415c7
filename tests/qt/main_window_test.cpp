// The main window as the face builds it and as a user meets it: where its
// controls stand, its menu, border and fonts; the widgets following a click on
// a category, one of 32767 rows among them; and the keys that reach the menu
// from every widget. What the commands then do is the core tests' business.
#include <QAccessible>
#include <QClipboard>
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
#include "pictures/frm_pic.h"
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


std::vector<qmtest::Harness::Category> categories() { return {{"Garage", qttest::kGarage}, {"Kitchen", {}}}; }

// The menu entries and what their commands show first, with Garage open on
// Lathe's serial number and every box answered Cancel or No; the shortcut
// typed in the editor, or in the control named.
struct MenuCase {
    const char* caption;
    const char* outcome; // the start of outcome()
    const char* from = "T1";
};
const MenuCase kMenuCommands[] = {
    {"&Save to Floppy", "Please insert a blank disk"}, {"&Load from Floppy", "WARNING: Loading from floppy", "cmdAddCategory"},
    {"Print", "Category Printing.", "lstCategory"}, {"Exit", "ended"},
    {"Add Category", "Please enter name of category."}, {"Delete Category", "This will permanently DELETE all contents of 'Garage'"},
    {"Rename Category", "What would you like to rename Garage to?"}, {"Delete All Categories", "WARNING: This will DELETE ALL Categories"},
    {"Add Item", "Please type in name of item"}, {"Delete Item", "This will permanently DELETE the item: Lathe"},
    {"Rename Item", "What would you like to change Lathe to?"}, {"Delete All Items", "This will permanently DELETE ALL items in category 'Garage'"},
    {"Properties", "shown Properties"}, {"Contents", "shown How does"}, {"Contact Me", "shown Contact Info"}, {"About Quillmere", "shown About Quillmere"},
    {"Find...", "shown Find"},
};

// The boxes asked (prompts first), the program's end and the windows shown besides the main one.
QString outcome(QtHarness& h) {
    QStringList out;
    for (const auto* list : {&h.core.dialogs.prompts, &h.core.dialogs.messages})
        for (const qmtest::Message& box : *list) out << QString::fromStdString(box.text);
    if (h.core.program.ends) out << "ended";
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w != h.topWidget() && !w->windowTitle().isEmpty()) out << "shown " + w->windowTitle();
    return out.join("|");
}

// The face's menu as the model declares it: entries, separators, captions,
// shortcuts and submenus in their order.
void sameMenu(const QList<QAction*>& actions, const forms::MenuItem& model) {
    QCOMPARE(actions.size(), qsizetype(model.items().size()));
    for (qsizetype i = 0; i < actions.size(); ++i) {
        const forms::MenuItem& e = *model.items()[std::size_t(i)];
        QCOMPARE(actions[i]->isSeparator() ? QString("-") : actions[i]->text(), QString::fromStdString(e.Caption));
        QCOMPARE(actions[i]->shortcut(), QKeySequence(QString::fromStdString(e.Shortcut)));
        QCOMPARE(actions[i]->menu() ? actions[i]->menu()->actions().size() : 0, qsizetype(e.items().size()));
        if (actions[i]->menu()) sameMenu(actions[i]->menu()->actions(), e);
    }
}

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


        // The menu with every entry and its shortcut.
        auto* bar = top->findChild<QMenuBar*>();
        QVERIFY(bar && bar->isVisible());
        sameMenu(bar->actions(), m.form.menuBar());
        if (QTest::currentTestFailed()) return;

        // Frames at their places, and controls inside them measured from the client area.

        QCOMPARE(h.window()->client()->size(), QSize(pixels(m.form.ClientWidth), pixels(m.form.ClientHeight)));
        // Every control shown stands where its twips put it, counted from the
        // client area (a label sized to its text only starts there), in its font
        // by name: "Comic Sans MS" keeps its name (fontconfig's look-alike takes
        // its place), "MS Sans Serif" is the desktop's sans-serif.
        int shown = 0;
        for (const forms::Control* c : m.form.controls()) {
            QWidget* w = h.widget(*c);
            if (!w || !w->isVisible()) continue;
            int left = 0, top = 0;
            for (const forms::Control* k = c; k; k = k->container()) left += k->Left(), top += k->Top();
            const QRect want(QPoint(pixels(left), pixels(top)), QPoint(pixels(left + c->Width()) - 1, pixels(top + c->Height()) - 1));
            auto* label = dynamic_cast<const forms::Label*>(c);
            QVERIFY2(QRect(h.inClient(w), label && label->AutoSize ? want.size() : w->size()) == want, c->name().c_str());
            const std::string& font = c->font().name;
            const QString family = font == "MS Sans Serif" ? QFontDatabase::systemFont(QFontDatabase::GeneralFont).family() : QString::fromStdString(font);
            QVERIFY2(w->font().family() == family && w->font().pointSizeF() == c->font().size, c->name().c_str());
            ++shown;
        }
        QVERIFY(shown > 10);
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
        QCOMPARE(h.list()->currentRow(), -1); // no current entry while the editor has the focus
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

    // What a reader hears: the window a frame, names for the list and the
    // totals (their text readable, their labels linked), no hidden box, the
    // picture an image, and the list's entry focused only while Tab has put
    // the focus on the list.
    void readersHearNamesAndOneFocus() {
        QtHarness h;
        QVERIFY(h.open(categories()));
        auto& m = h.m();
        auto ai = [&](const forms::Control& c) { return QAccessible::queryAccessibleInterface(h.widget(c)); };
        QCOMPARE(QAccessible::queryAccessibleInterface(h.topWidget())->role(), QAccessible::Window);
        QCOMPARE(ai(m.lstCategory)->text(QAccessible::Name) + "|" + ai(m.txtValue)->text(QAccessible::Name) + "|" + ai(m.txtValue)->text(QAccessible::Value),
                 QString("Categories|Total value of items in category|$1,084.99"));
        QCOMPARE(ai(m.txtCost)->relations(QAccessible::Label).value(0).first->object(), h.widget(m.Label1));
        QCOMPARE(ai(m.fraCategory)->indexOfChild(ai(m.txtLoading)), -1);
        QAccessibleInterface* picture = QAccessible::queryAccessibleInterface(h.host.window(m.Pic().form)->widgetOf(m.Pic().picItem));
        QCOMPARE(std::make_pair(picture->role(), picture->text(QAccessible::Name)), std::make_pair(QAccessible::Graphic, QString("Item picture")));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QtHarness::settle();
        QVERIFY(ai(m.lstCategory)->child(0)->state().focused);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); // on to the check box
        QtHarness::settle();
        QVERIFY(!ai(m.lstCategory)->child(0)->state().focused);
    }

    // To a screen reader the grid is a table of the item rows under their
    // headings, a point on a cell finds that cell, the current cell is the
    // selection, and the editor is named by the item and column it stands on.
    void readersSeeTheGridAsATable() {
        QtHarness h;
        QVERIFY(h.open(categories()));
        auto& m = h.m();
        QAccessibleInterface* grid = QAccessible::queryAccessibleInterface(h.grid());
        QAccessibleTableInterface* table = grid->tableInterface();
        QVERIFY(table && grid->role() == QAccessible::Table);
        QCOMPARE((std::pair{table->rowCount(), table->columnCount()}), (std::pair{3, 7}));
        QCOMPARE(table->columnDescription(6), QString("Serial Number / Description"));
        QAccessibleInterface* saw = table->cellAt(1, 0);
        QCOMPARE(saw->text(QAccessible::Name), QString("Saw"));
        QCOMPARE(saw->tableCellInterface()->columnHeaderCells().value(0)->role(), QAccessible::ColumnHeader);
        QVERIFY(table->cellAt(0, 1)->role() == QAccessible::Cell && table->cellAt(0, 1)->state().focusable);
        QCOMPARE(grid->childAt(saw->rect().center().x(), saw->rect().center().y()), saw);
        QCOMPARE(grid->child(grid->indexOfChild(saw)), saw);
        QCOMPARE(table->selectedCells(), QList{table->cellAt(m.FG1.Row() - 1, m.FG1.Col())});
        QCOMPARE(h.widget(m.T1)->accessibleName(), QString("Lathe, Serial Number / Description"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up);
        QtHarness::settle();
        QCOMPARE(h.widget(m.T1)->accessibleName(), QString("Saw, Serial Number / Description"));
    }

    // Every command entry runs its command, by its shortcut (in the editor no
    // select-all, copy or cut) or, without one, by a click.
    void menuEntriesRunTheirCommands_data() {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(kMenuCommands)); ++i) QTest::newRow(kMenuCommands[i].caption) << i;
    }
    void menuEntriesRunTheirCommands() {
        QFETCH(int, index);
        const MenuCase& c = kMenuCommands[index];
        QtHarness h;
        QVERIFY(h.open(categories()));
        auto& m = h.m();
        for (int i = 0; i < 4; ++i) h.core.dialogs.msgAnswers.push_back(forms::vbCancel);
        h.host.dispatch([&] { m.T1.placeCaret(0, m.T1.length()); }); // all selected: a copy or cut would take it
        QWidget* from = h.widget(*m.form.find(c.from));
        h.host.dispatch([&] { m.form.find(c.from)->TrySetFocus(); }); // the list's walk gives it on to the editor
        QGuiApplication::clipboard()->setText("clip");
        QAction* entry = h.menuAction(c.caption); // its shortcut the model's, as the first test shows
        QVERIFY(entry);
        if (entry->shortcut().isEmpty()) entry->trigger();
        else QTest::keySequence(from, entry->shortcut());
        QtHarness::settle();
        QVERIFY2(outcome(h).startsWith(c.outcome), qPrintable(outcome(h)));
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("clip"));
    }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"

// Opening categories with the mouse in the real window: the switch, the walk
// that a gain of focus of the list runs, and the cell editor laid over the grid.
#include <QApplication>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <filesystem>

#include "support/qt_harness.h"

using qttest::QtHarness;

class CategoryTest : public QObject {
    Q_OBJECT
private slots:
    void clickOnEntryOpensTheCategory();
    void clickOnEmptyCategoryShowsNoGrid();
    void gainOfFocusOfTheListRunsTheWalk();
    void listFollowsTheModelNotTheMouse();
    void cellEditorCoversTheCurrentCell();
    void clickOnCellMovesTheEditorThere();
    void typingInTheEditorWritesTheCell();
};

namespace {

void writeTwoCategories(QtHarness& h) {
    h.core.writeIndex({"Garage", "Kitchen"});
    h.core.writeCategory("Garage", {{"Drill", "120.50", "80", "Shop", "2001", "2003", "SN1"},
                                    {"Saw", "1000", "999.99", "Shop", "2002", "", "SN2"}});
    h.core.writeCategory("Kitchen", {});
}

} // namespace

void CategoryTest::clickOnEntryOpensTheCategory() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    auto& m = h.m();

    h.clickListEntry(0);

    QCOMPARE(m.CurrentCategory.value_or(""), std::string("Garage"));
    QCOMPARE(h.list()->currentRow(), 0);
    QVERIFY(h.list()->item(0)->isSelected());
    QVERIFY(h.grid()->isVisible());
    QCOMPARE(h.grid()->model()->rowCount(), 3);
    QCOMPARE(h.grid()->model()->index(2, 0).data().toString(), QString("Saw"));
    // Totals in the locale's currency: the C locale has none, so US rules.
    QCOMPARE(h.widgetAs<QLineEdit>(m.txtCost)->text(), QString("$1,120.50"));
    QCOMPARE(h.widgetAs<QLineEdit>(m.txtValue)->text(), QString("$1,079.99"));
    auto* heading = h.widgetAs<QLabel>(m.lblCategory);
    QCOMPARE(heading->text(), QString("Garage"));
    QVERIFY(heading->isVisible());
    // Back from its parking place and sized to its text.
    QCOMPARE(h.inClient(heading).y(), qttest::pixels(120 + 240));
    QVERIFY(heading->width() > qttest::pixels(210));
    QVERIFY(!h.widget(m.txtLoading)->isVisible());
}

void CategoryTest::clickOnEmptyCategoryShowsNoGrid() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    auto& m = h.m();

    h.clickListEntry(1);

    QCOMPARE(m.CurrentCategory.value_or(""), std::string("Kitchen"));
    QVERIFY(!h.grid()->isVisible());
    QCOMPARE(h.widgetAs<QLabel>(m.lblCategory)->text(), QString("Kitchen"));
    QCOMPARE(h.core.runtime.focused(), &m.cmdAddAsset);
    QCOMPARE(QApplication::focusWidget(), h.widget(m.cmdAddAsset));
}

void CategoryTest::gainOfFocusOfTheListRunsTheWalk() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    const auto kitchen = h.core.data("Kitchen.csv");
    std::filesystem::remove(kitchen);
    std::filesystem::remove(h.core.data("CatFiles.csv"));

    // A click below the entries: the list only gains the focus.
    QListWidget* list = h.list();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(5, list->viewport()->height() - 3));

    QVERIFY(std::filesystem::exists(kitchen));
    QVERIFY(std::filesystem::exists(h.core.data("CatFiles.csv")));
    // The walk's last switch leaves the last entry open, and the focus where
    // a switch to an empty category puts it.
    QCOMPARE(h.m().CurrentCategory.value_or(""), std::string("Kitchen"));
    QCOMPARE(list->currentRow(), 1);
    QCOMPARE(h.core.runtime.focused(), &h.m().cmdAddAsset);
}

void CategoryTest::listFollowsTheModelNotTheMouse() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    auto& m = h.m();
    h.clickListEntry(1);
    // A selection from code shows in the widget; the widget never picks one itself.
    h.host.dispatch([&] { m.lstCategory.setSelected(0); });
    QCOMPARE(h.list()->currentRow(), 0);
    QCOMPARE(h.list()->selectedItems().size(), 1);
    QCOMPARE(m.CurrentCategory.value_or(""), std::string("Garage"));
}

namespace {

// The editor's rectangle in the grid's viewport.
QRect editorInGrid(QtHarness& h) {
    QWidget* t1 = h.widget(h.m().T1);
    QWidget* frame = t1->parentWidget();
    const QPoint viewport = h.grid()->viewport()->mapTo(frame, QPoint(0, 0));
    return QRect(t1->mapTo(frame, QPoint(0, 0)) - viewport, t1->size());
}

} // namespace

void CategoryTest::cellEditorCoversTheCurrentCell() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    auto& m = h.m();
    h.clickListEntry(0);

    // The switch ends with the editor open on the last cell of the last row.
    QCOMPARE(m.FG1.Row(), 2);
    QCOMPARE(m.FG1.Col(), 6);
    QWidget* t1 = h.widget(m.T1);
    QVERIFY(t1->isVisible());
    QCOMPARE(h.core.runtime.focused(), &m.T1);
    QCOMPARE(QApplication::focusWidget(), t1);
    QCOMPARE(editorInGrid(h), h.grid()->cellRect(2, 6));
    QCOMPARE(h.widgetAs<QLineEdit>(m.T1)->text(), QString("SN2"));
    QCOMPARE(h.widgetAs<QLineEdit>(m.T1)->cursorPosition(), 3);
}

void CategoryTest::clickOnCellMovesTheEditorThere() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    auto& m = h.m();
    h.clickListEntry(0);

    const QRect cell = h.grid()->cellRect(1, 2);
    QVERIFY(!cell.isEmpty());
    QTest::mouseClick(h.grid()->viewport(), Qt::LeftButton, {}, cell.center());

    QCOMPARE(m.FG1.Row(), 1);
    QCOMPARE(m.FG1.Col(), 2);
    QVERIFY(h.widget(m.T1)->isVisible());
    QCOMPARE(editorInGrid(h), cell);
    QCOMPARE(h.widgetAs<QLineEdit>(m.T1)->text(), QString("80"));
    // A click on a heading cell moves nothing.
    QTest::mouseClick(h.grid()->viewport(), Qt::LeftButton, {}, h.grid()->cellRect(0, 3).center());
    QCOMPARE(m.FG1.Row(), 1);
    QCOMPARE(m.FG1.Col(), 2);
}

void CategoryTest::typingInTheEditorWritesTheCell() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.start());
    auto& m = h.m();
    h.clickListEntry(0);
    QTest::mouseClick(h.grid()->viewport(), Qt::LeftButton, {}, h.grid()->cellRect(1, 1).center());
    auto* t1 = h.widgetAs<QLineEdit>(m.T1);
    QCOMPARE(t1->text(), QString("120.50"));

    QTest::keyClicks(t1, "7");
    QCOMPARE(m.FG1.TextMatrix(1, 1), std::string("120.507"));
    QCOMPARE(t1->text(), QString("120.507"));
    QCOMPARE(h.grid()->model()->index(1, 1).data().toString(), QString("120.507"));
    QCOMPARE(h.widgetAs<QLineEdit>(m.txtCost)->text(), QString("$1,120.51"));
    QTest::keyClick(t1, Qt::Key_Backspace);
    QCOMPARE(m.FG1.TextMatrix(1, 1), std::string("120.50"));
    QCOMPARE(t1->text(), QString("120.50"));
}

QTEST_MAIN(CategoryTest)
#include "category_test.moc"

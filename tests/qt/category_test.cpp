// Opening categories with the mouse in the real window: the switch and the walk
// that a gain of focus of the list runs. (Typing into the grid: typing_test.)
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
    void clickOnEntryOpensTheCategoryAndAnEmptyOneShowsNoGrid();
    void gainOfFocusOfTheListRunsTheWalk();
};

namespace {

void writeTwoCategories(QtHarness& h) {
    h.core.writeCategories({{"Garage",
                             {{"Drill", "120.50", "80", "Shop", "2001", "2003", "SN1"},
                              {"Saw", "1000", "999.99", "Shop", "2002", "", "SN2"}}},
                            {"Kitchen", {}}});
}

} // namespace

void CategoryTest::clickOnEntryOpensTheCategoryAndAnEmptyOneShowsNoGrid() {
    QtHarness h;
    writeTwoCategories(h);
    QVERIFY(h.startAndClick(0));
    auto& m = h.m();

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

    // The empty category next: no grid, and the focus on the add button.
    h.clickListEntry(1);
    QCOMPARE(m.CurrentCategory.value_or(""), std::string("Kitchen"));
    QVERIFY(!h.grid()->isVisible());
    QCOMPARE(heading->text(), QString("Kitchen"));
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

QTEST_MAIN(CategoryTest)
#include "category_test.moc"

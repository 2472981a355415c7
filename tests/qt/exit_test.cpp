// Leaving the program from the real window: Ctrl+X belongs to the menu in every
// widget, the Exit button, and a close by the window manager; each stores the
// open category and the index, and ends the program once.
#include <QApplication>
#include <QLineEdit>
#include <QTest>

#include "support/qt_harness.h"

using qttest::QtHarness;

class ExitTest : public QObject {
    Q_OBJECT
private slots:
    void everyWayOutStoresAndEndsOnce_data();
    void everyWayOutStoresAndEndsOnce();
    void menuKeysReachTheMenuFromTextBoxes_data();
    void menuKeysReachTheMenuFromTextBoxes();
};

namespace {

// A category open by a click on its entry, with the cell editor (on the item's
// last cell) holding the focus.
QLineEdit* openCellEditor(QtHarness& h, int entry) {
    h.clickListEntry(entry);
    auto* t1 = h.widgetAs<QLineEdit>(h.m().T1);
    return t1->isVisible() && QApplication::focusWidget() == t1 ? t1 : nullptr;
}

enum Way { ListKey, ButtonKey, EditorKey, ExitButton, WindowClose };

} // namespace

void ExitTest::everyWayOutStoresAndEndsOnce_data() {
    QTest::addColumn<int>("way");
    QTest::addColumn<QString>("file"); // a category typed into first, and what its file then holds
    QTest::addColumn<QString>("line");
    QTest::newRow("Ctrl+X in the list") << int(ListKey) << "" << "";
    QTest::newRow("Ctrl+X on a button") << int(ButtonKey) << "" << "";
    QTest::newRow("Ctrl+X in the cell editor, all selected: no cut") << int(EditorKey) << "Garage.csv" << "Drill,120,80,,,,SN19";
    QTest::newRow("the Exit button") << int(ExitButton) << "" << "";
    QTest::newRow("a close by the window manager") << int(WindowClose) << "Kitchen.csv" << "Pan,10,5,,,,!";
}

void ExitTest::everyWayOutStoresAndEndsOnce() {
    QFETCH(int, way);
    QFETCH(QString, file);
    QFETCH(QString, line);
    QtHarness h;
    h.core.writeCategories({{"Garage", {{"Drill", "120", "80", "", "", "", "SN1"}}}, {"Kitchen", {{"Pan", "10", "5", "", "", "", ""}}}});
    QVERIFY(h.start());
    auto& m = h.m();
    QLineEdit* t1 = nullptr;
    if (!file.isEmpty()) {
        t1 = openCellEditor(h, way == EditorKey ? 0 : 1);
        QVERIFY(t1);
        QTest::keyClicks(t1, way == EditorKey ? "9" : "!");
    }
    std::filesystem::remove(h.core.data("CatFiles.csv"));
    switch (way) {
    case ListKey:
        h.host.dispatch([&] { m.lstCategory.TrySetFocus(); });
        QTest::keyClick(h.list(), Qt::Key_X, Qt::ControlModifier);
        break;
    case ButtonKey:
        QCOMPARE(QApplication::focusWidget(), h.widget(m.cmdAddCategory));
        QTest::keyClick(h.widget(m.cmdAddCategory), Qt::Key_X, Qt::ControlModifier);
        break;
    case EditorKey:
        h.host.dispatch([&] { m.T1.placeCaret(0, m.T1.length()); }); // all selected: a cut would empty it
        QTest::keyClick(t1, Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(m.FG1.TextMatrix(1, 6), std::string("SN19"));
        break;
    case ExitButton: h.click(m.cmdExit); break;
    default: h.topWidget()->close();
    }
    // The index and both categories were written by the exit.
    QCOMPARE(h.core.program.ends, 1);
    QVERIFY(m.ended());
    QCOMPARE(h.core.text("CatFiles.csv"), std::string("Garage\r\nKitchen\r\n"));
    QVERIFY(h.core.text("NumCats.csv").find('2') != std::string::npos);
    QVERIFY(!h.topWidget()->isVisible());
    if (!file.isEmpty()) QVERIFY(h.core.text(file.toStdString()).find(line.toStdString() + "\r\n") != std::string::npos);
    // A second request finds the exit done.
    h.topWidget()->close();
    QCOMPARE(h.core.program.ends, 1);
}

void ExitTest::menuKeysReachTheMenuFromTextBoxes_data() {
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<QString>("entry");
    QTest::newRow("Ctrl+C") << int(Qt::Key_C) << int(Qt::ControlModifier) << "mnuContact";
    QTest::newRow("Ctrl+A") << int(Qt::Key_A) << int(Qt::ControlModifier) << "mnuAbout";
    QTest::newRow("Ctrl+H") << int(Qt::Key_H) << int(Qt::ControlModifier) << "mnuContents";
    QTest::newRow("Shift+Ctrl+F2") << int(Qt::Key_F2) << int(Qt::ControlModifier | Qt::ShiftModifier) << "mnuDelItems";
    QTest::newRow("F1") << int(Qt::Key_F1) << 0 << "mnuAddCat";
}

void ExitTest::menuKeysReachTheMenuFromTextBoxes() {
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(QString, entry);
    QtHarness h;
    h.core.writeCategories({{"Garage", {{"Drill", "120", "80", "", "", "", "SN1"}}}, {"Kitchen", {{"Pan", "10", "5", "", "", "", ""}}}});
    QVERIFY(h.start());
    QLineEdit* t1 = openCellEditor(h, 0);
    QVERIFY(t1);
    auto& m = h.m();
    // Put a probe on the entry, whatever the program runs there.
    forms::MenuItem* item = m.form.menuBar().find(entry.toStdString());
    QVERIFY(item);
    int runs = 0;
    item->Click = [&] { ++runs; };
    const std::string before = m.T1.Text();
    h.host.dispatch([&] { m.T1.placeCaret(0, m.T1.length()); });
    QTest::keyClick(t1, Qt::Key(key), Qt::KeyboardModifiers(modifiers));
    QCOMPARE(runs, 1);
    QCOMPARE(m.T1.Text(), before);
    QCOMPARE(m.T1.SelLength(), m.T1.length()); // not a select-all or a cut of the box either
}

QTEST_MAIN(ExitTest)
#include "exit_test.moc"

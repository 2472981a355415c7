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
    void ctrlXInTheListExits();
    void ctrlXOnAButtonExits();
    void ctrlXInTheCellEditorExitsWithoutCutting();
    void exitButtonExits();
    void closeByTheWindowManagerRunsTheExitSteps();
    void menuKeysReachTheMenuFromTextBoxes_data();
    void menuKeysReachTheMenuFromTextBoxes();
};

namespace {

void writeData(QtHarness& h) {
    h.core.writeIndex({"Garage", "Kitchen"});
    h.core.writeCategory("Garage", {{"Drill", "120", "80", "", "", "", "SN1"}});
    h.core.writeCategory("Kitchen", {{"Pan", "10", "5", "", "", "", ""}});
}

std::string fileText(QtHarness& h, const std::string& name) { return qmtest::readFile(h.core.data(name)).value_or("<missing>"); }

// The index and both categories were written by the exit.
void checkSaved(QtHarness& h) {
    QCOMPARE(h.core.program.ends, 1);
    QVERIFY(h.m().ended());
    QCOMPARE(fileText(h, "CatFiles.csv"), std::string("Garage\r\nKitchen\r\n"));
    QVERIFY(fileText(h, "NumCats.csv").find('2') != std::string::npos);
    QVERIFY(!h.topWidget()->isVisible());
}

// The first category open, with the cell editor holding the focus.
QLineEdit* openCellEditor(QtHarness& h) {
    writeData(h);
    if (!h.start()) return nullptr;
    h.clickListEntry(0);
    auto* t1 = h.widgetAs<QLineEdit>(h.m().T1);
    return t1->isVisible() && QApplication::focusWidget() == t1 ? t1 : nullptr;
}

} // namespace

void ExitTest::ctrlXInTheListExits() {
    QtHarness h;
    writeData(h);
    QVERIFY(h.start());
    std::filesystem::remove(h.core.data("CatFiles.csv"));
    h.host.dispatch([&] { h.m().lstCategory.TrySetFocus(); });
    QTest::keyClick(h.list(), Qt::Key_X, Qt::ControlModifier);
    checkSaved(h);
}

void ExitTest::ctrlXOnAButtonExits() {
    QtHarness h;
    writeData(h);
    QVERIFY(h.start());
    std::filesystem::remove(h.core.data("CatFiles.csv"));
    QCOMPARE(QApplication::focusWidget(), h.widget(h.m().cmdAddCategory));
    QTest::keyClick(h.widget(h.m().cmdAddCategory), Qt::Key_X, Qt::ControlModifier);
    checkSaved(h);
}

void ExitTest::ctrlXInTheCellEditorExitsWithoutCutting() {
    QtHarness h;
    QLineEdit* t1 = openCellEditor(h);
    QVERIFY(t1);
    auto& m = h.m();
    QTest::keyClicks(t1, "9");
    h.host.dispatch([&] { m.T1.placeCaret(0, m.T1.length()); }); // all selected: a cut would empty it
    QTest::keyClick(t1, Qt::Key_X, Qt::ControlModifier);
    checkSaved(h);
    // The edit reached the file of the open category; nothing was cut.
    QVERIFY(fileText(h, "Garage.csv").find("SN19") != std::string::npos);
    QCOMPARE(m.FG1.TextMatrix(1, 6), std::string("SN19"));
}

void ExitTest::exitButtonExits() {
    QtHarness h;
    writeData(h);
    QVERIFY(h.start());
    std::filesystem::remove(h.core.data("CatFiles.csv"));
    h.click(h.m().cmdExit);
    checkSaved(h);
    // A second request finds the exit done.
    h.topWidget()->close();
    QCOMPARE(h.core.program.ends, 1);
}

void ExitTest::closeByTheWindowManagerRunsTheExitSteps() {
    QtHarness h;
    writeData(h);
    QVERIFY(h.start());
    h.clickListEntry(1);
    QTest::keyClicks(h.widget(h.m().T1), "!");
    std::filesystem::remove(h.core.data("CatFiles.csv"));
    h.topWidget()->close();
    checkSaved(h);
    // The editor opened on the last cell of the item; what was typed there is stored.
    QVERIFY(fileText(h, "Kitchen.csv").find("Pan,10,5,,,,!") != std::string::npos);
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
    QLineEdit* t1 = openCellEditor(h);
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

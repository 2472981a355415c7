// The category commands in the real window, answered through the real input
// and message boxes as a user answers them: what each box shows, and the list
// and heading following; and the backup to a real FAT stick. What the commands
// do to the files is otherwise the core tests' business.
#include <QLabel>
#include <QTest>

#include "storage/places.h"
#include "support/fat_stick.h"
#include "support/qt_harness.h"

using qmtest::readFile;
using qttest::ModalBoxes;
using qttest::QtHarness;

namespace {

// A click on the command's button, with the boxes it brings answered as the
// test has queued them: every box answered by a step, every step by its box.
void run(QtHarness& h, forms::Button& command, const ModalBoxes& boxes) {
    h.click(command);
    QtHarness::settle();
    QVERIFY2(boxes.unexpected() == 0 && boxes.done(), qPrintable(boxes.texts().join(" | ")));
}

// Save (a prompt, then the end) or Load (a warning, a prompt, the end) with
// OK pressed at each box: what the boxes said.
QStringList backup(QtHarness& h, forms::Button& command) {
    ModalBoxes boxes;
    boxes.press(QMessageBox::Ok).press(QMessageBox::Ok);
    if (&command == &h.m().cmdLoad) boxes.press(QMessageBox::Ok);
    run(h, command, boxes);
    return boxes.texts();
}

} // namespace

class CommandsTest : public QObject {
    Q_OBJECT
private slots:
    void addRenameAndDeleteThroughTheBoxes();
    void aFatStickCarriesEveryName();
    void aFullFatStickIsToldAndTakesTheRest();
};

void CommandsTest::addRenameAndDeleteThroughTheBoxes() {
    QtHarness h(qttest::RealPorts{.dialogs = true});
    h.core.writeCategories({{"Garage", {{"Drill", "120", "80", "Shop", "2001", "", "SN1"}}}});
    QVERIFY(h.start());
    auto& m = h.m();
    {   // Cancel at the add prompt: nothing at all happens.
        ModalBoxes boxes;
        boxes.type("typed, then cancelled", false);
        run(h, m.cmdAddCategory, boxes);
        QCOMPARE(h.listTexts(), QStringList{"Garage"});
    }
    // Add, then rename the category with items to a name that sorts first:
    // each prompt as the user sees it, then the list and the heading with the
    // new name in its sorted place, selected and open.
    const struct {
        forms::Button* command;
        const char *typed, *title, *prompt;
        QStringList list;
    } steps[] = {
        {&m.cmdAddCategory, "Attic", "Add Category", "Please enter name of category.  (ie: Mom's stuff, Car parts, etc.)",
         {"Attic", "Garage"}},
        {&m.cmdRenameCat, "Aardvark", "Rename Category", "What would you like to rename Garage to?", {"Aardvark", "Attic"}},
    };
    for (const auto& step : steps) {
        h.clickListEntry(int(h.listTexts().indexOf("Garage")));
        ModalBoxes boxes;
        boxes.type(step.typed);
        run(h, *step.command, boxes);
        QCOMPARE(boxes.seen().at(0).title, QString(step.title));
        QCOMPARE(boxes.seen().at(0).text, QString(step.prompt));
        QCOMPARE(h.listTexts(), step.list);
        QCOMPARE(h.selectedText(), QString(step.typed));
        QCOMPARE(h.widgetAs<QLabel>(m.lblCategory)->text(), QString(step.typed));
        QCOMPARE(h.grid()->isVisible(), step.command == &m.cmdRenameCat); // an added category is empty
    }
    QCOMPARE(h.grid()->model()->index(1, 0).data().toString(), QString("Drill"));
    {   // A refused name: told in a message box after the prompt.
        ModalBoxes boxes;
        boxes.type("Attic").press(QMessageBox::Ok);
        run(h, m.cmdAddCategory, boxes);
        QCOMPARE(boxes.seen().at(1).text, QString("You already have a category named Attic"));
        QCOMPARE(boxes.seen().at(1).title, QString("Quillmere"));
        QCOMPARE(h.listTexts(), (QStringList{"Aardvark", "Attic"}));
    }
}

// ---- a real FAT stick (as root, through FUSE) -----------------------------------------------

namespace {

// Names with every character FAT refuses, and one ending in a dot.
const std::vector<std::string> kAwkwardNames = {"Tools: misc", "What is this?", "Box 5\"", "back\\slash", "star*", "less<",
                                                "more>", "pipe|", "ends with a dot.", "a/b"};

std::vector<qmtest::Harness::Category> awkwardCategories() {
    std::vector<qmtest::Harness::Category> categories;
    for (const auto& name : kAwkwardNames) {
        auto rows = qttest::itemRows(3);
        rows[1][6] = name;
        categories.push_back({name, rows});
    }
    return categories;
}

} // namespace

// Saved to a FAT stick and loaded back into an empty data folder: every
// category and every cell, byte for byte.
void CommandsTest::aFatStickCarriesEveryName() {
    if (const std::string why = qmtest::FatStick::unavailable(); !why.empty()) QSKIP(why.c_str());
    qmtest::FatStick stick(4096);
    QtHarness h(qttest::RealPorts{.dialogs = true});
    QVERIFY(stick.mountAt(h.core.floppyDir.path()));
    h.core.writeCategories(awkwardCategories());
    QVERIFY(h.startAndClick(0));
    QCOMPARE(backup(h, h.m().cmdSave).value(1), QString("Save complete."));

    QtHarness fresh(qttest::RealPorts{.dialogs = true});
    QVERIFY(stick.mountAt(fresh.core.floppyDir.path()));
    QVERIFY(fresh.start());
    QCOMPARE(backup(fresh, fresh.m().cmdLoad).value(2), QString("Load complete."));
    QCOMPARE(fresh.listTexts().size(), static_cast<int>(kAwkwardNames.size()));
    for (const char* f : {"NumCats.csv", "CatFiles.csv"}) QCOMPARE(readFile(fresh.core.data(f)), readFile(h.core.data(f)));
    for (const auto& name : kAwkwardNames) {
        const std::string file = storage::FileStem(name) + ".csv";
        QVERIFY2(readFile(fresh.core.data(file)) == readFile(h.core.data(file)), name.c_str());
    }
}

// A category too big for what is left on the stick: told by name at the end,
// and every other category still copied whole.
void CommandsTest::aFullFatStickIsToldAndTakesTheRest() {
    if (const std::string why = qmtest::FatStick::unavailable(); !why.empty()) QSKIP(why.c_str());
    qmtest::FatStick stick(1024);
    QtHarness h(qttest::RealPorts{.dialogs = true});
    QVERIFY(stick.mountAt(h.core.floppyDir.path()));
    auto categories = awkwardCategories();
    std::vector<std::vector<std::string>> big;
    for (int i = 0; i < 20000; ++i) big.push_back({"Item " + std::to_string(i), "1.00", "", "", "", "", std::string(40, 'z')});
    categories.push_back({"Big", big});
    h.core.writeCategories(categories);
    QVERIFY(h.startAndClick(0));
    const QString said = backup(h, h.m().cmdSave).value(1);
    QVERIFY2(said.startsWith("The copy on the disk is not complete. Not copied: \"Big\"."), qPrintable(said));
    for (const auto& name : kAwkwardNames) {
        QVERIFY2(readFile(h.core.floppy(storage::StickStem(name) + ".csv")) == readFile(h.core.data(storage::FileStem(name) + ".csv")),
                 name.c_str());
    }
    QCOMPARE(h.selectedText(), QString("a/b"));
    QCOMPARE(h.m().CurrentCategory.value_or(""), std::string("a/b"));
}

QTEST_MAIN(CommandsTest)
#include "commands_test.moc"

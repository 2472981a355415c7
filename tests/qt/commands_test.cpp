// The category commands and the floppy backup in the real window, answered
// through the real message and input boxes as a user answers them: the list on
// the screen and the files on disk follow.
#include <QLabel>
#include <QTest>
#include <filesystem>
#include <map>

#include "storage/places.h"
#include "support/fat_stick.h"
#include "support/qt_harness.h"

using qmtest::readFile;
using qttest::ModalBoxes;
using qttest::QtHarness;

namespace {

QStringList listTexts(QtHarness& h) {
    QStringList out;
    for (int i = 0; i < h.list()->count(); ++i) out << h.list()->item(i)->text();
    return out;
}

QString selectedText(QtHarness& h) {
    const auto selected = h.list()->selectedItems();
    return selected.size() == 1 ? selected.front()->text() : QString();
}


// Every box was answered by a step of the test, and every step found its box.
void checkAllAnswered(const ModalBoxes& boxes) {
    QVERIFY2(boxes.unexpected() == 0, qPrintable(boxes.texts().join(" | ")));
    QVERIFY2(boxes.done(), qPrintable(boxes.texts().join(" | ")));
}

// A click on the command's button, with the boxes it brings answered as the
// test has queued them.
void run(QtHarness& h, forms::Button& command, const ModalBoxes& boxes) {
    h.click(command);
    QtHarness::settle();
    checkAllAnswered(boxes);
}

} // namespace

class CommandsTest : public QObject {
    Q_OBJECT
private slots:
    void addRenameAndDeleteThroughThePrompts();
    void refusedNamesAreToldAndChangeNothing_data();
    void refusedNamesAreToldAndChangeNothing();
    void saveToFloppyAndLoadItBack();
    void aFatStickCarriesEveryName();
    void aFullFatStickIsToldAndTakesTheRest();
};

void CommandsTest::addRenameAndDeleteThroughThePrompts() {
    QtHarness h(qttest::RealPorts{.dialogs = true});
    h.core.writeCategories({{"Garage", {{"Drill", "120", "80", "Shop", "2001", "", "SN1"}}}});
    QVERIFY(h.start());
    auto& m = h.m();

    {   // Cancel at the add prompt: nothing at all happens.
        ModalBoxes boxes;
        boxes.type("typed, then cancelled", false);
        run(h, m.cmdAddCategory, boxes);
        QCOMPARE(listTexts(h), QStringList{"Garage"});
        QVERIFY(!std::filesystem::exists(h.core.data("typed, then cancelled.csv")));
    }
    // Add, then rename the category with items to a name that sorts first:
    // each prompt as the user sees it, then the list, the caption and the index
    // with the new name in its sorted place, selected and open.
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
        h.clickListEntry(int(listTexts(h).indexOf("Garage")));
        ModalBoxes boxes;
        boxes.type(step.typed);
        run(h, *step.command, boxes);
        QCOMPARE(boxes.seen().at(0).title, QString(step.title));
        QCOMPARE(boxes.seen().at(0).text, QString(step.prompt));
        QCOMPARE(listTexts(h), step.list);
        QCOMPARE(selectedText(h), QString(step.typed));
        QCOMPARE(h.widgetAs<QLabel>(m.lblCategory)->text(), QString(step.typed));
        QCOMPARE(h.grid()->isVisible(), step.command == &m.cmdRenameCat); // an added category is empty
        QCOMPARE(QString::fromStdString(readFile(h.core.data("CatFiles.csv")).value_or("")), step.list.join("\r\n") + "\r\n");
        QVERIFY(!h.m().RenamePending);
    }
    QCOMPARE(readFile(h.core.data("Attic.csv")).value_or(""), std::string(qmtest::kHeadingLine) + "\r\n");
    QVERIFY(!std::filesystem::exists(h.core.data("Garage.csv")));
    QVERIFY(readFile(h.core.data("Aardvark.csv")).value_or("").find("Drill,120,80,Shop,2001,,SN1") != std::string::npos);
    QCOMPARE(h.grid()->model()->index(1, 0).data().toString(), QString("Drill"));
    {   // Delete, first answered No, then Yes.
        h.clickListEntry(1);
        ModalBoxes boxes;
        boxes.press(QMessageBox::No).press(QMessageBox::Yes);
        h.click(m.cmdDeleteCategory);
        QCOMPARE(listTexts(h), (QStringList{"Aardvark", "Attic"}));
        QVERIFY(std::filesystem::exists(h.core.data("Attic.csv")));
        run(h, m.cmdDeleteCategory, boxes);
        QCOMPARE(boxes.texts(), (QStringList{"This will permanently DELETE all contents of 'Attic'. Are you sure?",
                                             "This will permanently DELETE all contents of 'Attic'. Are you sure?"}));
        QCOMPARE(boxes.seen().at(1).title, QString("Quillmere"));
        QCOMPARE(listTexts(h), QStringList{"Aardvark"});
        QVERIFY(!std::filesystem::exists(h.core.data("Attic.csv")));
        QCOMPARE(readFile(h.core.data("CatFiles.csv")).value_or(""), std::string("Aardvark\r\n"));
        QVERIFY(std::filesystem::exists(h.core.data("Aardvark.csv")));
    }
}

void CommandsTest::refusedNamesAreToldAndChangeNothing_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("message");
    QTest::newRow("duplicate") << "Garage" << "You already have a category named Garage";
    QTest::newRow("index count") << "NumCats"
                                 << "\"NumCats\" is the name of one of the program's own files. Please choose another name.";
    QTest::newRow("index names") << "CatFiles"
                                 << "\"CatFiles\" is the name of one of the program's own files. Please choose another name.";
    QTest::newRow("too long") << QString(260, 'x') << "That name is too long for a file name. Please choose a shorter name.";
}

void CommandsTest::refusedNamesAreToldAndChangeNothing() {
    QFETCH(QString, name);
    QFETCH(QString, message);
    QtHarness h(qttest::RealPorts{.dialogs = true});
    h.core.writeCategories({{"Garage", {{"Drill", "120", "80", "Shop", "2001", "", "SN1"}}}, {"Kitchen", {}}});
    QVERIFY(h.start());
    const auto indexBefore = readFile(h.core.data("CatFiles.csv"));

    for (forms::Button* command : {&h.m().cmdAddCategory, &h.m().cmdRenameCat}) {
        h.clickListEntry(1);
        ModalBoxes boxes;
        boxes.type(name).press(QMessageBox::Ok);
        run(h, *command, boxes);
        // A rename refuses a duplicate in its own words.
        const QString want = command == &h.m().cmdRenameCat && name == "Garage"
                                 ? "Error occured while renaming category. Category 'Garage' already exists."
                                 : message;
        QCOMPARE(boxes.seen().at(1).text, want);
        QCOMPARE(boxes.seen().at(1).title, QString("Quillmere"));
        QCOMPARE(listTexts(h), (QStringList{"Garage", "Kitchen"}));
        QCOMPARE(readFile(h.core.data("CatFiles.csv")), indexBefore);
        QVERIFY(std::filesystem::exists(h.core.data("Garage.csv")) && std::filesystem::exists(h.core.data("Kitchen.csv")));
        QVERIFY(!h.m().RenamePending);
    }
}

void CommandsTest::saveToFloppyAndLoadItBack() {
    QtHarness h(qttest::RealPorts{.dialogs = true});
    h.core.writeCategories({{"Bike", {{"Bell", "5", "2", "Shop", "1999", "", "red"}, {"Lamp", "12.50", "10", "", "", "", ""}}},
                            {"Car", {}},
                            {"Tools", qttest::itemRows(3)}});
    QVERIFY(h.startAndClick(1));
    auto& m = h.m();

    {   // Save: the prompt, then the end.
        ModalBoxes boxes;
        boxes.press(QMessageBox::Ok).press(QMessageBox::Ok);
        run(h, m.cmdSave, boxes);
        QCOMPARE(boxes.texts().value(0).left(32), QString("Please insert a blank disk into "));
        QCOMPARE(boxes.texts().value(1), QString("Save complete."));
    }
    QCOMPARE(selectedText(h), QString("Car"));
    std::map<std::string, std::string> saved;
    for (const char* file : {"NumCats.csv", "CatFiles.csv", "Bike.csv", "Car.csv", "Tools.csv"}) {
        const auto onFloppy = readFile(h.core.floppy(file));
        QVERIFY2(onFloppy, file);
        QCOMPARE(onFloppy, readFile(h.core.data(file)));
        saved[file] = *onFloppy;
    }
    QCOMPARE(saved["CatFiles.csv"], std::string("Bike\r\nCar\r\nTools\r\n"));

    {   // The database goes (Delete All from the menu), then comes back from the floppy.
        ModalBoxes boxes;
        boxes.press(QMessageBox::Yes);
        h.menuAction("Delete All Categories")->trigger();
        qttest::QtHarness::settle();
        checkAllAnswered(boxes);
        QCOMPARE(h.list()->count(), 0);
        QVERIFY(!std::filesystem::exists(h.core.data("Bike.csv")));
    }
    {
        ModalBoxes boxes;
        boxes.press(QMessageBox::Ok).press(QMessageBox::Ok).press(QMessageBox::Ok);
        run(h, m.cmdLoad, boxes);
        QVERIFY(boxes.texts().value(0).startsWith("WARNING: Loading from floppy will erase"));
        QVERIFY(boxes.texts().value(1).startsWith("Please insert database disk into "));
        QCOMPARE(boxes.texts().value(2), QString("Load complete."));
    }
    QCOMPARE(listTexts(h), (QStringList{"Bike", "Car", "Tools"}));
    QCOMPARE(selectedText(h), QString("Tools"));
    QVERIFY(!m.ReadFromFloppy && !m.WriteToFloppy);
    QCOMPARE(h.widgetAs<QLabel>(m.lblCategory)->text(), QString("Tools"));
    QCOMPARE(h.grid()->model()->index(3, 6).data().toString(), QString("SN3"));
    for (const char* file : {"Bike.csv", "Car.csv", "Tools.csv"}) QCOMPARE(readFile(h.core.data(file)).value_or(""), saved[file]);
    // The index is there at once: a start before the next walk lists everything.
    QCOMPARE(readFile(h.core.data("CatFiles.csv")).value_or(""), saved["CatFiles.csv"]);
    h.clickListEntry(0);
    qttest::QtHarness::settle();
    QCOMPARE(h.grid()->model()->index(2, 1).data().toString(), QString("12.50"));
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

// Save to disk through the real boxes: the prompt, then what the end says.
QString saveToDisk(QtHarness& h) {
    ModalBoxes boxes;
    boxes.press(QMessageBox::Ok).press(QMessageBox::Ok);
    run(h, h.m().cmdSave, boxes);
    return boxes.texts().value(1);
}

QString loadFromDisk(QtHarness& h) {
    ModalBoxes boxes;
    boxes.press(QMessageBox::Ok).press(QMessageBox::Ok).press(QMessageBox::Ok);
    run(h, h.m().cmdLoad, boxes);
    return boxes.texts().value(2);
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
    QCOMPARE(saveToDisk(h), QString("Save complete."));

    QtHarness fresh(qttest::RealPorts{.dialogs = true});
    QVERIFY(stick.mountAt(fresh.core.floppyDir.path()));
    QVERIFY(fresh.start());
    QCOMPARE(loadFromDisk(fresh), QString("Load complete."));
    QCOMPARE(listTexts(fresh).size(), static_cast<int>(kAwkwardNames.size()));
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
    const QString said = saveToDisk(h);
    QVERIFY2(said.startsWith("The copy on the disk is not complete. Not copied: \"Big\"."), qPrintable(said));
    for (const auto& name : kAwkwardNames) {
        QVERIFY2(readFile(h.core.floppy(storage::StickStem(name) + ".csv")) == readFile(h.core.data(storage::FileStem(name) + ".csv")),
                 name.c_str());
    }
    QCOMPARE(selectedText(h), QString("a/b"));
    QCOMPARE(h.m().CurrentCategory.value_or(""), std::string("a/b"));
}

QTEST_MAIN(CommandsTest)
#include "commands_test.moc"

// The backup to a real FAT stick (as root, through FUSE): names FAT refuses,
// and a stick too full for everything.
#include <QTest>

#include "storage/places.h"
#include "support/fat_stick.h"
#include "support/qt_harness.h"

using qmtest::readFile;
using qttest::QtHarness;

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

// The command's button clicked, every box answered OK: what the last box said.
std::string run(QtHarness& h, forms::Button& command) {
    h.click(command);
    QtHarness::settle();
    return h.core.dialogs.messages.empty() ? "" : h.core.dialogs.messages.back().text;
}

} // namespace

class FatStickTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        if (const std::string why = qmtest::FatStick::unavailable(); !why.empty()) QSKIP(why.c_str());
    }

    // Saved and loaded back into an empty data folder: every category and every
    // cell, byte for byte.
    void aFatStickCarriesEveryName() {
        qmtest::FatStick stick(4096);
        QtHarness h;
        QVERIFY(stick.mountAt(h.core.floppyDir.path()));
        h.core.writeCategories(awkwardCategories());
        QVERIFY(h.startAndClick(0));
        QCOMPARE(run(h, h.m().cmdSave), std::string("Save complete."));

        QtHarness fresh;
        QVERIFY(stick.mountAt(fresh.core.floppyDir.path()));
        QVERIFY(fresh.start());
        QCOMPARE(run(fresh, fresh.m().cmdLoad), std::string("Load complete."));
        QCOMPARE(fresh.listTexts().size(), static_cast<int>(kAwkwardNames.size()));
        for (const char* f : {"NumCats.csv", "CatFiles.csv"}) QCOMPARE(readFile(fresh.core.data(f)), readFile(h.core.data(f)));
        for (const auto& name : kAwkwardNames) {
            const std::string file = storage::FileStem(name) + ".csv";
            QVERIFY2(readFile(fresh.core.data(file)) == readFile(h.core.data(file)), name.c_str());
        }
    }

    // A category too big for what is left on the stick: told by name at the end,
    // and every other category still copied whole.
    void aFullFatStickIsToldAndTakesTheRest() {
        qmtest::FatStick stick(1024);
        QtHarness h;
        QVERIFY(stick.mountAt(h.core.floppyDir.path()));
        auto categories = awkwardCategories();
        std::vector<std::vector<std::string>> big;
        for (int i = 0; i < 20000; ++i) big.push_back({"Item " + std::to_string(i), "1.00", "", "", "", "", std::string(40, 'z')});
        categories.push_back({"Big", big});
        h.core.writeCategories(categories);
        QVERIFY(h.startAndClick(0));
        const std::string said = run(h, h.m().cmdSave);
        QVERIFY2(said.starts_with("The copy on the disk is not complete. Not copied: \"Big\"."), said.c_str());
        for (const auto& name : kAwkwardNames) {
            QVERIFY2(readFile(h.core.floppy(storage::StickStem(name) + ".csv")) == readFile(h.core.data(storage::FileStem(name) + ".csv")),
                     name.c_str());
        }
        QCOMPARE(h.selectedText(), QString("a/b"));
        QCOMPARE(h.m().CurrentCategory.value_or(""), std::string("a/b"));
    }
};

QTEST_MAIN(FatStickTest)
#include "fat_stick_test.moc"

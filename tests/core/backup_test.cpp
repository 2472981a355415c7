// The floppy backup on temporary folders: what a save puts on the floppy, the
// load's passes and prompts, and that a load from a disk it can't read changes
// nothing. A save and a load back through the real boxes: the GUI commands test.
#include <algorithm>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "storage/places.h"

#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
namespace fs = std::filesystem;

namespace {

const char* const kSaveStart =
    "Please insert a blank disk into A:\\ to save files to disk.. A message box will appear when save is complete. "
    "Please be patient, this may take a few minutes.";


struct Backup : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    void startWithBikeCarTools() {
        h.writeCategories({{"Bike", {{"Bell", "5", "4"}, {"Pump", "20", "15", "Shop, main st"}}},
                           {"Car", {{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}}},
                           {"Tools", {}}});
        m = &h.startAndClick(1); // Car open
    }
};

// A save copies the index and every category; a load into a data folder with
// no csv file goes through the second pass; a category missing on the floppy
// arrives empty and is named.
TEST_F(Backup, SaveCopiesEveryCategoryAndLoadBringsThemBack) {
    startWithBikeCarTools();
    writeFile(h.data("CarJack.csv"), "/pictures/jack.jpg\r\n");
    h.click(m->cmdSave);
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{kSaveStart, "Save complete."}));
    auto onFloppy = folderBytes(h.floppyDir.path());
    auto inData = folderBytes(h.dataDir.path());
    for (const char* f : {"NumCats.csv", "CatFiles.csv", "Bike.csv", "Car.csv", "Tools.csv"}) EXPECT_EQ(onFloppy[f], inData[f]) << f;
    EXPECT_EQ(onFloppy["CatFiles.csv"], "Bike\r\nCar\r\nTools\r\n");
    EXPECT_EQ(onFloppy["Tools.csv"], crlf({kHeadingLine}));
    EXPECT_EQ(onFloppy.size(), 5u); // no ".csv", no picture links, no colours
    EXPECT_FALSE(m->WriteToFloppy);
    EXPECT_EQ(m->lstCategory.Text(), "Car");
    EXPECT_EQ(m->CurrentCategory, "Car");

    TempDir empty;
    Harness fresh(empty.place(), h.floppyDir.place());
    auto& m2 = fresh.start();
    fresh.click(m2.cmdLoad);
    EXPECT_EQ(std::count_if(fresh.dialogs.messages.begin(), fresh.dialogs.messages.end(),
                            [](const Message& msg) { return msg.text == "Load complete."; }), 1);
    EXPECT_EQ(m2.lstCategory.items(), (std::vector<std::string>{"Bike", "Car", "Tools"}));
    EXPECT_EQ(fresh.text("Car.csv"), inData["Car.csv"]);

    fs::remove(h.floppy("Bike.csv"));
    h.click(m->cmdLoad);
    EXPECT_EQ(readFile(h.data("Bike.csv")), crlf({kHeadingLine}));
    EXPECT_NE(readFile(h.data("Car.csv"))->find("Jack"), std::string::npos);
    EXPECT_NE(h.dialogs.messages.back().text.find("Not loaded whole: \"Bike\"."), std::string::npos);
}

TEST_F(Backup, SaveWithNoDiskStillEndsWithItsMessageAndHarmsNothing) {
    TempDir data;
    Harness nodisk(data.place(), (data.path() / "no-such-floppy").string() + "/");
    nodisk.writeCategories({{"Bike", {{"Bell"}}}});
    auto& mm = nodisk.startAndClick(0);
    auto before = folderBytes(data.path());
    nodisk.click(mm.cmdSave);
    EXPECT_NE(nodisk.dialogs.messages.back().text.find("Not copied: the list of categories and \"Bike\"."), std::string::npos);
    EXPECT_FALSE(fs::exists(data.path() / "no-such-floppy"));
    EXPECT_EQ(folderBytes(data.path()), before);
}

// A disk that refuses one name: the walk goes on, the others are
// copied, and the end names the one that is missing.
TEST_F(Backup, ACategoryTheDiskRefusesIsToldAndTheOthersAreCopied) {
    startWithBikeCarTools();
    h.files.unwritable.insert(h.floppy("Bike.csv").string());
    h.click(m->cmdSave);
    EXPECT_NE(h.dialogs.messages.back().text.find("Not copied: \"Bike\"."), std::string::npos);
    for (const char* f : {"NumCats.csv", "CatFiles.csv", "Car.csv", "Tools.csv"}) EXPECT_EQ(readFile(h.floppy(f)), readFile(h.data(f))) << f;
    EXPECT_EQ(m->lstCategory.Text(), "Car");
}

// When this computer's disk refuses the walk that comes first, the copy's
// walk would replace the unsaved category with its old file: nothing is copied.
TEST_F(Backup, NothingIsCopiedWhenTheDataFolderCantBeStoredFirst) {
    startWithBikeCarTools();
    h.run([&] { m->FG1.setTextMatrix(1, 6, "typed"); });
    h.files.persistent = true;
    h.files.arm(FaultyFiles::OpenWrite, 0);
    h.click(m->cmdSave);
    h.files.disarm();
    const auto texts = h.dialogs.texts();
    EXPECT_TRUE(std::any_of(texts.begin(), texts.end(), [](const std::string& t) { return t.rfind("Nothing was copied to the disk", 0) == 0; }));
    EXPECT_EQ(m->FG1.TextMatrix(1, 6), "typed");
    EXPECT_TRUE(folderBytes(h.floppyDir.path()).empty());
}

// Names that FAT refuses, one that only letter case tells from the index, and
// a disk written before such names were escaped: all come back whole into an
// empty data folder, with the index there at once.
TEST_F(Backup, EveryNameComesBackWithEveryCell) {
    const std::vector<std::string> names = {"Tools: misc", "What is this?", "Box 5\"", "a/b", "Caf\xC3\xA9", "numcats", "Box."};
    std::vector<Harness::Category> categories;
    for (const auto& n : names) categories.push_back({n, {{n + " item", "1.50", "", "at <home>", "", "", "x|y"}}});
    h.writeCategories(categories);
    m = &h.startAndClick(0);
    h.click(m->cmdSave);
    ASSERT_EQ(h.dialogs.messages.back().text, "Save complete.");
    fs::rename(h.floppy(storage::StickStem("a/b") + ".csv"), h.floppy(storage::FileStem("a/b") + ".csv"));
    TempDir empty;
    Harness fresh(empty.place(), h.floppyDir.place());
    fresh.click(fresh.start().cmdLoad);
    EXPECT_EQ(fresh.dialogs.messages.back().text, "Load complete.");
    EXPECT_EQ(fresh.text("CatFiles.csv"), h.text("CatFiles.csv"));
    for (const auto& n : names) EXPECT_EQ(fresh.text(storage::FileStem(n) + ".csv"), h.text(storage::FileStem(n) + ".csv")) << n;
}

TEST_F(Backup, ADiskFromAnEmptyDatabaseLoadsAsAnEmptyList) {
    startWithBikeCarTools();
    writeFile(h.floppy("NumCats.csv"), "\r\n");
    writeFile(h.floppy("CatFiles.csv"), "");
    h.click(m->cmdLoad);
    EXPECT_EQ(h.dialogs.messages.back().text, "Load complete.");
    EXPECT_EQ(m->lstCategory.ListCount(), 0);
    EXPECT_EQ(h.text("NumCats.csv"), "\r\n");
    EXPECT_EQ(h.text("CatFiles.csv"), "");
}

// A stick's name for any category: only what FAT and exFAT take, no index
// file's name in any letter case, and the name itself given back by undoing
// the escapes, so no two categories share a file.
TEST(StickNames, CarryEveryNameAndTellThemApart) {
    const std::vector<std::string> pieces = {"a", "Z", " ", ".", "/", "\\", ":", "*", "?", "\"", "<", ">", "|", "%",
                                             "%4", "\xC3\xA9", "\xE2\x88\x95", "~", "numcats", "CatFiles"};
    std::mt19937 rng(15);
    for (int i = 0; i < 20000; ++i) {
        std::string name;
        for (int k = 1 + static_cast<int>(rng() % 4); k > 0; --k) name += pieces[rng() % pieces.size()];
        const std::string stem = storage::StickStem(name);
        std::string back;
        for (std::size_t j = 0; j < stem.size(); ++j) {
            const unsigned char c = static_cast<unsigned char>(stem[j]);
            ASSERT_TRUE(c >= 0x20 && c != 0x7F && !std::strchr("\\/:*?\"<>|", c)) << stem;
            if (c == '%') {
                back += static_cast<char>(std::stoi(stem.substr(j + 1, 2), nullptr, 16));
                j += 2;
            } else {
                back += static_cast<char>(c);
            }
        }
        ASSERT_EQ(back, name);
        ASSERT_NE(stem.back(), '.');
        ASSERT_NE(stem.back(), ' ');
        std::string lower = stem;
        for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        ASSERT_TRUE(lower != "numcats" && lower != "catfiles") << stem;
    }
}

TEST_F(Backup, CancelAtAnyPromptChangesNothing) {
    startWithBikeCarTools();
    h.dialogs.msgAnswers.push_back(forms::vbCancel);
    h.click(m->cmdSave);
    EXPECT_TRUE(folderBytes(h.floppyDir.path()).empty());
    EXPECT_FALSE(m->txtLoading.Visible());
    h.click(m->cmdSave);
    auto before = folderBytes(h.dataDir.path());
    h.dialogs.msgAnswers = {forms::vbCancel};
    h.click(m->cmdLoad);
    h.dialogs.msgAnswers = {forms::vbOK, forms::vbCancel};
    h.click(m->cmdLoad);
    EXPECT_EQ(folderBytes(h.dataDir.path()), before);
    EXPECT_EQ(m->lstCategory.ListCount(), 3);
}

struct BadFloppy : Backup, ::testing::WithParamInterface<int> {};

// Each way a disk can hold no database that can be loaded.
void spoil(Harness& h, int how) {
    switch (how) {
    case 0: fs::remove_all(h.floppyDir.path()); break;
    case 1: fs::remove(h.floppy("NumCats.csv")); break;
    case 2: fs::remove(h.floppy("CatFiles.csv")); break;
    case 3: writeFile(h.floppy("NumCats.csv"), "three\r\n"); break;
    case 4: writeFile(h.floppy("NumCats.csv"), " -1 \r\n"); break;
    case 5: writeFile(h.floppy("NumCats.csv"), " 4 \r\n"); break; // fewer names than the count
    case 6: writeFile(h.floppy("NumCats.csv"), ""); break;
    }
}

TEST_P(BadFloppy, LeavesTheDatabaseExactlyAsItWas) {
    startWithBikeCarTools();
    h.click(m->cmdSave);
    spoil(h, GetParam());
    h.click(m->cmdExit);
    auto before = folderBytes(h.dataDir.path());
    Harness again(h.dataDir.place(), h.floppyDir.place());
    auto& m2 = again.start();
    again.selectCategory(0);
    again.click(m2.cmdLoad);
    EXPECT_NE(again.dialogs.messages.back().text.find("Nothing was changed."), std::string::npos);
    EXPECT_EQ(m2.lstCategory.items(), (std::vector<std::string>{"Bike", "Car", "Tools"}));
    EXPECT_FALSE(m2.ReadFromFloppy);
    again.click(m2.cmdExit);
    EXPECT_EQ(folderBytes(h.dataDir.path()), before);
}

INSTANTIATE_TEST_SUITE_P(Disks, BadFloppy, ::testing::Range(0, 7));

} // namespace

// The floppy backup on temporary folders: what a save puts on the floppy, the
// load's passes and prompts, and that a load from a disk it can't read changes
// nothing. A save and a load back through the real boxes: the GUI commands test.
#include <gtest/gtest.h>


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

TEST_F(Backup, SaveCopiesTheIndexAndEveryCategoryToTheFloppy) {
    startWithBikeCarTools();
    writeFile(h.data("CarJack.csv"), "/pictures/jack.jpg\r\n");
    h.click(m->cmdSave);
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{kSaveStart, "Save complete."}));
    auto onFloppy = folderBytes(h.floppyDir.path());
    auto inData = folderBytes(h.dataDir.path());
    for (const char* f : {"NumCats.csv", "CatFiles.csv", "Bike.csv", "Car.csv", "Tools.csv"}) {
        ASSERT_TRUE(onFloppy.count(f)) << f;
        EXPECT_EQ(onFloppy[f], inData[f]) << f;
    }
    EXPECT_EQ(onFloppy["CatFiles.csv"], "Bike\r\nCar\r\nTools\r\n");
    EXPECT_EQ(onFloppy["Tools.csv"], crlf({kHeadingLine}));
    EXPECT_EQ(onFloppy.size(), 5u); // no ".csv", no picture links, no colours
    EXPECT_FALSE(m->WriteToFloppy);
    EXPECT_EQ(m->lstCategory.Text(), "Car");
    EXPECT_EQ(m->CurrentCategory, "Car");
}

TEST_F(Backup, CancelAtTheStartWritesNothing) {
    startWithBikeCarTools();
    h.dialogs.msgAnswers.push_back(forms::vbCancel);
    h.click(m->cmdSave);
    EXPECT_TRUE(folderBytes(h.floppyDir.path()).empty());
    EXPECT_FALSE(m->txtLoading.Visible());
}

TEST_F(Backup, SaveWithNoDiskStillEndsWithItsMessageAndHarmsNothing) {
    TempDir data;
    Harness nodisk(data.place(), (data.path() / "no-such-floppy").string() + "/");
    nodisk.writeCategories({{"Bike", {{"Bell"}}}});
    auto& mm = nodisk.startAndClick(0);
    auto before = folderBytes(data.path());
    nodisk.click(mm.cmdSave);
    EXPECT_EQ(nodisk.dialogs.messages.back().text, "Save complete.");
    EXPECT_FALSE(fs::exists(data.path() / "no-such-floppy"));
    EXPECT_EQ(folderBytes(data.path()), before);
}

TEST_F(Backup, LoadIntoADataFolderWithNoCsvFileGoesThroughTheSecondPass) {
    startWithBikeCarTools();
    h.click(m->cmdSave);
    TempDir empty;
    Harness fresh(empty.place(), h.floppyDir.place());
    auto& m2 = fresh.start();
    fresh.click(m2.cmdLoad);
    int completes = 0;
    for (const auto& msg : fresh.dialogs.messages) completes += msg.text == "Load complete.";
    EXPECT_EQ(completes, 1);
    EXPECT_EQ(m2.lstCategory.items(), (std::vector<std::string>{"Bike", "Car", "Tools"}));
    EXPECT_NE(readFile(fresh.data("Car.csv"))->find("Jack"), std::string::npos);
}

TEST_F(Backup, ACategoryMissingOnTheFloppyArrivesEmpty) {
    startWithBikeCarTools();
    h.click(m->cmdSave);
    fs::remove(h.floppy("Bike.csv"));
    h.click(m->cmdLoad);
    EXPECT_EQ(readFile(h.data("Bike.csv")), crlf({kHeadingLine}));
    EXPECT_NE(readFile(h.data("Car.csv"))->find("Jack"), std::string::npos);
}

TEST_F(Backup, CancelAtEitherLoadPromptChangesNothing) {
    startWithBikeCarTools();
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

// The floppy backup on temporary folders (and on a real FAT stick): what a
// save puts on the floppy, the load's passes and prompts, and that a load from
// a disk it can't read changes nothing. A save and a load back through the real boxes: the GUI commands test.
#include <algorithm>
#include <cstring>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "storage/places.h"

#include "support/fat_stick.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
namespace fs = std::filesystem;

namespace {

const char* const kSaveStart =
    "Please insert a blank disk into A:\\ to save files to disk.. A message box will appear when save is complete. "
    "Please be patient, this may take a few minutes.";
const char* const kCarOpen = "Bike Car* Tools | Car \"Car\" | Item Jack | 2 at 1,6 fixed 11 editor focus T1";

// One command on Bike, Car (open) and Tools, after `before` has set the scene.
struct Case {
    const char* name;
    void (*before)(Harness&);
    bool save;              // else a load
    const char* told;       // a piece of the last message
    bool dataKept;          // the data folder as it was, also after an Exit
    void (*after)(Harness&);
};

class Backup : public ::testing::TestWithParam<Case> {};

void save(Harness& h) { h.click(h.m().cmdSave); }
bool sameOnFloppy(Harness& h, std::initializer_list<const char*> files) {
    return std::all_of(files.begin(), files.end(), [&](const char* f) { return readFile(h.floppy(f)) == readFile(h.data(f)); });
}
// A disk that holds no database that can be loaded: nothing changes.
void nothingLoaded(Harness& h) {
    EXPECT_EQ(h.m().lstCategory.items(), (std::vector<std::string>{"Bike", "Car", "Tools"}));
    EXPECT_FALSE(h.m().ReadFromFloppy);
}

TEST_P(Backup, EndsWithItsMessageAndKeepsWhatItShould) {
    const Case& c = GetParam();
    Harness h;
    h.writeCategories({{"Bike", {{"Bell", "5", "4"}, {"Pump", "20", "15", "Shop, main st"}}},
                       {"Car", {{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}}},
                       {"Tools", {}}});
    auto& m = h.startAndClick(1);
    if (c.before) c.before(h);
    const auto data = folderBytes(h.dataDir.path());
    h.click(c.save ? m.cmdSave : m.cmdLoad);
    h.files.disarm();
    EXPECT_NE(h.dialogs.messages.back().text.find(c.told), std::string::npos) << h.dialogs.messages.back().text;
    if (c.after) c.after(h);
    h.click(m.cmdExit);
    if (c.dataKept) { EXPECT_EQ(folderBytes(h.dataDir.path()), data); }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, Backup,
    ::testing::Values(
        // The index and every category go to the disk, nothing else (no ".csv", picture links or colours).
        Case{"SaveCopiesEveryCategory", [](Harness& h) { writeFile(h.data("CarJack.csv"), "/pictures/jack.jpg\r\n"); }, true,
             "Save complete.", true,
             [](Harness& h) {
                 EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{kSaveStart, "Save complete."}));
                 EXPECT_TRUE(sameOnFloppy(h, {"NumCats.csv", "CatFiles.csv", "Bike.csv", "Car.csv", "Tools.csv"}));
                 EXPECT_EQ(std::make_tuple(folderBytes(h.floppyDir.path()).size(), h.m().WriteToFloppy), std::make_tuple(5u, false));
                 EXPECT_WINDOW(h, kCarOpen);
             }},
        Case{"SaveWithNoDisk", [](Harness& h) { fs::remove_all(h.floppyDir.path()); }, true,
             "Not copied: the list of categories, \"Bike\", \"Car\" and \"Tools\".", true,
             [](Harness& h) { EXPECT_FALSE(fs::exists(h.floppyDir.path())); }},
        // The walk goes on past a name the disk refuses.
        Case{"SaveToADiskThatRefusesOneName", [](Harness& h) { h.files.unwritable.insert(h.floppy("Bike.csv").string()); }, true,
             "Not copied: \"Bike\".", true,
             [](Harness& h) { EXPECT_TRUE(sameOnFloppy(h, {"NumCats.csv", "CatFiles.csv", "Car.csv", "Tools.csv"})); EXPECT_WINDOW(h, kCarOpen); }},
        // A stick that keeps a write only in the system's memory: the read-back reads the device.
        Case{"SaveToAStickThatLosesAWrite", [](Harness& h) { h.files.lostOnDevice.insert(h.floppy("Tools.csv").string()); }, true,
             "Not copied: \"Tools\".", true, nullptr},
        // When this computer's disk refuses the walk that comes first, the copy's
        // walk would replace the unsaved category with its old file: nothing is copied.
        Case{"SaveWhenTheDataFolderCantBeStoredFirst",
             [](Harness& h) { h.run([&] { h.m().FG1.setTextMatrix(1, 6, "typed"); }), h.files.persistent = true, h.files.arm(FaultyFiles::OpenWrite, 0); },
             true, "Nothing was copied to the disk", false,
             [](Harness& h) { EXPECT_EQ(h.m().FG1.TextMatrix(1, 6), "typed"); EXPECT_TRUE(folderBytes(h.floppyDir.path()).empty()); }},
        Case{"SaveCancelled", [](Harness& h) { h.dialogs.msgAnswers.push_back(forms::vbCancel); }, true, kSaveStart, true,
             [](Harness& h) { EXPECT_TRUE(folderBytes(h.floppyDir.path()).empty()); EXPECT_FALSE(h.m().txtLoading.Visible()); }},
        Case{"LoadCancelledAtTheFirstPrompt", [](Harness& h) { save(h), h.dialogs.msgAnswers = {forms::vbCancel}; }, false, "", true,
             nothingLoaded},
        Case{"LoadCancelledAtTheSecondPrompt", [](Harness& h) { save(h), h.dialogs.msgAnswers = {forms::vbOK, forms::vbCancel}; },
             false, "", true, nothingLoaded},
        // A category missing on the disk arrives empty and is named.
        Case{"LoadOfADiskWithoutACategory", [](Harness& h) { save(h), fs::remove(h.floppy("Bike.csv")); }, false,
             "Not loaded whole: \"Bike\".", false,
             [](Harness& h) { EXPECT_EQ(h.text("Bike.csv"), crlf({kHeadingLine})); EXPECT_NE(h.text("Car.csv").find("Jack"), std::string::npos); }},
        // A category the disk lacks leaves the data folder; later switches read this computer's files.
        Case{"LoadOfADiskThatLacksACategory",
             [](Harness& h) { save(h), writeFile(h.floppy("NumCats.csv"), " 2 \r\n"), writeFile(h.floppy("CatFiles.csv"), "\"Bike\"\r\n\"Car\"\r\n"); },
             false, "Load complete.", false,
             [](Harness& h) {
                 EXPECT_EQ(h.text("Tools.csv"), "<missing>");
                 h.run([&] { h.m().FG1.setTextMatrix(1, 6, "typed"); }), h.selectCategory(0), h.selectCategory(1);
                 EXPECT_EQ(h.m().FG1.TextMatrix(1, 6), "typed");
             }},
        Case{"LoadOfAnEmptyDatabase",
             [](Harness& h) { writeFile(h.floppy("NumCats.csv"), "\r\n"), writeFile(h.floppy("CatFiles.csv"), ""); }, false,
             "Load complete.", false,
             [](Harness& h) { EXPECT_EQ(h.m().lstCategory.ListCount(), 0); EXPECT_EQ(h.text("NumCats.csv") + "|" + h.text("CatFiles.csv"), "\r\n|"); }},
        // Each way a disk can hold no database that can be loaded.
        Case{"LoadWithNoDisk", [](Harness& h) { save(h), fs::remove_all(h.floppyDir.path()); }, false, "Nothing was changed.", true, nothingLoaded},
        Case{"LoadWithoutCount", [](Harness& h) { save(h), fs::remove(h.floppy("NumCats.csv")); }, false, "Nothing was changed.", true, nothingLoaded},
        Case{"LoadWithoutNames", [](Harness& h) { save(h), fs::remove(h.floppy("CatFiles.csv")); }, false, "Nothing was changed.", true, nothingLoaded},
        Case{"LoadOfAWordForACount", [](Harness& h) { save(h), writeFile(h.floppy("NumCats.csv"), "three\r\n"); }, false, "Nothing was changed.", true, nothingLoaded},
        // A count that disagrees with the names is repaired: every name comes.
        Case{"LoadOfFewerNamesThanTheCount", [](Harness& h) { save(h), writeFile(h.floppy("NumCats.csv"), " 4 \r\n"); }, false, "Load complete.", false, nullptr},
        Case{"LoadOfAnEmptyCount", [](Harness& h) { save(h), writeFile(h.floppy("NumCats.csv"), ""); }, false, "Nothing was changed.", true, nothingLoaded}),
    [](const auto& info) { return std::string(info.param.name); });

// Every character FAT refuses, a name ending in a dot, one that only letter
// case tells from the index, two that only letter case tells apart, a disk
// written before such names were escaped:
// on a plain folder and on a real FAT stick (as root, through FUSE) all come
// back whole into an empty data folder (the load's second pass), with the
// index there at once.
const std::vector<std::string> kAwkwardNames = {"Tools: misc", "What is this?", "Box 5\"", "back\\slash", "star*", "less<",
                                                "more>", "pipe|", "Box.", "a/b", "numcats", "Car", "car"};

std::vector<Harness::Category> awkwardCategories(const std::vector<std::string>& names = kAwkwardNames) {
    std::vector<Harness::Category> categories;
    for (const auto& n : names) categories.push_back({n, {{n + " item", "1.50", "", "at <home>", "", "", "x|y"}, {"Item 2"}}});
    return categories;
}

class BackupNames : public ::testing::TestWithParam<bool> {}; // on a FAT stick

TEST_P(BackupNames, EveryNameComesBackWithEveryCell) {
    if (const std::string why = GetParam() ? FatStick::unavailable() : ""; !why.empty()) GTEST_SKIP() << why;
    Harness h;
    std::optional<FatStick> stick;
    if (GetParam()) { ASSERT_TRUE(stick.emplace(4096).mountAt(h.floppyDir.path())); }
    std::vector<std::string> names = kAwkwardNames;
    if (!GetParam()) names.push_back("Caf\xC3\xA9"); // fusefat takes no letters beyond ASCII
    h.writeCategories(awkwardCategories(names));
    h.startAndClick(0);
    save(h);
    ASSERT_EQ(h.dialogs.messages.back().text, "Save complete.");
    if (!GetParam()) fs::rename(h.floppy(storage::StickStem("a/b") + ".csv"), h.floppy(storage::FileStem("a/b") + ".csv"));
    TempDir empty;
    Harness fresh(empty.place(), h.floppyDir.place());
    fresh.click(fresh.start().cmdLoad);
    const auto told = fresh.dialogs.texts();
    EXPECT_EQ(told.back(), "Load complete.");
    EXPECT_EQ(std::count(told.begin(), told.end(), "Load complete."), 1);
    EXPECT_EQ(fresh.m().lstCategory.ListCount(), static_cast<int>(names.size()));
    for (const auto& n : names) EXPECT_EQ(fresh.text(storage::FileStem(n) + ".csv"), h.text(storage::FileStem(n) + ".csv")) << n;
    for (const char* f : {"NumCats.csv", "CatFiles.csv"}) EXPECT_EQ(fresh.text(f), h.text(f));
}

INSTANTIATE_TEST_SUITE_P(Backup, BackupNames, ::testing::Bool(), [](const auto& info) { return info.param ? "FatStick" : "Folder"; });

// A category too big for what is left on a real stick: told by name at the
// end, and every other category still copied whole.
TEST(FatStickBackup, FullStickIsToldAndTakesTheRest) {
    if (const std::string why = FatStick::unavailable(); !why.empty()) GTEST_SKIP() << why;
    FatStick stick(1024);
    Harness h;
    ASSERT_TRUE(stick.mountAt(h.floppyDir.path()));
    auto categories = awkwardCategories();
    categories.push_back({"Big", numberedItems(20000, std::string(40, 'z'))});
    h.writeCategories(categories);
    auto& m = h.startAndClick(0);
    save(h);
    const std::string said = h.dialogs.messages.back().text;
    EXPECT_TRUE(said.starts_with("The copy on the disk is not complete. Not copied: \"Big\".")) << said;
    const auto clashes = storage::CaseBlindClashes(kAwkwardNames);
    for (const auto& name : kAwkwardNames)
        EXPECT_EQ(readFile(h.floppy(storage::StickStem(name, clashes.count(name)) + ".csv")), readFile(h.data(storage::FileStem(name) + ".csv"))) << name;
    EXPECT_EQ(std::make_pair(m.lstCategory.Text(), m.CurrentCategory.value_or("")), std::make_pair(std::string("a/b"), std::string("a/b")));
}

// A stick's name for any category of any index: only what FAT and exFAT take,
// no index file's name in any letter case, no two names of one index in one
// file when letter case is folded, and the name itself given back by undoing
// the escapes.
TEST(StickNames, CarryEveryNameAndTellThemApart) {
    const std::vector<std::string> pieces = {"a", "Z", " ", ".", "/", "\\", ":", "*", "?", "\"", "<", ">", "|", "%",
                                             "%4", "\xC3\xA9", "\xE2\x88\x95", "~", "numcats", "CatFiles"};
    std::mt19937 rng(15);
    const auto flipCase = [&](std::string s) { for (char& c : s) c ^= std::isalpha(static_cast<unsigned char>(c)) && rng() % 2 ? 0x20 : 0; return s; };
    for (int i = 0; i < 20000; ++i) {
        std::string name;
        for (int k = 1 + static_cast<int>(rng() % 4); k > 0; --k) name += pieces[rng() % pieces.size()];
        const std::vector<std::string> index = {name, flipCase(name), flipCase(name + "a")};
        std::map<std::string, std::string> files; // folded stem -> name
        for (const std::string& n : index) {
            const std::string stem = storage::StickStem(n, storage::CaseBlindClashes(index).count(n));
            std::string back, lower;
            for (std::size_t j = 0; j < stem.size(); ++j) {
                const unsigned char c = static_cast<unsigned char>(stem[j]);
                ASSERT_TRUE(c >= 0x20 && c != 0x7F && !std::strchr("\\/:*?\"<>|", c)) << stem;
                back += c == '%' ? static_cast<char>(std::stoi(stem.substr(j + 1, 2), nullptr, 16)) : static_cast<char>(c);
                if (c == '%') j += 2;
            }
            for (char c : stem) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            ASSERT_EQ(back, n);
            ASSERT_TRUE(stem.back() != '.' && stem.back() != ' ' && lower != "numcats" && lower != "catfiles") << stem;
            ASSERT_EQ(files.emplace(lower, n).first->second, n) << "one file for two names: " << stem;
        }
    }
}

} // namespace

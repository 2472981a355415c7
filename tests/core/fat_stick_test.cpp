// The backup to a real FAT stick (as root, through FUSE): names FAT refuses,
// and a stick too full for everything.
#include <gtest/gtest.h>

#include "storage/places.h"

#include "support/fat_stick.h"
#include "support/scripted_platform.h"

using namespace qmtest;

namespace {

// Names with every character FAT refuses, and one ending in a dot.
const std::vector<std::string> kAwkwardNames = {"Tools: misc", "What is this?", "Box 5\"", "back\\slash", "star*", "less<",
                                                "more>", "pipe|", "ends with a dot.", "a/b"};

std::vector<Harness::Category> awkwardCategories() {
    std::vector<Harness::Category> categories;
    for (const auto& name : kAwkwardNames)
        categories.push_back({name, {{"Item 1", "1", "1"}, {"Item 2", "2", "2", "Shop", "2001", "", name}, {"Item 3"}}});
    return categories;
}

// The command's button clicked, every box answered OK: what the last box said.
std::string run(Harness& h, forms::Button& command) {
    h.click(command);
    return h.dialogs.messages.empty() ? "" : h.dialogs.messages.back().text;
}

struct FatStickBackup : ::testing::Test {
    void SetUp() override {
        if (const std::string why = FatStick::unavailable(); !why.empty()) GTEST_SKIP() << why;
    }
};

} // namespace

// Saved and loaded back into an empty data folder: every category and every
// cell, byte for byte.
TEST_F(FatStickBackup, CarriesEveryName) {
    FatStick stick(4096);
    Harness h;
    ASSERT_TRUE(stick.mountAt(h.floppyDir.path()));
    h.writeCategories(awkwardCategories());
    EXPECT_EQ(run(h, h.startAndClick(0).cmdSave), "Save complete.");

    Harness fresh;
    ASSERT_TRUE(stick.mountAt(fresh.floppyDir.path()));
    EXPECT_EQ(run(fresh, fresh.start().cmdLoad), "Load complete.");
    EXPECT_EQ(fresh.m().lstCategory.items().size(), kAwkwardNames.size());
    for (const char* f : {"NumCats.csv", "CatFiles.csv"}) EXPECT_EQ(readFile(fresh.data(f)), readFile(h.data(f))) << f;
    for (const auto& name : kAwkwardNames) {
        const std::string file = storage::FileStem(name) + ".csv";
        EXPECT_EQ(readFile(fresh.data(file)), readFile(h.data(file))) << name;
    }
}

// A category too big for what is left on the stick: told by name at the end,
// and every other category still copied whole.
TEST_F(FatStickBackup, FullStickIsToldAndTakesTheRest) {
    FatStick stick(1024);
    Harness h;
    ASSERT_TRUE(stick.mountAt(h.floppyDir.path()));
    auto categories = awkwardCategories();
    std::vector<std::vector<std::string>> big;
    for (int i = 0; i < 20000; ++i) big.push_back({"Item " + std::to_string(i), "1.00", "", "", "", "", std::string(40, 'z')});
    categories.push_back({"Big", big});
    h.writeCategories(categories);
    auto& m = h.startAndClick(0);
    const std::string said = run(h, m.cmdSave);
    EXPECT_TRUE(said.starts_with("The copy on the disk is not complete. Not copied: \"Big\".")) << said;
    for (const auto& name : kAwkwardNames)
        EXPECT_EQ(readFile(h.floppy(storage::StickStem(name) + ".csv")), readFile(h.data(storage::FileStem(name) + ".csv"))) << name;
    EXPECT_EQ(m.lstCategory.Text(), "a/b");
    EXPECT_EQ(m.CurrentCategory.value_or(""), "a/b");
}

// Adding, renaming and deleting categories: the walks they run, the names they
// refuse, and what each outcome leaves in the list and on disk. The prompts and
// messages as the user answers them are in the GUI commands test.
#include <gtest/gtest.h>

#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

struct Categories : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    void startWith(const std::vector<std::string>& names) {
        h.writeIndex(names);
        for (const auto& n : names) h.writeCategory(n, {{n + " item", "1"}});
        m = &h.start();
    }
    std::vector<std::string> entries() { return m->lstCategory.items(); }
    const std::string& lastMessage() { return h.dialogs.messages.back().text; }
};

TEST_F(Categories, CancelledAddTouchesNothing) {
    startWith({"Bike", "Car"});
    std::filesystem::remove(h.data("Car.csv"));
    auto switches = countSwitches(*m);
    h.click(m->cmdAddCategory);
    EXPECT_EQ(h.dialogs.prompts.size(), 1u);
    EXPECT_EQ(*switches, 0);
    EXPECT_FALSE(std::filesystem::exists(h.data("Car.csv")));
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike", "Car"}));
}

TEST_F(Categories, AddOpensTheNewCategoryEmptyAndStoresTheIndex) {
    startWith({"Bike", "Tools"});
    h.dialogs.inputAnswers.push_back("Car");
    h.click(m->cmdAddCategory);
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike", "Car", "Tools"}));
    EXPECT_EQ(m->lstCategory.Text(), "Car");
    EXPECT_EQ(m->CurrentCategory, "Car");
    EXPECT_EQ(m->lblCategory.Caption(), "Car");
    EXPECT_EQ(m->FG1.Rows(), 1);
    EXPECT_EQ(m->ItemRowCount, 1);
    EXPECT_FALSE(m->FG1.Visible());
    EXPECT_EQ(m->txtCost.Text(), "$0.00");
    EXPECT_TRUE(m->cmdAddAsset.hasFocus());
    EXPECT_EQ(h.text("Car.csv"), crlf({kHeadingLine}));
    EXPECT_EQ(readFile(h.data("NumCats.csv")), " 3 \r\n");
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Bike\r\nCar\r\nTools\r\n");
    EXPECT_EQ(m->NewCategoryName, "");
    EXPECT_NE(h.text("Bike.csv").find("Bike item"), std::string::npos); // the walks stored the others unchanged
}

// A first run left at once writes a count never assigned, an empty line: no
// damaged index to be kept from being written.
TEST_F(Categories, AddToAnEmptyListAfterAnEmptyCount) {
    writeFile(h.data("NumCats.csv"), "\r\n");
    writeFile(h.data("CatFiles.csv"), "");
    m = &h.start();
    h.dialogs.inputAnswers.push_back("Mom's stuff");
    h.click(m->cmdAddCategory);
    EXPECT_EQ(entries(), (std::vector<std::string>{"Mom's stuff"}));
    EXPECT_EQ(m->CategoryCount.toInt16(), 1);
    EXPECT_EQ(readFile(h.data("NumCats.csv")), " 1 \r\n");
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Mom's stuff\r\n");
}

TEST_F(Categories, DuplicateNamesAreRefusedExactlyCaseAndAll) {
    startWith({"Bike", "Car", "Tools"});
    h.dialogs.inputAnswers.push_back("Car");
    h.click(m->cmdAddCategory);
    EXPECT_EQ(h.dialogs.messages.size(), 1u);
    EXPECT_EQ(m->lstCategory.Text(), "Car"); // the match stays selected and open
    EXPECT_EQ(m->CurrentCategory, "Car");
    EXPECT_EQ(entries().size(), 3u);
    h.dialogs.inputAnswers.push_back("car");
    h.click(m->cmdAddCategory);
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike", "Car", "car", "Tools"}));
}

TEST_F(Categories, NamesThatCantBeCategoriesAreRefusedBeforeAnyWalk) {
    startWith({"Bike"});
    auto switches = countSwitches(*m);
    for (std::string bad : {std::string("NumCats"), std::string("CatFiles"), std::string("Tab\there"),
                            std::string(300, 'x')}) {
        h.dialogs.inputAnswers.push_back(bad);
        h.click(m->cmdAddCategory);
        EXPECT_EQ(h.dialogs.messages.back().title, "Quillmere");
        EXPECT_EQ(h.dialogs.messages.back().buttons, forms::vbOKOnly);
    }
    EXPECT_EQ(h.dialogs.messages.size(), 4u);
    EXPECT_EQ(*switches, 0);
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike"}));
}

TEST_F(Categories, RenamingTheOnlyCategoryKeepsItsItems) {
    startWith({"Bike"});
    h.selectCategory(0);
    h.dialogs.inputAnswers.push_back("Bicycle");
    h.click(m->cmdRenameCat);
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bicycle"}));
    EXPECT_EQ(m->FG1.TextMatrix(1, 0), "Bike item");
    EXPECT_EQ(h.text("Bike.csv"), "<missing>");
    EXPECT_NE(h.text("Bicycle.csv").find("Bike item"), std::string::npos);
    EXPECT_EQ(readFile(h.data("NumCats.csv")), " 1 \r\n");
}

TEST_F(Categories, RenameRefusals) {
    startWith({"Bike", "Car"});
    h.click(m->cmdRenameCat); // nothing selected
    EXPECT_EQ(lastMessage(), "Error renaming category: No category selected.");
    EXPECT_TRUE(h.dialogs.prompts.empty());
    h.selectCategory(0);
    h.dialogs.inputAnswers.push_back("Bike"); // its own name is a duplicate like any other
    h.click(m->cmdRenameCat);
    EXPECT_EQ(lastMessage(), "Error occured while renaming category. Category 'Bike' already exists.");
    EXPECT_FALSE(m->RenamePending);
    h.click(m->cmdRenameCat); // cancelled: the walk runs, the old entry is selected again
    EXPECT_EQ(m->lstCategory.Text(), "Bike");
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike", "Car"}));
    EXPECT_FALSE(m->RenamePending);
}

TEST_F(Categories, ACategoryWhoseFileCantBeReadIsNotRenamed) {
    startWith({"Bike", "Car"});
    h.files.unreadable.insert(h.data("Bike.csv").string());
    h.selectCategory(0);
    h.dialogs.inputAnswers.push_back("Other");
    h.click(m->cmdRenameCat);
    EXPECT_TRUE(h.dialogs.prompts.empty());
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike", "Car"}));
    EXPECT_NE(h.text("Bike.csv").find("Bike item"), std::string::npos);
}

TEST_F(Categories, DeleteNeedsASelectionAndEndsOnTheLastEntry) {
    startWith({"Bike", "Car", "Tools"});
    h.click(m->cmdDeleteCategory);
    EXPECT_EQ(lastMessage(), "Error deleting category: No category selected.");
    h.selectCategory(1);
    h.click(m->cmdDeleteCategory);
    EXPECT_EQ(entries(), (std::vector<std::string>{"Bike", "Tools"}));
    EXPECT_EQ(m->lstCategory.Text(), "Tools"); // the walk ends on the last entry
    EXPECT_EQ(h.text("Car.csv"), "<missing>");
    EXPECT_EQ(readFile(h.data("NumCats.csv")), " 2 \r\n");
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Bike\r\nTools\r\n");
}

TEST_F(Categories, AfterTheLastCategoryNothingIsOpenAndNothingIsWrittenUnderItsName) {
    startWith({"Bike"});
    h.selectCategory(0);
    h.click(m->cmdDeleteCategory);
    EXPECT_EQ(m->lstCategory.ListCount(), 0);
    EXPECT_FALSE(m->CurrentCategory.has_value());
    EXPECT_FALSE(m->FG1.Visible());
    EXPECT_EQ(m->FG1.Rows(), 1);
    EXPECT_EQ(m->lblCategory.Caption(), "");
    EXPECT_EQ(m->txtCost.Text(), "");
    h.click(m->cmdExit);
    EXPECT_EQ(h.text("Bike.csv"), "<missing>");
}

TEST_F(Categories, DeleteAllKeepsColoursPicturesAndHelpButDropsEveryCsv) {
    startWith({"Bike", "Car"});
    for (const char* keep : {"HColor", "NoPic.jpg", "Readme.htm"}) writeFile(h.data(keep), "keep");
    writeFile(h.data("BikeBell.csv"), "/pictures/bell.jpg\r\n");
    h.selectCategory(0);
    h.menu("mnuDelAllCats");
    EXPECT_EQ(lastMessage(),
              "WARNING: This will DELETE ALL Categories and ERASE EVERYTHING from the whole asset database. Are you sure?");
    EXPECT_EQ(m->lstCategory.ListCount(), 0);
    EXPECT_EQ(readFile(h.data("NumCats.csv")), " 0 \r\n");
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "");
    for (const char* gone : {"Bike.csv", "Car.csv", "BikeBell.csv"}) EXPECT_FALSE(std::filesystem::exists(h.data(gone))) << gone;
    for (const char* keep : {"HColor", "NoPic.jpg", "Readme.htm"}) EXPECT_EQ(readFile(h.data(keep)), "keep");
    EXPECT_EQ(h.restart()->m().lstCategory.ListCount(), 0);
}

TEST_F(Categories, DeleteAllOnAnEmptyListAsksNothing) {
    startWith({});
    h.menu("mnuDelAllCats");
    EXPECT_TRUE(h.dialogs.messages.empty());
}

TEST_F(Categories, PictureLinksStayBehindARenameAndADelete) {
    startWith({"Bike", "Car"});
    writeFile(h.data("BikeBike item.csv"), "/pictures/bike.jpg\r\n");
    h.selectCategory(0);
    h.dialogs.inputAnswers.push_back("Bicycle");
    h.click(m->cmdRenameCat);
    h.selectCategory(0);
    h.click(m->cmdDeleteCategory);
    EXPECT_TRUE(std::filesystem::exists(h.data("BikeBike item.csv")));
}

} // namespace

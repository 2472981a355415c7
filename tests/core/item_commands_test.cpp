// Adding, renaming and deleting items: prompts, messages and the state each
// outcome leaves in the grid and on disk.
#include <gtest/gtest.h>

#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

struct Items : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    void startWith(const std::vector<std::vector<std::string>>& items) {
        h.writeCategories({{"Garage", items}, {"Kitchen", {{"Kettle", "30"}}}});
        m = &h.startAndClick(0);
    }
};

TEST_F(Items, AddingTheFirstItemToAnEmptyCategoryBringsTheGridBack) {
    startWith({});
    EXPECT_FALSE(m->FG1.Visible());
    EXPECT_EQ(m->ItemRowCount, 1);
    EXPECT_TRUE(m->cmdAddAsset.hasFocus());
    h.dialogs.inputAnswers.push_back("Mower");
    h.click(m->cmdAddAsset);
    EXPECT_EQ(m->ItemRowCount, 2);
    EXPECT_TRUE(m->FG1.Visible());
    EXPECT_TRUE(m->FG1.Enabled());
    EXPECT_EQ(m->FG1.FixedRows(), 1);
    EXPECT_EQ(m->FG1.FixedCols(), 1);
    EXPECT_EQ(m->FG1.TextMatrix(1, 0), "Mower");
    EXPECT_EQ(m->FG1.Row(), 1);
    EXPECT_EQ(m->FG1.Col(), 1);
    EXPECT_TRUE(m->T1.Visible() && m->T1.hasFocus());
    EXPECT_EQ(h.text("Garage.csv"), std::string(kHeadingLine) + "\r\nMower,,,,,,\r\n");
}

TEST_F(Items, CancelAddsNothingWritesNothingAndGoesToColumnOneOfTheLastRow) {
    startWith({{"Mower", "100"}, {"Rake", "10"}});
    auto before = h.text("Garage.csv");
    std::filesystem::remove(h.data("Garage.csv"));
    h.click(m->cmdAddAsset); // no answer queued: Cancel
    EXPECT_EQ(m->FG1.Rows(), 3);
    EXPECT_EQ(m->FG1.Row(), 2);
    EXPECT_EQ(m->FG1.Col(), 1);
    EXPECT_FALSE(std::filesystem::exists(h.data("Garage.csv")));
}

// With no category open, the item commands only say so.
TEST_F(Items, WithNoCategorySelectedAddAndDeleteAllOnlyTellTheUser) {
    h.writeIndex({"Garage"});
    m = &h.start();
    h.click(m->cmdAddAsset);
    h.menu("mnuDelItems");
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{"You must select a category in order to add an item.",
                                                           "Error deleting items: No category selected."}));
    EXPECT_EQ(h.dialogs.messages[0].title, "Quillmere");
    EXPECT_TRUE(h.dialogs.prompts.empty());
}

TEST_F(Items, TwoItemsOfTheSameNameBothStay) {
    startWith({{"Rake"}});
    h.dialogs.inputAnswers.push_back("Rake");
    h.click(m->cmdAddAsset);
    EXPECT_EQ(m->FG1.Rows(), 3);
    EXPECT_EQ(m->FG1.TextMatrix(2, 0), "Rake");
}

TEST_F(Items, AFullCategoryRefusesAnotherItemWithAMessage) {
    startWith({{"Rake"}});
    h.run([&] {
        m->FG1.setRows(forms::Grid::kMaxRows);
        m->ItemRowCount = forms::Grid::kMaxRows;
    });
    h.click(m->cmdAddAsset);
    ASSERT_EQ(h.dialogs.messages.size(), 1u);
    EXPECT_NE(h.dialogs.messages[0].text.find("32766"), std::string::npos);
    EXPECT_TRUE(h.dialogs.prompts.empty());
    EXPECT_EQ(m->FG1.Rows(), forms::Grid::kMaxRows);
}

TEST_F(Items, RenameChangesTheNameCellOnlyInTheGrid) {
    startWith({{"Rake", "10"}, {"Hoe", "5"}});
    auto before = h.text("Garage.csv");
    h.dialogs.inputAnswers.push_back("Leaf rake");
    h.run([&] { m->FG1.setRow(1); });
    h.click(m->cmdRenameItem);
    ASSERT_EQ(h.dialogs.prompts.size(), 1u);
    EXPECT_EQ(h.dialogs.prompts[0].text, "What would you like to change Rake to?");
    EXPECT_EQ(h.dialogs.prompts[0].title, "");
    EXPECT_EQ(m->FG1.TextMatrix(1, 0), "Leaf rake");
    EXPECT_EQ(h.text("Garage.csv"), before);
    h.click(m->cmdRenameItem); // an empty answer changes nothing
    EXPECT_EQ(m->FG1.TextMatrix(1, 0), "Leaf rake");
}

TEST_F(Items, RenameWithTheGridHiddenAsksButDropsTheAnswer) {
    startWith({});
    h.dialogs.inputAnswers.push_back("Something");
    h.click(m->cmdRenameItem);
    EXPECT_EQ(h.dialogs.prompts.size(), 1u);
    EXPECT_EQ(h.dialogs.prompts[0].text, "What would you like to change Item to?");
    EXPECT_EQ(m->FG1.TextMatrix(0, 0), "Item");
}

TEST_F(Items, DeleteRemovesTheSelectedRowWhenTheQuestionIsAnsweredYes) {
    startWith({{"Rake", "10"}, {"Hoe", "5"}, {"Spade", "7"}});
    h.run([&] { m->FG1.setRow(2); });
    h.dialogs.msgAnswers.push_back(forms::vbNo);
    h.click(m->cmdDeleteAsset); // No keeps the item
    EXPECT_EQ(m->FG1.Rows(), 4);
    h.click(m->cmdDeleteAsset);
    ASSERT_EQ(h.dialogs.messages.size(), 2u);
    EXPECT_EQ(h.dialogs.messages[0].text,
              "This will permanently DELETE the item: Hoe, and all the information on this item. Are you sure?");
    EXPECT_EQ(h.dialogs.messages[0].buttons, forms::vbYesNo);
    EXPECT_EQ(m->FG1.Rows(), 3);
    EXPECT_EQ(m->ItemRowCount, 3);
    EXPECT_EQ(m->FG1.TextMatrix(2, 0), "Spade");
    EXPECT_TRUE(m->T1.hasFocus()); // the editor reopens on the grid
    EXPECT_EQ(m->FG1.Tag(), m->FG1.Text());
}

TEST_F(Items, DeletingTheLastItemLeavesAnEmptyDisabledGridOnShow) {
    startWith({{"Rake", "10"}});
    h.click(m->cmdDeleteAsset);
    EXPECT_EQ(h.dialogs.messages.size(), 1u); // the question only
    EXPECT_EQ(m->FG1.Rows(), 1);
    EXPECT_EQ(m->ItemRowCount, 1);
    EXPECT_TRUE(m->FG1.Visible());
    EXPECT_FALSE(m->FG1.Enabled());
    EXPECT_FALSE(m->T1.Visible());
    EXPECT_EQ(m->FG1.FixedRows(), 0);
    EXPECT_EQ(m->FG1.TextMatrix(0, 0), "Item");
    EXPECT_EQ(m->FG1.ColWidth(6), 3100);
    // The file keeps the item until the next save.
    EXPECT_NE(h.text("Garage.csv").find("Rake"), std::string::npos);
    h.selectCategory(1);
    EXPECT_EQ(h.text("Garage.csv"), std::string(kHeadingLine) + "\r\n");
}

TEST_F(Items, DeleteInAnEmptyCategoryNamesTheHeadingAndFindsNoItem) {
    startWith({});
    h.click(m->cmdDeleteAsset);
    ASSERT_EQ(h.dialogs.messages.size(), 2u);
    EXPECT_EQ(h.dialogs.messages[0].text,
              "This will permanently DELETE the item: Item, and all the information on this item. Are you sure?");
    EXPECT_EQ(h.dialogs.messages[1].text, "There are no items to delete");
}

TEST_F(Items, DeleteAllEmptiesTheCategoryAndItsFileAtOnce) {
    startWith({{"Rake", "10"}, {"Hoe", "5"}});
    h.click(m->cmdExit);
    Harness again(h.dataDir.place(), h.floppyDir.place());
    auto& m2 = again.start();
    again.selectCategory(0);
    again.menu("mnuDelItems");
    ASSERT_EQ(again.dialogs.messages.size(), 1u);
    EXPECT_EQ(again.dialogs.messages[0].text, "This will permanently DELETE ALL items in category 'Garage'. Are you sure?");
    EXPECT_EQ(m2.FG1.Rows(), 1);
    EXPECT_EQ(m2.ItemRowCount, 1);
    EXPECT_FALSE(m2.FG1.Visible());
    EXPECT_EQ(m2.lstCategory.Text(), "Garage");
    EXPECT_EQ(readFile(again.data("Garage.csv")), std::string(kHeadingLine) + "\r\n");
    EXPECT_NE(readFile(again.data("Kitchen.csv"))->find("Kettle"), std::string::npos);
}

TEST_F(Items, DeleteAllInTheOnlyCategoryStillLeavesAnEmptyHiddenGrid) {
    h.writeCategories({{"Garage", {{"Rake"}}}});
    m = &h.startAndClick(0);
    h.menu("mnuDelItems");
    EXPECT_EQ(m->ItemRowCount, 1);
    EXPECT_FALSE(m->FG1.Visible());
    EXPECT_FALSE(m->T1.Visible());
    h.dialogs.inputAnswers.push_back("Shovel");
    h.click(m->cmdAddAsset);
    EXPECT_EQ(m->FG1.TextMatrix(1, 0), "Shovel");
}

// A category whose file can't be read, or that is named like an index file:
// the switch that meets it says so once, and every item command answers with
// the same message and changes nothing, in the window or on disk.
struct Refusal {
    const char* what;
    void (*act)(Harness&, qm::frmMain&);
};

class UnreadableCategory : public ::testing::TestWithParam<std::tuple<const char*, Refusal>> {};

TEST_P(UnreadableCategory, RefusesEveryItemCommandWithOneMessage) {
    const std::string name = std::get<0>(GetParam());
    Harness h;
    h.writeIndex({"Alpha", name});
    h.writeCategory("Alpha", {{"a1"}});
    if (name != "NumCats") {
        h.writeCategory(name, {{"x1", "2"}, {"x2"}});
        h.files.unreadable.insert(h.data(name + ".csv").string());
    }
    auto& m = h.startAndClick(1);
    const std::string told = m.UnreadableMessage(name);
    EXPECT_EQ(h.dialogs.texts(), std::vector<std::string>{told});
    const auto files = folderBytes(h.dataDir.path());
    const Table cells = gridCells(m.FG1);
    h.dialogs.msgAnswers = {forms::vbYes};
    h.dialogs.inputAnswers = {"new"};
    std::get<1>(GetParam()).act(h, m);
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{told, told}));
    EXPECT_TRUE(h.dialogs.prompts.empty());
    EXPECT_EQ(gridCells(m.FG1), cells);
    h.click(m.cmdExit);
    EXPECT_EQ(folderBytes(h.dataDir.path()), files);
}

INSTANTIATE_TEST_SUITE_P(
    Items, UnreadableCategory,
    ::testing::Combine(::testing::Values("Garage", "NumCats"),
                       ::testing::Values(Refusal{"AddItem", [](Harness& h, qm::frmMain& m) { h.click(m.cmdAddAsset); }},
                                         Refusal{"RenameItem", [](Harness& h, qm::frmMain& m) { h.click(m.cmdRenameItem); }},
                                         Refusal{"DeleteItem", [](Harness& h, qm::frmMain& m) { h.click(m.cmdDeleteAsset); }},
                                         Refusal{"DeleteAllItems", [](Harness& h, qm::frmMain&) { h.menu("mnuDelItems"); }})),
    [](const auto& info) { return std::string(std::get<0>(info.param)) + std::get<1>(info.param).what; });

} // namespace

// The item and category commands: prompts, messages, and the state each
// outcome leaves in the window and on disk. The prompts and messages as the
// user answers them in the real boxes are in the GUI commands test.
#include <gtest/gtest.h>

#include "report/frm_report.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using Texts = std::vector<std::string>;

namespace {

struct Commands : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    Texts prompts() {
        Texts t;
        for (const auto& p : h.dialogs.prompts) t.push_back(p.title + ": " + p.text);
        return t;
    }
};

// ---- items ----------------------------------------------------------------------

// Each case writes these categories, clicks on one entry (or none), and runs
// `act` with the answers queued; then the window, the messages (all titled
// "Quillmere"), the prompts if given, and the files are as told ("<missing>":
// none); the files named `kept` still hold their item.
struct CommandCase {
    const char* name;
    std::vector<Harness::Category> categories;
    int click;
    void (*act)(Harness&, qm::frmMain&);
    Texts answers;
    std::string window;
    Texts messages;
    std::optional<Texts> prompts;
    std::map<std::string, std::string> files;
    Texts kept = {};
};

class CommandTable : public Commands, public ::testing::WithParamInterface<CommandCase> {};

TEST_P(CommandTable, LeavesThisWindowAndTheseFiles) {
    const CommandCase& c = GetParam();
    h.writeCategories(c.categories);
    m = c.click < 0 ? &h.start() : &h.startAndClick(c.click);
    h.dialogs.inputAnswers = {c.answers.begin(), c.answers.end()};
    c.act(h, *m);
    EXPECT_WINDOW(h, c.window);
    EXPECT_EQ(h.dialogs.texts(), c.messages);
    for (const auto& msg : h.dialogs.messages) EXPECT_EQ(msg.title, "Quillmere");
    if (c.prompts) {
        EXPECT_EQ(prompts(), *c.prompts);
    }
    for (const auto& [file, bytes] : c.files) EXPECT_EQ(h.text(file), bytes) << file;
    for (const auto& f : c.kept) EXPECT_NE(h.text(f + ".csv").find(" item,1"), std::string::npos) << f;
}

// "Garage" with these items and "Kitchen"; categories each holding one item "<name> item" costing 1.
std::vector<Harness::Category> garage(const Table& items) { return {{"Garage", items}, {"Kitchen", {{"Kettle", "30"}}}}; }
std::vector<Harness::Category> oneItemEach(const Texts& names) {
    std::vector<Harness::Category> all;
    for (const auto& n : names) all.push_back({n, {{n + " item", "1"}}});
    return all;
}

const char* const kAdd = "Add Item: Please type in name of item you would like to add";
const std::string kHead = std::string(kHeadingLine) + "\r\n";
const char* const kDelete = "This will permanently DELETE the item: ";
const char* const kDeleteEnd = ", and all the information on this item. Are you sure?";

INSTANTIATE_TEST_SUITE_P(
    Items, CommandTable,
    ::testing::Values(
        CommandCase{"AddFirstItemBringsTheGridBack", garage({}), 0, [](Harness& h, qm::frmMain& m) {
                     EXPECT_EQ(m.FG1.Visible(), false);
                     EXPECT_TRUE(m.cmdAddAsset.hasFocus());
                     h.click(m.cmdAddAsset);
                 }, {"Mower"}, "Garage* Kitchen | Garage \"Garage\" | Item Mower | 2 at 1,1 fixed 11 editor focus T1", {}, Texts{kAdd},
                 {{"Garage.csv", kHead + "Mower,,,,,,\r\n"}}},
        // Cancel writes nothing, not even a missing file.
        CommandCase{"CancelledAdd", garage({{"Mower", "100"}, {"Rake", "10"}}), 0, [](Harness& h, qm::frmMain& m) {
                     std::filesystem::remove(h.data("Garage.csv"));
                     h.click(m.cmdAddAsset);
                 }, {}, "Garage* Kitchen | Garage \"Garage\" | Item Mower Rake | 3 at 2,1 fixed 11 editor focus T1", {}, Texts{kAdd},
                 {{"Garage.csv", "<missing>"}}},
        CommandCase{"NoCategorySelected", garage({{"Rake"}}), -1, [](Harness& h, qm::frmMain& m) {
                     h.menu("mnuReport"); // with every category left out
                     h.run([&] { m.Report().lstCategories.setChecked(0, false), m.Report().lstCategories.setChecked(1, false); });
                     h.click(m.Report().cmdOK), h.click(m.Report().cmdCancel);
                     h.click(m.cmdAddAsset);
                     h.menu("mnuDelItems");
                 }, {}, "Garage Kitchen | - \"\" | Item | 1 at 0,1 hidden fixed 01 focus cmdAddAsset",
                 {"No category chosen for the report.", "You must select a category in order to add an item.",
                  "Error deleting items: No category selected."}, Texts{},
                 {{"Garage.csv", kHead + "Rake,,,,,,\r\n"}}},
        CommandCase{"TwoOfTheSameNameBothStay", garage({{"Rake"}}), 0, [](Harness& h, qm::frmMain& m) { h.click(m.cmdAddAsset); }, {"Rake"},
                 "Garage* Kitchen | Garage \"Garage\" | Item Rake Rake | 3 at 2,1 fixed 11 editor focus T1", {}, Texts{kAdd},
                 {{"Garage.csv", kHead + "Rake,,,,,,\r\nRake,,,,,,\r\n"}}},
        CommandCase{"FullCategoryRefuses", garage({{"Rake"}}), 0, [](Harness& h, qm::frmMain& m) {
                     h.run([&] {
                         m.FG1.setRows(forms::Grid::kMaxRows);
                         m.ItemRowCount = forms::Grid::kMaxRows;
                     });
                     h.click(m.cmdAddAsset);
                 }, {"x"}, "Garage* Kitchen | Garage \"Garage\" | | 32767 at 32766,1 fixed 11 editor focus T1",
                 {"This category is full: it holds 32766 items, the most a category can hold. Nothing was added."}, Texts{}, {{"Garage.csv",
                 kHead + "Rake,,,,,,\r\n"}}},
        // The name changes in the grid only; an empty answer changes nothing.
        CommandCase{"Rename", garage({{"Rake", "10"}, {"Hoe", "5"}}), 0, [](Harness& h, qm::frmMain& m) {
                     h.run([&] { m.FG1.setRow(1); });
                     h.click(m.cmdRenameItem);
                     h.click(m.cmdRenameItem);
                 }, {"Leaf rake"},
                 "Garage* Kitchen | Garage \"Garage\" | Item Leaf rake Hoe | 3 at 1,6 fixed 11 editor focus cmdRenameItem", {},
                 Texts{": What would you like to change Rake to?", ": What would you like to change Leaf rake to?"}, {{"Garage.csv",
                 kHead + "Rake,10,,,,,\r\nHoe,5,,,,,\r\n"}}},
        CommandCase{"RenameWithTheGridHidden", garage({}), 0, [](Harness& h, qm::frmMain& m) { h.click(m.cmdRenameItem); }, {"Something"},
                 "Garage* Kitchen | Garage \"Garage\" | Item | 1 at 0,6 hidden fixed 01 focus cmdRenameItem", {},
                 Texts{": What would you like to change Item to?"}, {{"Garage.csv", kHead}}},
        // No keeps the item; Yes removes it and the editor reopens on the grid.
        CommandCase{"DeleteNoThenYes", garage({{"Rake", "10"}, {"Hoe", "5"}, {"Spade", "7"}}), 0, [](Harness& h, qm::frmMain& m) {
                     h.run([&] { m.FG1.setRow(2); });
                     h.dialogs.msgAnswers.push_back(forms::vbNo);
                     h.click(m.cmdDeleteAsset);
                     EXPECT_EQ(m.FG1.Rows(), 4);
                     EXPECT_EQ(h.dialogs.messages[0].buttons, forms::vbYesNo);
                     h.click(m.cmdDeleteAsset);
                     EXPECT_EQ(m.FG1.Tag(), m.FG1.Text());
                 }, {}, "Garage* Kitchen | Garage \"Garage\" | Item Rake Spade | 3 at 2,6 fixed 11 editor focus T1",
                 {kDelete + std::string("Hoe") + kDeleteEnd, kDelete + std::string("Hoe") + kDeleteEnd}, Texts{}, {{"Garage.csv",
                 kHead + "Rake,10,,,,,\r\nHoe,5,,,,,\r\nSpade,7,,,,,\r\n"}}},
        // The last item leaves an empty, disabled grid on show; the file keeps it until the next save.
        CommandCase{"DeleteTheLastItem", garage({{"Rake", "10"}}), 0, [](Harness& h, qm::frmMain& m) {
                     h.click(m.cmdDeleteAsset);
                     EXPECT_EQ(m.FG1.ColWidth(6), 3100);
                     EXPECT_EQ(m.FG1.RowHeight(0), 500); // the headings' row
                     EXPECT_WINDOW(h, "Garage* Kitchen | Garage \"Garage\" | Item | 1 at 0,6 disabled fixed 01 focus cmdDeleteAsset");
                     EXPECT_EQ(h.text("Garage.csv"), kHead + "Rake,10,,,,,\r\n");
                     h.selectCategory(1);
                 }, {}, "Garage Kitchen* | Kitchen \"Kitchen\" | Item Kettle | 2 at 1,6 fixed 11 editor focus T1",
                 {kDelete + std::string("Rake") + kDeleteEnd}, Texts{}, {{"Garage.csv", kHead}}},
        CommandCase{"DeleteInAnEmptyCategory", garage({}), 0, [](Harness& h, qm::frmMain& m) { h.click(m.cmdDeleteAsset); }, {},
                 "Garage* Kitchen | Garage \"Garage\" | Item | 1 at 0,6 hidden disabled fixed 01 focus cmdDeleteAsset",
                 {kDelete + std::string("Item") + kDeleteEnd, "There are no items to delete"}, Texts{}, {{"Garage.csv", kHead}}},
        // Delete All empties the category and its file at once; the grid is hidden until an item is added.
        CommandCase{"DeleteAllThenAdd", garage({{"Rake", "10"}, {"Hoe", "5"}}), 0, [](Harness& h, qm::frmMain& m) {
                     h.menu("mnuDelItems");
                     EXPECT_EQ(std::make_tuple(h.text("Garage.csv"), h.text("Kitchen.csv"), m.FG1.Visible(), m.T1.Visible()),
                               std::make_tuple(kHead, kHead + "Kettle,30,,,,,\r\n", false, false));
                     h.click(m.cmdAddAsset);
                 }, {"Shovel"}, "Garage* Kitchen | Garage \"Garage\" | Item Shovel | 2 at 1,1 fixed 11 editor focus T1",
                 {"This will permanently DELETE ALL items in category 'Garage'. Are you sure?"}, Texts{kAdd}, {{"Garage.csv",
                 kHead + "Shovel,,,,,,\r\n"}}}),
    [](const auto& info) { return std::string(info.param.name); });

// A category whose file can't be read, or that is named like an index file:
// the switch that meets it says so once, and every item command answers with the same message and changes nothing.
struct Refusal {
    const char* what;
    void (*act)(Harness&, qm::frmMain&);
};

class UnreadableCategory : public Commands, public ::testing::WithParamInterface<std::tuple<const char*, Refusal>> {};

TEST_P(UnreadableCategory, RefusesTheCommandWithOneMessage) {
    const std::string name = std::get<0>(GetParam());
    h.writeIndex({"Alpha", name});
    h.writeCategory("Alpha", {{"a1"}});
    if (name != "NumCats") {
        h.writeCategory(name, {{"x1", "2"}, {"x2"}});
        h.files.unreadable.insert(h.data(name + ".csv").string());
    }
    m = &h.startAndClick(1);
    const std::string told = m->UnreadableMessage(name);
    EXPECT_EQ(h.dialogs.texts(), Texts{told});
    const auto files = folderBytes(h.dataDir.path());
    const Table cells = gridCells(m->FG1);
    h.dialogs.msgAnswers = {forms::vbYes};
    h.dialogs.inputAnswers = {"new"};
    std::get<1>(GetParam()).act(h, *m);
    EXPECT_EQ(h.dialogs.texts(), (Texts{told, told}));
    EXPECT_TRUE(h.dialogs.prompts.empty());
    EXPECT_EQ(gridCells(m->FG1), cells);
    h.click(m->cmdExit);
    EXPECT_EQ(folderBytes(h.dataDir.path()), files);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, UnreadableCategory,
    ::testing::Combine(::testing::Values("Garage", "NumCats"),
                       ::testing::Values(Refusal{"AddItem", [](Harness& h, qm::frmMain& m) { h.click(m.cmdAddAsset); }},
                                         Refusal{"RenameItem", [](Harness& h, qm::frmMain& m) { h.click(m.cmdRenameItem); }},
                                         Refusal{"DeleteItem", [](Harness& h, qm::frmMain& m) { h.click(m.cmdDeleteAsset); }},
                                         Refusal{"DeleteAllItems", [](Harness& h, qm::frmMain&) { h.menu("mnuDelItems"); }})),
    [](const auto& info) { return std::string(std::get<0>(info.param)) + std::get<1>(info.param).what; });

// ---- categories -----------------------------------------------------------------

const char* const kUnreadable = "The file of the category \"Bike\" can't be read, so nothing typed in this category can be "
                                 "stored until the file can be read. The file is left as it is.";
const char* const kExists = "Error occured while renaming category. Category 'Bike' already exists.";
std::string notDone(const std::string& name, const std::string& what) {
    return "The category \"" + name + "\" could not be " + what + " (is it full?). Nothing was changed.";
}

INSTANTIATE_TEST_SUITE_P(
    Categories, CommandTable,
    ::testing::Values(
        // Cancelled: no walk, and nothing written, not even a missing file.
        CommandCase{"CancelledAdd", oneItemEach({"Bike", "Car"}), -1, [](Harness& h, qm::frmMain& m) {
                         std::filesystem::remove(h.data("Car.csv"));
                         auto switches = countSwitches(m);
                         h.click(m.cmdAddCategory);
                         EXPECT_EQ(std::make_tuple(h.dialogs.prompts.size(), *switches, h.text("Car.csv")), std::make_tuple(1u, 0, "<missing>"));
                     }, {}, "Bike Car | - \"\" | Item | 1 at 0,1 hidden fixed 01 focus cmdAddCategory", {}, std::nullopt,
                 {{"NumCats.csv", " 2 \r\n"}, {"CatFiles.csv", "Bike\r\nCar\r\n"}}},
        // The new category is open and empty; the walks stored the others unchanged.
        CommandCase{"Add", oneItemEach({"Bike", "Tools"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.click(m.cmdAddCategory);
                         EXPECT_EQ(std::make_tuple(m.NewCategoryName, m.txtCost.Text(), h.text("Car.csv")), std::make_tuple("", "$0.00", kHead));
                     }, {"Car"}, "Bike Car* Tools | Car \"Car\" | Item | 1 at 0,6 hidden fixed 01 focus cmdAddAsset", {}, std::nullopt,
                 {{"NumCats.csv", " 3 \r\n"}, {"CatFiles.csv", "Bike\r\nCar\r\nTools\r\n"}}, {"Bike", "Tools"}},
        // An exact duplicate stays selected and open; another letter case is another name.
        CommandCase{"AddDuplicates", oneItemEach({"Bike", "Car", "Tools"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.click(m.cmdAddCategory);
                         EXPECT_EQ(std::make_tuple(m.lstCategory.Text(), m.CurrentCategory.value_or("-"), m.lstCategory.ListCount()),
                                   std::make_tuple("Car", "Car", 3));
                         h.click(m.cmdAddCategory);
                     }, {"Car", "car"}, "Bike Car car* Tools | car \"car\" | Item | 1 at 0,6 hidden fixed 01 focus cmdAddAsset",
                 {"You already have a category named Car"}, std::nullopt,
                 {{"NumCats.csv", " 4 \r\n"}, {"CatFiles.csv", "Bike\r\nCar\r\ncar\r\nTools\r\n"}}},
        // Names that can't be categories are refused before any walk.
        CommandCase{"AddRefusedNames", oneItemEach({"Bike"}), -1, [](Harness& h, qm::frmMain& m) {
                         auto switches = countSwitches(m);
                         for (int i = 0; i < 4; ++i) h.click(m.cmdAddCategory);
                         for (const auto& msg : h.dialogs.messages) EXPECT_EQ(msg.buttons, forms::vbOKOnly);
                         EXPECT_EQ(*switches, 0);
                     }, {"NumCats", "CatFiles", "Tab\there", std::string(300, 'x')},
                 "Bike | - \"\" | Item | 1 at 0,1 hidden fixed 01 focus cmdAddCategory",
                 {"\"NumCats\" is the name of one of the program's own files. Please choose another name.",
                  "\"CatFiles\" is the name of one of the program's own files. Please choose another name.",
                  "A category name can't hold tabs, line breaks or other control characters.",
                  "That name is too long for a file name. Please choose a shorter name."},
                 std::nullopt, {{"NumCats.csv", " 1 \r\n"}, {"CatFiles.csv", "Bike\r\n"}}},
        CommandCase{"RenameTheOnlyCategory", oneItemEach({"Bike"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.selectCategory(0);
                         h.click(m.cmdRenameCat);
                     }, {"Bicycle"}, "Bicycle* | Bicycle \"Bicycle\" | Item Bike item | 2 at 1,6 fixed 11 editor focus T1", {},
                 std::nullopt, {{"NumCats.csv", " 1 \r\n"}, {"CatFiles.csv", "Bicycle\r\n"}, {"Bike.csv", "<missing>"}}, {"Bicycle"}},
        // To an earlier place among three: the list's entries shift and the renamed one stays open.
        CommandCase{"RenameToAnEarlierPlace", oneItemEach({"Bike", "Car", "Tools"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.selectCategory(2);
                         h.click(m.cmdRenameCat);
                     }, {"Axe"}, "Axe* Bike Car | Axe \"Axe\" | Item Tools item | 2 at 1,6 fixed 11 editor focus T1", {},
                 std::nullopt, {{"CatFiles.csv", "Axe\r\nBike\r\nCar\r\n"}, {"Tools.csv", "<missing>"}}, {"Axe", "Bike", "Car"}},
        // Nothing selected; its own name is a duplicate like any other; cancelled: the old entry is selected again.
        CommandCase{"RenameRefusals", oneItemEach({"Bike", "Car"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.click(m.cmdRenameCat);
                         EXPECT_TRUE(h.dialogs.prompts.empty());
                         h.selectCategory(0);
                         h.click(m.cmdRenameCat);
                         EXPECT_FALSE(m.RenamePending);
                         h.click(m.cmdRenameCat);
                         EXPECT_FALSE(m.RenamePending);
                     }, {"Bike"}, "Bike* Car | Bike \"Bike\" | Item Bike item | 2 at 1,6 fixed 11 editor focus T1",
                 {"Error renaming category: No category selected.", kExists}, std::nullopt,
                 {{"NumCats.csv", "2 \r\n"}, {"CatFiles.csv", "Bike\r\nCar\r\n"}}, {"Bike", "Car"}},
        // A category whose file can't be read is not renamed.
        CommandCase{"RenameUnreadable", oneItemEach({"Bike", "Car"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.files.unreadable.insert(h.data("Bike.csv").string());
                         h.selectCategory(0);
                         h.click(m.cmdRenameCat);
                         EXPECT_TRUE(h.dialogs.prompts.empty());
                     }, {"Other"}, "Bike* Car | Bike \"Bike\" | Item | 1 at 0,6 hidden fixed 01 focus cmdRenameCat", {kUnreadable,
                 "The file of the category 'Bike' can't be read, so it can't be renamed. Nothing was changed."}, std::nullopt,
                 {{"NumCats.csv", "2 \r\n"}, {"CatFiles.csv", "Bike\r\nCar\r\n"}}, {"Bike"}},
        // The walk ends on the last entry.
        CommandCase{"Delete", oneItemEach({"Bike", "Car", "Tools"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.click(m.cmdDeleteCategory);
                         h.selectCategory(1);
                         h.click(m.cmdDeleteCategory);
                     }, {}, "Bike Tools* | Tools \"Tools\" | Item Tools item | 2 at 1,6 fixed 11 editor focus T1",
                 {"Error deleting category: No category selected.", "This will permanently DELETE all contents of 'Car'. Are you sure?"},
                 std::nullopt, {{"NumCats.csv", " 2 \r\n"}, {"CatFiles.csv", "Bike\r\nTools\r\n"}, {"Car.csv", "<missing>"}}},
        // After the last category nothing is open, and nothing is written under its name.
        CommandCase{"DeleteTheLast", oneItemEach({"Bike"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.selectCategory(0);
                         h.click(m.cmdDeleteCategory);
                         EXPECT_EQ(m.txtCost.Text(), "");
                         h.click(m.cmdExit);
                     }, {}, "| - \"\" | Item | 1 at 0,6 hidden fixed 01 focus cmdExit",
                 {"This will permanently DELETE all contents of 'Bike'. Are you sure?"}, std::nullopt, {{"NumCats.csv", " 0 \r\n"},
                 {"CatFiles.csv", ""}, {"Bike.csv", "<missing>"}}},
        // Delete All drops every .csv (picture links too) and keeps colours,
        // pictures and help; picture links stay behind a rename and a delete.
        CommandCase{"PictureLinksGoOnlyWithDeleteAll", {{"Bike", {{"Bike item"}}}, {"Car", {}}}, -1, [](Harness& h, qm::frmMain& m) {
                         for (const char* keep : {"HColor", "NoPic.jpg", "Readme.htm"}) writeFile(h.data(keep), "keep");
                         writeFile(h.data("BikeBike item.csv"), "/pictures/bike.jpg\r\n");
                         h.selectCategory(0);
                         h.click(m.cmdRenameCat);
                         h.selectCategory(0);
                         h.click(m.cmdDeleteCategory);
                         EXPECT_TRUE(std::filesystem::exists(h.data("BikeBike item.csv")));
                         h.menu("mnuDelAllCats");
                     }, {"Bicycle"}, "| - \"\" | Item | 1 at 0,6 hidden fixed 01 focus cmdAddAsset",
                 {"This will permanently DELETE all contents of 'Bicycle'. Are you sure?",
                  "WARNING: This will DELETE ALL Categories and ERASE EVERYTHING from the whole asset database. Are you sure?"},
                 std::nullopt,
                 {{"NumCats.csv", " 0 \r\n"}, {"CatFiles.csv", ""}, {"Car.csv", "<missing>"}, {"BikeBike item.csv", "<missing>"},
                  {"HColor", "keep"}, {"NoPic.jpg", "keep"}, {"Readme.htm", "keep"}}},
        // One step: whichever file can't be stored (the new file, the names, the pair
        // of both index files, each refused in turn), the change is taken back and told.
        CommandCase{"AddTakenBackWhenAFileCantBeStored", oneItemEach({"Bike", "Tools"}), -1, [](Harness& h, qm::frmMain& m) {
                         for (const char* f : {"Car.csv", "CatFiles.csv", ".quillmere-index"}) h.files.unwritable = {h.data(f)}, h.click(m.cmdAddCategory);
                     }, {"Car", "Car", "Car"}, "Bike Tools* | Tools \"Tools\" | Item Tools item | 2 at 1,6 fixed 11 editor focus T1",
                 Texts(3, notDone("Car", "added: the disk could not store it")), std::nullopt,
                 {{"NumCats.csv", " 2 \r\n"}, {"CatFiles.csv", "Bike\r\nTools\r\n"}, {"Car.csv", "<missing>"}}, {"Bike", "Tools"}},
        CommandCase{"RenameUndoneWhenAFileCantBeStored", oneItemEach({"Bike", "Car"}), -1, [](Harness& h, qm::frmMain& m) {
                         h.selectCategory(0);
                         for (const char* f : {"Bicycle.csv", "CatFiles.csv"}) h.files.unwritable = {h.data(f)}, h.click(m.cmdRenameCat);
                     }, {"Bicycle", "Bicycle"}, "Bike* Car | Bike \"Bike\" | Item Bike item | 2 at 1,6 fixed 11 focus lstCategory",
                 Texts(2, notDone("Bike", "renamed: the disk could not store it")), std::nullopt,
                 {{"CatFiles.csv", "Bike\r\nCar\r\n"}, {"Bicycle.csv", "<missing>"}}, {"Bike", "Car"}},
        CommandCase{"DeleteUndoneWhenTheIndexCantBeStored", oneItemEach({"Bike", "Car"}), 1, [](Harness& h, qm::frmMain& m) {
                         h.files.unwritable = {h.data("CatFiles.csv")}, h.click(m.cmdDeleteCategory);
                     }, {}, "Bike Car* | Car \"Car\" | Item Car item | 2 at 1,6 fixed 11 editor focus T1",
                 {"This will permanently DELETE all contents of 'Car'. Are you sure?",
                  notDone("Car", "deleted: the disk could not store the list of categories")}, std::nullopt,
                 {{"CatFiles.csv", "Bike\r\nCar\r\n"}}, {"Bike", "Car"}},
        CommandCase{"DeleteAllOnAnEmptyListAsksNothing", oneItemEach({}), -1, [](Harness& h, qm::frmMain&) { h.menu("mnuDelAllCats"); }, {},
                 "| - \"\" | Item | 1 at 0,1 hidden fixed 01 focus cmdAddCategory", {}, std::nullopt,
                 {{"NumCats.csv", " 0 \r\n"}, {"CatFiles.csv", ""}}}),
    [](const auto& info) { return std::string(info.param.name); });

// A first run left at once writes a count never assigned, an empty line: no
// damaged index to be kept from being written.
TEST_F(Commands, AddToAnEmptyListAfterAnEmptyCount) {
    writeFile(h.data("NumCats.csv"), "\r\n");
    writeFile(h.data("CatFiles.csv"), "");
    m = &h.start();
    h.dialogs.inputAnswers.push_back("Mom's stuff");
    h.click(m->cmdAddCategory);
    EXPECT_EQ(std::make_tuple(m->CategoryCount.toInt16(), h.text("NumCats.csv"), h.text("CatFiles.csv")),
              std::make_tuple(std::optional<int>(1), " 1 \r\n", "Mom's stuff\r\n"));
}

} // namespace

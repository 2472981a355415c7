// Import Spreadsheet: a file as the user picks it, the preview's choices, and
// the category a fresh start of the program then shows, or nothing made.
#include <gtest/gtest.h>

#include "forms/input.h"
#include "import/frm_import.h"
#include "support/snapshots.h"

using namespace qmtest;
using Texts = std::vector<std::string>;
using namespace std::string_literals;

namespace {

struct ImportCase {
    const char* name;
    std::string bytes;  // the file, or the fixture of that name
    Table items;        // of the new category, "Sheet 1" or as typed; none: no category made
    Texts messages;
    std::vector<std::pair<int, int>> picks = {}; // in the preview: a column (-1: the one selected at opening), then where it goes
    std::string typed = "";                      // over the file's name
    const char* file = "Sheet 1.csv";            // its name as picked
};

class ImportTable : public ::testing::TestWithParam<ImportCase> {};

TEST_P(ImportTable, BringsInTheseItemsAndTellsThis) {
    const ImportCase& c = GetParam();
    Harness h;
    h.writeCategories({{"Garage", {{"Drill"}}}});
    h.start();
    const auto file = h.floppy(c.file);
    writeFile(file, c.bytes.ends_with(".fixture") ? *readFile(QM_IMPORT_FILES + c.bytes.substr(0, c.bytes.size() - 8))
                                                  : c.bytes);
    h.dialogs.openAnswers = {file.string()};
    h.menu("mnuImport");
    if (qm::frmImport* f = h.m().importIfLoaded()) {
        for (auto [column, choice] : c.picks) {
            if (column >= 0) forms::input::selectEntry(h.runtime, f->lstColumns, column);
            forms::input::selectEntry(h.runtime, f->lstChoices, choice);
        }
        if (!c.typed.empty()) h.run([&] { f->txtName.setText(c.typed); });
        h.click(f->cmdOK);
        // A refused name leaves the preview with what the user typed.
        if (h.m().importIfLoaded()) {
            EXPECT_EQ(f->txtName.Text(), c.typed);
        }
    }
    EXPECT_EQ(h.dialogs.texts(), c.messages);
    std::map<std::string, Table> after = categoriesAfterRestart(h);
    std::map<std::string, Table> expected{{"Garage", withHeading({{"Drill"}})}};
    if (!c.items.empty()) expected[c.typed.empty() ? "Sheet 1" : c.typed] = withHeading(c.items);
    EXPECT_EQ(after, expected);
}

const std::string kHeads = "Item,Original Cost,Current Value,Location Purchased,Date Purchased,Warranty Expiration,"
                           "Serial Number / Description\r\n";
const Table kJack{{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}};
// The cells of the two fixtures (import_files/), as they stand in the spreadsheet.
const Table kSpreadsheetCells{
    {"Kettle, \"steel\"", "12.50", "10", "Shop \"A\", Main St", "3/1/1999", "", "two\nlines; Colour: red"},
    {" leading blank", "5\" disk", "", "", "", "2030", "SN 9"},
    {"Café €", "€ 1.234,56", "ö", "", "", "", "Colour: blue; green"},
    {"\"quoted whole\""}};
std::string made(int n) { return std::to_string(n) + (n == 1 ? " item" : " items") + " came in as the category \"Sheet 1\"."; }
const char* const kNotText = "This file is not a spreadsheet saved as text (CSV), so it can't be imported. Nothing was imported.";

INSTANTIATE_TEST_SUITE_P(
    Files, ImportTable,
    ::testing::Values(
        ImportCase{"CommaUtf8FileWithoutExtension", kHeads + "Jack,25.00,20.00,Hardware store,3/1/1999,3/1/2000,SN 1234\r\n", kJack, {made(1)}, {}, "", "Sheet 1"},
        ImportCase{"SemicolonHeadingsInAnotherOrder", "serial;PRICE;Name;Value;Store;Warranty;Purchase date\n"
                   "SN 1234;25.00;Jack;20.00;Hardware store;3/1/2000;3/1/1999\n", kJack, {made(1)}},
        ImportCase{"TabByteOrderMarkLoneCr", "\xEF\xBB\xBFItem\tCost\r\nJack\t25,00\r", {{"Jack", "25,00"}}, {made(1)}},
        ImportCase{"Windows1252", "Item,Notes\nCaf\xE9 \x80,\x93\x9D\x81\n", {{"Café €", "", "", "", "", "", "“\xC2\x9D\xC2\x81"}}, {made(1)}},
        ImportCase{"QuotedBreaksAndUnknownColumnsWindows1252", "Item,Colour,Notes,Room,\n\"a\r\nb\",red,\"x \"\"y\"\"\",Andr\xE9\x92s hall,\n\n,,,,\n",
                   {{"a\r\nb", "", "", "", "", "", "x \"y\"; Colour: red; Room: André’s hall"}}, {made(1)}},
        ImportCase{"ChoicesChangedAndNameTyped", "Item,Colour,Cost\nJack,¿red?,5\n", {{"¿red?", "", "", "", "", "", "Item: Jack"}},
                   {"1 item came in as the category \"Tools\"."}, {{-1, 7}, {1, 0}, {2, 8}}, "Tools"},
        ImportCase{"NameOfAnExistingCategory", "Item\nJack\n", {}, {"You already have a category named Garage"}, {}, "Garage"},
        ImportCase{"RowsThatCouldNot", "Item,Cost\n\"Ja\r\nck\",1\nSaw,2,3\n\"La\"\"\r\nthe\",,\n\"Hammer,4\n", {{"Ja\r\nck", "1"}, {"La\"\r\nthe"}},
                   {made(2) + "\n\n2 rows of the file could not come in:\nLine 4: it has 3 cells, and the heading line has 2.\n"
                              "Line 7: a cell opens with a double quote that is never closed, so this line and the rest "
                              "of the file could not be read."}},
        ImportCase{"Empty", "", {}, {"The file is empty: there is nothing to import."}},
        ImportCase{"BlankLinesOnly", "\r\n;;\r\n", {}, {"The file holds no cells: there is nothing to import."}},
        ImportCase{"NotText", "\x89PNG\r\n\x1A\n\0\0\0\rIHDR"s, {}, {kNotText}},
        ImportCase{"PythonCsvModule", "python_csv.csv.fixture", kSpreadsheetCells, {made(4)}},
        ImportCase{"LibreOfficeCalc", "calc.csv.fixture", kSpreadsheetCells, {made(4)}}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace

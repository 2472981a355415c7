// Find and the warranty list: what a keystroke finds, letter case and accents
// aside, in the files and in the grid as typed; the dates as users type them;
// the switch to a result with the editor on its cell.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "find/frm_find.h"
#include "find/warranty_dates.h"
#include "forms/input.h"
#include "support/scripted_platform.h"

using namespace qmtest;
using Entries = std::vector<std::string>;
using Order = forms::DateRules::Order;

namespace {

struct DateCase {
    const char* text;
    Order order;
    std::optional<int> day; // nothing: not understood
};
class ReadDateTable : public ::testing::TestWithParam<DateCase> {};
TEST_P(ReadDateTable, ReadsTheDateAsTheRegionWritesIt) {
    EXPECT_EQ(qm::ReadDate(GetParam().text, {GetParam().order}), GetParam().day) << GetParam().text;
}
const auto D = qm::DayNumber;
INSTANTIATE_TEST_SUITE_P(Find, ReadDateTable, ::testing::Values(
    DateCase{"3/1/2027", Order::MonthDayYear, D(2027, 3, 1)}, DateCase{" 3/1/2027 ", Order::DayMonthYear, D(2027, 1, 3)},
    DateCase{"2027-03-01", Order::DayMonthYear, D(2027, 3, 1)}, DateCase{"01.03.27", Order::DayMonthYear, D(2027, 3, 1)},
    DateCase{"1/3/29", Order::MonthDayYear, D(2029, 1, 3)}, DateCase{"1/3/30", Order::MonthDayYear, D(1930, 1, 3)},
    DateCase{"27/03/01", Order::YearMonthDay, D(2027, 3, 1)}, DateCase{"25/12/2027", Order::MonthDayYear, D(2027, 12, 25)},
    DateCase{"2/29/2027", Order::MonthDayYear, {}}, DateCase{"3/1", Order::MonthDayYear, {}},
    DateCase{"3/1/2027x", Order::MonthDayYear, {}}, DateCase{"3/1/202", Order::MonthDayYear, {}}));

// Garage: Drill, Saw; Kitchen: Café Table, Toaster, Kettle; Shed: Box 1 to Box 20. Today is 26 November 2026.
struct FindWindow : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;
    qm::frmFind* find = nullptr;
    void SetUp() override {
        std::vector<std::vector<std::string>> boxes;
        for (int i = 1; i <= 20; ++i) boxes.push_back({"Box " + std::to_string(i), "", "", "", "", "", "B-" + std::to_string(i)});
        h.writeCategories({{"Garage", {{"Drill", "", "", "Hardware store", "", "2026-12-25", "SN 1234"}, {"Saw", "", "", "", "", "25/11/26", "S-1"}}},
                           {"Kitchen", {{"Café Table", "", "", "IKEA", "", "1/5/2027", "SN-CAFE-1"},
                                        {"Toaster", "", "", "À la Straße 5, Łódź", "", "3/1/2026", "T-9"}, {"Kettle", "", "", "Market", "", "soon", "K-1"}}},
                           {"Shed", boxes}});
        h.currency.fixToday(D(2026, 11, 26));
        m = &h.startAndClick(1);
        h.menu("mnuFind");
        find = m->findIfLoaded();
    }
    Entries type(const std::string& text) {
        h.run([&] { find->txtFind.setText(text); });
        return find->lstResults.items();
    }
};

TEST_F(FindWindow, FindsEveryCellHoldingTheTextWhateverItsCaseAndAccents) {
    const std::pair<const char*, Entries> kCases[] = {
        {"cafe", {"Kitchen / Café Table / Item: [Café] Table", "Kitchen / Café Table / Serial Number / Description: SN-[CAFE]-1"}},
        {"A LA STRASSE 5, LODZ", {"Kitchen / Toaster / Location Purchased: [À la Straße 5, Łódź]"}},
        {"sn", {"Garage / Drill / Serial Number / Description: [SN] 1234", "Kitchen / Café Table / Serial Number / Description: [SN]-CAFE-1"}},
        {"b-20", {"Shed / Box 20 / Serial Number / Description: [B-20]"}},
        {"ghost", {}}, // a last line cut short (a 0 byte in it): no row, as a load gives none
        {"zzz", {}},
    };
    std::ofstream(h.data("Garage.csv"), std::ios::app) << std::string("Gh\0ost,1", 8);
    for (const auto& [text, entries] : kCases) EXPECT_EQ(type(text), entries) << text;
    EXPECT_EQ(find->lblCount.Caption(), "Not found.");
}

TEST_F(FindWindow, ListsWarrantiesByDateAndTheDatesNotUnderstood) {
    const std::string drill = "2026-12-25 - Garage / Drill - serial: SN 1234 - bought at: Hardware store";
    const std::string table = "1/5/2027 - Kitchen / Café Table - serial: SN-CAFE-1 - bought at: IKEA";
    const std::string unread = "soon - Kitchen / Kettle - serial: K-1 - bought at: Market";
    const std::tuple<qm::frmFind::WarrantyChoice, const char*, Entries> kCases[] = {
        {qm::frmFind::WarrantyChoice::EndsWithin, "30", {drill, "date not understood", unread}},
        {qm::frmFind::WarrantyChoice::EndsWithin, "40", {drill, table, "date not understood", unread}},
        {qm::frmFind::WarrantyChoice::EndsWithin, "x", {"N is not a number of days."}},
        {qm::frmFind::WarrantyChoice::Ended, "30",
         {"3/1/2026 - Kitchen / Toaster - serial: T-9 - bought at: À la Straße 5, Łódź", "25/11/26 - Garage / Saw - serial: S-1 - bought at: ",
          "date not understood", unread}},
        {qm::frmFind::WarrantyChoice::Any, "30", {"3/1/2026 - Kitchen / Toaster - serial: T-9 - bought at: À la Straße 5, Łódź",
          "25/11/26 - Garage / Saw - serial: S-1 - bought at: ", drill, table, "date not understood", unread}},
    };
    for (const auto& [choice, days, entries] : kCases) {
        h.run([&] {
            find->txtDays.setText(days);
            find->lstWarrantyChoice.setSelected(static_cast<int>(choice));
        });
        EXPECT_EQ(find->lstWarranty.items(), entries) << days;
    }
}

} // namespace

// Items added, removed or changed after the list was made, here or by another
// program: Go to finds the same cell of the same item where it stands now and
// opens it as a click on the list does (what was typed reaches its file), with
// the editor on the cell; where it is gone it says so and shows the lists anew,
// opening nothing.
TEST_F(FindWindow, GoToFollowsTheCellAfterTheItemsChanged) {
    const std::string saw = "25/11/26 - Garage / Saw - serial: S-1 - bought at: ";
    forms::input::key(h.runtime, m->T1, 0, 0, U'Q'); // on Kettle's serial number
    EXPECT_EQ(type("s-1"), Entries{"Garage / Saw / Serial Number / Description: [S-1]"});
    h.run([&] { find->lstWarrantyChoice.setSelected(static_cast<int>(qm::frmFind::WarrantyChoice::Any)); });
    ASSERT_EQ(find->lstWarranty.List(1), saw);
    h.writeCategory("Garage", {{"Anvil"}, {"Drill"}, {"Hoe"}, {"Saw", "", "", "", "", "25/11/26", "S-1"}, {"Rake"}});
    // The button with nothing chosen goes to the first entry, a double click to the one chosen.
    const std::tuple<forms::ListBox*, int, std::string, int, int, std::string> kGoes[] = {
        {&find->lstResults, -1, "Garage", 4, 6, "S-1"}, {&find->lstWarranty, 0, "Kitchen", 2, 5, "3/1/2026"},
        {&find->lstWarranty, 1, "Garage", 4, 5, "25/11/26"}};
    for (const auto& [list, index, category, row, col, text] : kGoes) {
        if (index < 0) forms::input::click(h.runtime, find->cmdGo);
        else h.run([&] { list->setSelected(index); }), h.run([&] { find->GoTo(*list); });
        EXPECT_EQ(std::make_tuple(*m->CurrentCategory, m->FG1.Row(), m->FG1.Col(), m->T1.Text(), m->T1.Visible() && m->T1.hasFocus()),
                  std::make_tuple(category, row, col, text, true));
    }
    EXPECT_NE(h.text("Kitchen.csv").find(",K-1Q\r\n"), std::string::npos);
    forms::input::key(h.runtime, m->T1, 0, 0, U'X'); // the date typed over in the open category
    h.run([&] { find->lstWarranty.setSelected(1); });
    h.run([&] { find->GoTo(find->lstWarranty); });
    EXPECT_EQ(h.dialogs.texts().back(), "The items have changed since this list was made: \"Saw\" no longer holds "
                                        "\"25/11/26\" in \"Garage\". The lists are shown anew.");
    const Entries after = find->lstWarranty.items();
    EXPECT_EQ(std::count(after.begin(), after.end(), "25/11/26X - Garage / Saw - serial: S-1 - bought at: "), 1);
}

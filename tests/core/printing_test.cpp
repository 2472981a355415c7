// The printed document of a category, line by line, and its two messages.
#include <gtest/gtest.h>

#include "support/scripted_platform.h"

using namespace qmtest;

namespace {

const std::string kRule(77, '-');

struct Printing : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;
    void startWith(const std::vector<std::vector<std::string>>& items) {
        h.writeCategories({{"Car parts", items}});
        m = &h.start();
    }
};

TEST_F(Printing, EachFilledCellGetsALabelledLineAndEachItemARule) {
    startWith({{"Jack", "25.00", "", "  ", "3/1/1999"}, {}, {"Wrench"}});
    h.selectCategory(0);
    h.click(m->cmdPrint);
    ASSERT_EQ(h.printer.jobs.size(), 1u);
    EXPECT_EQ(h.printer.jobs[0], (std::vector<std::string>{
                                     "Car parts", kRule, "", "",
                                     "Item: Jack", "", "Original Cost: 25.00", "", "Location Purchased:   ", "",
                                     "Date Purchased: 3/1/1999", "", kRule,
                                     kRule, // a row with no filled cell
                                     "Item: Wrench", "", kRule}));
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{"Category Printing."}));
}

TEST_F(Printing, WithNoCategorySelectedThePageStillComesOutAfterTheError) {
    startWith({{"Jack"}});
    h.click(m->cmdPrint);
    ASSERT_EQ(h.printer.jobs.size(), 1u);
    EXPECT_EQ(h.printer.jobs[0], (std::vector<std::string>{"", kRule, "", ""}));
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{"Error: No category selected to print.", "Category Printing."}));
}

TEST_F(Printing, APrinterErrorEndsTheJobWithWhatWasSent) {
    startWith({{"Jack", "25"}, {"Wrench", "5"}});
    h.selectCategory(0);
    h.printer.failAfter = 7;
    h.click(m->cmdPrint);
    ASSERT_EQ(h.printer.jobs.size(), 1u);
    EXPECT_EQ(h.printer.jobs[0], (std::vector<std::string>{"Car parts", kRule, "", "", "Item: Jack"}));
    EXPECT_EQ(h.dialogs.texts(), (std::vector<std::string>{"Category Printing."}));
    EXPECT_EQ(m->FG1.Rows(), 3);
}

} // namespace

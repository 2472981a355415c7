// The printed document of a category, line by line, and its two messages.
#include <gtest/gtest.h>

#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using Lines = std::vector<std::string>;

namespace {

const std::string kRule(77, '-');

struct PrintCase {
    const char* name;
    Table items; // of "Car parts"
    bool select;
    int failAfter; // lines the printer takes before an error; -1: all
    Lines page, messages;
};

class Printing : public ::testing::TestWithParam<PrintCase> {};

TEST_P(Printing, SendsThesePagesAndMessages) {
    const PrintCase& c = GetParam();
    Harness h;
    h.writeCategories({{"Car parts", c.items}});
    auto& m = h.start();
    if (c.select) h.selectCategory(0);
    if (c.failAfter >= 0) h.printer.failAfter = c.failAfter;
    h.click(m.cmdPrint);
    ASSERT_EQ(h.printer.jobs.size(), 1u);
    EXPECT_EQ(h.printer.jobs[0], c.page);
    EXPECT_EQ(h.dialogs.texts(), c.messages);
    EXPECT_EQ(m.FG1.Rows(), c.select ? static_cast<int>(c.items.size()) + 1 : 1);
}

INSTANTIATE_TEST_SUITE_P(
    Print, Printing,
    ::testing::Values(
        // Each filled cell gets a labelled line, each item a rule, a row with no filled cell only the rule.
        PrintCase{"EveryFilledCell", {{"Jack", "25.00", "", "  ", "3/1/1999"}, {}, {"Wrench"}}, true, -1,
                  {"Car parts", kRule, "", "", "Item: Jack", "", "Original Cost: 25.00", "", "Location Purchased:   ", "",
                   "Date Purchased: 3/1/1999", "", kRule, kRule, "Item: Wrench", "", kRule},
                  {"Category Printing."}},
        // With no category selected the page still comes out after the error.
        PrintCase{"NoCategorySelected", {{"Jack"}}, false, -1, {"", kRule, "", ""},
                  {"Error: No category selected to print.", "Category Printing."}},
        // A printer error ends the job with what was sent.
        PrintCase{"PrinterError", {{"Jack", "25"}, {"Wrench", "5"}}, true, 7, {"Car parts", kRule, "", "", "Item: Jack"},
                  {"Category Printing."}}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace

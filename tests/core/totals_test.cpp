// Totals and currency: how a cell reads as a number, how amounts are rounded,
// written and read back, and how UpdateTotals adds up the two money columns.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "forms/failure.h"
#include "forms/locale_currency.h"
#include "mainwindow/totals.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using forms::LocaleCurrency;

namespace {

// ---- NumberFromCell -----------------------------------------------------------------

struct NumberCase {
    std::string text;
    double value;
};

class NumberFromCellTable : public ::testing::TestWithParam<NumberCase> {};

TEST_P(NumberFromCellTable, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(qm::NumberFromCell(GetParam().text), GetParam().value) << "\"" << GetParam().text << "\"";
}

INSTANTIATE_TEST_SUITE_P(
    Totals, NumberFromCellTable,
    ::testing::Values(NumberCase{"1200", 1200}, NumberCase{"12.50 used", 12.5}, NumberCase{"1,200.50", 1},
                      NumberCase{"$1200", 0}, NumberCase{"about 40", 0}, NumberCase{"", 0}, NumberCase{"1 200", 1200},
                      NumberCase{"-3", -3}, NumberCase{".5", 0.5}, NumberCase{"1.2.3", 1.2}, NumberCase{"1e3", 1000},
                      // Exponents, signs, and blanks, tabs and line feeds anywhere.
                      NumberCase{"1D3", 1000}, NumberCase{"2d-2", 0.02}, NumberCase{"1 e 3", 1000}, NumberCase{"+7", 7},
                      NumberCase{"\t4\n2", 42}, NumberCase{"- 5", -5}, NumberCase{"5-", 5}, NumberCase{"1e", 1},
                      NumberCase{"1e+", 1}, NumberCase{"1.5E2x", 150}, NumberCase{"e5", 0}, NumberCase{".", 0},
                      NumberCase{"-", 0}, NumberCase{"  12  ", 12}, NumberCase{"1e-400", 0},
                      // Hexadecimal and octal whole numbers.
                      NumberCase{"&H1F", 31}, NumberCase{"&O17", 15}, NumberCase{"&H", 0}, NumberCase{"&X1", 0}),
    [](const auto& info) { return "Case" + std::to_string(info.index); });

TEST(NumberFromCellLimits, NumberBeyondAFloatFails) {
    EXPECT_THROW(qm::NumberFromCell("1e400"), forms::Failure);
    EXPECT_THROW(qm::NumberFromCell("-1e400"), forms::Failure);
    EXPECT_EQ(qm::NumberFromCell("1e308"), 1e308);
}

// ---- rounding and the currency format ------------------------------------------------------

TEST(Currency, HalvesRoundAwayFromZero) {
    struct C {
        double x;
        int decimals;
        double rounded;
    };
    for (const C& c : {C{0.004, 2, 0}, C{0.005, 2, 0.01}, C{-0.005, 2, -0.01}, C{1.005, 2, 1.01}, C{2.675, 2, 2.68},
                       C{-2.675, 2, -2.68}, C{0.015, 2, 0.02}, C{0.125, 2, 0.13}, C{0.0049999, 2, 0}, C{1234.5, 2, 1234.5},
                       C{2.5, 0, 3}, C{-2.5, 0, -3}, C{1.4, 0, 1}, C{0.0005, 3, 0.001}, C{-0.0004, 3, 0}})
        EXPECT_EQ(qm::RoundToCurrency(c.x, c.decimals), c.rounded) << c.x << " to " << c.decimals << " decimals";
}

TEST(Currency, UsFormatWhereTheLocaleHasNoCurrency) {
    for (const char* name : {"C", "POSIX", "C.UTF-8", "xx_NOWHERE.UTF-8"}) {
        LocaleCurrency cur(name);
        EXPECT_EQ(qm::MoneyText(cur, 1234.5), "$1,234.50") << name;
        EXPECT_EQ(qm::MoneyText(cur, 0), "$0.00") << name;
        EXPECT_EQ(qm::MoneyText(cur, -5), "($5.00)") << name;
    }
}

TEST(Currency, UsTexts) {
    LocaleCurrency us(LocaleCurrency::usRules());
    EXPECT_EQ(qm::MoneyText(us, 1234567.891), "$1,234,567.89");
    EXPECT_EQ(qm::MoneyText(us, 999.995), "$1,000.00");
    EXPECT_EQ(qm::MoneyText(us, 0.005), "$0.01");
    EXPECT_EQ(qm::MoneyText(us, -0.004), "$0.00") << "no negative zero";
    EXPECT_EQ(qm::MoneyText(us, -1234.5), "($1,234.50)");
    EXPECT_EQ(qm::MoneyText(us, 100), "$100.00");
    EXPECT_EQ(qm::MoneyValue(us, "$1,234.50"), 1234.5);
    EXPECT_EQ(qm::MoneyValue(us, "($5.00)"), -5);
    EXPECT_EQ(qm::MoneyValue(us, "0"), 0);
    EXPECT_THROW(qm::MoneyValue(us, "abc"), forms::Failure);
    EXPECT_THROW(qm::MoneyValue(us, ""), forms::Failure);
    EXPECT_THROW(qm::MoneyText(us, std::numeric_limits<double>::infinity()), forms::Failure);
}

using mb = std::money_base;

void setPattern(char (&format)[4], char a, char b, char c, char d) {
    format[0] = a, format[1] = b, format[2] = c, format[3] = d;
}

// Currency rules of several kinds of locale, as LC_MONETARY gives them.
std::vector<std::pair<std::string, LocaleCurrency::Rules>> ruleSets() {
    using R = LocaleCurrency::Rules;
    std::vector<std::pair<std::string, R>> out;
    out.emplace_back("us", LocaleCurrency::usRules());
    R de;
    de.symbol = "\xE2\x82\xAC";
    de.decimalPoint = ",";
    de.thousandsSep = ".";
    setPattern(de.posFormat, mb::sign, mb::value, mb::space, mb::symbol);
    setPattern(de.negFormat, mb::sign, mb::value, mb::space, mb::symbol);
    de.negativeSign = "-";
    out.emplace_back("de", de);
    R fr = de;
    fr.thousandsSep = "\xE2\x80\xAF"; // narrow no-break space
    out.emplace_back("fr", fr);
    R ch;
    ch.symbol = "CHF";
    ch.thousandsSep = "'";
    setPattern(ch.posFormat, mb::symbol, mb::space, mb::sign, mb::value);
    setPattern(ch.negFormat, mb::symbol, mb::space, mb::sign, mb::value);
    ch.negativeSign = "-";
    out.emplace_back("ch", ch);
    R jp;
    jp.symbol = "\xEF\xBF\xA5";
    jp.decimals = 0;
    setPattern(jp.negFormat, mb::sign, mb::symbol, mb::value, mb::none);
    jp.negativeSign = "-";
    out.emplace_back("jp", jp);
    R kw;
    kw.symbol = "KD";
    kw.decimals = 3;
    out.emplace_back("kw", kw);
    R in;
    in.symbol = "\xE2\x82\xB9";
    in.grouping = "\3\2";
    setPattern(in.negFormat, mb::sign, mb::symbol, mb::value, mb::none);
    in.negativeSign = "-";
    out.emplace_back("in", in);
    R trailing;
    setPattern(trailing.negFormat, mb::symbol, mb::value, mb::sign, mb::none);
    trailing.negativeSign = "-";
    out.emplace_back("sign behind", trailing);
    R plain;
    plain.thousandsSep = "";
    plain.grouping = "";
    out.emplace_back("no grouping", plain);
    return out;
}

// MoneyValue reads back every text MoneyText writes, as the amount rounded to
// the currency's decimals: a running total survives its way through text.
TEST(Currency, MoneyValueOfMoneyTextIsTheRoundedAmount) {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_int_distribution<int> magnitude(-4, 15);
    for (const auto& [name, rules] : ruleSets()) {
        LocaleCurrency cur(rules);
        EXPECT_EQ(qm::MoneyValue(cur, "0"), 0) << name;
        EXPECT_EQ(qm::MoneyText(cur, -0.0001), qm::MoneyText(cur, 0)) << name;
        int failures = 0;
        for (int i = 0; i < 20000 && failures < 5; ++i) {
            double x = unit(rng) * std::pow(10.0, magnitude(rng));
            if (i % 4 == 0) x = std::round(x * 1000) / 1000 + (i % 8 == 0 ? 0.005 : -0.005); // halves
            const double expected = qm::RoundToCurrency(x, cur.decimals());
            std::string text;
            try {
                text = qm::MoneyText(cur, x);
                if (qm::MoneyValue(cur, text) == expected) continue;
                ADD_FAILURE() << name << ": " << x << " -> \"" << text << "\" -> " << qm::MoneyValue(cur, text)
                              << ", rounded " << expected;
            } catch (const forms::Failure& f) {
                ADD_FAILURE() << name << ": " << x << " -> \"" << text << "\": " << f.what();
            }
            ++failures;
        }
    }
}

TEST(Currency, FormatsOfOtherLocales) {
    auto sets = ruleSets();
    auto text = [&](const std::string& name, double x) {
        for (const auto& [n, r] : sets)
            if (n == name) return qm::MoneyText(LocaleCurrency(r), x);
        return std::string("<no rules>");
    };
    EXPECT_EQ(text("de", 1234.5), "1.234,50 \xE2\x82\xAC");
    EXPECT_EQ(text("de", -5), "-5,00 \xE2\x82\xAC");
    EXPECT_EQ(text("ch", -1234.5), "CHF -1'234.50");
    EXPECT_EQ(text("jp", 1234.5), "\xEF\xBF\xA5" "1,235");
    EXPECT_EQ(text("kw", 1.0005), "KD1.001");
    EXPECT_EQ(text("in", 1234567.5), "\xE2\x82\xB9" "12,34,567.50");
}

// ---- UpdateTotals ------------------------------------------------------------------------------------

struct TotalsTest : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    // Opens a category whose items have these cost and value cells.
    void open(const std::vector<std::pair<std::string, std::string>>& money) {
        Table items;
        for (const auto& [cost, value] : money) items.push_back({"item", cost, value});
        h.writeIndex({"Cat"});
        h.writeCategory("Cat", items);
        m = &h.start();
        h.run([&] { m->lstCategory.setSelected(0); });
    }
    void update() {
        h.run([&] { m->UpdateTotals(); });
    }
    // The totals the plain way: the running total goes through its text at every row.
    std::string byText(int col) {
        std::string t = "0";
        for (int row = 0; row < m->ItemRowCount; ++row)
            t = qm::MoneyText(h.currency, qm::MoneyValue(h.currency, t) + qm::NumberFromCell(m->FG1.TextMatrix(row, col)));
        return t;
    }
};

TEST_F(TotalsTest, EachRowIsRoundedToTheCurrency) {
    open(std::vector<std::pair<std::string, std::string>>(10, {"0.004", "0.006"}));
    EXPECT_EQ(m->txtCost.Text(), "$0.00");
    EXPECT_EQ(m->txtValue.Text(), "$0.10");
}

TEST_F(TotalsTest, HalvesOfEachStepRoundAwayFromZero) {
    open({{"0.005", "-0.005"}, {"0.005", "-0.005"}, {"0.005", "-0.005"}});
    EXPECT_EQ(m->txtCost.Text(), "$0.03");
    EXPECT_EQ(m->txtValue.Text(), "($0.03)");
}

TEST_F(TotalsTest, WordsCountNothingAndStopNothing) {
    open({{"12.50 used", "10"}, {"about 40", "-15"}, {"1,500", "+2"}, {"$1200", ""}, {"7", "x"}});
    EXPECT_EQ(m->txtCost.Text(), "$20.50");
    EXPECT_EQ(m->txtValue.Text(), "($3.00)") << "a negative running total goes through its text and back";
    EXPECT_EQ(m->FG1.TextMatrix(3, 1), "1,500") << "cells are never reformatted";
}

TEST_F(TotalsTest, CategoryWithoutItemsShowsTheFormattedZero) {
    open({});
    EXPECT_EQ(m->txtCost.Text(), "$0.00");
    EXPECT_EQ(m->txtValue.Text(), "$0.00");
}

TEST_F(TotalsTest, HeadingThatIsANumberCounts) {
    h.writeIndex({"Cat"});
    writeFile(h.data("Cat.csv"), crlf({"Item,100,Value,,,,", "a,1,2,,,,"}));
    m = &h.start();
    h.run([&] { m->lstCategory.setSelected(0); });
    EXPECT_EQ(m->txtCost.Text(), "$101.00");
    EXPECT_EQ(m->txtValue.Text(), "$2.00");
}

TEST_F(TotalsTest, OtherCurrencyRules) {
    for (const auto& [name, rules] : ruleSets())
        if (name == "de") h.currency = LocaleCurrency(rules);
    open({{"1234.5", "-0.5"}, {"0.004", "-1000"}});
    EXPECT_EQ(m->txtCost.Text(), "1.234,50 \xE2\x82\xAC");
    EXPECT_EQ(m->txtValue.Text(), "-1.000,50 \xE2\x82\xAC");
}

// Failures end UpdateTotals where they happen: the box of that column shows the
// rows before, and the value box keeps the last run's text if it had not begun.
TEST_F(TotalsTest, MoreRowsCountedThanTheGridHolds) {
    open({{"1", "2"}, {"3", "4"}});
    h.run([&] {
        m->txtValue.setText("last run");
        m->ItemRowCount = m->FG1.Rows() + 1;
    });
    update();
    EXPECT_EQ(m->txtCost.Text(), "$4.00");
    EXPECT_EQ(m->txtValue.Text(), "last run");
}

TEST_F(TotalsTest, CostBeyondAFloat) {
    open({{"1", "2"}, {"1e400", "4"}, {"5", "6"}});
    h.run([&] { m->txtValue.setText("last run"); });
    update();
    EXPECT_EQ(m->txtCost.Text(), "$1.00");
    EXPECT_EQ(m->txtValue.Text(), "last run");
}

TEST_F(TotalsTest, ValueBeyondAFloat) {
    open({{"1", "2"}, {"3", "4"}, {"5", "1e400"}});
    update();
    EXPECT_EQ(m->txtCost.Text(), "$9.00");
    EXPECT_EQ(m->txtValue.Text(), "$6.00");
}

TEST_F(TotalsTest, FewerRowsCountedThanTheGridHolds) {
    open({{"1", "2"}, {"3", "4"}, {"5", "6"}});
    h.run([&] { m->ItemRowCount = 2; });
    update();
    EXPECT_EQ(m->txtCost.Text(), "$1.00");
    EXPECT_EQ(m->txtValue.Text(), "$2.00");
}

// Whatever happens to the grid between two runs, the totals are those of the
// text path over what the grid holds then.
TEST_F(TotalsTest, AlwaysAgreeWithTheTextPathAfterAnyChangeOfTheGrid) {
    const std::vector<std::string> cells = {"",      "1",      "0.004", "0.005", "-0.005",  "12.50 used", "1,200", "$5",
                                            "abc",   "1e3",    "&H10",  "-3.333", "99999.999", "0.1",      "0.2",   "0.3",
                                            "1 000", "-0.015", "2.675", "1D2"};
    open({{"1", "1"}, {"2", "2"}});
    std::mt19937 rng(7);
    auto cell = [&] { return cells[rng() % cells.size()]; };
    for (int step = 0; step < 3000; ++step) {
        h.run([&] {
            auto& g = m->FG1;
            switch (rng() % 6) {
            case 0:
            case 1: g.setTextMatrix(static_cast<int>(rng() % g.Rows()), static_cast<int>(rng() % 7), cell()); break;
            case 2: g.AddItem(cell()); break;
            case 3:
                if (g.Rows() - 1 > g.FixedRows()) g.RemoveItem(1 + static_cast<int>(rng() % (g.Rows() - 1)));
                break;
            case 4: g.setRows(1 + static_cast<int>(rng() % 12)); break;
            case 5: g.setText(cell()); break;
            }
            m->ItemRowCount = rng() % 5 == 0 ? 1 + static_cast<int>(rng() % g.Rows()) : g.Rows();
        });
        update();
        ASSERT_EQ(m->txtCost.Text(), byText(1)) << "step " << step;
        ASSERT_EQ(m->txtValue.Text(), byText(2)) << "step " << step;
    }
}

} // namespace

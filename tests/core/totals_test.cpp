// Totals and currency: how a cell reads as a number, how amounts are rounded,
// written and read back, and how UpdateTotals adds up the two money columns.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>

#include "forms/failure.h"
#include "forms/locale_currency.h"
#include "mainwindow/totals.h"
#include "support/money_oracle.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using forms::LocaleCurrency;

namespace {

// ---- NumberFromCell -----------------------------------------------------------------

// The number at the start of the cell: exponents, signs, and blanks, tabs and
// line feeds anywhere, hexadecimal and octal whole numbers; past a double, a failure.
TEST(NumberFromCell, ReadsTheNumberAtTheStart) {
    for (const auto& [text, value] : std::initializer_list<std::pair<const char*, double>>{
             {"1200", 1200}, {"12.50 used", 12.5}, {"1,200.50", 1}, {"$1200", 0}, {"about 40", 0}, {"", 0}, {"1 200", 1200},
             {"-3", -3}, {".5", 0.5}, {"1.2.3", 1.2}, {"1e3", 1000}, {"1D3", 1000}, {"2d-2", 0.02}, {"1 e 3", 1000}, {"+7", 7},
             {"\t4\n2", 42}, {"- 5", -5}, {"5-", 5}, {"1e", 1}, {"1e+", 1}, {"1.5E2x", 150}, {"e5", 0}, {".", 0}, {"-", 0},
             {"  12  ", 12}, {"1e-400", 0}, {"1e308", 1e308}, {"&H1F", 31}, {"&O17", 15}, {"&H", 0}, {"&X1", 0},
             {"&HFFFF", -1}, {"&Hff", 255}, {"10e3", 10000}, {"-1e3", -1000}})
        EXPECT_EQ(qm::NumberFromCell(text), value) << "\"" << text << "\"";
    EXPECT_THROW(qm::NumberFromCell("1e400"), forms::Failure);
    EXPECT_THROW(qm::NumberFromCell("-1e400"), forms::Failure);
}

// ---- rounding and the currency format ------------------------------------------------------

// Currency rules of several kinds of locale, as LC_MONETARY gives them.
const std::map<std::string, LocaleCurrency::Rules>& ruleSets() {
    using R = LocaleCurrency::Rules;
    constexpr char none = std::money_base::none, space = std::money_base::space, symbol = std::money_base::symbol,
                   sign = std::money_base::sign, value = std::money_base::value;
    const R de{.symbol = "\xE2\x82\xAC", .decimalPoint = ",", .thousandsSep = ".", .posFormat = {sign, value, space, symbol},
               .negFormat = {sign, value, space, symbol}, .positiveSign = "", .negativeSign = "-"};
    R fr = de;
    fr.thousandsSep = "\xE2\x80\xAF"; // narrow no-break space
    static const std::map<std::string, R> sets = {
        {"us", LocaleCurrency::usRules()},
        {"de", de},
        {"fr", fr},
        {"ch", R{.symbol = "CHF", .thousandsSep = "'", .posFormat = {symbol, space, sign, value},
                 .negFormat = {symbol, space, sign, value}, .positiveSign = "", .negativeSign = "-"}},
        {"jp", R{.symbol = "\xEF\xBF\xA5", .decimals = 0, .negFormat = {sign, symbol, value, none}, .positiveSign = "",
                 .negativeSign = "-"}},
        {"kw", R{.symbol = "KD", .decimals = 3, .positiveSign = ""}},
        {"us0", R{.decimals = 0, .positiveSign = ""}},
        {"in", R{.symbol = "\xE2\x82\xB9", .grouping = "\3\2", .negFormat = {sign, symbol, value, none}, .positiveSign = "",
                 .negativeSign = "-"}},
        {"sign behind", R{.negFormat = {symbol, value, sign, none}, .positiveSign = "", .negativeSign = "-"}},
        {"no grouping", R{.thousandsSep = "", .grouping = "", .positiveSign = ""}},
    };
    return sets;
}

// With US rules (also where the locale defines no currency) and others.
TEST(Currency, MoneyTextFormats) {
    struct C {
        const char* rules; // a locale's name, or one of ruleSets()
        double x;
        std::string text;
    };
    for (const C& c : {C{"C", 1234.5, "$1,234.50"}, C{"POSIX", 0, "$0.00"}, C{"C.UTF-8", -5, "($5.00)"},
                       C{"xx_NOWHERE.UTF-8", 1234.5, "$1,234.50"}, C{"us", 1234567.891, "$1,234,567.89"},
                       C{"us", 999.995, "$1,000.00"}, C{"us", 0.005, "$0.01"}, C{"us", -0.004, "$0.00"},
                       C{"us", -1234.5, "($1,234.50)"}, C{"de", 1234.5, "1.234,50 \xE2\x82\xAC"}, C{"de", -5, "-5,00 \xE2\x82\xAC"},
                       C{"ch", -1234.5, "CHF -1'234.50"}, C{"jp", 1234.5, "\xEF\xBF\xA5" "1,235"}, C{"kw", 1.0005, "KD1.001"}, // the double a little below the half
                       C{"us", 6e12, "$6,000,000,000,000.00"}, C{"us", 0.125, "$0.13"}, C{"us", -0.125, "($0.13)"},
                       C{"in", 1234567.5, "\xE2\x82\xB9" "12,34,567.50"}}) {
        auto rules = ruleSets().find(c.rules);
        LocaleCurrency cur = rules == ruleSets().end() ? LocaleCurrency(c.rules) : LocaleCurrency(rules->second);
        EXPECT_EQ(qm::MoneyText(cur, c.x), c.text) << c.rules << " " << c.x;
    }
    LocaleCurrency us(LocaleCurrency::usRules());
    EXPECT_THROW(qm::MoneyValue(us, "abc"), forms::Failure);
    EXPECT_THROW(qm::MoneyValue(us, ""), forms::Failure);
    EXPECT_THROW(qm::MoneyText(us, std::numeric_limits<double>::infinity()), forms::Failure);
}

// What MoneyText writes, MoneyValue reads back as that amount, in every rule
// set (the money fuzz targets try any text in US and euro rules).
TEST(Currency, MoneyValueReadsBackWhatMoneyTextWrote) {
    for (const auto& [name, rules] : ruleSets()) {
        LocaleCurrency cur(rules);
        for (double x : {0.0, 0.125, -0.004, -1234.5, 1234567.891, -6e12})
            EXPECT_EQ(qm::MoneyText(cur, qm::MoneyValue(cur, qm::MoneyText(cur, x))), qm::MoneyText(cur, x)) << name << " " << x;
    }
}

// ---- UpdateTotals ------------------------------------------------------------------------------------

struct TotalsTest : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    // Opens a category whose items have these cost and value cells.
    void open(const Table& money) {
        Table items;
        for (const auto& r : money) items.push_back({"item", r.at(0), r.at(1)});
        h.writeCategories({{"Cat", items}});
        m = &h.startAndOpen(0);
    }
    // UpdateTotals run, and the two boxes it fills.
    std::pair<std::string, std::string> totals() {
        h.run([&] { m->UpdateTotals(); });
        return {std::string(m->txtCost.Text()), std::string(m->txtValue.Text())};
    }
    // The totals the plain way: the running total goes through its text at every row.
    std::string byText(int col) {
        return qm::MoneyColumnTotal(h.currency, m->ItemRowCount, [&](int row) { return m->FG1.TextMatrix(row, col); });
    }
};

// Rounding, words, rows counted and currencies: the text path below. Failures
// end UpdateTotals where they happen: the box of that column shows the rows
// before, and the value box keeps the last run's text if it had not begun.
struct FailCase {
    Table money; // cost and value cells of the items
    bool countOneMore; // ItemRowCount one more than the grid holds
    std::string cost, value;
};

class TotalsFail : public TotalsTest, public ::testing::WithParamInterface<FailCase> {};

TEST_P(TotalsFail, StopWhereTheyFail) {
    const FailCase& c = GetParam();
    open(c.money);
    h.run([&] {
        m->txtValue.setText("last run");
        if (c.countOneMore) m->ItemRowCount = m->FG1.Rows() + 1;
    });
    EXPECT_EQ(totals(), std::pair(c.cost, c.value));
}

INSTANTIATE_TEST_SUITE_P(Totals, TotalsFail,
                         ::testing::Values(FailCase{{{"1", "2"}, {"3", "4"}}, true, "$4.00", "last run"},
                                           FailCase{{{"1", "2"}, {"1e400", "4"}, {"5", "6"}}, false, "$1.00", "last run"},
                                           FailCase{{{"1", "2"}, {"3", "4"}, {"5", "1e400"}}, false, "$9.00", "$6.00"}));

// Whatever happens to the grid between two runs, the totals are those of the
// grid's texts, with currencies of 2, 0 and 3 decimals. First some columns
// worked by hand against the text path: big amounts where a double holds no
// cents or no units any more, and negatives (the value column holds each cost
// negated). Then amounts as typed, against their exact decimal sums.
const std::vector<std::vector<std::string>> kHardColumns = {
    {"6000000000000", "", "", "", "", "", "", "", "", ""},
    {"703687441776.6445", "0.0045", "-703687441776.0045", "0.0045"}, // 0.45 of a cent at 2^46 cents
    {"5629499534213", "5629499534213", "-1", "0.01", "5629499534213.12"}, // whole amounts at 2^49 cents
    {"90071992547409.92", "0.01", "0.005", "-0.015", "90071992547409.93"}, // around 2^53 cents
    {"1e17", "0.125", "-1e17", "0.375", "0.004"},
    {"0.1", "0.2", "0.3", "0.1", "0.2", "0.3", "0.005", "0.005", "0.005", "-0.015"},
    {"70368744177.6645", "0.0005", "9007199254740.9925", "-0.0625", "0.0625"},
    {"2.5", "-3.5", "70368744177664.5", "562949953421312", "9007199254740993", "0.5"},
    {"0.004", "0.004", "0.004", "0.006", "0.006", "0.006"}, // each row is rounded to the currency
};

class AgreeWithTheTextPath : public TotalsTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(AgreeWithTheTextPath, AfterAnyChangeOfTheGrid) {
    h.currency = LocaleCurrency(ruleSets().at(GetParam()));
    open({{"1", "1"}, {"2", "2"}});
    for (const auto& costs : kHardColumns) {
        h.run([&] {
            m->FG1.setRows(static_cast<int>(costs.size()) + 1);
            m->ItemRowCount = m->FG1.Rows();
            for (int r = 1; r < m->FG1.Rows(); ++r) {
                const std::string& c = costs[static_cast<std::size_t>(r - 1)];
                m->FG1.setTextMatrix(r, 1, c);
                m->FG1.setTextMatrix(r, 2, c.starts_with('-') ? c.substr(1) : "-" + c);
            }
        });
        ASSERT_EQ(totals(), std::pair(byText(1), byText(2))) << costs[0];
    }
    // Amounts as people type them and texts read as 0 or their start, each
    // with its exact meaning in units of 10^-4: the totals from those alone.
    // Beside the odd ones, the largest sums that are added as whole units.
    std::map<std::string, long long> meaning = {{"", 0}, {"abc", 0}, {"$5", 0}, {"1,200", 10000}, {"&H10", 160000}, {"1D2", 1000000},
        {"Original Cost", 0}, {"Current Value", 0}, {"10995116277.75", 109951162777500}, {"-10995116277.76", -109951162777600},
        {"5497558138.885", 54975581388850}, {"1e10", 100000000000000}};
    std::mt19937 rng(7);
    auto cell = [&] { // a new amount, or any text seen before
        const moneyoracle::Typed t = moneyoracle::typedAmount(rng);
        return rng() % 4 ? meaning.insert({t.text, t.exact}).first->first : std::next(meaning.begin(), rng() % meaning.size())->first;
    };
    auto exactly = [&](int col) {
        auto exactOf = [&](int row) { return meaning.at(std::string(m->FG1.TextMatrix(row, col))); };
        const moneyoracle::Units u = moneyoracle::columnTotal(m->ItemRowCount, exactOf, h.currency.decimals());
        return h.currency.format({u.negative, u.digits});
    };
    h.run([&] { m->FG1.setRows(1); });
    for (int step = 0; step < 3000; ++step) {
        h.run([&] {
            auto& g = m->FG1;
            switch (rng() % 6) {
            case 0:
            case 1: g.setTextMatrix(static_cast<int>(rng() % g.Rows()), static_cast<int>(rng() % 3), cell()); break;
            case 2: g.AddItem(cell()); break;
            case 3:
                if (g.Rows() - 1 > g.FixedRows()) g.RemoveItem(1 + static_cast<int>(rng() % (g.Rows() - 1)));
                break;
            case 4: g.setRows(1 + static_cast<int>(rng() % 12)); break;
            case 5: g.setText(cell()); break;
            }
            m->ItemRowCount = rng() % 5 == 0 ? 1 + static_cast<int>(rng() % g.Rows()) : g.Rows();
        });
        ASSERT_EQ(totals(), std::pair(exactly(1), exactly(2))) << "step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Totals, AgreeWithTheTextPath, ::testing::Values("us", "jp", "kw", "us0", "de"));

} // namespace

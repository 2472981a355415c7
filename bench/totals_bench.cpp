// The totals over a grid of 32767 rows, against a plain loop that adds up the
// same numbers, already parsed, with the same rounding at every row.
#include <algorithm>
#include <cmath>
#include <exception>
#include <iterator>
#include <vector>

#include "big_categories.h"
#include "forms/input.h"
#include "goals.h"
#include "mainwindow/totals.h"
#include "paired_samples.h"

namespace qmbench {

namespace {

struct MoneyColumns {
    std::vector<double> cost, value;
};

// The numbers of the two money columns of the open category, as the totals read them.
MoneyColumns moneyColumns(qm::frmMain& m) {
    MoneyColumns c;
    for (int row = 0; row < m.ItemRowCount; ++row) {
        c.cost.push_back(qm::NumberFromCell(m.FG1.TextMatrix(row, 1)));
        c.value.push_back(qm::NumberFromCell(m.FG1.TextMatrix(row, 2)));
    }
    return c;
}

double roundedSum(const std::vector<double>& numbers) {
    double total = 0;
    for (double x : numbers) total = std::round((total + x) * 100) / 100;
    return total;
}

// The baseline: both columns, each row's step rounded to cents.
std::pair<double, double> plainTotals(const MoneyColumns& c) { return {roundedSum(c.cost), roundedSum(c.value)}; }

// A typed key as the desktop face hands it to the runtime.
void typeKey(qmtest::Harness& h, forms::TextBox& box, char ch) {
    const int code = ch == '\b' ? forms::key::Backspace : ch;
    forms::input::key(h.runtime, box, code, 0, static_cast<char32_t>(ch));
}

void updateTotals(benchmark::State& state) {
    try {
        BigCategories& big = bigCategories();
        qm::frmMain& m = big.m();
        if (std::string p = big.problem(); !p.empty()) {
            state.SkipWithError(p.c_str());
            return;
        }
        const MoneyColumns columns = moneyColumns(m);
        const auto [cost, value] = plainTotals(columns);
        m.UpdateTotals();
        // A run that stopped early would be fast for the wrong reason.
        if (m.txtCost.Text() != qm::MoneyText(big.h.currency, cost) || m.txtValue.Text() != qm::MoneyText(big.h.currency, value)) {
            std::string p = "UpdateTotals gave " + m.txtCost.Text() + " and " + m.txtValue.Text() + ", the plain loop " +
                            qm::MoneyText(big.h.currency, cost) + " and " + qm::MoneyText(big.h.currency, value);
            state.SkipWithError(p.c_str());
            return;
        }
        PairedSamples samples;
        for (auto _ : state) {
            Timing subject = timingOf([&] { m.UpdateTotals(); });
            Timing baseline = timingOf([&] { benchmark::DoNotOptimize(plainTotals(columns)); });
            samples.add(subject, baseline);
            state.SetIterationTime(subject.wall);
        }
        samples.report(state);
        state.counters["rows"] = m.ItemRowCount;
        // The first run after a load reads every money cell afresh: reported
        // beside the goal, as the part of a switch that the totals take. Each
        // money cell is written away and back, as a load writes it anew.
        double cold[3];
        for (double& seconds : cold) {
            for (int row = 0; row < m.ItemRowCount; ++row)
                for (int col : {1, 2}) {
                    std::string text(m.FG1.TextMatrix(row, col));
                    m.FG1.setTextMatrix(row, col, text + " ");
                    m.FG1.setTextMatrix(row, col, std::move(text));
                }
            seconds = secondsOf([&] { m.UpdateTotals(); });
        }
        std::sort(std::begin(cold), std::end(cold));
        state.counters["first_run_ms"] = cold[1] * 1e3;
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

// One character typed into a cost cell, from the key to the totals on the
// screen. Measured once typing writes the cell, which the totals must follow.
void typeInCostCell(benchmark::State& state) {
    try {
        BigCategories& big = bigCategories();
        qm::frmMain& m = big.m();
        const int row = BigCategories::kRows / 2;
        forms::input::clickCell(big.h.runtime, m.FG1, row, 1);
        if (big.h.runtime.focused() != &m.T1 || m.FG1.Row() != row || m.FG1.Col() != 1) {
            state.SkipWithError("the cell editor did not open on the clicked cost cell");
            return;
        }
        const std::string before(m.FG1.TextMatrix(row, 1));
        typeKey(big.h, m.T1, '7');
        if (m.FG1.TextMatrix(row, 1) != before + "7") {
            typeKey(big.h, m.T1, '\b');
            state.SkipWithError("typing in the cell editor does not reach the grid yet");
            return;
        }
        const MoneyColumns columns = moneyColumns(m);
        PairedSamples samples;
        bool erase = true;
        for (auto _ : state) {
            // Backspace and a digit in turn keep the cell's text as it was.
            const char key = erase ? '\b' : '7';
            erase = !erase;
            Timing subject = timingOf([&] { typeKey(big.h, m.T1, key); });
            Timing baseline = timingOf([&] { benchmark::DoNotOptimize(plainTotals(columns)); });
            samples.add(subject, baseline);
            state.SetIterationTime(subject.wall);
        }
        if (erase) typeKey(big.h, m.T1, '\b'); // the last key was a digit
        samples.report(state);
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

} // namespace

void registerTotalsBenchmarks() {
    registerGoals("UpdateTotals", updateTotals, {{"ratio", "UpdateTotals over 32767 rows, vs plain loop", 20.0}})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    registerGoals("TypeInCostCell", typeInCostCell,
                  {{"ratio", "a typed character in a cost cell, vs plain loop", std::nullopt}})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

} // namespace qmbench

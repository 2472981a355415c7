#include "mainwindow/totals.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

namespace {

bool skipped(char c) { return c == ' ' || c == '\t' || c == '\n'; }

// Reads &H or &O digits (blanks skipped) as a whole number: up to 16 bits it is
// taken as a signed 16-bit value, up to 32 bits as a signed 32-bit one.
double radixNumber(const std::string& t, std::size_t i, int radix) {
    std::uint64_t v = 0;
    int digits = 0;
    for (; i < t.size(); ++i) {
        char c = t[i];
        if (skipped(c)) continue;
        int d;
        if (c >= '0' && c <= '9') d = c - '0';
        else if (radix == 16 && c >= 'a' && c <= 'f') d = c - 'a' + 10;
        else if (radix == 16 && c >= 'A' && c <= 'F') d = c - 'A' + 10;
        else break;
        if (d >= radix) break;
        v = v * static_cast<unsigned>(radix) + static_cast<unsigned>(d);
        if (v > 0xFFFFFFFFull) throw Failure("overflow");
        ++digits;
    }
    if (digits == 0) return 0;
    if (v <= 0xFFFF) return static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
}

} // namespace

double NumberFromCell(const std::string& t) {
    std::size_t i = 0;
    auto skip = [&] { while (i < t.size() && skipped(t[i])) ++i; };
    skip();
    if (i < t.size() && t[i] == '&') {
        std::size_t j = i + 1;
        while (j < t.size() && skipped(t[j])) ++j;
        if (j < t.size() && (t[j] == 'H' || t[j] == 'h')) return radixNumber(t, j + 1, 16);
        if (j < t.size() && (t[j] == 'O' || t[j] == 'o')) return radixNumber(t, j + 1, 8);
        return 0;
    }
    std::string num;
    bool negative = false;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) { negative = t[i] == '-'; ++i; }
    bool digits = false, point = false;
    for (; i < t.size(); ++i) {
        char c = t[i];
        if (skipped(c)) continue;
        if (c >= '0' && c <= '9') { num += c; digits = true; }
        else if (c == '.' && !point) { num += '.'; point = true; }
        else break;
    }
    if (!digits) return 0;
    // An exponent counts only with at least one digit.
    skip();
    bool negExp = false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E' || t[i] == 'd' || t[i] == 'D')) {
        std::size_t j = i + 1;
        std::string exp = "e";
        while (j < t.size() && skipped(t[j])) ++j;
        if (j < t.size() && (t[j] == '+' || t[j] == '-')) { negExp = t[j] == '-'; exp += t[j]; ++j; }
        bool expDigits = false;
        for (; j < t.size(); ++j) {
            if (skipped(t[j])) continue;
            if (t[j] < '0' || t[j] > '9') break;
            exp += t[j];
            expDigits = true;
        }
        if (expDigits) num += exp;
    }
    double v = 0;
    auto res = std::from_chars(num.data(), num.data() + num.size(), v);
    if (res.ec == std::errc::result_out_of_range) {
        if (negExp) return 0; // too small to show: nothing
        throw Failure("overflow");
    }
    if (!std::isfinite(v)) throw Failure("overflow");
    return negative ? -v : v;
}

double RoundToCurrency(double x, int decimals) {
    static const double kScale[] = {1, 10, 100, 1000, 1e4, 1e5, 1e6};
    double scale = kScale[decimals < 0 ? 0 : decimals > 6 ? 6 : decimals];
    double y = x * scale;
    if (!std::isfinite(y)) return y;
    double f = std::floor(y);
    double r = y - f;
    double a = std::fabs(y);
    // The error of x and of the product is a few units in the last place of y:
    // within that a fraction counts as an exact half.
    double tolerance = 4 * (std::nextafter(a, std::numeric_limits<double>::infinity()) - a);
    double k;
    if (std::fabs(r - 0.5) <= tolerance) k = y >= 0 ? f + 1 : f;
    else k = r < 0.5 ? f : f + 1;
    return k / scale;
}

std::string MoneyText(const forms::CurrencyPort& currency, double x) {
    double r = RoundToCurrency(x, currency.decimals());
    if (!std::isfinite(r)) throw Failure("overflow");
    return currency.format(r);
}

double MoneyValue(const forms::CurrencyPort& currency, const std::string& text) { return currency.parse(text); }

// ---- the cache of the money columns ------------------------------------------

TotalsCache::TotalsCache(forms::Grid& grid) : grid_(grid) {
    grid_.addListener(this);
    gridReset();
}

TotalsCache::~TotalsCache() { grid_.removeListener(this); }

void TotalsCache::gridReset() {
    cost_.assign(static_cast<std::size_t>(grid_.Rows()), Entry{});
    value_.assign(static_cast<std::size_t>(grid_.Rows()), Entry{});
}

void TotalsCache::cellChanged(int row, int col) {
    if (col == kCostCol) cost_[static_cast<std::size_t>(row)].state = Stale;
    else if (col == kValueCol) value_[static_cast<std::size_t>(row)].state = Stale;
}

void TotalsCache::rowsInserted(int first, int count) {
    cost_.insert(cost_.begin() + first, static_cast<std::size_t>(count), Entry{});
    value_.insert(value_.begin() + first, static_cast<std::size_t>(count), Entry{});
}

void TotalsCache::rowsRemoved(int first, int count) {
    cost_.erase(cost_.begin() + first, cost_.begin() + first + count);
    value_.erase(value_.begin() + first, value_.begin() + first + count);
}

bool TotalsCache::number(int row, int col, double& out) {
    Entry& e = column(col)[static_cast<std::size_t>(row)];
    if (e.state == Stale) {
        try {
            e.value = NumberFromCell(grid_.TextMatrix(row, col));
            e.state = Number;
        } catch (const Failure&) {
            e.state = TooLarge;
        }
    }
    out = e.value;
    return e.state == Number;
}

// ---- UpdateTotals -----------------------------------------------------------

// Both totals, each row's step brought to the currency's decimals as if the
// running total went through its text every time. The text is written once:
// only the last of the per-row writes can be seen. A failure ends the whole
// procedure with the box of that column at the sum of the rows before, and the
// other column untouched if it had not begun.
void frmMain::UpdateTotals() {
    const int decimals = platform.currency.decimals();
    auto column = [&](forms::TextBox& box, int col) -> bool {
        box.setText("0");
        double total = 0;
        int done = 0;
        bool ok = true;
        for (int row = 0; row < ItemRowCount; ++row) {
            double n;
            if (row >= FG1.Rows() || row > 32767 || !totalsCache_.number(row, col, n)) { ok = false; break; }
            double next = RoundToCurrency(total + n, decimals);
            if (!std::isfinite(next)) { ok = false; break; }
            total = next;
            ++done;
        }
        if (done > 0) box.setText(platform.currency.format(total));
        return ok;
    };
    if (!column(txtCost, TotalsCache::kCostCol)) return;
    column(txtValue, TotalsCache::kValueCol);
}

} // namespace qm

#include "mainwindow/totals.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

namespace {

bool skipped(char c) { return c == ' ' || c == '\t' || c == '\n'; }

// Reads &H or &O digits (blanks skipped) as a whole number: up to 16 bits it is
// taken as a signed 16-bit value, up to 32 bits as a signed 32-bit one.
double radixNumber(std::string_view t, std::size_t i, int radix) {
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

namespace {

// The general reading: the number's characters gathered and handed to
// from_chars, for whatever the quick one below can't do exactly.
double generalNumber(std::string_view t) {
    std::size_t i = 0;
    auto skip = [&] { while (i < t.size() && skipped(t[i])) ++i; };
    skip();
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

// The number of decimals a currency can have.
int currencyDecimals(int decimals) { return decimals < 0 ? 0 : decimals > 6 ? 6 : decimals; }

double currencyScale(int decimals) {
    static const double kScale[] = {1, 10, 100, 1000, 1e4, 1e5, 1e6};
    return kScale[currencyDecimals(decimals)];
}

// A whole number of units below 2^53, held exactly by a double, in digits.
forms::MoneyUnits unitsOf(double wholeUnits) {
    const auto n = static_cast<std::int64_t>(wholeUnits);
    return {n < 0, std::to_string(n < 0 ? -n : n)};
}

// What the text of a rounded amount reads back as: the double nearest to it.
double amountOf(const forms::MoneyUnits& u, int decimals) {
    const auto [whole, frac] = u.split(decimals);
    const std::string text = (u.negative ? "-" : "") + whole + (frac.empty() ? "" : "." + frac);
    double v = 0;
    std::from_chars(text.data(), text.data() + text.size(), v);
    return v;
}

// Below this many units the rounding of a running total plus an amount that
// is a whole number of units (within kWholeSlack) gives exactly their sum:
// the errors of the floating steps stay far below the half unit that would
// tip the rounding.
constexpr double kExactUnits = 1099511627776.0; // 2^40
constexpr std::size_t kExactDigits = 12;       // 10^12 - 1 < 2^40
constexpr double kWholeSlack = 1e-6;

constexpr double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

} // namespace

// Every money cell of a loaded category passes here: the usual short amount is
// read in place, exactly as from_chars would round it (up to 15 digits and a
// power of ten up to 22 are both exact, and one division rounds once).
double NumberFromCell(std::string_view t) {
    const char* p = t.data();
    const char* const end = p + t.size();
    while (p < end && skipped(*p)) ++p;
    if (p < end && *p == '&') {
        const char* q = p + 1;
        while (q < end && skipped(*q)) ++q;
        const auto at = static_cast<std::size_t>(q - t.data()) + 1;
        if (q < end && (*q == 'H' || *q == 'h')) return radixNumber(t, at, 16);
        if (q < end && (*q == 'O' || *q == 'o')) return radixNumber(t, at, 8);
        return 0;
    }
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-')) { negative = *p == '-'; ++p; }
    std::uint64_t mantissa = 0;
    int digits = 0, fraction = 0;
    // Digits (blanks between them taken out), then once more behind a period.
    auto readDigits = [&] {
        int n = 0;
        for (; p < end; ++p) {
            const unsigned digit = static_cast<unsigned char>(*p) - unsigned{'0'};
            if (digit < 10) {
                mantissa = mantissa * 10 + digit;
                ++n;
            } else if (!skipped(*p)) {
                break;
            }
        }
        return n;
    };
    digits = readDigits();
    if (p < end && *p == '.') {
        ++p;
        fraction = readDigits();
        digits += fraction;
    }
    if (digits == 0) return 0;
    while (p < end && skipped(*p)) ++p;
    const bool exponent = p < end && (*p == 'e' || *p == 'E' || *p == 'd' || *p == 'D');
    if (exponent || digits > 15 || fraction > 22) return generalNumber(t);
    const double v = static_cast<double>(mantissa) / kPow10[fraction];
    return negative ? -v : v;
}

// The amount as people read it: the double's first 15 significant digits,
// all that a double keeps of a typed decimal and what the currency format
// always worked from, so a typed 2.675 (held as 2.67499999...) or a sum that
// lands a hair beside its decimal rounds as the decimal does.
forms::MoneyUnits RoundToCurrency(double x, int decimals) {
    if (!std::isfinite(x)) throw Failure("overflow");
    decimals = currencyDecimals(decimals);
    char buf[32]; // d.dddddddddddddde-ddd
    const auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(x), std::chars_format::scientific, 14);
    std::string digits(1, buf[0]);
    digits.append(buf + 2, 14);
    const char* exp = buf + 17 + (buf[17] == '+');
    int exponent = 0;
    std::from_chars(exp, res.ptr, exponent);
    // The 15 digits counted in the currency's smallest units: 10^shift each.
    const int shift = exponent - 14 + decimals;
    if (shift >= 0) {
        digits.append(static_cast<std::size_t>(shift), '0');
    } else {
        const int keep = 15 + shift;
        const bool up = keep >= 0 && digits[static_cast<std::size_t>(keep)] >= '5';
        digits.resize(static_cast<std::size_t>(std::max(keep, 0)));
        if (digits.empty()) digits = "0";
        if (up) {
            std::size_t i = digits.size();
            while (i > 0 && digits[i - 1] == '9') digits[--i] = '0';
            if (i == 0) digits.insert(digits.begin(), '1');
            else ++digits[i - 1];
        }
    }
    const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
    digits.erase(0, first);
    return {x < 0 && digits != "0", std::move(digits)};
}

std::string MoneyText(const forms::CurrencyPort& currency, double x) {
    return currency.format(RoundToCurrency(x, currency.decimals()));
}

double MoneyValue(const forms::CurrencyPort& currency, const std::string& text) { return currency.parse(text); }

std::string MoneyColumnTotal(const forms::CurrencyPort& currency, int rows, const std::function<std::string_view(int row)>& cell) {
    std::string total = "0";
    for (int row = 0; row < rows; ++row) total = MoneyText(currency, MoneyValue(currency, total) + NumberFromCell(cell(row)));
    return total;
}

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

void TotalsCache::textsSwapped(std::uint64_t out, std::uint64_t in) {
    std::optional<Kept> back = kept_.take(in);
    const std::size_t bytes = (cost_.size() + value_.size()) * sizeof(Entry);
    kept_.keep(out, Kept{scale_, std::move(cost_), std::move(value_)}, bytes);
    if (!back || back->cost.size() != static_cast<std::size_t>(grid_.Rows())) return gridReset();
    cost_ = std::move(back->cost);
    value_ = std::move(back->value);
    // Units counted at another currency's scale are read again.
    if (back->scale != scale_) rescale(scale_);
}

// Read at once, while the text is at hand: a load writes every cell of a big
// category, and the totals that follow would otherwise fetch them all again.
void TotalsCache::cellChanged(int row, int col) {
    if (col == kCostCol) refresh(cost_[static_cast<std::size_t>(row)], row, col);
    else if (col == kValueCol) refresh(value_[static_cast<std::size_t>(row)], row, col);
}

void TotalsCache::rowsInserted(int first, int count) {
    // A load adds its rows one at a time at the end.
    if (count == 1 && static_cast<std::size_t>(first) == cost_.size()) {
        cost_.emplace_back();
        value_.emplace_back();
        return;
    }
    cost_.insert(cost_.begin() + first, static_cast<std::size_t>(count), Entry{});
    value_.insert(value_.begin() + first, static_cast<std::size_t>(count), Entry{});
}

void TotalsCache::rowsRemoved(int first, int count) {
    cost_.erase(cost_.begin() + first, cost_.begin() + first + count);
    value_.erase(value_.begin() + first, value_.begin() + first + count);
}

void TotalsCache::refresh(Entry& e, int row, int col) {
    try {
        e.value = NumberFromCell(grid_.TextMatrix(row, col));
        e.state = Number;
    } catch (const Failure&) {
        e.state = TooLarge;
        e.whole = false;
        return;
    }
    const double y = e.value * scale_;
    e.units = std::nearbyint(y);
    e.whole = std::fabs(e.units) < kExactUnits && std::fabs(y - e.units) <= kWholeSlack;
}

void TotalsCache::rescale(double scale) {
    scale_ = scale;
    for (auto* col : {&cost_, &value_})
        for (Entry& e : *col)
            if (e.state == Number) e.state = Stale;
}

// ---- UpdateTotals -----------------------------------------------------------

// Both totals, each row's step brought to the currency's decimals as if the
// running total went through its text every time. The text is written once:
// only the last of the per-row writes can be seen. A failure ends the whole
// procedure with the box of that column at the sum of the rows before, and the
// other column untouched if it had not begun. It runs at every key: the usual
// amount is added as a whole count of units, which is what the rounding step
// would give for it.
void frmMain::UpdateTotals() {
    const int decimals = currencyDecimals(platform.currency.decimals());
    const double scale = currencyScale(decimals);
    totalsCache_.useScale(scale);
    auto column = [&](forms::TextBox& box, int col) -> bool {
        box.setText("0");
        const int rows = std::min({ItemRowCount, FG1.Rows(), 32768});
        // The running total: a count of the smallest units while it is below
        // kExactUnits, else the rounded amount and what its text reads back as.
        double units = 0;
        forms::MoneyUnits large;
        double largeAmount = 0;
        bool small = true;
        int done = 0;
        bool ok = rows == ItemRowCount;
        for (; done < rows; ++done) {
            const TotalsCache::Entry& e = totalsCache_.entry(done, col);
            if (small && e.whole && std::fabs(units) < kExactUnits) {
                units += e.units;
                continue;
            }
            if (e.state != TotalsCache::Number) { ok = false; break; }
            const double sum = (small ? units / scale : largeAmount) + e.value;
            if (!std::isfinite(sum)) { ok = false; break; }
            forms::MoneyUnits next = RoundToCurrency(sum, decimals);
            small = next.digits.size() <= kExactDigits;
            if (small) {
                units = static_cast<double>(std::stoll(next.digits)) * (next.negative ? -1 : 1);
            } else {
                largeAmount = amountOf(next, decimals);
                large = std::move(next);
            }
        }
        if (done > 0) box.setText(platform.currency.format(small ? unitsOf(units) : large));
        return ok;
    };
    if (!column(txtCost, TotalsCache::kCostCol)) return;
    column(txtValue, TotalsCache::kValueCol);
}

} // namespace qm

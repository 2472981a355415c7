#pragma once
// Money amounts worked out apart from the program: a double's value as its
// decimal text reads, rounded to a currency's decimals by comparing what is
// cut off with a half; sums of typed amounts in exact whole numbers of small
// units; US-style currency text. The money fuzz targets and the totals' tests
// check the program against it.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace moneyoracle {

// A non-negative decimal number: whole digits and fraction digits.
struct Decimal {
    std::string whole = "0", fraction;
};

// |x| as people read it: its first 15 significant digits, all that a double
// keeps of a typed decimal (the C library prints them, rounded to nearest).
inline Decimal readValue(double x) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.14e", std::fabs(x));
    const std::string digits = buf[0] + std::string(buf + 2, 14);
    const int point = std::atoi(buf + 17) + 1; // digits before the decimal point
    if (point <= 0) return {"0", std::string(static_cast<std::size_t>(-point), '0') + digits};
    if (point >= 15) return {digits + std::string(static_cast<std::size_t>(point - 15), '0'), ""};
    return {digits.substr(0, static_cast<std::size_t>(point)), digits.substr(static_cast<std::size_t>(point))};
}

// x rounded to `decimals` places, halves away from zero, as a count of the
// smallest units in digits, with its sign.
struct Units {
    bool negative = false;
    std::string digits = "0";
};

inline Units rounded(double x, int decimals) {
    Decimal d = readValue(x);
    d.fraction.resize(std::max(d.fraction.size(), static_cast<std::size_t>(decimals)), '0');
    std::string units = d.whole + d.fraction.substr(0, static_cast<std::size_t>(decimals));
    const std::string cut = d.fraction.substr(static_cast<std::size_t>(decimals));
    // What is cut off against a half of the last unit kept: "5" and zeros.
    std::string half = "5";
    half.resize(std::max<std::size_t>(cut.size(), 1), '0');
    std::string padded = cut;
    padded.resize(half.size(), '0');
    if (padded >= half) { // a half goes away from zero, like anything above it
        std::size_t i = units.size();
        while (i > 0 && units[i - 1] == '9') units[--i] = '0';
        if (i == 0) units.insert(units.begin(), '1');
        else ++units[i - 1];
    }
    units.erase(0, std::min(units.find_first_not_of('0'), units.size() - 1));
    return {x < 0 && units != "0", units};
}

// An amount as a person types it, in the forms the totals read (digits with
// or without a point, an exponent, a minus sign, a blank anywhere, words
// behind), and its exact value in units of 10^-4. Below 10^9, so that sums of
// a few stay within the 15 digits a double keeps faithfully.
struct Typed {
    std::string text;
    long long exact = 0;
};

template <class Rng> Typed typedAmount(Rng& rng) {
    const int whole = static_cast<int>(rng() % 10), decimals = static_cast<int>(rng() % 5);
    Typed t;
    for (int i = whole + decimals; i > 0 || t.text.empty(); --i) t.text += static_cast<char>('0' + rng() % 10);
    t.exact = std::stoll(t.text);
    for (int i = decimals; i < 4; ++i) t.exact *= 10;
    if (decimals > 0 && rng() % 4 == 0) t.text += "e-" + std::to_string(decimals);
    else if (decimals > 0) t.text.insert(t.text.size() - static_cast<std::size_t>(decimals), ".");
    if (rng() % 4 == 0) t.text.insert(rng() % t.text.size(), " ");
    if (rng() % 2 == 0) t.text = "-" + t.text, t.exact = -t.exact;
    if (rng() % 4 == 0) t.text += " used";
    return t;
}

// The total of exact amounts (units of 10^-4, one a row) as a running total
// rounded to `decimals` at every row, halves away from zero, in whole numbers:
// no double in between.
template <class ExactOfRow> Units columnTotal(int rows, ExactOfRow exactOf, int decimals) {
    long long unit = 1, total = 0;
    for (int i = decimals; i < 4; ++i) unit *= 10;
    for (int row = 0; row < rows; ++row) {
        const long long v = total * unit + exactOf(row), q = ((v < 0 ? -v : v) + unit / 2) / unit;
        total = v < 0 ? -q : q;
    }
    return {total < 0, std::to_string(total < 0 ? -total : total)};
}

// "-1234.50": the units with the decimal point put back.
inline std::string plain(const Units& u, int decimals) {
    std::string digits = u.digits;
    const auto d = static_cast<std::size_t>(decimals);
    if (digits.size() <= d) digits.insert(0, d + 1 - digits.size(), '0');
    std::string out = (u.negative ? "-" : "") + digits.substr(0, digits.size() - d);
    if (d > 0) out += "." + digits.substr(digits.size() - d);
    return out;
}

// What a text of these units reads back as: the nearest double (the C library's strtod).
inline double valueOf(const Units& u, int decimals) { return std::strtod(plain(u, decimals).c_str(), nullptr); }

// US style: symbol, groups of three, negatives in parentheses.
inline std::string usText(const Units& u, int decimals, const std::string& symbol = "$") {
    const std::string p = plain(u, decimals);
    const std::size_t start = u.negative ? 1 : 0, point = std::min(p.find('.'), p.size());
    std::string whole = p.substr(start, point - start);
    for (std::size_t i = whole.size(); i > 3; i -= 3) whole.insert(i - 3, ",");
    const std::string text = symbol + whole + p.substr(point);
    return u.negative ? "(" + text + ")" : text;
}

} // namespace moneyoracle

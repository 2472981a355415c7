#pragma once
// Money amounts worked out by hand, apart from the program: a double's exact
// value in decimal digits by schoolbook doubling and halving, rounded to a
// currency's decimals by comparing what is cut off with a half, and written as
// US-style currency text. Shared by the totals tests and the money fuzz targets.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace moneyoracle {

// A non-negative decimal number: whole digits and fraction digits.
struct Decimal {
    std::string whole = "0", fraction;
};

inline Decimal doubled(const Decimal& d) {
    std::string all = d.whole + d.fraction, out(all.size(), '0');
    int carry = 0;
    for (std::size_t i = all.size(); i-- > 0;) {
        const int v = (all[i] - '0') * 2 + carry;
        out[i] = static_cast<char>('0' + v % 10);
        carry = v / 10;
    }
    if (carry) out.insert(out.begin(), '1');
    const std::size_t wholeSize = out.size() - d.fraction.size();
    return {out.substr(0, wholeSize), out.substr(wholeSize)};
}

inline Decimal halved(const Decimal& d) {
    std::string out;
    int rest = 0;
    for (char c : d.whole + d.fraction) {
        const int v = rest * 10 + (c - '0');
        out += static_cast<char>('0' + v / 2);
        rest = v % 2;
    }
    if (rest) out += '5';
    return {out.substr(0, d.whole.size()), out.substr(d.whole.size())};
}

// |x| exactly: its 53-bit significand as a whole number, doubled or halved as
// often as its binary exponent says.
inline Decimal exactValue(double x) {
    int exponent = 0;
    const double fraction = std::frexp(std::fabs(x), &exponent);
    Decimal d{std::to_string(static_cast<std::uint64_t>(std::ldexp(fraction, 53))), ""};
    for (int e = exponent - 53; e > 0; --e) d = doubled(d);
    for (int e = exponent - 53; e < 0; ++e) d = halved(d);
    return d;
}

// x rounded to `decimals` places, halves away from zero, as a count of the
// smallest units in digits, with its sign.
struct Units {
    bool negative = false;
    std::string digits = "0";
};

inline Units rounded(double x, int decimals) {
    Decimal d = exactValue(x);
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

// The running total of UpdateTotals: at every row the total so far is read
// back from its text, the row's number added as doubles, and the sum rounded.
inline Units total(const std::vector<double>& numbers, int decimals) {
    Units t;
    for (double x : numbers) t = rounded(valueOf(t, decimals) + x, decimals);
    return t;
}

} // namespace moneyoracle

#pragma once
// Money amounts worked out apart from the program: a double's exact value in
// decimal digits, rounded to a currency's decimals by comparing what is cut
// off with a half, and written as US-style currency text: the money fuzz targets check the program against it.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace moneyoracle {

// A non-negative decimal number: whole digits and fraction digits.
struct Decimal {
    std::string whole = "0", fraction;
};

// |x| exactly: the C library prints every digit of a double when asked for
// enough of them (none has more than 1074 behind the point).
inline Decimal exactValue(double x) {
    std::string digits(1500, '\0');
    digits.resize(static_cast<std::size_t>(std::snprintf(digits.data(), digits.size(), "%.1100f", std::fabs(x))));
    const std::size_t point = digits.find('.');
    return {digits.substr(0, point), digits.substr(point + 1, digits.find_last_not_of('0') - point)};
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

} // namespace moneyoracle

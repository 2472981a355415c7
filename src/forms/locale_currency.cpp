#include "forms/locale_currency.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <ctime>
#include <locale>
#include <vector>

#include "forms/utf8.h"

namespace forms {

namespace {

std::string toUtf8(const std::wstring& w) {
    std::string s;
    for (wchar_t c : w) s += utf8::encode(static_cast<char32_t>(c));
    return s;
}

bool startsWith(const std::string& s, std::size_t at, const std::string& what) {
    return !what.empty() && s.compare(at, what.size(), what) == 0;
}

} // namespace

LocaleCurrency::LocaleCurrency(const std::string& localeName) {
    try {
        std::locale loc(localeName.c_str());
        switch (std::use_facet<std::time_get<char>>(loc).date_order()) {
        case std::time_base::dmy: dates_.order = DateRules::Order::DayMonthYear; break;
        case std::time_base::ymd: case std::time_base::ydm: dates_.order = DateRules::Order::YearMonthDay; break;
        default: break;
        }
        const auto& mp = std::use_facet<std::moneypunct<wchar_t, false>>(loc);
        std::string symbol = toUtf8(mp.curr_symbol());
        if (symbol.empty()) return; // no currency here: US rules
        Rules r;
        r.symbol = symbol;
        r.decimalPoint = toUtf8(std::wstring(1, mp.decimal_point()));
        r.thousandsSep = toUtf8(std::wstring(1, mp.thousands_sep()));
        r.grouping = mp.grouping();
        r.decimals = mp.frac_digits();
        if (r.decimals < 0 || r.decimals > 6) r.decimals = 2;
        auto pos = mp.pos_format(), neg = mp.neg_format();
        for (int i = 0; i < 4; ++i) { r.posFormat[i] = pos.field[i]; r.negFormat[i] = neg.field[i]; }
        r.positiveSign = toUtf8(mp.positive_sign());
        r.negativeSign = toUtf8(mp.negative_sign());
        if (r.negativeSign.empty()) r.negativeSign = "-";
        rules_ = r;
    } catch (const std::exception&) {
        // A locale that is named but not installed: US rules.
    }
}

std::string LocaleCurrency::format(const MoneyUnits& amount) const {
    const Rules& r = rules_;
    const auto [whole, frac] = amount.split(r.decimals);
    // No "-0.00".
    const bool negative = amount.negative && amount.digits.find_first_not_of('0') != std::string::npos;

    // Digit groups from the right, as the grouping string says; its last size repeats.
    std::string grouped;
    if (!r.grouping.empty() && !r.thousandsSep.empty() && static_cast<unsigned char>(r.grouping[0]) > 0 &&
        static_cast<unsigned char>(r.grouping[0]) < 127) {
        std::vector<std::string> parts;
        std::size_t end = whole.size(), gi = 0;
        while (end > 0) {
            int size = static_cast<unsigned char>(r.grouping[std::min(gi, r.grouping.size() - 1)]);
            if (size <= 0 || size >= 127) { parts.push_back(whole.substr(0, end)); break; }
            std::size_t start = end > static_cast<std::size_t>(size) ? end - size : 0;
            parts.push_back(whole.substr(start, end - start));
            end = start;
            ++gi;
        }
        for (auto it = parts.rbegin(); it != parts.rend(); ++it) {
            if (!grouped.empty()) grouped += r.thousandsSep;
            grouped += *it;
        }
    } else {
        grouped = whole;
    }
    std::string value = grouped;
    if (r.decimals > 0) value += r.decimalPoint + frac;

    const char* pattern = negative ? r.negFormat : r.posFormat;
    const std::string& sign = negative ? r.negativeSign : r.positiveSign;
    std::string out;
    for (int i = 0; i < 4; ++i) {
        switch (pattern[i]) {
        case std::money_base::symbol: out += r.symbol; break;
        case std::money_base::sign: out += utf8::mid(sign, 0, 1); break;
        case std::money_base::value: out += value; break;
        case std::money_base::space: out += ' '; break;
        default: break;
        }
    }
    if (utf8::length(sign) > 1) out += utf8::mid(sign, 1, std::string::npos);
    return out;
}

double LocaleCurrency::parse(const std::string& text) const {
    const Rules& r = rules_;
    std::string number;
    bool negative = false, sawDigit = false, sawPoint = false;
    std::string negFirst = utf8::mid(r.negativeSign, 0, 1);
    for (std::size_t i = 0; i < text.size();) {
        char c = text[i];
        if (c >= '0' && c <= '9') { number += c; sawDigit = true; ++i; continue; }
        if (startsWith(text, i, r.decimalPoint) && r.decimals > 0 && !sawPoint) {
            number += '.'; sawPoint = true; i += r.decimalPoint.size(); continue;
        }
        if (c == '.' && !sawPoint && r.thousandsSep != ".") { number += '.'; sawPoint = true; ++i; continue; }
        if (startsWith(text, i, r.symbol)) { i += r.symbol.size(); continue; }
        if (!sawPoint && sawDigit && startsWith(text, i, r.thousandsSep)) { i += r.thousandsSep.size(); continue; }
        if (c == '(' || c == ')' || c == '-' || startsWith(text, i, negFirst)) {
            negative = true;
            i += (c == '(' || c == ')' || c == '-') ? 1 : negFirst.size();
            continue;
        }
        if (c == '+') { ++i; continue; }
        if (c == ' ' || c == '\t') { ++i; continue; }
        // A no-break space (U+00A0) or narrow no-break space (U+202F) some locales put between parts.
        if (startsWith(text, i, "\xC2\xA0")) { i += 2; continue; }
        if (startsWith(text, i, "\xE2\x80\xAF")) { i += 3; continue; }
        throw Failure("type mismatch: not an amount: " + text);
    }
    if (!sawDigit) throw Failure("type mismatch: not an amount: " + text);
    double v = 0;
    auto res = std::from_chars(number.data(), number.data() + number.size(), v);
    if (res.ec != std::errc() || res.ptr != number.data() + number.size()) throw Failure("overflow: " + text);
    return negative ? -v : v;
}

int LocaleCurrency::today() const {
    if (fixedToday_) return *fixedToday_;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    const std::chrono::year_month_day day{std::chrono::year{local.tm_year + 1900},
                                          std::chrono::month{static_cast<unsigned>(local.tm_mon + 1)},
                                          std::chrono::day{static_cast<unsigned>(local.tm_mday)}};
    return std::chrono::sys_days{day}.time_since_epoch().count();
}

} // namespace forms

#include "find/warranty_dates.h"

#include <chrono>
#include <string_view>

namespace qm {

std::optional<int> DayNumber(int year, int month, int day) {
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days{date}.time_since_epoch().count();
}

namespace {

struct Number {
    int value = 0;
    std::size_t digits = 0;
};

// A year as written: four digits as they stand, one or two in the region's hundred years.
std::optional<int> Year(const Number& n, const forms::DateRules& rules) {
    if (n.digits == 4) return n.value;
    if (n.digits > 2) return std::nullopt;
    const int from = rules.twoDigitYearFrom;
    const int year = from - from % 100 + n.value;
    return year < from ? year + 100 : year;
}

bool IsSeparator(char c) { return c == '/' || c == '-' || c == '.' || c == ' ' || c == ','; }

} // namespace

std::optional<int> ReadDate(std::string_view text, const forms::DateRules& rules) {
    Number parts[3];
    int count = 0;
    std::size_t i = 0;
    while (i < text.size() && text[i] == ' ') ++i;
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    while (i < text.size()) {
        if (text[i] < '0' || text[i] > '9' || count == 3) return std::nullopt;
        Number& n = parts[count++];
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
            if (++n.digits > 4) return std::nullopt;
            n.value = n.value * 10 + (text[i++] - '0');
        }
        // Up to two separators between numbers ("1. 3. 2027"), and behind the
        // last one only a closing dot and blanks.
        const std::size_t sep = i;
        while (i < text.size() && IsSeparator(text[i]) && i - sep < 2) ++i;
        if (count < 3 && i == sep && i < text.size()) return std::nullopt;
    }
    if (count != 3) return std::nullopt;
    using Order = forms::DateRules::Order;
    if (parts[0].digits == 4 || rules.order == Order::YearMonthDay) {
        const std::optional<int> year = Year(parts[0], rules);
        if (!year || parts[1].digits > 2 || parts[2].digits > 2) return std::nullopt;
        return DayNumber(*year, parts[1].value, parts[2].value);
    }
    const std::optional<int> year = Year(parts[2], rules);
    if (!year || parts[0].digits > 2 || parts[1].digits > 2) return std::nullopt;
    const bool dayFirst = rules.order == Order::DayMonthYear;
    const int month = dayFirst ? parts[1].value : parts[0].value, day = dayFirst ? parts[0].value : parts[1].value;
    if (auto d = DayNumber(*year, month, day)) return d;
    // A month over 12 is the day: the date reads only the other way round.
    if (month > 12) return DayNumber(*year, day, month);
    return std::nullopt;
}

} // namespace qm

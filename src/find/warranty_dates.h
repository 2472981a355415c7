#pragma once
#include <optional>
#include <string_view>

#include "forms/ports.h"

namespace qm {

// A date as users type it, in days from 1970-01-01, or nothing when it can't
// be read: three numbers split by "/", "-", "." or blanks, a leading year of
// four digits first (ISO 8601: 2027-03-01), else in the region's order
// (3/1/2027 in the US, 1/3/2027 or 01.03.27 where the day comes first), a year
// of two digits in the region's hundred years. A date that can only be read one
// way round (25/12/2027 where the month comes first) is read that way.
std::optional<int> ReadDate(std::string_view text, const forms::DateRules& rules);

// Days from 1970-01-01 of a day of the calendar, or nothing for no such day.
std::optional<int> DayNumber(int year, int month, int day);

} // namespace qm

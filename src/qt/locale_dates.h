#pragma once
#include <QLocale>

#include "forms/ports.h"

namespace qtface {

// The order of day, month and year in the locale's short date format.
forms::DateRules DateRulesOf(const QLocale& locale);

} // namespace qtface

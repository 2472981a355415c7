#include "qt/locale_dates.h"

namespace qtface {

forms::DateRules DateRulesOf(const QLocale& locale) {
    forms::DateRules rules;
    // Letters in quotes are text of the format, not fields.
    QString format = locale.dateFormat(QLocale::ShortFormat);
    QString fields;
    bool quoted = false;
    for (QChar c : format) {
        if (c == QLatin1Char('\'')) quoted = !quoted;
        else if (!quoted && (c == QLatin1Char('d') || c == QLatin1Char('M') || c == QLatin1Char('y')) && !fields.contains(c))
            fields += c;
    }
    if (fields.startsWith(QLatin1Char('d'))) rules.order = forms::DateRules::Order::DayMonthYear;
    else if (fields.startsWith(QLatin1Char('y'))) rules.order = forms::DateRules::Order::YearMonthDay;
    return rules;
}

} // namespace qtface

#pragma once
#include <optional>
#include <string>

#include "forms/ports.h"

namespace forms {

// Amounts in the currency format of a locale's LC_MONETARY, read through the
// C++ standard library. A locale that defines no currency (C, POSIX) gets US
// rules: $1,234.50, $0.00, ($5.00).
class LocaleCurrency : public CurrencyPort {
public:
    struct Rules {
        std::string symbol = "$";
        std::string decimalPoint = ".";
        std::string thousandsSep = ",";
        std::string grouping = "\3";
        int decimals = 2;
        // Four parts each, as std::money_base::pattern: none, space, symbol, sign, value.
        char posFormat[4] = {3, 2, 0, 4};
        char negFormat[4] = {3, 2, 4, 0};
        std::string positiveSign;
        std::string negativeSign = "()";
    };

    // "" takes the user's environment (LC_ALL, LC_MONETARY, LANG).
    explicit LocaleCurrency(const std::string& localeName = "");
    explicit LocaleCurrency(Rules rules) : rules_(std::move(rules)) {}
    static Rules usRules() { return Rules{}; }

    int decimals() const override { return rules_.decimals; }
    std::string format(const MoneyUnits& amount) const override;
    double parse(const std::string& text) const override;
    const Rules& rules() const { return rules_; }

    // The order of a date's parts comes from the locale's LC_TIME, unless the
    // face knows the user's own settings better and sets them.
    DateRules dateRules() const override { return dates_; }
    void setDateRules(const DateRules& rules) { dates_ = rules; }
    // The clock's day, unless fixed (tests).
    int today() const override;
    void fixToday(std::optional<int> day) { fixedToday_ = day; }

private:
    Rules rules_;
    DateRules dates_;
    std::optional<int> fixedToday_;
};

} // namespace forms

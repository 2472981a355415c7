// Any cell text read as a number for the totals: a finite number or a failure
// for one too large, never a crash; the currency text of the number reads
// back as the number rounded to the currency.
#include <cmath>
#include <string>

#include "forms/failure.h"
#include "forms/locale_currency.h"
#include "mainwindow/totals.h"
#include "memory_platform.h"
#include "support/money_oracle.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    double v;
    try {
        v = qm::NumberFromCell(text);
    } catch (const forms::Failure&) {
        return 0;
    }
    if (!std::isfinite(v)) fuzzing::broken("a cell read as a number that is not finite");
    static const forms::LocaleCurrency us(forms::LocaleCurrency::usRules());
    std::string money;
    try {
        money = qm::MoneyText(us, v);
    } catch (const forms::Failure&) {
        return 0;
    }
    if (money != moneyoracle::usText(moneyoracle::rounded(v, 2), 2))
        fuzzing::broken("the currency text " + money + " is not the amount rounded by hand");
    return 0;
}

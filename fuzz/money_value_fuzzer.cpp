// Any text read back as an amount, under US rules and under rules with the
// symbol behind, a decimal comma and a minus sign: a finite number or a
// failure, never a crash; an amount that reads formats to the hand-worked
// rounding of it (the US text exactly), which reads back as that rounding.
#include <cmath>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "forms/failure.h"
#include "forms/locale_currency.h"
#include "mainwindow/totals.h"
#include "memory_platform.h"
#include "support/money_oracle.h"

namespace {

forms::LocaleCurrency::Rules euroRules() {
    forms::LocaleCurrency::Rules r;
    r.symbol = "€";
    r.decimalPoint = ",";
    r.thousandsSep = ".";
    r.posFormat[0] = 4; r.posFormat[1] = 2; r.posFormat[2] = 3; r.posFormat[3] = 0; // value space symbol
    r.negFormat[0] = 3; r.negFormat[1] = 4; r.negFormat[2] = 2; r.negFormat[3] = 0; // sign value space symbol
    r.negativeSign = "-";
    return r;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const forms::LocaleCurrency us(forms::LocaleCurrency::usRules());
    static const forms::LocaleCurrency euro(euroRules());
    FuzzedDataProvider in(data, size);
    const forms::LocaleCurrency& currency = in.ConsumeBool() ? us : euro;
    const std::string text = in.ConsumeRemainingBytesAsString();
    double v;
    try {
        v = qm::MoneyValue(currency, text);
    } catch (const forms::Failure&) {
        return 0;
    }
    if (!std::isfinite(v)) fuzzing::broken("a text read as an amount that is not finite");
    std::string again;
    try {
        again = qm::MoneyText(currency, v);
    } catch (const forms::Failure&) {
        return 0;
    }
    const moneyoracle::Units rounded = moneyoracle::rounded(v, currency.decimals());
    if (&currency == &us && again != moneyoracle::usText(rounded, us.decimals()))
        fuzzing::broken("the amount of [" + text + "] formats to [" + again + "], not " + moneyoracle::usText(rounded, 2));
    if (qm::MoneyValue(currency, again) != moneyoracle::valueOf(rounded, currency.decimals()))
        fuzzing::broken("the amount of [" + text + "] formats to [" + again + "], which reads as another amount");
    return 0;
}

#include "storage/value.h"

#include <charconv>
#include <cmath>

namespace storage {

std::optional<double> numericText(const std::string& text) {
    std::size_t b = text.find_first_not_of(" \t");
    if (b == std::string::npos) return std::nullopt;
    std::size_t e = text.find_last_not_of(" \t") + 1;
    const char* first = text.data() + b;
    const char* last = text.data() + e;
    if (*first == '+') ++first;
    double v = 0;
    auto res = std::from_chars(first, last, v, std::chars_format::general);
    if (res.ec != std::errc() || res.ptr != last) return std::nullopt;
    return v;
}

double Value::arithmetic() const {
    switch (kind_) {
    case Kind::Number: return number_;
    case Kind::Text: return numericText(text_).value_or(0.0);
    default: return 0.0;
    }
}

std::optional<int> Value::toInt16() const {
    double v;
    if (kind_ == Kind::Number) v = number_;
    else if (kind_ == Kind::Text) {
        auto n = numericText(text_);
        if (!n) return std::nullopt;
        v = *n;
    } else {
        return std::nullopt;
    }
    if (!std::isfinite(v)) return std::nullopt;
    double r = std::nearbyint(v); // the default rounding mode: halves to even
    if (r < -32768 || r > 32767) return std::nullopt;
    return static_cast<int>(r);
}

} // namespace storage

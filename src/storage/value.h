#pragma once
#include <optional>
#include <string>

namespace storage {

// What a count field can hold: nothing (never assigned), a text as read, or a
// number from arithmetic.
class Value {
public:
    enum class Kind { Empty, Text, Number };

    Value() = default;
    static Value text(std::string t) { Value v; v.kind_ = Kind::Text; v.text_ = std::move(t); return v; }
    static Value number(double n) { Value v; v.kind_ = Kind::Number; v.number_ = n; return v; }

    Kind kind() const { return kind_; }
    bool isEmpty() const { return kind_ == Kind::Empty; }
    const std::string& asText() const { return text_; }
    double asNumber() const { return number_; }

    // The value for arithmetic: nothing, an empty or a non-numeric text count as 0.
    double arithmetic() const;
    // Conversion to a signed 16-bit number, rounding halves to even; nothing
    // when the value is no number or does not fit.
    std::optional<int> toInt16() const;
    // Plus or minus a whole number: the result is a number.
    Value plus(double n) const { return number(arithmetic() + n); }

private:
    Kind kind_ = Kind::Empty;
    std::string text_;
    double number_ = 0;
};

// A text as a whole number: blanks around it allowed, nothing else.
std::optional<double> numericText(const std::string& text);

} // namespace storage

#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace forms::utf8 {

// Characters are counted as code points; a stray byte of broken UTF-8 counts as one.
std::size_t length(std::string_view s);
// Byte offset of character index i (clamped to the end).
std::size_t offset(std::string_view s, std::size_t i);
std::string encode(char32_t ch);
// Characters [from, from + count) of s.
std::string mid(std::string_view s, std::size_t from, std::size_t count);

// The C0 and C1 control characters and DEL: none of them belongs in a single line.
constexpr bool isControl(char32_t ch) { return ch < 0x20 || (ch >= 0x7F && ch <= 0x9F); }
// s with every control character (in UTF-8: one byte, or C2 80 to C2 9F) made a
// blank; CR LF is one line break and gives one blank.
std::string blankControls(std::string_view s);

} // namespace forms::utf8

#include "forms/utf8.h"

namespace forms::utf8 {

namespace {
// Length of the sequence that starts with lead byte b, or 1 for a stray byte.
std::size_t seqLen(std::string_view s, std::size_t at) {
    unsigned char b = static_cast<unsigned char>(s[at]);
    std::size_t n = b < 0x80 ? 1 : (b >> 5) == 0x6 ? 2 : (b >> 4) == 0xE ? 3 : (b >> 3) == 0x1E ? 4 : 1;
    if (at + n > s.size()) return 1;
    for (std::size_t k = 1; k < n; ++k)
        if ((static_cast<unsigned char>(s[at + k]) & 0xC0) != 0x80) return 1;
    return n;
}
} // namespace

std::size_t length(std::string_view s) {
    std::size_t n = 0;
    for (std::size_t i = 0; i < s.size(); i += seqLen(s, i)) ++n;
    return n;
}

std::size_t offset(std::string_view s, std::size_t i) {
    std::size_t at = 0;
    while (i > 0 && at < s.size()) { at += seqLen(s, at); --i; }
    return at;
}

std::string encode(char32_t c) {
    std::string out;
    if (c < 0x80) out += static_cast<char>(c);
    else if (c < 0x800) { out += static_cast<char>(0xC0 | (c >> 6)); out += static_cast<char>(0x80 | (c & 0x3F)); }
    else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12)); out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18)); out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F)); out += static_cast<char>(0x80 | (c & 0x3F));
    }
    return out;
}

std::string mid(std::string_view s, std::size_t from, std::size_t count) {
    std::size_t a = offset(s, from);
    std::size_t b = a + offset(s.substr(a), count);
    return std::string(s.substr(a, b - a));
}

std::string blankControls(std::string_view s) {
    std::string out;
    out.reserve(s.size());
    for (std::size_t i = 0; i < s.size(); ++i) {
        const auto c = static_cast<unsigned char>(s[i]);
        if (c == 0xC2 && i + 1 < s.size() && isControl(static_cast<unsigned char>(s[i + 1]))) {
            out += ' ';
            ++i;
        } else if (c == '\r' && i + 1 < s.size() && s[i + 1] == '\n') {
            out += ' '; // one line break, as written on some systems
            ++i;
        } else {
            // Bytes from 0x80 on are parts of longer characters, not controls.
            out += c < 0x20 || c == 0x7F ? ' ' : static_cast<char>(c);
        }
    }
    return out;
}

} // namespace forms::utf8

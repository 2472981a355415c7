#include "find/text_fold.h"

#include <array>

namespace qm {

namespace {

// Base letters of U+00C0 to U+017F, one a code point: '*' a ligature
// (Ligature), '=' a sign that stays as it is (multiplication, division).
constexpr std::string_view kBase =
    "aaaaaa*ceeeeiiiidnooooo=ouuuuy**"
    "aaaaaa*ceeeeiiiidnooooo=ouuuuy*y"
    "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiii**jjkkkllllllllllnnnnnnnnnoooooo**rrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs";
static_assert(kBase.size() == 0x180 - 0xC0);

std::string_view Ligature(char32_t cp) {
    switch (cp) {
    case 0xC6: case 0xE6: return "ae";
    case 0xDE: case 0xFE: return "th";
    case 0xDF: return "ss";
    case 0x132: case 0x133: return "ij";
    case 0x152: case 0x153: return "oe";
    default: return {};
    }
}

// One character of text at i: its fold, and how many bytes it takes.
// Nothing to fold: an empty view, and the bytes stay as they are.
struct Step {
    std::string_view fold;
    std::size_t length;
    char lower; // an ASCII byte's fold
};

Step StepAt(std::string_view text, std::size_t i) {
    const auto b = static_cast<unsigned char>(text[i]);
    if (b < 0x80) return {{}, 1, static_cast<char>(b >= 'A' && b <= 'Z' ? b + 32 : b)};
    // Two-byte sequences from C3 80 (U+00C0) to C5 BF (U+017F).
    if (b >= 0xC3 && b <= 0xC5 && i + 1 < text.size()) {
        const auto c = static_cast<unsigned char>(text[i + 1]);
        if ((c & 0xC0) == 0x80) {
            const char32_t cp = static_cast<char32_t>(((b & 0x1F) << 6) | (c & 0x3F));
            if (cp >= 0xC0) {
                const char base = kBase[cp - 0xC0];
                if (base == '*') return {Ligature(cp), 2, 0};
                if (base != '=') return {std::string_view(&kBase[cp - 0xC0], 1), 2, 0};
            }
        }
    }
    return {{}, 1, static_cast<char>(b)};
}

} // namespace

void FoldAppend(std::string& out, std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto b = static_cast<unsigned char>(text[i]);
        if (b < 0x80) { // the common case, inline
            out.push_back(static_cast<char>(b >= 'A' && b <= 'Z' ? b + 32 : b));
            ++i;
            continue;
        }
        const Step s = StepAt(text, i);
        if (s.fold.empty()) out.push_back(s.lower);
        else out.append(s.fold);
        i += s.length;
    }
}

std::string Fold(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    FoldAppend(out, text);
    return out;
}

std::pair<std::size_t, std::size_t> OriginalSpan(std::string_view text, std::size_t from, std::size_t to) {
    std::size_t folded = 0, begin = text.size(), end = text.size();
    for (std::size_t i = 0; i < text.size();) {
        const Step s = StepAt(text, i);
        const std::size_t next = folded + (s.fold.empty() ? 1 : s.fold.size());
        if (begin == text.size() && next > from) begin = i;
        i += s.length;
        folded = next;
        if (folded >= to) {
            end = i;
            break;
        }
    }
    if (begin > end) begin = end;
    return {begin, end};
}

} // namespace qm

#include "import/spreadsheet.h"

#include <algorithm>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace spreadsheet {

namespace {

// Where the unquoted cell starting at p ends: the next separator, CR or LF, or e.
const char* cellEnd(const char* p, const char* e, char sep) {
#if defined(__SSE2__)
    const __m128i s = _mm_set1_epi8(sep), cr = _mm_set1_epi8('\r'), lf = _mm_set1_epi8('\n');
    for (; e - p >= 16; p += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        const int bits = _mm_movemask_epi8(
            _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, s), _mm_cmpeq_epi8(v, cr)), _mm_cmpeq_epi8(v, lf)));
        if (bits) return p + __builtin_ctz(static_cast<unsigned>(bits));
    }
#endif
    for (; p < e; ++p)
        if (*p == sep || *p == '\r' || *p == '\n') return p;
    return e;
}

// Line breaks in [p, e): CR LF, CR alone and LF alone each count one.
long lineBreaks(const char* p, const char* e) {
    long n = 0;
    for (; p < e; ++p)
        if (*p == '\n' || (*p == '\r' && (p + 1 == e || p[1] != '\n'))) ++n;
    return n;
}

// A quoted cell from just behind its opening quote: appended to out without
// its quotes, a doubled quote made single, and whatever follows the closing
// quote up to the separator kept. False when the file ends inside the quotes.
bool unquote(const char*& p, const char* e, char sep, std::string& out, long& line) {
    while (p < e) {
        const auto* q = static_cast<const char*>(std::memchr(p, '"', static_cast<std::size_t>(e - p)));
        const char* stop = q ? q : e;
        line += lineBreaks(p, stop);
        out.append(p, stop);
        if (!q) break;
        p = q + 1;
        if (p < e && *p == '"') {
            out += '"';
            ++p;
            continue;
        }
        const char* end = cellEnd(p, e, sep);
        out.append(p, end);
        p = end;
        return true;
    }
    p = e;
    return false;
}

// The separator the heading row (the first line that isn't empty) uses most,
// outside quotes: comma, semicolon or tab, comma when none stands there or on a tie.
char findSeparator(std::string_view t) {
    t.remove_prefix(std::min(t.size(), t.find_first_not_of("\r\n")));
    long comma = 0, semicolon = 0, tab = 0;
    bool quoted = false;
    for (char c : t) {
        if (c == '"') quoted = !quoted;
        else if (quoted) continue;
        else if (c == '\r' || c == '\n') break;
        else if (c == ',') ++comma;
        else if (c == ';') ++semicolon;
        else if (c == '\t') ++tab;
    }
    if (semicolon > comma && semicolon >= tab) return ';';
    if (tab > comma && tab > semicolon) return '\t';
    return ',';
}

// Why these bytes are no spreadsheet saved as text, or "".
std::string notText(std::string_view b) {
    if (b.empty()) return "The file is empty: there is nothing to import.";
    if (b.size() >= std::numeric_limits<std::uint32_t>::max() / 2)
        return "The file is too big to import.";
    if (b.starts_with("PK\x03\x04"))
        return "This file is a spreadsheet in its own format (such as .ods or .xlsx), not text. Please save it as CSV "
               "in your spreadsheet program and import that file. Nothing was imported.";
    if (b.starts_with("\xFF\xFE") || b.starts_with("\xFE\xFF"))
        return "This file is saved as UTF-16 text. Please save it as CSV in UTF-8 and import that file. Nothing was "
               "imported.";
    if (std::memchr(b.data(), 0, b.size()))
        return "This file is not a spreadsheet saved as text (CSV), so it can't be imported. Nothing was imported.";
    return "";
}

constexpr char16_t kCp1252High[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

} // namespace

bool IsUtf8(std::string_view b) {
    const auto* p = reinterpret_cast<const unsigned char*>(b.data());
    const auto* e = p + b.size();
    while (p < e) {
        // Plain ASCII eight bytes at a time.
        if (e - p >= 8) {
            std::uint64_t w;
            std::memcpy(&w, p, 8);
            if (!(w & 0x8080808080808080ull)) {
                p += 8;
                continue;
            }
        }
        const unsigned c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int more;
        unsigned lo = 0x80, hi = 0xBF;
        if (c >= 0xC2 && c <= 0xDF) more = 1;
        else if (c >= 0xE0 && c <= 0xEF) {
            more = 2;
            if (c == 0xE0) lo = 0xA0;     // no overlong forms
            if (c == 0xED) hi = 0x9F;     // no surrogates
        } else if (c >= 0xF0 && c <= 0xF4) {
            more = 3;
            if (c == 0xF0) lo = 0x90;
            if (c == 0xF4) hi = 0x8F;     // nothing above U+10FFFF
        } else return false;
        if (e - p <= more) return false;
        if (p[1] < lo || p[1] > hi) return false;
        for (int i = 2; i <= more; ++i)
            if ((p[i] & 0xC0) != 0x80) return false;
        p += more + 1;
    }
    return true;
}

std::string FromWindows1252(std::string_view b) {
    std::string out;
    out.reserve(b.size() + b.size() / 8);
    for (unsigned char c : b) {
        if (c < 0x80) {
            out += static_cast<char>(c);
            continue;
        }
        const char32_t u = c < 0xA0 ? kCp1252High[c - 0x80] : c;
        if (u < 0x800) {
            out += static_cast<char>(0xC0 | (u >> 6));
        } else {
            out += static_cast<char>(0xE0 | (u >> 12));
            out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
        }
        out += static_cast<char>(0x80 | (u & 0x3F));
    }
    return out;
}

std::size_t Sheet::width(const Row& row) const {
    std::size_t n = row.count;
    while (n > 0 && cells_[row.first + n - 1].len == 0) --n;
    return n;
}

// Cells are kept as places in the file's text; only quoted ones are copied,
// without their quotes. A row is where a line begins; a quoted cell can run
// over line ends, and its row then spans those lines.
Sheet ReadSheet(std::string bytes) {
    Sheet sheet;
    sheet.problem = notText(bytes);
    if (!sheet.problem.empty()) return sheet;
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.erase(0, 3);
        sheet.encoding = Encoding::Utf8WithMark;
    } else if (!IsUtf8(bytes)) {
        bytes = FromWindows1252(bytes);
        sheet.encoding = Encoding::Windows1252;
    }
    sheet.text_ = std::move(bytes);
    const std::string_view t = sheet.text_;
    const char sep = sheet.separator = findSeparator(t);
    auto& cells = sheet.cells_;
    auto& arena = sheet.unquoted_;
    const char* const begin = t.data();
    const char* const e = begin + t.size();
    const char* p = begin;
    long line = 1;
    // Rough room, so that the lists seldom move: a cell of some eight bytes, a row of some eighty.
    cells.reserve(t.size() / 8 + 16);
    sheet.rows.reserve(t.size() / 80 + 4);
    while (p < e) {
        Sheet::Row row{line, static_cast<std::uint32_t>(cells.size()), 0};
        bool anyText = false;
        for (;;) {
            Sheet::Span span;
            if (p < e && *p == '"') {
                const long opened = line;
                ++p;
                // Most quoted cells hold no quote of their own and end at a
                // separator: they stay where they stand in the text.
                const auto* q = static_cast<const char*>(std::memchr(p, '"', static_cast<std::size_t>(e - p)));
                if (q && (q + 1 == e || q[1] == sep || q[1] == '\r' || q[1] == '\n')) {
                    line += lineBreaks(p, q);
                    span.at = static_cast<std::uint32_t>(p - begin);
                    span.len = static_cast<std::uint32_t>(q - p);
                    p = q + 1;
                } else {
                    span.quoted = true;
                    span.at = static_cast<std::uint32_t>(arena.size());
                    if (!unquote(p, e, sep, arena, line)) {
                        sheet.unclosedLine = opened;
                        cells.resize(row.first);
                        return sheet;
                    }
                    span.len = static_cast<std::uint32_t>(arena.size() - span.at);
                }
            } else {
                const char* end = cellEnd(p, e, sep);
                span.at = static_cast<std::uint32_t>(p - begin);
                span.len = static_cast<std::uint32_t>(end - p);
                p = end;
            }
            anyText = anyText || span.len > 0;
            cells.push_back(span);
            ++row.count;
            if (p < e && *p == sep) {
                ++p;
                continue;
            }
            if (p < e) {
                if (*p == '\r' && p + 1 < e && p[1] == '\n') ++p;
                ++p;
                ++line;
            }
            break;
        }
        if (anyText) sheet.rows.push_back(row);
        else cells.resize(row.first); // a blank line, or separators only
    }
    return sheet;
}

} // namespace spreadsheet

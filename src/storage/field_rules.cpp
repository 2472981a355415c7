#include "storage/field_rules.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "forms/failure.h"
#include "storage/field_scan.h"
#include "storage/file_table.h"

namespace storage {

namespace {
using namespace scan;

// Whether n bytes from p hold a comma, CR or LF; reads nothing outside them.
inline bool holdsDelimiter(const char* p, std::size_t n) {
#if defined(__SSE2__)
    if (n >= 16) {
        const char* last = p + n - 16;
        for (; p < last; p += 16)
            if (delimiterBits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))) return true;
        return delimiterBits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(last))) != 0;
    }
    if (n >= 8) {
        // Two halves that may overlap: the first eight bytes and the last eight.
        const __m128i v = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                                             _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - 8)));
        return delimiterBits(v) != 0;
    }
    if (n >= 4) {
        std::uint32_t first, last;
        std::memcpy(&first, p, 4);
        std::memcpy(&last, p + n - 4, 4);
        // The upper bytes are zero, which is no delimiter.
        return delimiterBits(_mm_cvtsi64_si128(static_cast<long long>(first | (std::uint64_t{last} << 32)))) != 0;
    }
#endif
    for (const char* e = p + n; p < e; ++p)
        if (isDelimiter(*p)) return true;
    return false;
}

char* encodeQuoted(char* out, std::string_view t) {
    *out++ = '"';
    for (char c : t) {
        if (c == '"') *out++ = '"';
        *out++ = c;
    }
    *out++ = '"';
    return out;
}
} // namespace

// ---- writing -------------------------------------------------------------------------

bool NeedsQuotes(std::string_view t) {
    if (t.empty()) return false;
    if (t[0] == ' ' || t[0] == '\t' || t[0] == '"') return true;
    return holdsDelimiter(t.data(), t.size());
}

// Every cell of every save passes here: one pass that copies the text and
// looks for a delimiter at once, in pieces that may overlap but never reach
// outside the text.
char* EncodeFieldTo(char* out, std::string_view t) {
    const char* p = t.data();
    const std::size_t n = t.size();
    if (n == 0) return out;
    if (kSpecialFirst.is[static_cast<unsigned char>(p[0])]) return encodeQuoted(out, t);
#if defined(__SSE2__)
    if (n >= 16) {
        std::size_t i = 0;
        for (; i + 16 <= n; i += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
            if (delimiterBits(v)) return encodeQuoted(out, t);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), v);
        }
        if (i < n) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n - 16));
            if (delimiterBits(v)) return encodeQuoted(out, t);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + n - 16), v);
        }
        return out + n;
    }
    if (n >= 8) {
        const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - 8));
        if (delimiterBits(_mm_unpacklo_epi64(first, last))) return encodeQuoted(out, t);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), first);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + n - 8), last);
        return out + n;
    }
    if (n >= 4) {
        std::uint32_t first, last;
        std::memcpy(&first, p, 4);
        std::memcpy(&last, p + n - 4, 4);
        if (delimiterBits(_mm_cvtsi64_si128(static_cast<long long>(first | (std::uint64_t{last} << 32)))))
            return encodeQuoted(out, t);
        std::memcpy(out, &first, 4);
        std::memcpy(out + n - 4, &last, 4);
        return out + n;
    }
#endif
    for (std::size_t i = 0; i < n; ++i)
        if (isDelimiter(p[i])) return encodeQuoted(out, t);
    std::memcpy(out, p, n);
    return out + n;
}

void AppendField(std::string& out, std::string_view t) {
    const std::size_t at = out.size();
    out.resize(at + 2 * t.size() + 2);
    out.resize(static_cast<std::size_t>(EncodeFieldTo(out.data() + at, t) - out.data()));
}

std::string EncodeField(std::string_view t) {
    std::string out;
    AppendField(out, t);
    return out;
}

std::string EncodeValue(const Value& v) {
    switch (v.kind()) {
    case Value::Kind::Text: return EncodeField(v.asText());
    case Value::Kind::Number: {
        double x = v.asNumber();
        char buf[64];
        auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(x));
        return (x < 0 ? "-" : " ") + std::string(buf, res.ptr) + " ";
    }
    default: return "";
    }
}

// ---- reading -------------------------------------------------------------------------

// Reading one field, whatever lines it lies on:
//  1. blanks (spaces, tabs) are skipped;
//  2. at the end of the file the read fails: the only end-of-file signal;
//  3. a field that opens with a double quote runs to the next lone double
//     quote, commas and line ends included; a doubled one inside stands for one
//     quote; anything between the closing quote and the next delimiter is
//     dropped; a file that ends first ends the field;
//  4. any other field runs to the next comma, CR or LF, or the end of the file;
//  5. one delimiter is consumed: a comma, or a line end (CR LF, CR, LF).
std::string FileTable::ReadField(int n) {
    std::string field;
    ReadFieldInto(n, field);
    return field;
}

void FileTable::ReadFieldInto(int n, std::string& field) {
    const std::string_view v = ReadFieldView(n);
    field.clear();
    field.append(v.data(), v.size());
}

std::string_view FileTable::ReadFieldView(int n) { return readView(get(n), kAny); }

std::string_view FileTable::readViewSlow(Open& f, Expect expect) {
    if (!f.in) throw forms::Failure("bad file mode");
    readFieldSlow(f, f.field, expect);
    return f.field;
}

void FileTable::readFieldSlow(Open& f, std::string& field, Expect expect) {
    // Whether the bytes are those EncodeField and the expected delimiter give.
    bool asWritten = true;
    while (fill(f) && (f.buf[f.pos] == ' ' || f.buf[f.pos] == '\t')) {
        ++f.pos;
        asWritten = false;
    }
    if (!fill(f)) {
        if (expect != kAny && !asWritten) f.exact = false; // blanks behind the last line
        throw forms::EndOfFile();
    }

    field.clear();
    if (f.buf[f.pos] == '"') {
        ++f.pos;
        bool closed = false;
        while (fill(f)) {
            const char* start = f.buf.data() + f.pos;
            const char* end = f.buf.data() + f.len;
            const char* q = static_cast<const char*>(std::memchr(start, '"', static_cast<std::size_t>(end - start)));
            if (!q) { field.append(start, end); f.pos = f.len; continue; }
            field.append(start, q);
            f.pos += static_cast<std::size_t>(q - start) + 1;
            if (fill(f) && f.buf[f.pos] == '"') { field += '"'; ++f.pos; continue; }
            closed = true;
            break;
        }
        if (!closed) {
            // The file ended inside the quotes: that ends the field.
            if (expect != kAny) f.exact = false;
            return;
        }
        // Whatever stands behind the closing quote up to the delimiter is dropped.
        while (fill(f)) {
            char c = f.buf[f.pos];
            if (c == ',' || c == '\r' || c == '\n') break;
            ++f.pos;
            asWritten = false;
        }
        // A text that needs no quotes is written without them.
        if (expect != kAny && asWritten && !NeedsQuotes(field)) asWritten = false;
    } else {
        while (fill(f)) {
            const char* start = f.buf.data() + f.pos;
            const char* end = f.buf.data() + f.len;
            const char* p = findDelimiter(start);
            field.append(start, p);
            f.pos += static_cast<std::size_t>(p - start);
            if (p < end) break;
        }
    }
    Expect ended = kAny;
    if (fill(f)) {
        char c = f.buf[f.pos];
        if (c == ',') {
            ++f.pos;
            ended = kComma;
        } else if (c == '\n') {
            ++f.pos;
        } else if (c == '\r') {
            ++f.pos;
            if (fill(f) && f.buf[f.pos] == '\n') {
                ++f.pos;
                ended = kLineEnd;
            }
        }
    }
    if (expect != kAny && (!asWritten || ended != expect)) f.exact = false;
}

} // namespace storage

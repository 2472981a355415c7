#pragma once
// Finding where an unquoted field ends: the reading of a big category scans
// every byte of its file here, so these are inline.
#include <cstddef>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace storage::scan {

// Comma, CR and LF end an unquoted field; one look-up tells them apart from the rest.
struct DelimiterTable {
    bool is[256] = {};
    constexpr DelimiterTable() { is[static_cast<unsigned char>(',')] = is[static_cast<unsigned char>('\r')] = is[static_cast<unsigned char>('\n')] = true; }
};
inline constexpr DelimiterTable kDelimiters;
inline bool isDelimiter(char c) { return kDelimiters.is[static_cast<unsigned char>(c)]; }

// Blanks (skipped) and a double quote (a quoted field) at a field's start.
struct SpecialFirstTable {
    bool is[256] = {};
    constexpr SpecialFirstTable() { is[static_cast<unsigned char>(' ')] = is[static_cast<unsigned char>('\t')] = is[static_cast<unsigned char>('"')] = true; }
};
inline constexpr SpecialFirstTable kSpecialFirst;

// Room behind a piece being read for its sentinel and for a scan that reads 16 bytes at a time.
inline constexpr std::size_t kScanPadding = 16;

#if defined(__SSE2__)
inline unsigned delimiterBits(__m128i v) {
    const __m128i m = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8(',')), _mm_cmpeq_epi8(v, _mm_set1_epi8('\r'))),
                                   _mm_cmpeq_epi8(v, _mm_set1_epi8('\n')));
    return static_cast<unsigned>(_mm_movemask_epi8(m));
}
#endif

// The first comma, CR or LF from p on. There must be one, with 15 readable
// bytes behind it: the read buffer's sentinel and padding see to that.
inline const char* findDelimiter(const char* p) {
#if defined(__SSE2__)
    for (;; p += 16)
        if (unsigned bits = delimiterBits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))) return p + __builtin_ctz(bits);
#else
    while (!isDelimiter(*p)) ++p;
    return p;
#endif
}

} // namespace storage::scan

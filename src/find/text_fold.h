#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace qm {

// Text as Find compares it: ASCII letters in lower case, and the accented
// Latin letters of UTF-8 (Latin-1 and Latin Extended-A) as their base letters,
// ligatures spelt out ("Æ" as "ae", "ß" as "ss"). Every other byte stays, so
// the fold of a text is never longer than twice the text and a needle folded
// the same way is found by a plain byte search.
void FoldAppend(std::string& out, std::string_view text);
std::string Fold(std::string_view text);

// The bytes of text whose fold covers the folded bytes [from, to): the span
// to mark in the text as the user typed it.
std::pair<std::size_t, std::size_t> OriginalSpan(std::string_view text, std::size_t from, std::size_t to);

} // namespace qm

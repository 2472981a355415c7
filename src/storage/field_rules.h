#pragma once
// How a field lies in a file: WriteLine's encoding here, ReadField's reading
// rules in field_rules.cpp (the table of open files reads by them).
#include <string>
#include <string_view>

#include "storage/value.h"

namespace storage {

// A text as WriteLine stores it: unchanged whenever ReadField gives it back
// unchanged, else in double quotes with each inner double quote doubled.
std::string EncodeField(std::string_view text);
bool NeedsQuotes(std::string_view text);
// The same, appended to out.
void AppendField(std::string& out, std::string_view text);
// The same, written at out, which has room for 2 * text.size() + 2 bytes; gives the end.
char* EncodeFieldTo(char* out, std::string_view text);
// A value as WriteLine stores it, without the line end: a text encoded, a
// number with a blank on either side (a minus sign in place of the first),
// nothing as nothing.
std::string EncodeValue(const Value& value);

} // namespace storage

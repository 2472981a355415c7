#pragma once
#include <optional>

#include "storage/value.h"

namespace storage {

// The index of a database: the count of its categories and their names, each
// in a file of its own in the database's place.
inline constexpr const char* kCountFile = "NumCats.csv";
inline constexpr const char* kNamesFile = "CatFiles.csv";

// How many names an index with this count lists. A blank count lists none:
// an exit with no category ever made writes one. Nothing for a count that is
// no 16-bit number or is negative: such an index can't be read.
std::optional<int> ListedEntries(const Value& count);

} // namespace storage

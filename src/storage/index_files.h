#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

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

// The names an index lists, from its count and every field of its names file.
// The names file is what the user made: a count that disagrees with it is
// repaired, and every name is listed but blank lines at its end. A count as
// far as the blank lines at the end reach agrees, and lists that many fields.
// Nothing for a count that is no count, or names beyond what a list holds.
struct IndexNames {
    std::vector<std::string> names;
    bool repaired = false;
};
std::optional<IndexNames> ListedNames(const Value& count, std::vector<std::string> fields);

// What a start that repaired an index tells: the count it found, the names it lists.
std::string IndexRepairedMessage(const Value& count, std::size_t names);

} // namespace storage

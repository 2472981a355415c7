#include "storage/index_files.h"

#include <string>

namespace storage {

std::optional<int> ListedEntries(const Value& count) {
    const std::optional<int> n = count.toInt16();
    if (n) return *n >= 0 ? n : std::nullopt;
    if (count.asText().find_first_not_of(" \t") == std::string::npos) return 0;
    return std::nullopt;
}

} // namespace storage

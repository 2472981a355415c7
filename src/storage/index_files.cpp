#include "storage/index_files.h"

#include <string>
#include <utility>

#include "forms/listbox.h"

namespace storage {

std::optional<int> ListedEntries(const Value& count) {
    const std::optional<int> n = count.toInt16();
    if (n) return *n >= 0 ? n : std::nullopt;
    if (count.asText().find_first_not_of(" \t") == std::string::npos) return 0;
    return std::nullopt;
}

std::optional<IndexNames> ListedNames(const Value& count, std::vector<std::string> fields) {
    const std::optional<int> n = ListedEntries(count);
    if (!n) return std::nullopt;
    const auto wanted = static_cast<std::size_t>(*n);
    std::size_t named = fields.size();
    while (named > 0 && fields[named - 1].empty()) --named;
    if (named <= wanted && wanted <= fields.size()) {
        fields.resize(wanted);
        return IndexNames{std::move(fields), false};
    }
    if (named > static_cast<std::size_t>(forms::ListBox::kMaxEntries)) return std::nullopt;
    fields.resize(named);
    return IndexNames{std::move(fields), true};
}

std::string IndexRepairedMessage(const Value& count, std::size_t names) {
    const auto categories = [](std::size_t k) { return std::to_string(k) + (k == 1 ? " category" : " categories"); };
    const std::optional<int> n = count.toInt16(); // or blank
    return "The list of categories was repaired: NumCats.csv " +
           (n ? "said " + categories(static_cast<std::size_t>(*n)) : std::string("gave no count")) +
           ", CatFiles.csv names " + categories(names) + ". Every name in CatFiles.csv is listed.";
}

} // namespace storage

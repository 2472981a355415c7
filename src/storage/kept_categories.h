#pragma once
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "forms/grid.h"

namespace storage {

// The texts of categories the grid held before, each under the revision it
// had there: a switch back to a category whose file is known to hold them
// still takes them instead of reading and splitting the file again. Every
// click on the list runs a walk over all categories, so this spares reading
// the whole database each time.
class KeptCategories {
public:
    static constexpr std::size_t kDefaultLimit = 64u << 20;

    explicit KeptCategories(std::size_t limit = kDefaultLimit) : limit_(limit) {}

    // The texts kept at this revision, taken out of the store.
    std::optional<forms::Grid::Texts> take(std::uint64_t revision);
    // Keeps these texts if describes(their revision): a file is known to hold
    // them. When the memory kept passes the limit, those no file holds any
    // more go, then the least recently kept.
    void keep(forms::Grid::Texts texts, const std::function<bool(std::uint64_t)>& describes);
    void setLimit(std::size_t bytes) { limit_ = bytes; }

private:
    std::vector<forms::Grid::Texts> kept_; // oldest first
    std::size_t limit_;
};

} // namespace storage

#include "storage/kept_categories.h"

#include <algorithm>

namespace storage {

namespace {
std::size_t bytesOf(const std::vector<forms::Grid::Texts>& kept) {
    std::size_t bytes = 0;
    for (const auto& t : kept) bytes += t.bytes();
    return bytes;
}
} // namespace

std::optional<forms::Grid::Texts> KeptCategories::take(std::uint64_t revision) {
    auto it = std::find_if(kept_.begin(), kept_.end(), [&](const auto& t) { return t.revision() == revision; });
    if (it == kept_.end()) return std::nullopt;
    forms::Grid::Texts texts = std::move(*it);
    kept_.erase(it);
    return texts;
}

void KeptCategories::keep(forms::Grid::Texts texts, const std::function<bool(std::uint64_t)>& describes) {
    if (!describes(texts.revision())) return;
    kept_.push_back(std::move(texts));
    std::size_t bytes = bytesOf(kept_);
    if (bytes <= limit_) return;
    // Over the limit: texts no file holds any more go first (they can never
    // be taken again), then the least recently kept.
    std::erase_if(kept_, [&](const auto& t) { return !describes(t.revision()); });
    bytes = bytesOf(kept_);
    auto oldest = kept_.begin();
    while (bytes > limit_ && oldest != kept_.end()) bytes -= (oldest++)->bytes();
    kept_.erase(kept_.begin(), oldest);
}

} // namespace storage

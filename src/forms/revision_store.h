#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace forms {

// Values kept under a grid's revision, which names one content of that grid
// alone, so that the content coming back finds what was worked out for it.
// The memory they hold stays under a limit: past it, the values a caller
// calls stale go first, then the least recently kept.
template <class T>
class RevisionStore {
public:
    explicit RevisionStore(std::size_t limit) : limit_(limit) {}

    bool holds(std::uint64_t revision) const { return find(revision) != kept_.end(); }
    // The value kept under this revision, taken out of the store.
    std::optional<T> take(std::uint64_t revision) {
        auto it = find(revision);
        if (it == kept_.end()) return std::nullopt;
        T value = std::move(it->value);
        kept_.erase(it);
        return value;
    }
    void keep(std::uint64_t revision, T value, std::size_t bytes, const std::function<bool(std::uint64_t)>& stale = {}) {
        std::erase_if(kept_, [&](const Entry& e) { return e.revision == revision; });
        kept_.push_back({revision, bytes, std::move(value)});
        if (total() <= limit_) return;
        if (stale) std::erase_if(kept_, [&](const Entry& e) { return stale(e.revision); });
        std::size_t bytesKept = total();
        auto oldest = kept_.begin();
        while (bytesKept > limit_ && oldest != kept_.end()) bytesKept -= (oldest++)->bytes;
        kept_.erase(kept_.begin(), oldest);
    }
    void setLimit(std::size_t bytes) { limit_ = bytes; }

private:
    struct Entry {
        std::uint64_t revision;
        std::size_t bytes;
        T value;
    };
    auto find(std::uint64_t revision) const {
        return std::find_if(kept_.begin(), kept_.end(), [&](const Entry& e) { return e.revision == revision; });
    }
    auto find(std::uint64_t revision) {
        return std::find_if(kept_.begin(), kept_.end(), [&](const Entry& e) { return e.revision == revision; });
    }
    std::size_t total() const {
        std::size_t bytes = 0;
        for (const Entry& e : kept_) bytes += e.bytes;
        return bytes;
    }

    std::vector<Entry> kept_; // oldest first
    std::size_t limit_;
};

} // namespace forms

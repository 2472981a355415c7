#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <list>
#include <optional>
#include <unordered_map>
#include <utility>

namespace forms {

// Values kept under a grid's revision, which names one content of that grid
// alone, so that the content coming back finds what was worked out for it.
// The memory they hold stays under a limit: past it, the values a caller
// calls stale go first, then the least recently kept.
template <class T>
class RevisionStore {
public:
    explicit RevisionStore(std::size_t limit) : limit_(limit) {}

    // A walk over a thousand categories asks at every switch: these are
    // looked up, not searched for.
    bool holds(std::uint64_t revision) const { return index_.count(revision) != 0; }
    // The value kept under this revision, taken out of the store.
    std::optional<T> take(std::uint64_t revision) {
        auto at = index_.find(revision);
        if (at == index_.end()) return std::nullopt;
        T value = std::move(at->second->value);
        drop(at);
        return value;
    }
    void keep(std::uint64_t revision, T value, std::size_t bytes, const std::function<bool(std::uint64_t)>& stale = {}) {
        if (auto at = index_.find(revision); at != index_.end()) drop(at);
        kept_.push_back({revision, bytes, std::move(value)});
        index_[revision] = std::prev(kept_.end());
        total_ += bytes;
        if (total_ <= limit_) return;
        if (stale)
            for (auto it = kept_.begin(); it != kept_.end();) {
                const std::uint64_t r = (it++)->revision;
                if (stale(r)) drop(index_.find(r));
            }
        while (total_ > limit_ && !kept_.empty()) drop(index_.find(kept_.front().revision));
    }
    void setLimit(std::size_t bytes) { limit_ = bytes; }

private:
    struct Entry {
        std::uint64_t revision;
        std::size_t bytes;
        T value;
    };
    using Entries = std::list<Entry>;
    using Index = std::unordered_map<std::uint64_t, typename Entries::iterator>;

    void drop(typename Index::iterator at) {
        total_ -= at->second->bytes;
        kept_.erase(at->second);
        index_.erase(at);
    }

    Entries kept_; // oldest first
    Index index_;
    std::size_t total_ = 0;
    std::size_t limit_;
};

} // namespace forms

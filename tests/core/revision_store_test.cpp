// The store of values kept by revision against the plainest store that can
// be: a list searched from the oldest, trimmed from the oldest past its limit.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <optional>
#include <random>
#include <vector>

#include "forms/revision_store.h"

namespace {

struct PlainStore {
    struct Entry {
        std::uint64_t revision;
        std::size_t bytes;
        int value;
    };
    std::vector<Entry> kept;
    std::size_t limit;

    void keep(std::uint64_t r, int v, std::size_t bytes, const std::function<bool(std::uint64_t)>& stale) {
        std::erase_if(kept, [&](const Entry& e) { return e.revision == r; });
        kept.push_back({r, bytes, v});
        auto total = [&] {
            std::size_t t = 0;
            for (const Entry& e : kept) t += e.bytes;
            return t;
        };
        if (total() <= limit) return;
        std::erase_if(kept, [&](const Entry& e) { return stale(e.revision); });
        while (total() > limit && !kept.empty()) kept.erase(kept.begin());
    }
    std::optional<int> take(std::uint64_t r) {
        auto it = std::find_if(kept.begin(), kept.end(), [&](const Entry& e) { return e.revision == r; });
        if (it == kept.end()) return std::nullopt;
        const int v = it->value;
        kept.erase(it);
        return v;
    }
};

TEST(RevisionStore, KeepsAndDropsWhatAPlainListWould) {
    std::mt19937 rng(7);
    for (int run = 0; run < 200; ++run) {
        const std::size_t limit = rng() % 64;
        forms::RevisionStore<int> store(limit);
        PlainStore plain{{}, limit};
        const std::uint64_t staleBelow = rng() % 12;
        const auto stale = [&](std::uint64_t r) { return r < staleBelow; };
        for (int step = 0; step < 60; ++step) {
            const std::uint64_t r = rng() % 16;
            SCOPED_TRACE("run " + std::to_string(run) + " step " + std::to_string(step));
            if (rng() % 3 == 0) {
                ASSERT_EQ(store.take(r), plain.take(r));
            } else {
                const std::size_t bytes = rng() % 20;
                const bool withStale = rng() % 2;
                const std::function<bool(std::uint64_t)> given = withStale ? std::function<bool(std::uint64_t)>(stale) : nullptr;
                store.keep(r, step, bytes, given);
                plain.keep(r, step, bytes, [&](std::uint64_t q) { return given && given(q); });
            }
            for (std::uint64_t q = 0; q < 16; ++q)
                ASSERT_EQ(store.holds(q), std::any_of(plain.kept.begin(), plain.kept.end(), [&](auto& e) { return e.revision == q; }));
        }
    }
}

} // namespace

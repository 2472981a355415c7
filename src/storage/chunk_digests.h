#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

struct XXH3_state_s;

namespace storage {

// The digests of a byte stream cut by offset into chunks of kChunk bytes, the
// last one shorter, whatever pieces the bytes come in. XXH3 64-bit from
// libxxhash: the digests live only as long as the program runs, so any fast
// hash with few collisions does.
class ChunkDigests {
public:
    static constexpr std::size_t kChunk = 64 * 1024;

    ChunkDigests();
    ChunkDigests(ChunkDigests&&) noexcept;
    ChunkDigests& operator=(ChunkDigests&&) noexcept;
    ~ChunkDigests();

    // The digest of one chunk given whole: what add and finish give for it.
    static std::uint64_t Of(const char* data, std::size_t n);

    void add(const char* data, std::size_t n);
    // The digests of the whole chunks so far, the latest last.
    const std::vector<std::uint64_t>& whole() const { return digests_; }
    std::uint64_t size() const { return total_; }
    // Closes the last, shorter chunk (if any bytes are left over) and gives them all.
    std::vector<std::uint64_t> finish();

private:
    struct FreeState {
        void operator()(XXH3_state_s* state) const;
    };
    std::unique_ptr<XXH3_state_s, FreeState> current_;
    std::size_t currentLen_ = 0;
    std::uint64_t total_ = 0;
    std::vector<std::uint64_t> digests_;
};

} // namespace storage

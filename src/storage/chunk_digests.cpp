#include "storage/chunk_digests.h"

#include <algorithm>
#include <new>

#include <xxhash.h>

namespace storage {

void ChunkDigests::FreeState::operator()(XXH3_state_s* state) const { XXH3_freeState(state); }

ChunkDigests::ChunkDigests() : current_(XXH3_createState()) {
    if (!current_) throw std::bad_alloc();
    XXH3_64bits_reset(current_.get());
}

ChunkDigests::ChunkDigests(ChunkDigests&&) noexcept = default;
ChunkDigests& ChunkDigests::operator=(ChunkDigests&&) noexcept = default;
ChunkDigests::~ChunkDigests() = default;

std::uint64_t ChunkDigests::Of(const char* data, std::size_t n) { return XXH3_64bits(data, n); }

void ChunkDigests::add(const char* data, std::size_t n) {
    total_ += n;
    while (n > 0) {
        const std::size_t take = std::min(n, kChunk - currentLen_);
        XXH3_64bits_update(current_.get(), data, take);
        currentLen_ += take;
        data += take;
        n -= take;
        if (currentLen_ == kChunk) {
            digests_.push_back(XXH3_64bits_digest(current_.get()));
            XXH3_64bits_reset(current_.get());
            currentLen_ = 0;
        }
    }
}

std::vector<std::uint64_t> ChunkDigests::finish() {
    if (currentLen_ > 0) {
        digests_.push_back(XXH3_64bits_digest(current_.get()));
        XXH3_64bits_reset(current_.get());
        currentLen_ = 0;
    }
    return std::move(digests_);
}

} // namespace storage

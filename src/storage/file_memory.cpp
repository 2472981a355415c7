#include "storage/file_memory.h"

#include <algorithm>

#include "forms/failure.h"
#include "storage/chunk_digests.h"

namespace storage {

bool FileMemory::knowsState(const std::string& path, const forms::FileFingerprint& state) const {
    auto it = known_.find(path);
    return it != known_.end() && it->second.state.settled && it->second.state.sameState(state);
}

std::optional<KnownFile> FileMemory::heldNow(const std::string& path) {
    auto it = known_.find(path);
    if (it == known_.end() || !it->second.state.settled) return std::nullopt;
    auto now = files_.fingerprint(path);
    if (!now || !now->sameState(it->second.state)) return std::nullopt;
    return it->second;
}

bool FileMemory::keepsAtClose(const std::string& path, std::uint64_t size, const std::vector<std::uint64_t>& chunks,
                              const KnownFile* match, const std::optional<FileImage>& image) {
    if (match) {
        // Every chunk was held back: the file must still be in the state that proved them.
        if (size != match->size || chunks != match->chunks) return false;
        auto now = files_.fingerprint(path);
        if (!now || !now->sameState(match->state)) return false;
        setImage(known_[path], image);
        return true;
    }
    // Written out in full because the file's time was too recent to prove
    // anything: its bytes may turn out to be these all the same.
    auto it = known_.find(path);
    if (it == known_.end() || size != it->second.size || chunks != it->second.chunks || !stillHolds(path, it->second))
        return false;
    setImage(it->second, image);
    return true;
}

void FileMemory::remember(const std::string& path, const forms::FileFingerprint& state, std::uint64_t size,
                          std::vector<std::uint64_t> chunks) {
    // A size other than the bytes seen means the file changed under us.
    if (state.size != size) {
        forget(path);
        return;
    }
    KnownFile& k = known_[path];
    setImage(k, std::nullopt);
    k = KnownFile{state, size, std::move(chunks), std::nullopt};
}

void FileMemory::noteWritten(const std::string& path, std::uint64_t size, std::vector<std::uint64_t> chunks,
                             const std::optional<FileImage>& image) {
    if (auto state = files_.fingerprint(path)) remember(path, *state, size, std::move(chunks));
    else forget(path);
    if (auto it = known_.find(path); it != known_.end()) setImage(it->second, image);
}

void FileMemory::noteRead(const std::string& path, const std::optional<forms::FileFingerprint>& state, bool whole) {
    if (state) lastRead_ = LastRead{path, *state, whole};
    else lastRead_.reset();
}

void FileMemory::setImage(KnownFile& k, std::optional<FileImage> image) {
    if (k.image && k.image->loads) {
        auto it = loadingRevisions_.find(k.image->revision);
        if (it != loadingRevisions_.end() && --it->second == 0) loadingRevisions_.erase(it);
    }
    k.image = image;
    if (image && image->loads) ++loadingRevisions_[image->revision];
}

void FileMemory::forget(const std::string& path) {
    auto it = known_.find(path);
    if (it == known_.end()) return;
    setImage(it->second, std::nullopt);
    known_.erase(it);
}

void FileMemory::forgetMatching(const std::string& folder, const std::string& suffix) {
    for (auto it = known_.begin(); it != known_.end();) {
        const std::string& p = it->first;
        const bool matches = p.size() >= folder.size() + suffix.size() && p.compare(0, folder.size(), folder) == 0 &&
                             p.compare(p.size() - suffix.size(), suffix.size(), suffix) == 0;
        if (!matches) {
            ++it;
            continue;
        }
        setImage(it->second, std::nullopt);
        it = known_.erase(it);
    }
}

// Only the file just read to its end, still in the state it had at the open,
// holds what the holder took from it.
void FileMemory::NoteLoaded(const std::string& path, std::uint64_t revision, bool loads, bool exact) {
    if (!lastRead_ || !lastRead_->whole || lastRead_->path != path) return;
    auto it = known_.find(path);
    if (it == known_.end() || !it->second.state.sameState(lastRead_->state)) return;
    setImage(it->second, FileImage{revision, loads, loads && exact});
}

bool FileMemory::WouldWriteSame(const std::string& path, std::uint64_t revision) {
    auto it = known_.find(path);
    if (it == known_.end()) return false;
    KnownFile& k = it->second;
    if (!k.image || !k.image->saves || k.image->revision != revision) return false;
    return stillHolds(path, k);
}

std::optional<std::uint64_t> FileMemory::LoadsAs(const std::string& path, const forms::FileFingerprint& before,
                                                 const std::function<bool(std::uint64_t)>& held) {
    auto it = known_.find(path);
    if (it == known_.end()) return std::nullopt;
    KnownFile& k = it->second;
    if (!k.image || !k.image->loads || !held(k.image->revision) || !k.state.sameState(before)) return std::nullopt;
    // The state taken at the open is the file's state now; a recent one is proved by reading the file.
    if (!k.state.settled && !stillHolds(path, k)) return std::nullopt;
    return k.image->revision;
}

bool FileMemory::Describes(std::uint64_t revision) const { return loadingRevisions_.count(revision) != 0; }

bool FileMemory::ChangedElsewhere(const std::string& path) {
    auto it = known_.find(path);
    if (it == known_.end()) return false;
    const auto now = files_.fingerprint(path);
    // Gone: writing there takes nobody's bytes away.
    if (!now) return false;
    const bool sameState = now->sameState(it->second.state);
    if (sameState && it->second.state.settled) return false;
    // A recent state, or a new one: the bytes tell (a copy of the same bytes
    // put in its place changed nothing). A file in the state known that can't
    // be read just now shows no sign of another writer.
    return !readsAsKnown(path, it->second, *now).value_or(sameState);
}

std::optional<std::uint64_t> FileMemory::HeldAs(const std::string& path) const {
    auto it = known_.find(path);
    if (it == known_.end() || !it->second.image) return std::nullopt;
    return it->second.image->revision;
}

bool FileMemory::stillHolds(const std::string& path, KnownFile& k) {
    auto now = files_.fingerprint(path);
    if (!now || !now->sameState(k.state)) return false;
    return k.state.settled || readsAsKnown(path, k, *now).value_or(false);
}

std::optional<bool> FileMemory::readsAsKnown(const std::string& path, KnownFile& k, const forms::FileFingerprint& now) {
    if (now.size != k.size) return false;
    try {
        auto in = files_.openRead(path);
        std::vector<char> chunk(ChunkDigests::kChunk);
        ChunkDigests digests;
        while (const std::size_t got = in->read(chunk.data(), chunk.size())) digests.add(chunk.data(), got);
        const std::uint64_t size = digests.size();
        auto after = files_.fingerprint(path);
        if (size != k.size || digests.finish() != k.chunks || !after || !after->sameState(now)) return false;
    } catch (const forms::Failure&) {
        return std::nullopt;
    }
    k.state = now;
    return true;
}

} // namespace storage

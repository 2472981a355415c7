#include "storage/file_table.h"

#include <algorithm>

namespace storage {

using forms::Failure;

namespace {
constexpr std::size_t kReadChunk = 64 * 1024;
} // namespace

FileTable::~FileTable() { CloseAll(); }

int FileTable::FreeFile() const {
    for (int n = 1; n <= kMaxFiles; ++n)
        if (!open_[static_cast<std::size_t>(n)]) return n;
    throw Failure("too many files");
}

bool FileTable::isOpen(int n) const { return n >= 1 && n <= kMaxFiles && open_[static_cast<std::size_t>(n)] != nullptr; }

void FileTable::OpenInput(int n, const std::string& path) {
    if (n < 1 || n > kMaxFiles) throw Failure("bad file name or number");
    if (isOpen(n)) throw Failure("file already open");
    auto f = std::make_unique<Open>();
    f->path = path;
    // The file's fingerprint before any byte is read: a change made while it
    // is read leaves the cache entry stale, so those bytes are never taken for
    // its content.
    f->in = files_.openRead(path);
    f->before = f->in->state();
    // The piece of the last input closed serves again: each open of a category
    // would otherwise clear a fresh one, and a walk opens hundreds. Its old
    // bytes lie behind the sentinel, where no scan looks.
    f->buf = std::move(spareReadPiece_);
    if (f->buf.size() != kReadChunk + scan::kScanPadding) f->buf.assign(kReadChunk + scan::kScanPadding, '\0');
    f->buf[0] = '\n';
    // Digests are taken only on a cache miss.
    if (f->before) f->hashing = !memory_.knowsState(path, *f->before);
    open_[static_cast<std::size_t>(n)] = std::move(f);
}

void FileTable::OpenOutput(int n, const std::string& path) {
    if (n < 1 || n > kMaxFiles) throw Failure("bad file name or number");
    if (isOpen(n)) throw Failure("file already open");
    auto f = std::make_unique<Open>();
    f->path = path;
    f->out = files_.openReplace(path);
    f->buf.reserve(ChunkDigests::kChunk);
    f->match = memory_.heldNow(path);
    f->holding = f->match.has_value();
    open_[static_cast<std::size_t>(n)] = std::move(f);
}

void FileTable::Close(int n) {
    if (!isOpen(n)) return;
    std::unique_ptr<Open> f = std::move(open_[static_cast<std::size_t>(n)]);
    if (f->in) {
        // Every byte the file had at the open was taken, though no read met
        // its end (the index is read that way): it goes into the cache too.
        if (f->hashing && f->pos == f->len && f->digests.size() == f->before->size) {
            const std::uint64_t size = f->digests.size();
            memory_.remember(f->path, *f->before, size, f->digests.finish());
        }
        memory_.noteRead(f->path, f->before, f->eof);
        spareReadPiece_ = std::move(f->buf);
        return;
    }
    if (!f->out || f->broken) return;
    if (!f->buf.empty()) f->digests.add(f->buf.data(), f->buf.size());
    const std::uint64_t size = f->digests.size();
    std::vector<std::uint64_t> chunks = f->digests.finish();
    // The same bytes as the file holds: the file stays, the new copy goes with f.
    if (memory_.keepsAtClose(f->path, size, chunks, f->holding ? &*f->match : nullptr, f->image)) return;
    if (f->holding) writeHeldChunks(*f);
    if (!f->buf.empty()) f->out->write(f->buf.data(), f->buf.size());
    try {
        f->out->commit();
    } catch (...) {
        memory_.forget(f->path);
        throw;
    }
    memory_.noteWritten(f->path, size, std::move(chunks), f->image);
}

void FileTable::NoteSaving(int n, std::uint64_t revision, bool readsBack) {
    Open& f = get(n);
    if (f.out) f.image = FileImage{revision, readsBack, true};
}

std::optional<std::uint64_t> FileTable::LoadsAs(int n, const std::function<bool(std::uint64_t)>& held) {
    Open& f = get(n);
    // Not read yet, and in the state known at the open.
    if (!f.in || !f.before || f.len != 0 || f.eof) return std::nullopt;
    return memory_.LoadsAs(f.path, *f.before, held);
}

void FileTable::Abandon(int n) {
    if (!isOpen(n)) return;
    open_[static_cast<std::size_t>(n)].reset();
}

void FileTable::CloseAll() {
    // Files still open when the program ends were never finished: drop them.
    for (auto& f : open_) f.reset();
}

void FileTable::write(Open& f, std::string_view data) {
    if (!f.out) throw Failure("bad file mode");
    if (f.broken) throw Failure("write error on " + f.path);
    try {
        while (!data.empty()) {
            const std::size_t take = std::min(data.size(), ChunkDigests::kChunk - f.buf.size());
            f.buf.insert(f.buf.end(), data.data(), data.data() + take);
            data.remove_prefix(take);
            if (f.buf.size() == ChunkDigests::kChunk) chunkFilled(f);
        }
    } catch (...) {
        f.broken = true;
        throw;
    }
}

// A whole chunk is ready: held back while it is the one the file has there,
// else written, after the chunks held back before it.
void FileTable::chunkFilled(Open& f) {
    f.digests.add(f.buf.data(), f.buf.size());
    if (f.holding) {
        const std::vector<std::uint64_t>& known = f.match->chunks;
        if (f.held < known.size() && known[f.held] == f.digests.whole().back()) {
            ++f.held;
            f.buf.clear();
            return;
        }
        writeHeldChunks(f);
    }
    f.out->write(f.buf.data(), f.buf.size());
    f.buf.clear();
}

// The new content differs after all: the chunks held back come from the file,
// which must still be as it was known; if it is not, the save fails and the
// file stays as it is now.
void FileTable::writeHeldChunks(Open& f) {
    f.holding = false;
    if (f.held == 0) return;
    const KnownFile& k = *f.match;
    auto now = files_.fingerprint(f.path);
    if (!now || !now->sameState(k.state)) throw Failure(f.path + " changed while it was being written");
    auto in = files_.openRead(f.path);
    std::vector<char> chunk(ChunkDigests::kChunk);
    for (std::size_t i = 0; i < f.held; ++i) {
        std::size_t got = 0;
        while (got < chunk.size()) {
            const std::size_t r = in->read(chunk.data() + got, chunk.size() - got);
            if (r == 0) break;
            got += r;
        }
        if (got != chunk.size() || ChunkDigests::Of(chunk.data(), got) != k.chunks[i])
            throw Failure(f.path + " changed while it was being written");
        f.out->write(chunk.data(), chunk.size());
    }
    f.held = 0;
}

void FileTable::WriteRawLine(int n, std::string_view line) {
    Open& f = get(n);
    write(f, line);
    write(f, "\r\n");
}

void FileTable::WriteBytes(int n, std::string_view bytes) { write(get(n), bytes); }

void FileTable::WriteLine(int n, std::string_view text) { WriteRawLine(n, EncodeField(text)); }

void FileTable::WriteLine(int n, const Value& v) { WriteRawLine(n, EncodeValue(v)); }

bool FileTable::fill(Open& f) {
    if (f.pos < f.len) return true;
    if (f.eof) return false;
    f.len = f.in->read(f.buf.data(), kReadChunk);
    f.pos = 0;
    f.buf[f.len] = '\n'; // the sentinel that ends every scan
    if (f.len == 0) {
        f.eof = true;
        // Read whole: its bytes go into the cache under the fingerprint taken at the open.
        if (f.hashing) {
            const std::uint64_t size = f.digests.size();
            memory_.remember(f.path, *f.before, size, f.digests.finish());
        }
        f.hashing = false;
        return false;
    }
    if (f.hashing) f.digests.add(f.buf.data(), f.len);
    return true;
}

void FileTable::Kill(const std::string& path) {
    memory_.forget(path);
    files_.remove(path);
}

void FileTable::KillMatching(const std::string& folder, const std::string& suffix) {
    memory_.forgetMatching(folder, suffix);
    files_.removeMatching(folder, suffix);
}

} // namespace storage

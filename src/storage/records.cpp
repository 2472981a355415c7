#include "storage/records.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace storage {

using forms::Failure;

namespace {
using namespace scan;

constexpr std::size_t kReadChunk = 64 * 1024;

// Whether n bytes from p hold a comma, CR or LF; reads nothing outside them.
inline bool holdsDelimiter(const char* p, std::size_t n) {
#if defined(__SSE2__)
    if (n >= 16) {
        const char* last = p + n - 16;
        for (; p < last; p += 16)
            if (delimiterBits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)))) return true;
        return delimiterBits(_mm_loadu_si128(reinterpret_cast<const __m128i*>(last))) != 0;
    }
    if (n >= 8) {
        // Two halves that may overlap: the first eight bytes and the last eight.
        const __m128i v = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                                             _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - 8)));
        return delimiterBits(v) != 0;
    }
    if (n >= 4) {
        std::uint32_t first, last;
        std::memcpy(&first, p, 4);
        std::memcpy(&last, p + n - 4, 4);
        // The upper bytes are zero, which is no delimiter.
        return delimiterBits(_mm_cvtsi64_si128(static_cast<long long>(first | (std::uint64_t{last} << 32)))) != 0;
    }
#endif
    for (const char* e = p + n; p < e; ++p)
        if (isDelimiter(*p)) return true;
    return false;
}

constexpr std::uint64_t kPrime1 = 0x9E3779B185EBCA87ull;
constexpr std::uint64_t kPrime2 = 0xC2B2AE3D27D4EB4Full;
constexpr std::uint64_t kPrime3 = 0x165667B19E3779F9ull;
constexpr std::uint64_t kPrime4 = 0x85EBCA77C2B2AE63ull;
constexpr std::uint64_t kPrime5 = 0x27D4EB2F165667C5ull;

inline std::uint64_t rotl(std::uint64_t x, int r) { return (x << r) | (x >> (64 - r)); }
inline std::uint64_t load64(const unsigned char* p) {
    std::uint64_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline std::uint64_t mixIn(std::uint64_t acc, std::uint64_t w) { return rotl(acc + w * kPrime2, 31) * kPrime1; }
} // namespace

// ---- ContentHash: four independent lanes over 32-byte stripes (the xxHash64 scheme) ----

void ContentHash::stripe(const unsigned char* p) {
    lane_[0] = mixIn(lane_[0], load64(p));
    lane_[1] = mixIn(lane_[1], load64(p + 8));
    lane_[2] = mixIn(lane_[2], load64(p + 16));
    lane_[3] = mixIn(lane_[3], load64(p + 24));
}

void ContentHash::update(const char* data, std::size_t n) {
    auto p = reinterpret_cast<const unsigned char*>(data);
    total_ += n;
    if (tailLen_ > 0) {
        std::size_t take = std::min(n, sizeof tail_ - tailLen_);
        std::memcpy(tail_ + tailLen_, p, take);
        tailLen_ += take;
        p += take;
        n -= take;
        if (tailLen_ < sizeof tail_) return;
        stripe(tail_);
        tailLen_ = 0;
    }
    // The lanes in locals: written through this they would go to memory at
    // every stripe, since the bytes read might be them.
    std::uint64_t a = lane_[0], b = lane_[1], c = lane_[2], d = lane_[3];
    for (; n >= 32; p += 32, n -= 32) {
        a = mixIn(a, load64(p));
        b = mixIn(b, load64(p + 8));
        c = mixIn(c, load64(p + 16));
        d = mixIn(d, load64(p + 24));
    }
    lane_[0] = a;
    lane_[1] = b;
    lane_[2] = c;
    lane_[3] = d;
    if (n > 0) std::memcpy(tail_, p, n);
    tailLen_ = n;
}

std::uint64_t ContentHash::digest() const {
    std::uint64_t h;
    if (total_ >= 32) {
        h = rotl(lane_[0], 1) + rotl(lane_[1], 7) + rotl(lane_[2], 12) + rotl(lane_[3], 18);
        for (std::uint64_t lane : lane_) h = (h ^ mixIn(0, lane)) * kPrime1 + kPrime4;
    } else {
        h = kPrime5;
    }
    h += total_;
    const unsigned char* p = tail_;
    std::size_t n = tailLen_;
    for (; n >= 8; p += 8, n -= 8) h = rotl(h ^ mixIn(0, load64(p)), 27) * kPrime1 + kPrime4;
    for (; n > 0; ++p, --n) h = rotl(h ^ (*p * kPrime5), 11) * kPrime1;
    h ^= h >> 33;
    h *= kPrime2;
    h ^= h >> 29;
    h *= kPrime3;
    h ^= h >> 32;
    return h;
}

void ChunkDigests::add(const char* data, std::size_t n) {
    total_ += n;
    while (n > 0) {
        const std::size_t take = std::min(n, kChunk - currentLen_);
        current_.update(data, take);
        currentLen_ += take;
        data += take;
        n -= take;
        if (currentLen_ == kChunk) {
            digests_.push_back(current_.digest());
            current_ = ContentHash();
            currentLen_ = 0;
        }
    }
}

std::vector<std::uint64_t> ChunkDigests::finish() {
    if (currentLen_ > 0) {
        digests_.push_back(current_.digest());
        current_ = ContentHash();
        currentLen_ = 0;
    }
    return std::move(digests_);
}

// ---- fields ----------------------------------------------------------------------------

bool NeedsQuotes(std::string_view t) {
    if (t.empty()) return false;
    if (t[0] == ' ' || t[0] == '\t' || t[0] == '"') return true;
    return holdsDelimiter(t.data(), t.size());
}

namespace {
char* encodeQuoted(char* out, std::string_view t) {
    *out++ = '"';
    for (char c : t) {
        if (c == '"') *out++ = '"';
        *out++ = c;
    }
    *out++ = '"';
    return out;
}
} // namespace

// Every cell of every save passes here: one pass that copies the text and
// looks for a delimiter at once, in pieces that may overlap but never reach
// outside the text.
char* EncodeFieldTo(char* out, std::string_view t) {
    const char* p = t.data();
    const std::size_t n = t.size();
    if (n == 0) return out;
    if (kSpecialFirst.is[static_cast<unsigned char>(p[0])]) return encodeQuoted(out, t);
#if defined(__SSE2__)
    if (n >= 16) {
        std::size_t i = 0;
        for (; i + 16 <= n; i += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
            if (delimiterBits(v)) return encodeQuoted(out, t);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), v);
        }
        if (i < n) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + n - 16));
            if (delimiterBits(v)) return encodeQuoted(out, t);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + n - 16), v);
        }
        return out + n;
    }
    if (n >= 8) {
        const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
        const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - 8));
        if (delimiterBits(_mm_unpacklo_epi64(first, last))) return encodeQuoted(out, t);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), first);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + n - 8), last);
        return out + n;
    }
    if (n >= 4) {
        std::uint32_t first, last;
        std::memcpy(&first, p, 4);
        std::memcpy(&last, p + n - 4, 4);
        if (delimiterBits(_mm_cvtsi64_si128(static_cast<long long>(first | (std::uint64_t{last} << 32)))))
            return encodeQuoted(out, t);
        std::memcpy(out, &first, 4);
        std::memcpy(out + n - 4, &last, 4);
        return out + n;
    }
#endif
    for (std::size_t i = 0; i < n; ++i)
        if (isDelimiter(p[i])) return encodeQuoted(out, t);
    std::memcpy(out, p, n);
    return out + n;
}

void AppendField(std::string& out, std::string_view t) {
    const std::size_t at = out.size();
    out.resize(at + 2 * t.size() + 2);
    out.resize(static_cast<std::size_t>(EncodeFieldTo(out.data() + at, t) - out.data()));
}

std::string EncodeField(std::string_view t) {
    std::string out;
    AppendField(out, t);
    return out;
}

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
    // The state of the file opened, before any byte is read: a change made
    // while the file is read shows at the next look, and the bytes read are
    // then never taken for its content.
    f->in = files_.openRead(path);
    f->before = f->in->state();
    f->buf.assign(kReadChunk + kScanPadding, '\0');
    f->buf[0] = '\n';
    if (f->before) {
        auto it = known_.find(path);
        const bool known = it != known_.end() && it->second.state.settled && it->second.state.sameState(*f->before);
        f->hashing = !known;
    }
    open_[static_cast<std::size_t>(n)] = std::move(f);
}

void FileTable::OpenOutput(int n, const std::string& path) {
    if (n < 1 || n > kMaxFiles) throw Failure("bad file name or number");
    if (isOpen(n)) throw Failure("file already open");
    auto f = std::make_unique<Open>();
    f->path = path;
    f->out = files_.openReplace(path);
    f->buf.reserve(ChunkDigests::kChunk);
    // Only a state taken when the file's time had settled proves that nothing
    // changed the file since without it showing.
    auto it = known_.find(path);
    if (it != known_.end() && it->second.state.settled) {
        auto now = files_.fingerprint(path);
        if (now && now->sameState(it->second.state)) {
            f->match = it->second;
            f->holding = true;
        }
    }
    open_[static_cast<std::size_t>(n)] = std::move(f);
}

void FileTable::Close(int n) {
    if (!isOpen(n)) return;
    std::unique_ptr<Open> f = std::move(open_[static_cast<std::size_t>(n)]);
    if (f->in) {
        // Every byte the file had at the open was taken, though no read met
        // its end (the index is read that way): what it holds is known too.
        if (f->hashing && f->pos == f->len && f->digests.size() == f->before->size) {
            const std::uint64_t size = f->digests.size();
            remember(f->path, *f->before, size, f->digests.finish());
        }
        if (f->before) lastRead_ = LastRead{f->path, *f->before, f->eof};
        else lastRead_.reset();
        return;
    }
    if (!f->out || f->broken) return;
    if (!f->buf.empty()) f->digests.add(f->buf.data(), f->buf.size());
    const std::uint64_t size = f->digests.size();
    std::vector<std::uint64_t> chunks = f->digests.finish();
    if (f->holding) {
        // The same bytes as the file holds: the file stays, the new copy goes with f.
        const Known& k = *f->match;
        if (size == k.size && chunks == k.chunks) {
            auto now = files_.fingerprint(f->path);
            if (now && now->sameState(k.state)) {
                setImage(known_[f->path], f->image);
                return;
            }
        }
        writeHeldChunks(*f);
    } else if (auto it = known_.find(f->path); it != known_.end() && size == it->second.size && chunks == it->second.chunks &&
                                                  stillHolds(f->path, it->second)) {
        // Written out in full because the file's time was too recent to prove
        // anything; its bytes turned out to be these: the file stays.
        setImage(it->second, f->image);
        return;
    }
    if (!f->buf.empty()) f->out->write(f->buf.data(), f->buf.size());
    try {
        f->out->commit();
    } catch (...) {
        forget(f->path);
        throw;
    }
    if (auto state = files_.fingerprint(f->path)) remember(f->path, *state, size, std::move(chunks));
    else forget(f->path);
    if (auto it = known_.find(f->path); it != known_.end()) setImage(it->second, f->image);
}

void FileTable::NoteLoaded(const std::string& path, std::uint64_t revision, bool exact) {
    if (!lastRead_ || !lastRead_->whole || lastRead_->path != path) return;
    auto it = known_.find(path);
    if (it == known_.end() || !it->second.state.sameState(lastRead_->state)) return;
    setImage(it->second, Image{revision, true, exact});
}

void FileTable::NoteSaving(int n, std::uint64_t revision, bool readsBack) {
    Open& f = get(n);
    if (f.out) f.image = Image{revision, readsBack, true};
}

bool FileTable::WouldWriteSame(const std::string& path, std::uint64_t revision) {
    auto it = known_.find(path);
    if (it == known_.end()) return false;
    Known& k = it->second;
    if (!k.image || !k.image->saves || k.image->revision != revision) return false;
    return stillHolds(path, k);
}

std::optional<std::uint64_t> FileTable::LoadsAs(int n, const std::function<bool(std::uint64_t)>& held) {
    Open& f = get(n);
    // Not read yet, and in the state known at the open.
    if (!f.in || !f.before || f.len != 0 || f.eof) return std::nullopt;
    auto it = known_.find(f.path);
    if (it == known_.end()) return std::nullopt;
    Known& k = it->second;
    if (!k.image || !k.image->loads || !held(k.image->revision) || !k.state.sameState(*f.before)) return std::nullopt;
    // The state taken at the open is the file's state now; a recent one is proved by reading the file.
    if (!k.state.settled && !stillHolds(f.path, k)) return std::nullopt;
    return k.image->revision;
}

bool FileTable::Describes(std::uint64_t revision) const {
    return loadingRevisions_.count(revision) != 0;
}

bool FileTable::stillHolds(const std::string& path, Known& k) {
    auto now = files_.fingerprint(path);
    if (!now || !now->sameState(k.state)) return false;
    if (k.state.settled) return true;
    try {
        auto in = files_.openRead(path);
        std::vector<char> chunk(ChunkDigests::kChunk);
        ChunkDigests digests;
        while (const std::size_t got = in->read(chunk.data(), chunk.size())) digests.add(chunk.data(), got);
        const std::uint64_t size = digests.size();
        auto after = files_.fingerprint(path);
        if (size != k.size || digests.finish() != k.chunks || !after || !after->sameState(*now)) return false;
    } catch (const Failure&) {
        return false;
    }
    k.state = *now;
    return true;
}

void FileTable::remember(const std::string& path, const forms::FileFingerprint& state, std::uint64_t size,
                         std::vector<std::uint64_t> chunks) {
    // A size other than the bytes seen means the file changed under us.
    if (state.size != size) {
        forget(path);
        return;
    }
    Known& k = known_[path];
    setImage(k, std::nullopt);
    k = Known{state, size, std::move(chunks), std::nullopt};
}

void FileTable::setImage(Known& k, std::optional<Image> image) {
    if (k.image && k.image->loads) {
        auto it = loadingRevisions_.find(k.image->revision);
        if (it != loadingRevisions_.end() && --it->second == 0) loadingRevisions_.erase(it);
    }
    k.image = image;
    if (image && image->loads) ++loadingRevisions_[image->revision];
}

void FileTable::forget(const std::string& path) {
    auto it = known_.find(path);
    if (it == known_.end()) return;
    setImage(it->second, std::nullopt);
    known_.erase(it);
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
    const Known& k = *f.match;
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
        ContentHash h;
        h.update(chunk.data(), got);
        if (got != chunk.size() || h.digest() != k.chunks[i]) throw Failure(f.path + " changed while it was being written");
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

std::string EncodeValue(const Value& v) {
    switch (v.kind()) {
    case Value::Kind::Text: return EncodeField(v.asText());
    case Value::Kind::Number: {
        double x = v.asNumber();
        char buf[64];
        auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(x));
        return (x < 0 ? "-" : " ") + std::string(buf, res.ptr) + " ";
    }
    default: return "";
    }
}

bool FileTable::fill(Open& f) {
    if (f.pos < f.len) return true;
    if (f.eof) return false;
    f.len = f.in->read(f.buf.data(), kReadChunk);
    f.pos = 0;
    f.buf[f.len] = '\n'; // the sentinel that ends every scan
    if (f.len == 0) {
        f.eof = true;
        // Read whole: what the file holds is known from here on.
        if (f.hashing) {
            const std::uint64_t size = f.digests.size();
            remember(f.path, *f.before, size, f.digests.finish());
        }
        f.hashing = false;
        return false;
    }
    if (f.hashing) f.digests.add(f.buf.data(), f.len);
    return true;
}

// Reading one field, whatever lines it lies on:
//  1. blanks (spaces, tabs) are skipped;
//  2. at the end of the file the read fails: the only end-of-file signal;
//  3. a field that opens with a double quote runs to the next lone double
//     quote, commas and line ends included; a doubled one inside stands for one
//     quote; anything between the closing quote and the next delimiter is
//     dropped; a file that ends first ends the field;
//  4. any other field runs to the next comma, CR or LF, or the end of the file;
//  5. one delimiter is consumed: a comma, or a line end (CR LF, CR, LF).
std::string FileTable::ReadField(int n) {
    std::string field;
    ReadFieldInto(n, field);
    return field;
}

void FileTable::ReadFieldInto(int n, std::string& field) {
    const std::string_view v = ReadFieldView(n);
    field.clear();
    field.append(v.data(), v.size());
}

std::string_view FileTable::ReadFieldView(int n) { return readView(get(n), kAny); }

std::string_view FileTable::readViewSlow(Open& f, Expect expect) {
    if (!f.in) throw Failure("bad file mode");
    readFieldSlow(f, f.field, expect);
    return f.field;
}

void FileTable::readFieldSlow(Open& f, std::string& field, Expect expect) {
    // Whether the bytes are those EncodeField and the expected delimiter give.
    bool asWritten = true;
    while (fill(f) && (f.buf[f.pos] == ' ' || f.buf[f.pos] == '\t')) {
        ++f.pos;
        asWritten = false;
    }
    if (!fill(f)) {
        if (expect != kAny && !asWritten) f.exact = false; // blanks behind the last line
        throw forms::EndOfFile();
    }

    field.clear();
    if (f.buf[f.pos] == '"') {
        ++f.pos;
        bool closed = false;
        while (fill(f)) {
            const char* start = f.buf.data() + f.pos;
            const char* end = f.buf.data() + f.len;
            const char* q = static_cast<const char*>(std::memchr(start, '"', static_cast<std::size_t>(end - start)));
            if (!q) { field.append(start, end); f.pos = f.len; continue; }
            field.append(start, q);
            f.pos += static_cast<std::size_t>(q - start) + 1;
            if (fill(f) && f.buf[f.pos] == '"') { field += '"'; ++f.pos; continue; }
            closed = true;
            break;
        }
        if (!closed) {
            // The file ended inside the quotes: that ends the field.
            if (expect != kAny) f.exact = false;
            return;
        }
        // Whatever stands behind the closing quote up to the delimiter is dropped.
        while (fill(f)) {
            char c = f.buf[f.pos];
            if (c == ',' || c == '\r' || c == '\n') break;
            ++f.pos;
            asWritten = false;
        }
        // A text that needs no quotes is written without them.
        if (expect != kAny && asWritten && !NeedsQuotes(field)) asWritten = false;
    } else {
        while (fill(f)) {
            const char* start = f.buf.data() + f.pos;
            const char* end = f.buf.data() + f.len;
            const char* p = findDelimiter(start);
            field.append(start, p);
            f.pos += static_cast<std::size_t>(p - start);
            if (p < end) break;
        }
    }
    Expect ended = kAny;
    if (fill(f)) {
        char c = f.buf[f.pos];
        if (c == ',') {
            ++f.pos;
            ended = kComma;
        } else if (c == '\n') {
            ++f.pos;
        } else if (c == '\r') {
            ++f.pos;
            if (fill(f) && f.buf[f.pos] == '\n') {
                ++f.pos;
                ended = kLineEnd;
            }
        }
    }
    if (expect != kAny && (!asWritten || ended != expect)) f.exact = false;
}

void FileTable::Kill(const std::string& path) {
    forget(path);
    files_.remove(path);
}

void FileTable::KillMatching(const std::string& folder, const std::string& suffix) {
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
    files_.removeMatching(folder, suffix);
}

} // namespace storage

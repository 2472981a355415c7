#pragma once
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "forms/ports.h"
#include "storage/chunk_digests.h"
#include "storage/field_rules.h"
#include "storage/field_scan.h"
#include "storage/file_memory.h"
#include "storage/value.h"

namespace storage {

// The open files of the program by number, as the storage procedures use them:
// sequential reading field by field, whole files written and put in place at
// their close. It keeps a cache of what each file holds (FileMemory,
// file_memory.h): a hit spares rewriting a file with its own bytes and
// rereading one the grid holds already; a miss reads or writes as usual.
class FileTable {
public:
    static constexpr int kMaxFiles = 255;

    explicit FileTable(forms::FilesPort& files) : files_(files), memory_(files) {}
    ~FileTable();

    forms::FilesPort& files() { return files_; }

    // The lowest number not in use.
    int FreeFile() const;
    bool isOpen(int n) const;

    // The file must exist. Fails with forms::FileNotFound when it doesn't.
    void OpenInput(int n, const std::string& path);
    // The new content takes the old file's place only at Close.
    void OpenOutput(int n, const std::string& path);
    // Closing a number that is not open does nothing. An output file is put in
    // place here, unless one of its writes failed: then it is dropped. So is
    // one whose bytes the file at its path is known to hold already.
    void Close(int n);
    // Drops a file being written, leaving the old one as it was; closes an input.
    void Abandon(int n);
    void CloseAll();

    // The next field: see the reading rules in field_rules.cpp. Fails at the end of the file.
    std::string ReadField(int n);
    // The same into a string the caller keeps, so its storage serves again.
    void ReadFieldInto(int n, std::string& field);
    // The same where it lies, in the file's own buffer (no copy): valid until
    // the next read or the close of this file number.
    std::string_view ReadFieldView(int n);
    // The next field of a line of fields joined by commas (last: the line's
    // last field), read as ReadFieldView reads it; besides, it notes whether the
    // bytes lie in the file exactly as EncodeField and WriteRawLine put them.
    std::string_view ReadLineField(int n, bool last) { return readView(get(n), last ? kLineEnd : kComma); }
    // Whether every field ReadLineField gave from this file so far lay there
    // exactly as written, and so did the end of the file if a read met it.
    bool ReadExactly(int n) { return get(n).exact; }

    // The cache's key for a grid's content is the grid's revision, which
    // changes with every change of its content (forms::Grid::Revision).
    // After the close of a file read whole: the grid at this revision holds
    // what that read gave; reading it again gives the same if loads, and
    // writing it out gives the file's bytes if besides exact.
    void NoteLoaded(const std::string& path, std::uint64_t revision, bool loads, bool exact) {
        memory_.NoteLoaded(path, revision, loads, exact);
    }
    // For a file open for writing: its bytes come from the holder at this
    // revision, and reading them back gives that content if readsBack. It
    // counts once the close leaves the file holding those bytes.
    void NoteSaving(int n, std::uint64_t revision, bool readsBack);
    // Whether writing the holder at this revision to path would give the bytes
    // the file holds now; any doubt answers false.
    bool WouldWriteSame(const std::string& path, std::uint64_t revision) { return memory_.WouldWriteSame(path, revision); }
    // A cache hit for a load. For a file open for reading and not read yet:
    // the revision of the grid content that reading it would give (it came
    // from the file or was written to it, and the file's fingerprint is
    // unchanged since), if held(revision) says that content is still at hand.
    // A recent file is read back to prove it. Nothing when in any doubt.
    std::optional<std::uint64_t> LoadsAs(int n, const std::function<bool(std::uint64_t)>& held);
    // Whether the cache entry for path is fresh: the file is, now, what this
    // table last read whole or wrote there. False for no entry or any doubt.
    bool KnownUnchanged(const std::string& path) { return memory_.heldNow(path).has_value(); }
    // Whether some file is known to give, when read, the holder's content at this revision.
    bool Describes(std::uint64_t revision) const { return memory_.Describes(revision); }
    // Whether the cache entry for path is stale because another program
    // changed or replaced the file since this table last read or wrote it. No
    // entry, or no file, answers false (writing it loses nothing of anyone's);
    // a changed fingerprint is confirmed by reading the file.
    bool ChangedElsewhere(const std::string& path) { return memory_.ChangedElsewhere(path); }
    // The holder's revision when it last came from the file at path or went to it.
    std::optional<std::uint64_t> HeldAs(const std::string& path) const { return memory_.HeldAs(path); }

    // One value and a line end: a text encoded by EncodeField, a number with a
    // blank on either side (a minus sign in place of the first), nothing as nothing.
    void WriteLine(int n, const Value& value);
    void WriteLine(int n, std::string_view text);
    // A line whose fields are already encoded, written as it stands.
    void WriteRawLine(int n, std::string_view line);
    // Bytes as they stand, line ends included.
    void WriteBytes(int n, std::string_view bytes);

    void Kill(const std::string& path);
    void KillMatching(const std::string& folder, const std::string& suffix);

private:
    enum Expect : std::uint8_t { kAny, kComma, kLineEnd };
    struct Open {
        std::string path;
        std::unique_ptr<forms::InputStream> in;
        std::unique_ptr<forms::OutputStream> out;
        // Input: the piece being read, with a delimiter behind its last byte so
        // that a scan needs no bounds test. Output: the chunk being filled.
        std::vector<char> buf;
        std::size_t pos = 0, len = 0;
        std::string field; // a field the buffer can't show whole (quoted, or cut by a refill)
        bool eof = false;
        bool broken = false; // a write failed: never put in place
        // Input: the file's state at the open; its digests are taken unless
        // its bytes in that state are known already.
        std::optional<forms::FileFingerprint> before;
        bool hashing = false;
        ChunkDigests digests;
        // Output: while the chunks written so far are those the file holds,
        // they are held back (counted, not written); they are copied from the
        // file itself only if a later chunk differs.
        std::optional<KnownFile> match;
        bool holding = false;
        std::size_t held = 0;
        // Input: the fields read so far lay there as written (ReadLineField).
        bool exact = true;
        // Output: the holder the bytes come from.
        std::optional<FileImage> image;
    };
    Open& get(int n) {
        if (n < 1 || n > kMaxFiles || !open_[static_cast<std::size_t>(n)]) throw forms::Failure("bad file name or number");
        return *open_[static_cast<std::size_t>(n)];
    }
    void write(Open& f, std::string_view data);
    void chunkFilled(Open& f);
    void writeHeldChunks(Open& f);
    bool fill(Open& f);
    // Nearly every field is unquoted and lies in the piece read together with
    // its delimiter (and the LF behind a CR): one scan, and the field stays
    // where it is. Inline: a load reads every field of its file here. The
    // rules every other field is read by are in field_rules.cpp.
    std::string_view readView(Open& f, Expect expect) {
        if (f.in && f.pos < f.len) {
            const char* start = f.buf.data() + f.pos;
            if (!scan::kSpecialFirst.is[static_cast<unsigned char>(*start)]) {
                const char* d = scan::findDelimiter(start);
                const char* last = f.buf.data() + f.len - 1;
                if (d < last || (d == last && *d != '\r')) {
                    const char* next = d + 1;
                    const bool crlf = *d == '\r' && *next == '\n';
                    if (crlf) ++next;
                    if (expect != kAny) f.exact &= expect == kLineEnd ? crlf : *d == ',';
                    f.pos = static_cast<std::size_t>(next - f.buf.data());
                    return {start, static_cast<std::size_t>(d - start)};
                }
            }
        }
        return readViewSlow(f, expect);
    }
    std::string_view readViewSlow(Open& f, Expect expect);
    void readFieldSlow(Open& f, std::string& field, Expect expect);

    forms::FilesPort& files_;
    std::array<std::unique_ptr<Open>, kMaxFiles + 1> open_{};
    std::vector<char> spareReadPiece_; // an input's piece, kept from its close for the next open
    FileMemory memory_;
};

} // namespace storage

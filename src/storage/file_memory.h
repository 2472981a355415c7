#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "forms/ports.h"

namespace storage {

// The cache of what the program's files hold. An entry per file read whole or
// written here: its fingerprint then (forms::FileFingerprint: device, inode,
// size, times), its size, the digests of its chunks, and the grid content it
// matches, named by the grid's revision. A hit spares disk work; a miss, or
// any doubt, just does the work. The hits:
//
//  - A read skips taking the digests when the file's fingerprint at the open
//    is one whose bytes are cached (knowsState).
//  - A save writes nothing when the grid at this revision is what the file
//    holds, written from it or read into it, and writing it gives the file's
//    bytes (WouldWriteSame): replacing a file by itself only waits for the disk.
//  - A save that does write holds back each chunk equal to the cached one at
//    that place (heldNow); if all of them and the size turn out equal, the
//    file stays as it is (keepsAtClose). Held chunks are copied from the file
//    itself only if a later one differs.
//  - A load reads nothing when the file gives what a grid (the open one or a
//    kept one) holds at the cached revision (LoadsAs).
//
// Stale entries: a fingerprint proves a file unchanged only if its times had
// settled when it was taken; a change within the file system's last time step
// might not move them. An unsettled entry is checked by reading the file and
// comparing chunk digests (stillHolds): equal, it takes the new fingerprint;
// else it is stale, gives no hit, and ChangedElsewhere answers yes. The cache
// lives in memory only, never on disk.

// The content of a holder (the grid) that a file matches, by the holder's
// revision, which changes with every change of its content.
struct FileImage {
    std::uint64_t revision = 0;
    bool loads = false; // reading the file gives the holder's content
    bool saves = false; // writing the holder's content gives the file's bytes
};

// A cache entry: what a file held when the program last read it whole or wrote
// it: its fingerprint then, its size and the digests of its chunks.
struct KnownFile {
    forms::FileFingerprint state;
    std::uint64_t size = 0;
    std::vector<std::uint64_t> chunks;
    std::optional<FileImage> image;
};

class FileMemory {
public:
    explicit FileMemory(forms::FilesPort& files) : files_(files) {}

    // Whether the bytes of the file in this state are known already.
    bool knowsState(const std::string& path, const forms::FileFingerprint& state) const;
    // What a file about to be replaced is known to hold, when its state proves it now.
    std::optional<KnownFile> heldNow(const std::string& path);
    // At the close of a file written in full: whether the file at path holds
    // these bytes already, and so stays as it is, now known to match image.
    // match: what it was known to hold at the open, if its chunks were held back.
    bool keepsAtClose(const std::string& path, std::uint64_t size, const std::vector<std::uint64_t>& chunks,
                      const KnownFile* match, const std::optional<FileImage>& image);

    // A file in this state was read or written whole and gave these bytes.
    void remember(const std::string& path, const forms::FileFingerprint& state, std::uint64_t size,
                  std::vector<std::uint64_t> chunks);
    // A file was put in place with these bytes from the holder image.
    void noteWritten(const std::string& path, std::uint64_t size, std::vector<std::uint64_t> chunks,
                     const std::optional<FileImage>& image);
    // A file read was closed: its state at the open (if any) and whether a read met its end.
    void noteRead(const std::string& path, const std::optional<forms::FileFingerprint>& state, bool whole);
    void forget(const std::string& path);
    // Forgets every file of the folder whose name ends in suffix.
    void forgetMatching(const std::string& folder, const std::string& suffix);

    // See FileTable: NoteLoaded, WouldWriteSame, LoadsAs (for a file in state
    // before, not read yet), Describes, ChangedElsewhere, HeldAs.
    void NoteLoaded(const std::string& path, std::uint64_t revision, bool loads, bool exact);
    bool WouldWriteSame(const std::string& path, std::uint64_t revision);
    std::optional<std::uint64_t> LoadsAs(const std::string& path, const forms::FileFingerprint& before,
                                         const std::function<bool(std::uint64_t)>& held);
    bool Describes(std::uint64_t revision) const;
    bool ChangedElsewhere(const std::string& path);
    std::optional<std::uint64_t> HeldAs(const std::string& path) const;

private:
    // The last file read and closed: its state at the open, and whether it was read to its end.
    struct LastRead {
        std::string path;
        forms::FileFingerprint state;
        bool whole = false;
    };
    // Whether the file at path is in the state known and holds the bytes known.
    bool stillHolds(const std::string& path, KnownFile& k);
    // Whether the file, now in this state, holds the bytes known: read to
    // tell, and the state known from then on if it does. Nothing when it can't be read.
    std::optional<bool> readsAsKnown(const std::string& path, KnownFile& k, const forms::FileFingerprint& now);

    // Every change of a known file's image goes through here, so that the
    // count of files describing each revision stays true.
    void setImage(KnownFile& k, std::optional<FileImage> image);

    forms::FilesPort& files_;
    std::unordered_map<std::string, KnownFile> known_;
    // How many known files load as each revision: Describes is asked at every
    // load, for every category a walk passes.
    std::unordered_map<std::uint64_t, int> loadingRevisions_;
    std::optional<LastRead> lastRead_;
};

} // namespace storage

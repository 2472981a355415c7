#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "forms/ports.h"

namespace storage {

// What the program knows each of its files holds, and the work that knowledge
// spares. Every saving of disk time rests on one of these decisions, and each
// answers "do it" whenever it is in any doubt:
//
//  - A file is read without taking its digests when it is in a state whose
//    bytes are known already (knowsState): the digests would be those known.
//  - A save writes nothing at all when the grid at its revision is what wrote
//    the file, or what a whole read of it gave and writing it back gives its
//    bytes, and the file still holds them (WouldWriteSame). Replacing a file
//    by itself costs a wait for the disk and changes nothing.
//  - A save that does write holds back each chunk equal to the one the file
//    has at that place (heldNow); at the close the file stays as it is when
//    every chunk and the size turned out the same (keepsAtClose). The chunks
//    held back are copied from the file itself only if a later one differs.
//  - A load reads nothing when the file gives, read, what a holder (a kept
//    grid) already holds at its revision, and the file is as it was then (LoadsAs).
//
// A file's state (device, inode, size, times) proves it unchanged only when
// its times had settled when the state was taken: a change within the file
// system's last time step might not move them. A state taken earlier proves
// nothing by itself; then the file is read and its chunk digests compared
// (stillHolds), and the state before that reading is the one known from then on.
// The digests live in memory only, never on disk.

// The content of a holder (the grid) that a file matches, by the holder's
// revision, which changes with every change of its content.
struct FileImage {
    std::uint64_t revision = 0;
    bool loads = false; // reading the file gives the holder's content
    bool saves = false; // writing the holder's content gives the file's bytes
};

// What a file held when the program last read it whole or wrote it: its state
// then, its size and the digests of its chunks.
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

#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "forms/ports.h"

namespace forms {

// Files on the local file system. A file is written under a hidden temporary
// name in its own folder and renamed over the old one when it is complete, so
// that a crash or a full disk never leaves a cut file. The bytes reach the
// disk before the rename, and the rename before the commit returns, so that a
// power loss can't leave an empty file either.
// The state of a regular file on the local file system, or nothing when there
// is none or it can't be told.
// Its times are judged as at a clock clockAheadNs ahead of the real one.
std::optional<FileFingerprint> fileFingerprint(const std::string& path, std::int64_t clockAheadNs = 0);

class StdFiles : public FilesPort {
public:
    // A platform that tells no file's state (tellStates false) makes the
    // program read and write every file it is asked to.
    explicit StdFiles(bool tellStates = true) : tellStates_(tellStates) {}
    std::unique_ptr<InputStream> openRead(const std::string& path) override;
    // Synced, then its cached pages dropped (POSIX_FADV_DONTNEED), then read.
    std::unique_ptr<InputStream> openReadFromDevice(const std::string& path) override;
    std::unique_ptr<OutputStream> openReplace(const std::string& path) override;
    bool exists(const std::string& path) override;
    std::optional<FileFingerprint> fingerprint(const std::string& path) override;
    void remove(const std::string& path) override;
    void removeMatching(const std::string& folder, const std::string& suffix) override;

    // The temporary name a file is written under until its commit; it never ends in ".csv".
    static std::string temporaryName(const std::string& path);
    static bool isTemporaryName(const std::string& fileName);

    // Removes from folder the temporaries that a process ended in the middle
    // of a write left behind: only names of exactly our pattern, last changed
    // before startedAt (seconds of the real-time clock), of a process that no
    // longer runs. Gives how many went.
    static int removeLeftoverTemporaries(const std::string& folder, std::int64_t startedAt);

    // How far ahead of the real-time clock fingerprints judge the files'
    // times: tests that need states proven by their time alone set it far ahead.
    std::int64_t clockAheadNs = 0;

private:
    bool tellStates_;
};

} // namespace forms

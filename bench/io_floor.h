#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "paired_samples.h"

namespace qmbench {

// Whole files read and written with plain buffered standard streams. Both fail
// with std::runtime_error rather than measure a file that isn't there.
std::string readWholeFile(const std::string& path);
void writeWholeFile(const std::string& path, const std::string& bytes);
std::uintmax_t fileSize(const std::string& path);

// Writes out whatever earlier set-up left pending on the file system of this
// folder, so that it doesn't slow the measured writes (ext4 makes each replacing
// rename wait for the disk).
void flushPendingWrites(const std::string& folder);

// The I/O floor the switch is measured against: what a switch to the category
// in a file costs at the least, the file read twice and written twice.
class IoFloor {
public:
    // The writes go to two scratch files with this stem, files of no category.
    explicit IoFloor(std::string scratchStem);
    ~IoFloor();

    // Each file in turn: read, write, read, write.
    Timing switchTiming(const std::vector<std::string>& files);
    Timing switchTiming(const std::string& file) { return switchTiming(std::vector<std::string>{file}); }

private:
    void removeScratch();
    std::string scratch_[2];
};

} // namespace qmbench

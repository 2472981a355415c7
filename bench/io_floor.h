#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

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

// Waits until the file's bytes are on the disk.
void syncToDisk(const std::string& path);

// Puts the file's bytes on the disk and drops them from the page cache, so
// that the next read comes from the disk as a file not opened for a while
// does. False where they stay in memory (a file system held in memory).
bool dropFromMemory(const std::string& path);

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
    // Each file read once: the least a pass over the whole database costs.
    static Timing readTiming(const std::vector<std::string>& files);

private:
    void removeScratch();
    std::string scratch_[2];
};

// A piece of the program's work measured against the I/O floor of the files it touches.
struct FloorSubject {
    std::string scratch;                             // stem of the floor's files
    std::string folder;                              // its pending writes go before measuring
    std::function<std::string()> verify;             // once, first: empty if the fixture is sound
    std::function<void()> run;                       // the work measured
    std::function<std::string()> problem;            // after each run: empty if it left all as it should
    std::function<std::vector<std::string>()> files; // the files of the floor paired with a run
    bool readOnce = false;                           // the floor reads each file once instead of a switch's I/O
};

// The benchmark loop: each run timed and paired with the floor of its files in
// turn; the ratios reported. A fixture that can't be made (std::exception) or
// a problem found ends the benchmark with the reason.
void measureAgainstIoFloor(benchmark::State& state, const std::function<FloorSubject()>& make);

// Registers such a benchmark with its lines of the summary: the wall-clock
// ratio under the limit (if any), and the CPU ratio beside it.
void registerAgainstIoFloor(const std::string& name, void (*fn)(benchmark::State&), const std::string& label,
                            std::optional<double> limit);

} // namespace qmbench

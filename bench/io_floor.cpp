#include "io_floor.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <benchmark/benchmark.h>

#include "paired_samples.h"

namespace qmbench {

std::string readWholeFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("can't read " + path);
    in.seekg(0, std::ios::end);
    std::string bytes(static_cast<std::size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!in) throw std::runtime_error("can't read " + path);
    return bytes;
}

void writeWholeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) throw std::runtime_error("can't write " + path);
}

std::uintmax_t fileSize(const std::string& path) { return std::filesystem::file_size(path); }

IoFloor::IoFloor(std::string scratchStem) : scratch_{scratchStem + " 1", scratchStem + " 2"} {}

IoFloor::~IoFloor() { removeScratch(); }

// The timed writes always create their file. Truncating one that holds data
// makes ext4 flush the new data at close (auto_da_alloc), several times the
// cost of the write itself: a floor with that in it would be no floor.
void IoFloor::removeScratch() {
    for (const std::string& s : scratch_) ::unlink(s.c_str());
}

double IoFloor::switchSeconds(const std::vector<std::string>& files) {
    double seconds = 0;
    for (const std::string& file : files) {
        removeScratch();
        seconds += secondsOf([&] {
            for (const std::string& scratch : scratch_) {
                std::string bytes = readWholeFile(file);
                benchmark::DoNotOptimize(bytes.data());
                writeWholeFile(scratch, bytes);
            }
        });
    }
    return seconds;
}

} // namespace qmbench

#include "io_floor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "goals.h"
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

void flushPendingWrites(const std::string& folder) {
    int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd < 0) return;
    ::syncfs(fd);
    ::close(fd);
}

void syncToDisk(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY);
    const bool synced = fd >= 0 && ::fdatasync(fd) == 0;
    if (fd >= 0) ::close(fd);
    if (!synced) throw std::runtime_error("can't sync " + path);
}

bool dropFromMemory(const std::string& path) {
    syncToDisk(path); // dirty pages are not dropped
    const int fd = ::open(path.c_str(), O_RDONLY);
    if (fd < 0) return false;
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    // The pages still in memory, counted through a mapping of the file.
    const std::size_t size = fileSize(path), page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::size_t resident = 0;
    if (void* map = size ? ::mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0) : MAP_FAILED; map != MAP_FAILED) {
        std::vector<unsigned char> in((size + page - 1) / page);
        if (::mincore(map, size, in.data()) == 0)
            for (unsigned char c : in) resident += c & 1;
        else resident = in.size();
        ::munmap(map, size);
    } else resident = 1;
    ::close(fd);
    return resident * 10 <= (size + page - 1) / page; // a tenth at most: read-ahead of a neighbour aside
}

IoFloor::IoFloor(std::string scratchStem) : scratch_{scratchStem + " 1", scratchStem + " 2"} {}

IoFloor::~IoFloor() { removeScratch(); }

void IoFloor::removeScratch() {
    for (const std::string& s : scratch_) ::unlink(s.c_str());
}

// Each write creates its scratch file, and the files go again untimed right
// after: truncating a file that holds data makes ext4 flush the new data at
// close (auto_da_alloc), several times the cost of the write, and a floor with
// that in it would be no floor; and scratch data left to be written back would
// slow the program's own writes measured next.
Timing IoFloor::switchTiming(const std::vector<std::string>& files) {
    Timing total;
    for (const std::string& file : files) {
        removeScratch();
        Timing t = timingOf([&] {
            for (const std::string& scratch : scratch_) {
                std::string bytes = readWholeFile(file);
                benchmark::DoNotOptimize(bytes.data());
                writeWholeFile(scratch, bytes);
            }
        });
        total.wall += t.wall;
        total.cpu += t.cpu;
        total.cpuWait += t.cpuWait;
    }
    removeScratch();
    return total;
}

Timing IoFloor::readTiming(const std::vector<std::string>& files) {
    return timingOf([&] {
        for (const std::string& file : files) {
            std::string bytes = readWholeFile(file);
            benchmark::DoNotOptimize(bytes.data());
        }
    });
}

void measureAgainstIoFloor(benchmark::State& state, const std::function<FloorSubject()>& make) {
    try {
        const FloorSubject subject = make();
        if (std::string p = subject.verify(); !p.empty()) {
            state.SkipWithError(p.c_str());
            return;
        }
        IoFloor ioFloor(subject.scratch);
        flushPendingWrites(subject.folder);
        PairedSamples samples;
        for (auto _ : state) {
            const std::vector<std::string> files = subject.files();
            Timing t = timingOf(subject.run);
            if (std::string p = subject.problem(); !p.empty()) {
                state.SkipWithError(p.c_str());
                break;
            }
            samples.add(t, subject.readOnce ? IoFloor::readTiming(files) : ioFloor.switchTiming(files));
            state.SetIterationTime(t.wall);
        }
        samples.report(state);
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

void registerAgainstIoFloor(const std::string& name, void (*fn)(benchmark::State&), const std::string& label,
                            std::optional<double> limit) {
    registerPairedRatio(name, fn, label, limit);
}

} // namespace qmbench

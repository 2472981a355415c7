// Memory with a category of 32767 rows open, above what the process had
// before the program started, against the size of the category's file.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "goals.h"
#include "io_floor.h"
#include "memory_probe.h"
#include "sample_data.h"
#include "support/scripted_platform.h"

extern char** environ;

namespace qmbench {

namespace {

constexpr int kRows = forms::Grid::kMaxRows;

struct Memory {
    long rssKb = -1, hwmKb = -1;
};

Memory ownMemory() {
    Memory m;
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) m.rssKb = std::stol(line.substr(6));
        else if (line.rfind("VmHWM:", 0) == 0) m.hwmKb = std::stol(line.substr(6));
    }
    return m;
}

struct ProbeResult {
    Memory before, after;
    int rows = 0;
};

// Runs the probe in a child process and reads its one line of figures.
ProbeResult runProbe(const std::string& dataFolder, const std::string& floppyRoot) {
    int fds[2];
    if (pipe(fds) != 0) throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, fds[1]);
    std::string exe = "/proc/self/exe", flag = kMemoryProbeArg, data = dataFolder, floppy = floppyRoot;
    char* argv[] = {exe.data(), flag.data(), data.data(), floppy.data(), nullptr};
    pid_t pid = 0;
    int err = posix_spawn(&pid, exe.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    if (err != 0) {
        close(fds[0]);
        throw std::runtime_error("could not start the memory probe");
    }
    std::string output;
    char buf[256];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;) output.append(buf, static_cast<std::size_t>(n));
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error("the memory probe failed");
    ProbeResult r;
    std::istringstream in(output);
    if (!(in >> r.before.rssKb >> r.before.hwmKb >> r.after.rssKb >> r.after.hwmKb >> r.rows))
        throw std::runtime_error("the memory probe said: " + output);
    return r;
}

void memoryBigCategory(benchmark::State& state) {
    try {
        // Only its folders are used: the probe runs the program on them.
        qmtest::Harness folders;
        folders.writeIndex({"Workshop"});
        folders.writeCategory("Workshop", sampleItems(kRows - 1, 3));
        const double fileBytes = static_cast<double>(fileSize(folders.data("Workshop.csv").string()));
        ProbeResult r;
        for (auto _ : state) r = runProbe(folders.dataDir.place(), folders.floppyDir.place());
        if (r.rows != kRows) {
            std::string p = "the probe's grid had " + std::to_string(r.rows) + " rows, not " + std::to_string(kRows);
            state.SkipWithError(p.c_str());
            return;
        }
        const double peak = static_cast<double>(r.after.hwmKb - r.before.hwmKb) * 1024;
        const double resident = static_cast<double>(r.after.rssKb - r.before.rssKb) * 1024;
        state.counters["peak_ratio"] = peak / fileBytes;
        state.counters["rss_ratio"] = resident / fileBytes;
        state.counters["file_MB"] = fileBytes / (1 << 20);
        state.counters["peak_MB"] = peak / (1 << 20);
        state.counters["rss_MB"] = resident / (1 << 20);
        state.counters["base_MB"] = static_cast<double>(r.before.rssKb) / 1024;
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

} // namespace

int memoryProbeMain(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: %s %s <data folder> <floppy root>\n", argv[0], kMemoryProbeArg);
        return 2;
    }
    const Memory before = ownMemory();
    qmtest::Harness h(argv[2], argv[3]);
    h.start();
    h.selectCategory(0);
    const Memory after = ownMemory();
    std::printf("%ld %ld %ld %ld %d\n", before.rssKb, before.hwmKb, after.rssKb, after.hwmKb, h.m().FG1.Rows());
    return 0;
}

void registerMemoryBenchmarks() {
    registerGoals("MemoryBigCategory", memoryBigCategory,
                  {{"peak_ratio", "peak memory, 32767-row category open (VmHWM growth / file size)", 6.0},
                   {"rss_ratio", "resident memory, 32767-row category open (VmRSS growth / file size)", 6.0}})
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

} // namespace qmbench

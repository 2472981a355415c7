#pragma once
#include <time.h>

#include <chrono>
#include <vector>

#include <benchmark/benchmark.h>

namespace qmbench {

// Wall-clock seconds of a piece of work, the CPU seconds this thread spent on
// it, and the seconds it was ready to run but waited for a CPU that other
// processes held. What is left of the wall time was spent waiting for the disk.
struct Timing {
    double wall = 0;
    double cpu = 0;
    double cpuWait = 0;
};

inline double threadCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Seconds this thread has waited for a CPU so far (0 where the kernel doesn't tell).
double threadCpuWaitSeconds();

template <class F>
Timing timingOf(F&& f) {
    const double wait = threadCpuWaitSeconds();
    const double cpu = threadCpuSeconds();
    const auto start = std::chrono::steady_clock::now();
    f();
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return {wall, threadCpuSeconds() - cpu, threadCpuWaitSeconds() - wait};
}

template <class F>
double secondsOf(F&& f) {
    return timingOf(f).wall;
}

// Times of the code under test and of its baseline, taken in turn in the same
// loop so that a busy machine slows both alike. The ratio is of the medians,
// which a few disturbed samples don't move.
class PairedSamples {
public:
    void add(Timing subject, Timing baseline);
    bool empty() const { return subject_.empty(); }
    // Counters: "ratio" of the wall-clock medians, the goal's measure;
    // "median_ms" (the code under test) and "baseline_ms"; "cpu_ratio", the
    // same ratio of CPU time, which waiting for a CPU on a loaded machine
    // doesn't inflate (nor waiting for the disk); "cpu_wait_ms", the median
    // time the code under test waited for a CPU, and "blocked_ms", the median
    // time it was off the CPU for anything else (the disk).
    void report(benchmark::State& state) const;

private:
    std::vector<Timing> subject_, baseline_;
};

} // namespace qmbench

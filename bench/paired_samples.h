#pragma once
#include <chrono>
#include <vector>

#include <benchmark/benchmark.h>

namespace qmbench {

// Seconds that f takes, by the steady clock.
template <class F>
double secondsOf(F&& f) {
    auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Times of the code under test and of its baseline, taken in turn in the same
// loop so that a busy machine slows both alike. The ratio is of the medians,
// which a few disturbed samples don't move.
class PairedSamples {
public:
    void add(double subjectSeconds, double baselineSeconds);
    bool empty() const { return subject_.empty(); }
    double subjectMedian() const;
    double baselineMedian() const;
    double ratio() const;
    // Counters "ratio", "median_ms" (the code under test) and "baseline_ms".
    void report(benchmark::State& state) const;

private:
    std::vector<double> subject_, baseline_;
};

} // namespace qmbench

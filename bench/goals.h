#pragma once
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace qmbench {

// One line of the summary: a counter of the benchmark, what it stands for, and
// the limit it must stay at or below (none: reported only).
struct Goal {
    std::string counter;
    std::string label;
    std::optional<double> limit;
};

// Registers a benchmark with the lines it gives the summary; lines print in
// the order of registration.
benchmark::internal::Benchmark* registerGoals(const std::string& name, std::function<void(benchmark::State&)> fn,
                                              std::vector<Goal> goals);

// A benchmark of manual time measured as paired samples (PairedSamples), with
// its lines of the summary: the wall-clock ratio under the limit (if any), the
// CPU ratio beside it, and, with withTime, the median time itself.
benchmark::internal::Benchmark* registerPairedRatio(const std::string& name, void (*fn)(benchmark::State&),
                                                    const std::string& label, std::optional<double> limit,
                                                    bool withTime = false);

// The console table as usual, and the counters of every benchmark kept for the summary.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    struct Result {
        bool error = false;
        std::string message;
        std::map<std::string, double> counters;
    };

    explicit SummaryReporter(OutputOptions options) : ConsoleReporter(options) {}
    void ReportRuns(const std::vector<Run>& runs) override;
    const std::map<std::string, Result>& results() const { return results_; }

private:
    std::map<std::string, Result> results_;
};

// Prints "goal | measured ratio | limit | ok" for every registered goal.
// False if a limited goal was missed, or could not be measured in a run that
// included it.
bool printSummary(std::ostream& out, const std::map<std::string, SummaryReporter::Result>& results);

// Each benchmark file registers its goals here; main calls them in this order.
void registerSwitchBenchmarks();
void registerTotalsBenchmarks();
void registerMemoryBenchmarks();
void registerWalkBenchmarks();
void registerClickBenchmarks();
void registerFindBenchmarks();
void registerImportBenchmarks();

// Fixtures shared between benchmarks are kept until here, then their folders go.
void releaseBigCategories();
void releaseWalkCategories();
void releaseCoreClicks();
void releaseClickDatabases();
void releaseFindDatabases();

} // namespace qmbench

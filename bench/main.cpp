// The benchmarks of the core's speed and memory goals, and a summary of the
// ratios against their limits. Exits 3 if a limited goal is missed (or could
// not be measured), 1 on any other failure.
#include <unistd.h>

#include <cstring>
#include <iostream>

#include "goals.h"
#include "memory_probe.h"

namespace {
constexpr int kGoalMissed = 3;
} // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], qmbench::kMemoryProbeArg) == 0) return qmbench::memoryProbeMain(argc, argv);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    qmbench::registerSwitchBenchmarks();
    qmbench::registerTotalsBenchmarks();
    qmbench::registerMemoryBenchmarks();
    qmbench::registerWalkBenchmarks();
    qmbench::registerClickBenchmarks();
    qmbench::registerFindBenchmarks();
    qmbench::registerImportBenchmarks();

    auto options = isatty(STDOUT_FILENO) ? benchmark::ConsoleReporter::OO_ColorTabular : benchmark::ConsoleReporter::OO_Tabular;
    qmbench::SummaryReporter reporter(options);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    qmbench::releaseBigCategories();
    qmbench::releaseWalkCategories();
    qmbench::releaseCoreClicks();
    qmbench::releaseClickDatabases();
    qmbench::releaseFindDatabases();

    bool ok = true;
    if (!reporter.results().empty()) ok = qmbench::printSummary(std::cout, reporter.results());
    benchmark::Shutdown();
    return ok ? 0 : kGoalMissed;
}

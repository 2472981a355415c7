// A switch between two categories of 32767 rows through the list, against the
// least I/O a switch needs: its file read twice and written twice with plain streams.
#include <exception>

#include "big_categories.h"
#include "goals.h"
#include "io_floor.h"
#include "paired_samples.h"

namespace qmbench {

namespace {

void switchBigCategory(benchmark::State& state) {
    try {
        BigCategories& big = bigCategories();
        if (std::string p = big.verifySwitch(); !p.empty()) {
            state.SkipWithError(p.c_str());
            return;
        }
        IoFloor ioFloor(big.scratch);
        flushPendingWrites(big.h.dataDir.place());
        PairedSamples samples;
        for (auto _ : state) {
            Timing subject = timingOf([&] { big.switchOver(); });
            if (std::string p = big.problem(); !p.empty()) {
                state.SkipWithError(p.c_str());
                break;
            }
            samples.add(subject, ioFloor.switchTiming(big.files[big.open]));
            state.SetIterationTime(subject.wall);
        }
        samples.report(state);
        state.counters["rows"] = BigCategories::kRows;
        state.counters["file_MB"] = static_cast<double>(big.originals[big.open].size()) / (1 << 20);
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

} // namespace

void registerSwitchBenchmarks() {
    registerGoals("SwitchBigCategory", switchBigCategory,
                  {{"ratio", "switch to a 32767-row category, vs I/O floor", 5.0},
                   {"cpu_ratio", "  the same in CPU time (no waiting for CPU or disk)", std::nullopt}})
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace qmbench

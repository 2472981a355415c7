// A switch between two categories of 32767 rows through the list, against the
// least I/O a switch needs: its file read twice and written twice with plain streams.
#include "big_categories.h"
#include "io_floor.h"

namespace qmbench {

namespace {

void switchBigCategory(benchmark::State& state) {
    measureAgainstIoFloor(state, [&state] {
        BigCategories& big = bigCategories();
        state.counters["rows"] = BigCategories::kRows;
        state.counters["file_MB"] = static_cast<double>(big.originals[0].size()) / (1 << 20);
        // The floor is that of the file the switch opens: the one not open before it.
        return FloorSubject{big.scratch,
                            big.h.dataDir.place(),
                            [&big] { return big.verifySwitch(); },
                            [&big] { big.switchOver(); },
                            [&big] { return big.problem(); },
                            [&big] { return std::vector<std::string>{big.files[1 - big.open]}; }};
    });
}

} // namespace

void registerSwitchBenchmarks() {
    registerAgainstIoFloor("SwitchBigCategory", switchBigCategory, "switch to a 32767-row category, vs I/O floor", 5.0);
}

} // namespace qmbench

// Find over 200,000 items, as 200 categories of 1000 rows and as 1000 of 200:
// a keystroke (the check that every file is still what was read, the search,
// the list filled) and the search alone, each against one memmem pass over the
// bytes of all category files; the first Find after a start, its time; the
// bytes Find holds against the database's size on disk.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "find/find_index.h"
#include "find/frm_find.h"
#include "find/text_fold.h"
#include "goals.h"
#include "paired_samples.h"
#include "sample_data.h"
#include "support/scripted_platform.h"

namespace qmbench {

namespace {

class FindDatabase {
public:
    FindDatabase(int categories, int rows) {
        std::vector<std::string> names;
        for (int i = 0; i < categories; ++i) {
            char name[32];
            std::snprintf(name, sizeof name, "Category %04d", i);
            names.emplace_back(name);
            h.writeCategory(name, sampleItems(rows, 500 + static_cast<unsigned>(i)));
            std::ifstream in(h.data(std::string(name) + ".csv"), std::ios::binary);
            std::ostringstream bytes;
            bytes << in.rdbuf();
            all += bytes.str();
        }
        h.writeIndex(names);
        // A cell of one item in the middle: found once or a few times.
        const auto items = sampleItems(rows, 500 + static_cast<unsigned>(categories / 2));
        needle = qm::Fold(items[static_cast<std::size_t>(rows / 2)][6]);
        // Files whose times have settled, as a database is when the program starts.
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        h.start();
        h.run([&] { h.m().lstCategory.setSelected(0); });
    }

    // Every occurrence, as one pass over the bytes of every file.
    std::size_t memmemPass() const {
        std::size_t n = 0;
        for (const char* p = all.data(); const void* hit = memmem(p, all.data() + all.size() - p, needle.data(), needle.size());) {
            ++n;
            p = static_cast<const char*>(hit) + 1;
        }
        return n;
    }

    qmtest::Harness h;
    std::string all; // the files' bytes, one after the other
    std::string needle;
};

std::unique_ptr<FindDatabase>& database(int categories) {
    static std::unique_ptr<FindDatabase> wide, narrow;
    std::unique_ptr<FindDatabase>& d = categories == 200 ? wide : narrow;
    if (!d) d = std::make_unique<FindDatabase>(categories, 200000 / categories);
    return d;
}

qm::frmFind& openFind(FindDatabase& d) {
    d.h.menu("mnuFind");
    return *d.h.m().findIfLoaded();
}

template <int Categories>
void keystroke(benchmark::State& state) {
    FindDatabase& d = *database(Categories);
    qm::frmFind& find = openFind(d);
    // The first keystroke reads the files; the needle's last letter off and on again makes the others.
    const std::string typed = d.needle, shorter = d.needle.substr(0, d.needle.size() - 1);
    d.h.run([&] { find.txtFind.setText(typed); });
    if (find.lstResults.ListCount() == 0) {
        state.SkipWithError("the needle was not found");
        return;
    }
    PairedSamples samples;
    bool full = false;
    for (auto _ : state) {
        full = !full;
        Timing subject = timingOf([&] { d.h.run([&] { find.txtFind.setText(full ? typed : shorter); }); });
        Timing baseline = timingOf([&] { benchmark::DoNotOptimize(d.memmemPass()); });
        samples.add(subject, baseline);
        state.SetIterationTime(subject.wall);
    }
    samples.report(state);
    state.counters["results"] = find.lstResults.ListCount();
}

template <int Categories>
void searchAlone(benchmark::State& state) {
    FindDatabase& d = *database(Categories);
    qm::FindIndex index(d.h.files);
    index.refresh(d.h.m());
    PairedSamples samples;
    double refreshMs = 0;
    for (auto _ : state) {
        Timing subject = timingOf([&] { benchmark::DoNotOptimize(index.search(d.needle, qm::frmFind::kShownResults + 1)); });
        Timing baseline = timingOf([&] { benchmark::DoNotOptimize(d.memmemPass()); });
        samples.add(subject, baseline);
        state.SetIterationTime(subject.wall);
        refreshMs = secondsOf([&] { index.refresh(d.h.m()); }) * 1e3;
    }
    samples.report(state);
    state.counters["check_files_ms"] = refreshMs;
    // What Find holds against what the database takes on disk.
    state.counters["memory_ratio"] = static_cast<double>(index.bytes()) / static_cast<double>(d.all.size());
}

// The window made anew (nothing read yet) and its first keystroke, to the results listed.
template <int Categories>
void firstFind(benchmark::State& state) {
    FindDatabase& d = *database(Categories);
    PairedSamples samples;
    for (auto _ : state) {
        d.h.m().UnloadFind();
        Timing subject = timingOf([&] {
            qm::frmFind& find = openFind(d);
            d.h.run([&] { find.txtFind.setText(d.needle.substr(0, 1)); });
        });
        Timing baseline = timingOf([&] { benchmark::DoNotOptimize(d.memmemPass()); });
        samples.add(subject, baseline);
        state.SetIterationTime(subject.wall);
    }
    samples.report(state);
}

} // namespace

void releaseFindDatabases() {
    database(200).reset();
    database(1000).reset();
}

void registerFindBenchmarks() {
    registerPairedRatio("FindKeystroke200x1000", keystroke<200>, "a keystroke in Find, 200 x 1000 items, vs memmem", 3.0, true);
    registerPairedRatio("FindKeystroke1000x200", keystroke<1000>, "a keystroke in Find, 1000 x 200 items, vs memmem", 3.0, true);
    registerGoals("FindSearch200x1000", searchAlone<200>,
                  {{"ratio", "Find's search alone, 200 x 1000 items, vs memmem", 3.0},
                   {"check_files_ms", "  the check that no file changed, in ms", std::nullopt},
                   {"memory_ratio", "  bytes Find holds vs the database on disk", 2.0}})
        ->UseManualTime()->Unit(benchmark::kMillisecond);
    registerGoals("FindSearch1000x200", searchAlone<1000>,
                  {{"ratio", "Find's search alone, 1000 x 200 items, vs memmem", 3.0},
                   {"check_files_ms", "  the check that no file changed, in ms", std::nullopt},
                   {"memory_ratio", "  bytes Find holds vs the database on disk", 2.0}})
        ->UseManualTime()->Unit(benchmark::kMillisecond);
    registerPairedRatio("FirstFind200x1000", firstFind<200>, "the first Find after a start, 200 x 1000, vs memmem", std::nullopt, true);
    registerPairedRatio("FirstFind1000x200", firstFind<1000>, "the first Find after a start, 1000 x 200, vs memmem", std::nullopt, true);
}

} // namespace qmbench

// The walk (SaveCategoryList) over 50 categories of 500 rows, against the
// least I/O of as many switches: each file read twice and written twice with
// plain streams. Reported for comparison with the desktop face; no limit.
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include "goals.h"
#include "io_floor.h"
#include "sample_data.h"
#include "support/scripted_platform.h"

namespace qmbench {

namespace {

class WalkCategories {
public:
    static constexpr int kCategories = 50;
    static constexpr int kRows = 500; // with the heading row

    WalkCategories() {
        std::vector<std::string> names;
        for (int i = 1; i <= kCategories; ++i) {
            char name[32];
            std::snprintf(name, sizeof name, "Category %02d", i);
            names.emplace_back(name);
            h.writeCategory(name, sampleItems(kRows - 1, 100 + static_cast<unsigned>(i)));
            files.push_back(h.data(std::string(name) + ".csv").string());
            originals.push_back(readWholeFile(files.back()));
        }
        h.writeIndex(names);
        scratch = h.data("io floor scratch").string();
        h.start();
        h.run([&] { h.m().lstCategory.setSelected(0); });
        if (std::string p = problem(); !p.empty()) throw std::runtime_error("the first switch failed: " + p);
    }

    // Empty if the walk ended with the first category open and whole.
    std::string problem() {
        qm::frmMain& m = h.m();
        if (m.lstCategory.ListCount() != kCategories) return "the list has " + std::to_string(m.lstCategory.ListCount()) + " entries";
        if (m.lstCategory.ListIndex() != 0 || m.CurrentCategory != m.lstCategory.List(0))
            return "the walk did not end on the category it began with";
        if (m.FG1.Rows() != kRows) return "the open category has " + std::to_string(m.FG1.Rows()) + " rows";
        return {};
    }

    // Once: every category file comes out of a walk byte for byte as it was.
    std::string verifyWalk() {
        if (verified_) return {};
        h.run([&] { h.m().SaveCategoryList(); });
        for (std::size_t i = 0; i < files.size(); ++i)
            if (readWholeFile(files[i]) != originals[i]) return "the walk changed " + files[i];
        verified_ = true;
        return problem();
    }

    qmtest::Harness h;
    std::vector<std::string> files, originals;
    std::string scratch;

private:
    bool verified_ = false;
};

std::unique_ptr<WalkCategories>& instance() {
    static std::unique_ptr<WalkCategories> walk;
    return walk;
}

void walk50x500(benchmark::State& state) {
    measureAgainstIoFloor(state, [&state] {
        if (!instance()) instance() = std::make_unique<WalkCategories>();
        WalkCategories& w = *instance();
        state.counters["categories"] = WalkCategories::kCategories;
        state.counters["rows"] = WalkCategories::kRows;
        return FloorSubject{w.scratch,
                            w.h.dataDir.place(),
                            [&w] { return w.verifyWalk(); },
                            [&w] { w.h.run([&w] { w.h.m().SaveCategoryList(); }); },
                            [&w] { return w.problem(); },
                            [&w] { return w.files; }};
    });
}

} // namespace

void releaseWalkCategories() { instance().reset(); }

void registerWalkBenchmarks() {
    registerAgainstIoFloor("Walk50x500", walk50x500, "walk over 50 categories of 500 rows, vs I/O floor", std::nullopt);
}

} // namespace qmbench

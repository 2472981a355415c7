#include "big_categories.h"

#include <stdexcept>

#include "goals.h"
#include "io_floor.h"
#include "sample_data.h"

namespace qmbench {

namespace {
std::unique_ptr<BigCategories>& instance() {
    static std::unique_ptr<BigCategories> big;
    return big;
}
} // namespace

BigCategories::BigCategories() {
    const std::string given[2] = {"Garage and workshop", "Household"};
    h.writeIndex({given[0], given[1]});
    for (int i = 0; i < 2; ++i) h.writeCategory(given[i], sampleItems(kRows - 1, 1 + static_cast<unsigned>(i)));
    scratch = h.data("io floor scratch").string();
    h.start();
    for (int i = 0; i < 2; ++i) {
        names[i] = m().lstCategory.List(i);
        files[i] = h.data(names[i] + ".csv").string();
        originals[i] = readWholeFile(files[i]);
    }
    h.run([&] { m().lstCategory.setSelected(0); });
    open = 0;
    std::string p = problem();
    if (!p.empty()) throw std::runtime_error("the first switch failed: " + p);
}

void BigCategories::switchOver() {
    const int target = 1 - open;
    h.run([&] { m().lstCategory.setSelected(target); });
    open = target;
}

std::string BigCategories::problem() {
    if (m().CurrentCategory != names[open]) return "the switch did not open " + names[open];
    if (m().FG1.Rows() != kRows)
        return names[open] + " came in with " + std::to_string(m().FG1.Rows()) + " rows, not " + std::to_string(kRows);
    return {};
}

std::string BigCategories::verifySwitch() {
    if (verified_) return {};
    h.files.arm(qmtest::FaultyFiles::OpenWrite, -1);
    switchOver();
    long writes = h.files.counted();
    h.files.arm(qmtest::FaultyFiles::OpenRead, -1);
    switchOver();
    long reads = h.files.counted();
    h.files.disarm();
    if (writes > 2) return "a switch opened " + std::to_string(writes) + " files for writing, more than 2";
    if (reads < 2) return "a switch opened " + std::to_string(reads) + " files for reading, fewer than 2";
    for (int i = 0; i < 2; ++i)
        if (readWholeFile(files[i]) != originals[i]) return "two switches changed the file of " + names[i];
    verified_ = true;
    return problem();
}

BigCategories& bigCategories() {
    if (!instance()) instance() = std::make_unique<BigCategories>();
    return *instance();
}

void releaseBigCategories() { instance().reset(); }

} // namespace qmbench

#include "paired_samples.h"

#include <algorithm>

namespace qmbench {

namespace {
double median(std::vector<double> v) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    std::size_t mid = v.size() / 2;
    return v.size() % 2 ? v[mid] : (v[mid - 1] + v[mid]) / 2;
}
} // namespace

void PairedSamples::add(double subjectSeconds, double baselineSeconds) {
    subject_.push_back(subjectSeconds);
    baseline_.push_back(baselineSeconds);
}

double PairedSamples::subjectMedian() const { return median(subject_); }
double PairedSamples::baselineMedian() const { return median(baseline_); }

double PairedSamples::ratio() const {
    double b = baselineMedian();
    return b > 0 ? subjectMedian() / b : 0;
}

void PairedSamples::report(benchmark::State& state) const {
    if (empty()) return;
    state.counters["ratio"] = ratio();
    state.counters["median_ms"] = subjectMedian() * 1e3;
    state.counters["baseline_ms"] = baselineMedian() * 1e3;
}

} // namespace qmbench

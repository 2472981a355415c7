#include "paired_samples.h"

#include <algorithm>
#include <fstream>

namespace qmbench {

namespace {
double median(const std::vector<Timing>& samples, double Timing::*part) {
    std::vector<double> v;
    for (const Timing& t : samples) v.push_back(t.*part);
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    std::size_t mid = v.size() / 2;
    return v.size() % 2 ? v[mid] : (v[mid - 1] + v[mid]) / 2;
}

double ratio(double subject, double baseline) { return baseline > 0 ? subject / baseline : 0; }
} // namespace

double threadCpuWaitSeconds() {
    // The second figure of schedstat: nanoseconds spent waiting on a run queue.
    std::ifstream in("/proc/thread-self/schedstat");
    double onCpu = 0, waiting = 0;
    if (!(in >> onCpu >> waiting)) return 0;
    return waiting * 1e-9;
}

void PairedSamples::add(Timing subject, Timing baseline) {
    subject_.push_back(subject);
    baseline_.push_back(baseline);
}

void PairedSamples::report(benchmark::State& state) const {
    if (empty()) return;
    const double wall = median(subject_, &Timing::wall), baseWall = median(baseline_, &Timing::wall);
    state.counters["ratio"] = ratio(wall, baseWall);
    state.counters["median_ms"] = wall * 1e3;
    state.counters["baseline_ms"] = baseWall * 1e3;
    state.counters["cpu_ratio"] = ratio(median(subject_, &Timing::cpu), median(baseline_, &Timing::cpu));
    state.counters["cpu_wait_ms"] = median(subject_, &Timing::cpuWait) * 1e3;
    std::vector<Timing> blocked;
    for (const Timing& t : subject_) blocked.push_back({std::max(0.0, t.wall - t.cpu - t.cpuWait), 0, 0});
    state.counters["blocked_ms"] = median(blocked, &Timing::wall) * 1e3;
}

} // namespace qmbench

#include "goals.h"

#include <algorithm>
#include <cstdio>

namespace qmbench {

namespace {
struct GoalOf {
    std::string benchmark;
    Goal goal;
};

std::vector<GoalOf>& goalTable() {
    static std::vector<GoalOf> goals;
    return goals;
}

std::string number(double x) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.2f", x);
    return buf;
}
} // namespace

benchmark::internal::Benchmark* registerGoals(const std::string& name, std::function<void(benchmark::State&)> fn,
                                              std::vector<Goal> goals) {
    for (Goal& g : goals) goalTable().push_back({name, std::move(g)});
    return benchmark::RegisterBenchmark(name.c_str(), [fn = std::move(fn)](benchmark::State& state) { fn(state); });
}

benchmark::internal::Benchmark* registerPairedRatio(const std::string& name, void (*fn)(benchmark::State&),
                                                    const std::string& label, std::optional<double> limit, bool withTime) {
    std::vector<Goal> goals{{"ratio", label, limit}, {"cpu_ratio", "  the same in CPU time (no waiting for CPU or disk)", std::nullopt}};
    if (withTime) goals.push_back({"median_ms", "  its time in ms (instant: under 100)", std::nullopt});
    return registerGoals(name, fn, std::move(goals))->UseManualTime()->Unit(benchmark::kMillisecond);
}

void SummaryReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        // With repetitions the median stands for the benchmark; otherwise the last run does.
        if (run.run_type == Run::RT_Aggregate && run.aggregate_name != "median") continue;
        Result& r = results_[run.run_name.function_name];
        r.error = run.error_occurred;
        r.message = run.error_message;
        r.counters.clear();
        for (const auto& [name, counter] : run.counters) r.counters[name] = counter.value;
    }
}

bool printSummary(std::ostream& out, const std::map<std::string, SummaryReporter::Result>& results) {
    struct Line {
        std::string goal, measured, limit, ok;
    };
    std::vector<Line> lines{{"goal", "measured ratio", "limit", "ok"}};
    bool allOk = true;
    for (const auto& [benchmark, g] : goalTable()) {
        Line line{g.label, "", g.limit ? number(*g.limit) : "-", ""};
        auto it = results.find(benchmark);
        if (it == results.end()) {
            line.measured = "not run";
            line.ok = "-";
        } else if (it->second.error || !it->second.counters.count(g.counter)) {
            line.measured = "not measured: " + (it->second.error ? it->second.message : "no " + g.counter);
            line.ok = g.limit ? "NO" : "-";
            if (g.limit) allOk = false;
        } else {
            double ratio = it->second.counters.at(g.counter);
            line.measured = number(ratio);
            if (!g.limit) {
                line.ok = "n/a";
            } else if (ratio <= *g.limit) {
                line.ok = "yes";
            } else {
                line.ok = "NO";
                allOk = false;
            }
        }
        lines.push_back(std::move(line));
    }
    std::size_t w[3] = {0, 0, 0};
    for (const Line& l : lines) {
        w[0] = std::max(w[0], l.goal.size());
        w[1] = std::max(w[1], l.measured.size());
        w[2] = std::max(w[2], l.limit.size());
    }
    auto pad = [](const std::string& s, std::size_t width) { return s + std::string(width - s.size(), ' '); };
    out << "\nSummary (each ratio against a baseline measured in this run)\n";
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const Line& l = lines[i];
        out << pad(l.goal, w[0]) << " | " << pad(l.measured, w[1]) << " | " << pad(l.limit, w[2]) << " | " << l.ok << '\n';
        if (i == 0) out << std::string(w[0], '-') << "-|-" << std::string(w[1], '-') << "-|-" << std::string(w[2], '-') << "-|---\n";
    }
    out << (allOk ? "All goals with a limit are met.\n" : "A goal with a limit is missed or could not be measured.\n");
    return allOk;
}

} // namespace qmbench

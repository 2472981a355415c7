// How much the window adds to the program's two heavy operations: a switch to
// a category of 32767 rows, and a walk over 50 categories of 500 rows. Each is
// timed in the core alone (frmMain without a face) and in the real window,
// in the same run, and the ratio is printed. The goal is a ratio of 1.5 at most.
//
//   qt_switch_bench [rounds]      (offscreen unless QT_QPA_PLATFORM says otherwise)
#include <QApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include "forms/grid.h"
#include "support/qt_harness.h"

namespace {


double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

struct Took {
    double wall = 0; // ms
    double cpu = 0;  // ms of this thread: what other programs on the machine disturb least
};

double threadCpuMs() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

Took timeMs(const std::function<void()>& f) {
    QElapsedTimer t;
    const double cpu0 = threadCpuMs();
    t.start();
    f();
    return {static_cast<double>(t.nsecsElapsed()) / 1e6, threadCpuMs() - cpu0};
}

using Run = std::function<void(const std::function<void()>&)>;

// The same data set in any folder's harness.
void writeBig(qmtest::Harness& h) {
    h.writeIndex({"Big", "Small"});
    h.writeCategory("Big", qttest::itemRows(forms::Grid::kMaxRows - 1));
    h.writeCategory("Small", qttest::itemRows(3));
}

void writeMany(qmtest::Harness& h) {
    std::vector<std::string> names;
    for (int i = 0; i < 50; ++i) names.push_back("Category " + std::to_string(100 + i));
    h.writeIndex(names);
    const auto rows = qttest::itemRows(500);
    for (const auto& n : names) h.writeCategory(n, rows);
}

struct Medians {
    Took core, window;
};

// The same operation on the same data in the core alone and in the window.
// The two take turns, so that a machine busy with something else slows both alike.
Medians compare(int rounds, const std::function<void(qmtest::Harness&)>& write,
                const std::function<void(qm::frmMain&, const Run&)>& prepare,
                const std::function<Took(qm::frmMain&, const Run&)>& measure) {
    qmtest::Harness core;
    write(core);
    qm::frmMain& cm = core.start();
    qttest::QtHarness window;
    write(window.core);
    if (!window.start()) std::exit(1);
    const Run coreRun = [&](const std::function<void()>& f) { core.run(f); };
    const Run windowRun = [&](const std::function<void()>& f) { window.host.dispatch(f); };
    prepare(cm, coreRun);
    prepare(window.m(), windowRun);
    std::vector<double> cw, cc, ww, wc;
    for (int i = 0; i < rounds; ++i) {
        Took c = measure(cm, coreRun), w = measure(window.m(), windowRun);
        cw.push_back(c.wall);
        cc.push_back(c.cpu);
        ww.push_back(w.wall);
        wc.push_back(w.cpu);
    }
    return {{median(cw), median(cc)}, {median(ww), median(wc)}};
}

void report(const char* what, const Medians& m) {
    std::printf("%s\n", what);
    std::printf("  wall time   core %8.1f ms   window %8.1f ms   ratio %.2f (goal <= 1.50)\n", m.core.wall, m.window.wall,
                m.window.wall / m.core.wall);
    std::printf("  CPU time    core %8.1f ms   window %8.1f ms   ratio %.2f (goal <= 1.50)\n", m.core.cpu, m.window.cpu,
                m.window.cpu / m.core.cpu);
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 9;

    // Switches from Small to Big, timing the switch to Big.
    const Medians switchTimes = compare(rounds, writeBig, [](qm::frmMain& m, const Run& run) {
        run([&] { m.lstCategory.TrySetFocus(); }); // the walk of the list's first gain of focus, untimed
    }, [](qm::frmMain& m, const Run& run) {
        run([&] { m.lstCategory.setSelected(1); });
        return timeMs([&] { run([&] { m.lstCategory.setSelected(0); }); });
    });
    const Medians walkTimes = compare(rounds, writeMany, [](qm::frmMain& m, const Run& run) {
        run([&] { m.lstCategory.setSelected(0); });
    }, [](qm::frmMain& m, const Run& run) { return timeMs([&] { run([&] { m.SaveCategoryList(); }); }); });
    std::printf("platform: %s, median of %d rounds\n", qPrintable(QGuiApplication::platformName()), rounds);
    report("switch to a category of 32767 rows", switchTimes);
    report("walk over 50 categories of 500 rows", walkTimes);
    return 0;
}

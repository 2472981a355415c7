// How much the window adds to the program's two heavy operations: a switch to
// a category of 32767 rows, and a walk over 50 categories of 500 rows. Each is
// timed in the core alone (frmMain without a face) and in the real window,
// in the same run, and the ratio is printed. The goal is a ratio of 1.5 at most.
// Then, in the window alone: from a key typed in a cost cell of the category of
// 32767 rows to the moment the editor and the total are painted.
//
//   qt_switch_bench [rounds]      (offscreen unless QT_QPA_PLATFORM says otherwise)
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <set>
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
    h.writeCategory("Big", qmtest::numberedItems(forms::Grid::kMaxRows - 1));
    h.writeCategory("Small", qmtest::numberedItems(3));
}

void writeMany(qmtest::Harness& h) {
    std::vector<std::string> names;
    for (int i = 0; i < 50; ++i) names.push_back("Category " + std::to_string(100 + i));
    h.writeIndex(names);
    const auto rows = qmtest::numberedItems(500);
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

// Notes which of the watched widgets have been painted.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(const std::vector<QWidget*>& widgets) {
        for (QWidget* w : widgets) w->installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* e) override {
        if (e->type() == QEvent::Paint) painted.insert(watched);
        return false;
    }
    std::set<QObject*> painted;
};

struct KeyToPaint {
    double handled = 0; // ms from the key press until its event has been handled (model and widgets in step)
    double painted = 0; // ms until the editor and the total have been painted
    double cpu = 0;     // ms of this thread's CPU time for the same
};

// Keys typed into the cost cell of the last row of the category of 32767 rows:
// a digit, then Backspace, so that the total changes with every key. Each key
// is a real key event to the editor's widget; the event loop then runs until
// the editor and the cost total have repainted. The value total doesn't change
// with a cost key, so it has nothing to paint.
std::vector<KeyToPaint> keyToPaint(int keys) {
    qttest::QtHarness window;
    writeBig(window.core);
    if (!window.start()) std::exit(1);
    window.clickListEntry(0);
    qttest::QtHarness::settle();
    qm::frmMain& m = window.m();
    const int last = m.FG1.Rows() - 1;
    QTest::mouseClick(window.grid()->viewport(), Qt::LeftButton, {}, window.grid()->cellRect(last, 1).center());
    auto* editor = window.widgetAs<QLineEdit>(m.T1);
    auto* cost = window.widgetAs<QLineEdit>(m.txtCost);
    if (m.FG1.Col() != 1 || !editor->isVisible()) std::exit(1);
    PaintWatch watch({editor, cost});
    std::vector<KeyToPaint> out;
    for (int i = 0; i < keys; ++i) {
        for (int settle = 0; settle < 3; ++settle) QCoreApplication::processEvents();
        watch.painted.clear();
        const QString before = cost->text();
        QElapsedTimer t;
        const double cpu0 = threadCpuMs();
        t.start();
        if (i % 2 == 0) QTest::keyClick(editor, Qt::Key_7);
        else QTest::keyClick(editor, Qt::Key_Backspace);
        KeyToPaint k;
        k.handled = static_cast<double>(t.nsecsElapsed()) / 1e6;
        while (!(watch.painted.count(editor) && watch.painted.count(cost)) && t.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        k.painted = static_cast<double>(t.nsecsElapsed()) / 1e6;
        k.cpu = threadCpuMs() - cpu0;
        if (cost->text() == before || t.elapsed() >= 5000) {
            std::fprintf(stderr, "key %d: the total did not change or was not painted\n", i);
            std::exit(1);
        }
        out.push_back(k);
    }
    return out;
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

    const auto keys = keyToPaint(std::max(21, rounds * 20 + 1));
    std::vector<double> handled, painted, cpu;
    for (const auto& k : keys) {
        handled.push_back(k.handled);
        painted.push_back(k.painted);
        cpu.push_back(k.cpu);
    }
    std::sort(painted.begin(), painted.end());
    std::printf("a key in a cost cell of a category of 32767 rows, median of %zu keys\n", keys.size());
    std::printf("  key handled %6.2f ms   editor and total painted %6.2f ms (90th percentile %6.2f ms)   CPU %6.2f ms\n",
                median(handled), median(painted), painted[painted.size() * 9 / 10], median(cpu));
    return 0;
}

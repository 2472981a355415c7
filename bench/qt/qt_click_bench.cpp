// The window's click on the category list against the core's click on the
// same database, in the same run: the real window (Qt widgets, Qt's picture
// loader, painting after the click) and frmMain on the scripted platform alone,
// taking turns so that a busy machine slows both alike. Over 1000 categories
// of 100 items and over 200 categories of 1000 items; the goal is a ratio of 1.2 at most.
//
//   qm_qt_bench [benchmark options]   (offscreen unless QT_QPA_PLATFORM says otherwise)
#include <QApplication>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "goals.h"
#include "io_floor.h"
#include "list_clicks.h"
#include "support/qt_harness.h"

namespace qmbench {

void registerReportBenchmarks(); // report_bench.cpp

namespace {

constexpr int kGoalMissed = 3;

struct WindowAndCore {
    WindowAndCore(int categories, int items) : db(clickDatabase(categories, items)) {
        db.copyTo(core.dataDir.path());
        core.start();
        coreClicks = std::make_unique<ListClicks>(db, core.m(), core.dataDir.path(), [this](int i) { core.selectCategory(i); });
        db.copyTo(window.core.dataDir.path());
        if (!window.start()) throw std::runtime_error("the window did not come up");
        windowClicks = std::make_unique<ListClicks>(db, window.m(), window.core.dataDir.path(), [this](int i) {
            window.clickListEntry(i);
            qttest::QtHarness::settle(); // what the click shows is painted
        });
    }
    const ClickDatabase& db;
    qmtest::Harness core;
    qttest::QtHarness window;
    std::unique_ptr<ListClicks> coreClicks, windowClicks;
};

std::unique_ptr<WindowAndCore>& instance() {
    static std::unique_ptr<WindowAndCore> current;
    return current;
}

template <int Categories, int Items>
void windowClick(benchmark::State& state) {
    try {
        WindowAndCore* w = &setUpFor(instance(), Categories, Items);
        state.counters["categories"] = Categories;
        state.counters["items"] = Items;
        for (ListClicks* c : {w->coreClicks.get(), w->windowClicks.get()})
            if (std::string p = c->verify(); !p.empty()) {
                state.SkipWithError(p.c_str());
                return;
            }
        PairedSamples samples;
        for (auto _ : state) {
            const Timing core = timingOf([&] { w->coreClicks->click(); });
            const Timing window = timingOf([&] { w->windowClicks->click(); });
            std::string p = w->coreClicks->problem();
            if (p.empty()) p = w->windowClicks->problem();
            if (!p.empty()) {
                state.SkipWithError(p.c_str());
                break;
            }
            samples.add(window, core);
            state.SetIterationTime(window.wall);
        }
        samples.report(state);
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

} // namespace
} // namespace qmbench

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    qmbench::registerPairedRatio("WindowClick1000x100", qmbench::windowClick<1000, 100>,
                                 "window's click on the list, 1000 categories x 100 items, vs the core's", 1.2, true);
    qmbench::registerPairedRatio("WindowClick200x1000", qmbench::windowClick<200, 1000>,
                                 "window's click on the list, 200 categories x 1000 items, vs the core's", 1.2, true);
    qmbench::registerReportBenchmarks();

    qmbench::SummaryReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    qmbench::instance().reset();
    qmbench::releaseClickDatabases();

    bool ok = true;
    if (!reporter.results().empty()) ok = qmbench::printSummary(std::cout, reporter.results());
    benchmark::Shutdown();
    return ok ? 0 : qmbench::kGoalMissed;
}

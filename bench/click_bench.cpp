// A click on the category list with nothing changed (the walk of the list's
// gain of focus over every category, then the switch to the entry clicked),
// over 1000 categories of 100 items and over 200 categories of 1000 items,
// against the least I/O of a pass over the database: every category file read
// once with plain streams.
#include <memory>

#include "goals.h"
#include "io_floor.h"
#include "list_clicks.h"

namespace qmbench {

namespace {

struct CoreClicks {
    CoreClicks(int categories, int items) : db(clickDatabase(categories, items)) {
        db.copyTo(h.dataDir.path());
        h.start();
        clicks = std::make_unique<ListClicks>(db, h.m(), h.dataDir.path(), [this](int i) { h.selectCategory(i); });
    }
    const ClickDatabase& db;
    qmtest::Harness h;
    std::unique_ptr<ListClicks> clicks;
};

std::unique_ptr<CoreClicks>& instance() {
    static std::unique_ptr<CoreClicks> current;
    return current;
}

template <int Categories, int Items>
void listClick(benchmark::State& state) {
    measureAgainstIoFloor(state, [&state] {
        CoreClicks& c = setUpFor(instance(), Categories, Items);
        state.counters["categories"] = Categories;
        state.counters["items"] = Items;
        ListClicks& clicks = *c.clicks;
        FloorSubject s{c.h.data("io floor scratch").string(),
                       c.h.dataDir.place(),
                       [&clicks] { return clicks.verify(); },
                       [&clicks] { clicks.click(); },
                       [&clicks] { return clicks.problem(); },
                       [&clicks] { return clicks.files(); }};
        s.readOnce = true;
        return s;
    });
}

} // namespace

void releaseCoreClicks() { instance().reset(); }

void registerClickBenchmarks() {
    registerPairedRatio("Click1000x100", listClick<1000, 100>,
                        "click on the list, 1000 categories x 100 items, vs reading every file once", 5.0, true);
    registerPairedRatio("Click200x1000", listClick<200, 1000>,
                        "click on the list, 200 categories x 1000 items, vs reading every file once", 5.0, true);
}

} // namespace qmbench

// Import Spreadsheet of a 50,000-row file, against reading the file's bytes.
// The whole command: the file read and cut into cells, the preview, the new
// category made, its grid filled, stored (synced to disk) and opened. A
// category holds 32766 items, so the rows after those are counted as not come in.
//
// Beside the goal: the same with the file read from the disk both times (its
// pages dropped from memory first, as for a spreadsheet not opened for a
// while), and the least any import that keeps its result costs: the new
// category's bytes written and synced.
#include <memory>
#include <stdexcept>
#include <string>

#include "goals.h"
#include "import/columns.h"
#include "import/frm_import.h"
#include "io_floor.h"
#include "paired_samples.h"
#include "support/scripted_platform.h"

namespace qmbench {

namespace {

constexpr int kRows = 50000;

// A spreadsheet as people keep one: nine columns, two of them unknown, some
// cells quoted for their commas, money with cents.
std::string spreadsheet() {
    std::string s = "Name,Price,Value,Store,Purchase date,Warranty,Serial,Colour,Room\r\n";
    for (int i = 1; i <= kRows; ++i) {
        const std::string n = std::to_string(i);
        s += "Item " + n + "," + n + ".99," + std::to_string(i % 97) + ".50," +
             (i % 3 ? "Hardware store" : "\"Main St, Springfield\"") + ",3/" + std::to_string(i % 28 + 1) +
             "/2001,3/1/2004,SN-" + n + "-XK," + (i % 2 ? "red" : "blue") + ",\"Hall, upstairs\"\r\n";
    }
    return s;
}

struct ImportFixture {
    qmtest::TempDir dir;
    std::string path = (dir.path() / "Inventory.csv").string();
    std::string bytes = spreadsheet();
    ImportFixture() { writeWholeFile(path, bytes); }
};

// The command as the user runs it, on a fresh program each time; what it left
// wrong, and (if asked) the bytes it stored.
std::string importOnce(const ImportFixture& f, const std::function<void(const std::function<void()>&)>& timed,
                       std::string* stored = nullptr) {
    qmtest::Harness h;
    qm::frmMain& m = h.start();
    h.dialogs.openAnswers = {f.path};
    timed([&] {
        h.menu("mnuImport");
        h.click(m.importIfLoaded()->cmdOK);
    });
    if (m.ItemRowCount != forms::Grid::kMaxRows) return "the import left " + std::to_string(m.ItemRowCount) + " rows";
    const std::string bytes = h.text("Inventory.csv");
    if (bytes.size() < f.bytes.size() / 2) return "the category file was not stored whole";
    if (stored) *stored = bytes;
    return "";
}

// The loop of every benchmark here: a sample of the work (its timing; a
// std::exception tells what went wrong) paired with a plain read of the
// spreadsheet, each after `ready`.
void pairWithReading(benchmark::State& state, const ImportFixture& f, const std::function<Timing()>& sample,
                     const std::function<void()>& ready = [] {}) {
    flushPendingWrites(f.dir.place());
    PairedSamples samples;
    try {
        for (auto _ : state) {
            ready();
            const Timing subject = sample();
            ready();
            const Timing baseline = timingOf([&] { benchmark::DoNotOptimize(readWholeFile(f.path)); });
            samples.add(subject, baseline);
            state.SetIterationTime(subject.wall);
        }
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
        return;
    }
    samples.report(state);
    state.counters["file_MB"] = static_cast<double>(f.bytes.size()) / (1 << 20);
}

// The import against reading the file; cold: both with the file's pages dropped from memory first.
void importAgainstReading(benchmark::State& state, bool cold) {
    ImportFixture f;
    const auto import = [&] {
        Timing t;
        const std::string problem = importOnce(f, [&](const std::function<void()>& run) { t = timingOf(run); });
        if (!problem.empty()) throw std::runtime_error(problem);
        return t;
    };
    pairWithReading(state, f, import, [&] {
        if (cold && !dropFromMemory(f.path))
            throw std::runtime_error("the file's pages stay in memory here, so no read comes from the disk");
    });
}

void importSpreadsheet(benchmark::State& state) { importAgainstReading(state, false); }
void importSpreadsheetFromDisk(benchmark::State& state) { importAgainstReading(state, true); }

// The floor: the bytes the import stores (those of the category it made)
// written to a file of their own and synced, against reading the spreadsheet.
void storeNewCategory(benchmark::State& state) {
    ImportFixture f;
    std::string stored;
    if (const std::string problem = importOnce(f, [](const std::function<void()>& run) { run(); }, &stored);
        !problem.empty()) {
        state.SkipWithError(problem.c_str());
        return;
    }
    const std::string scratch = (f.dir.path() / "stored.csv").string();
    pairWithReading(state, f, [&] {
        return timingOf([&] {
            writeWholeFile(scratch, stored);
            syncToDisk(scratch);
        });
    });
}

// Only the reading: the file's bytes cut into cells and every row made an item.
void readSpreadsheetIntoItems(benchmark::State& state) {
    ImportFixture f;
    pairWithReading(state, f, [&] {
        std::size_t cells = 0;
        const Timing t = timingOf([&] {
            const spreadsheet::Sheet sheet = spreadsheet::ReadSheet(readWholeFile(f.path));
            const auto labels = spreadsheet::HeadingLabels(sheet);
            const auto choices = spreadsheet::DefaultChoices(labels);
            std::array<std::string, 7> joined;
            for (std::size_t r = 1; r < sheet.rows.size(); ++r)
                for (const auto cell : spreadsheet::ItemCells(sheet, sheet.rows[r], choices, labels, joined))
                    cells += cell.size();
        });
        benchmark::DoNotOptimize(cells);
        return t;
    });
}

} // namespace

void registerImportBenchmarks() {
    registerPairedRatio("ImportSpreadsheet", importSpreadsheet, "import a 50,000-row spreadsheet, vs reading the file",
                        5.0, true);
    registerPairedRatio("ImportSpreadsheetFromDisk", importSpreadsheetFromDisk,
                        "  the same, the file read from the disk both times", std::nullopt, true);
    registerPairedRatio("StoreNewCategory", storeNewCategory,
                        "  its floor: the new category's file written, synced, vs reading", std::nullopt, true);
    registerPairedRatio("ReadSpreadsheetIntoItems", readSpreadsheetIntoItems,
                        "  of it: the file cut into cells and made items, vs reading it", std::nullopt, true);
}

} // namespace qmbench

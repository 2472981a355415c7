// The inventory report of 1000 categories of 100 items, without pictures,
// against the cost of the PDF itself: the same texts and lines drawn at the
// same places with a plain QPainter loop into a QPdfWriter. The places are
// taken from one report (a PageDocument that records what it is asked to
// draw), then report and plain loop take turns. The goal is a ratio of 1.5 at
// most, and the report under 30 s (not counting the time other programs held
// the CPU it waited for). Memory: the peak the report adds to the
// process, against the size of the database on disk (goal: 3 at most).
#include <QFile>
#include <QFont>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <variant>

#include "goals.h"
#include "list_clicks.h"
#include "paired_samples.h"
#include "qt/qt_pdf.h"
#include "support/qt_harness.h"

namespace qmbench {
namespace {

constexpr int kCategories = 1000, kItems = 100;

struct Text {
    double x, y;
    std::string text;
    forms::TextStyle style;
};
struct Rule {
    double x1, y1, x2, y2;
};
struct NewPage {};
using Step = std::variant<Text, Rule, NewPage>;

// Draws through the real document and notes every text, line and page.
class Recording : public forms::PageDocument {
public:
    Recording(std::unique_ptr<forms::PageDocument> real, std::vector<Step>& steps) : real_(std::move(real)), steps_(steps) {}
    double pageWidth() const override { return real_->pageWidth(); }
    double pageHeight() const override { return real_->pageHeight(); }
    double textWidth(const std::string& t, const forms::TextStyle& s) override { return real_->textWidth(t, s); }
    double lineHeight(const forms::TextStyle& s) override { return real_->lineHeight(s); }
    void drawText(double x, double y, const std::string& t, const forms::TextStyle& s) override {
        steps_.emplace_back(Text{x, y, t, s});
        real_->drawText(x, y, t, s);
    }
    bool drawPicture(const std::string& p, double x, double y, double w, double h) override { return real_->drawPicture(p, x, y, w, h); }
    void drawLine(double x1, double y1, double x2, double y2) override {
        steps_.emplace_back(Rule{x1, y1, x2, y2});
        real_->drawLine(x1, y1, x2, y2);
    }
    void newPage() override {
        steps_.emplace_back(NewPage{});
        real_->newPage();
    }
    void finish() override { real_->finish(); }
    void abandon() override { real_->abandon(); }

private:
    std::unique_ptr<forms::PageDocument> real_;
    std::vector<Step>& steps_;
};

class RecordingDocuments : public forms::DocumentsPort {
public:
    std::unique_ptr<forms::PageDocument> beginPdf(const std::string& path, const std::string& title) override {
        auto real = pdf.beginPdf(path, title);
        if (!record) return real;
        steps.clear();
        return std::make_unique<Recording>(std::move(real), steps);
    }
    qtface::QtPdfDocuments pdf;
    bool record = false;
    std::vector<Step> steps;
};

// The cost of the PDF alone: the recorded texts, lines and pages, with the same
// fonts on the same paper, in the plainest loop.
void plainLoop(const std::vector<Step>& steps, const QString& path) {
    constexpr int kDpi = 1200;
    constexpr double k = kDpi / 72.0;
    QPdfWriter writer(path);
    writer.setResolution(kDpi);
    writer.setPageLayout(QPageLayout(qtface::QtPdfDocuments::regionalPageSize(), QPageLayout::Landscape, QMarginsF(36, 36, 36, 36)));
    QPainter painter(&writer);
    painter.setPen(QPen(Qt::black, 0.5 * k));
    QFont fonts[2][64];
    for (const Step& s : steps) {
        if (const auto* t = std::get_if<Text>(&s)) {
            QFont& f = fonts[t->style.bold][static_cast<int>(t->style.points * 2) % 64];
            if (f.family() != "DejaVu Sans") {
                f = QFont("DejaVu Sans");
                f.setPointSizeF(t->style.points);
                f.setBold(t->style.bold);
            }
            painter.setFont(f);
            painter.drawText(QPointF(t->x * k, t->y * k + painter.fontMetrics().ascent()), QString::fromStdString(t->text));
        } else if (const auto* r = std::get_if<Rule>(&s)) {
            painter.drawLine(QPointF(r->x1, r->y1) * k, QPointF(r->x2, r->y2) * k);
        } else {
            writer.newPage();
        }
    }
}

long statusKb(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind(field, 0) == 0) return std::stol(line.substr(std::strlen(field)));
    return -1;
}

struct Setup {
    Setup(int categories, int items) : db(clickDatabase(categories, items)) {
        db.copyTo(window.core.dataDir.path());
        for (const auto& e : std::filesystem::directory_iterator(window.core.dataDir.path())) dbBytes += e.file_size();
        window.platform.documents = &documents;
        if (!window.startAndClick(0)) throw std::runtime_error("the window did not come up");
        out = window.core.dataDir.path().parent_path() / "report-bench.pdf";
    }
    // One report of every category, as OK in the dialog makes it.
    void report() {
        window.core.dialogs.saveAnswers.push_back(out.string());
        window.core.dialogs.msgAnswers.push_back(forms::vbNo);
        window.host.dispatch([&] { window.m().MakeInventoryReport(db.names, false); });
        if (!std::filesystem::exists(out)) throw std::runtime_error("no report was written");
    }
    const ClickDatabase& db;
    qttest::QtHarness window;
    RecordingDocuments documents;
    std::filesystem::path out;
    std::uintmax_t dbBytes = 0;
};

void inventoryReport(benchmark::State& state) {
    try {
        Setup s(kCategories, kItems);
        // Memory first, with nothing recorded: the peak of the process set back to what it holds now.
        std::ofstream("/proc/self/clear_refs") << "5";
        const long before = statusKb("VmRSS:");
        s.report();
        const long peak = statusKb("VmHWM:");
        state.counters["memory_ratio"] = static_cast<double>(peak - before) * 1024.0 / static_cast<double>(s.dbBytes);
        state.counters["db_mb"] = static_cast<double>(s.dbBytes) / 1e6;
        s.documents.record = true;
        s.report();
        s.documents.record = false;
        const QString plainPath = QString::fromStdString(s.out.string() + ".plain.pdf");
        PairedSamples samples;
        double report_cpu_ms = 0, own_ms = 0;
        for (auto _ : state) {
            const Timing report = timingOf([&] { s.report(); });
            report_cpu_ms = std::max(report_cpu_ms, report.cpu * 1e3);
            // What other programs on a shared machine take from it left out.
            own_ms = std::max(own_ms, (report.wall - report.cpuWait) * 1e3);
            const Timing plain = timingOf([&] { plainLoop(s.documents.steps, plainPath); });
            samples.add(report, plain);
            state.SetIterationTime(report.wall);
        }
        samples.report(state);
        state.counters["report_cpu_ms"] = report_cpu_ms;
        state.counters["own_ms"] = own_ms;
        state.counters["pages"] = static_cast<double>(std::count_if(s.documents.steps.begin(), s.documents.steps.end(),
                                                                    [](const Step& x) { return std::holds_alternative<NewPage>(x); }) + 1);
        QFile::remove(plainPath);
        std::filesystem::remove(s.out);
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
}

} // namespace

void registerReportBenchmarks() {
    registerGoals("InventoryReport1000x100", inventoryReport,
                  {{"ratio", "inventory report, 1000 categories x 100 items, vs the plain QPainter loop of the same page", 1.5},
                   {"cpu_ratio", "  the same in CPU time (no waiting for CPU or disk)", std::nullopt},
                   {"median_ms", "  its time in ms", std::nullopt},
                   {"own_ms", "  its time in ms without the waits for a CPU other programs held (longest)", 30000},
                   {"report_cpu_ms", "  its CPU time in ms (longest)", std::nullopt},
                   {"memory_ratio", "  peak memory it adds vs the database on disk", 3.0}})
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(3);
}

} // namespace qmbench

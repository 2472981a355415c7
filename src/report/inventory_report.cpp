#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "forms/failure.h"
#include "mainwindow/frm_main.h"
#include "mainwindow/totals.h"
#include "pictures/frm_pic.h"
#include "report/frm_report.h"
#include "report/report_pages.h"

namespace qm {

using forms::Failure;

namespace {

// A day of the calendar (days from 1970-01-01) as YYYY-MM-DD.
std::string isoDate(int days) {
    const std::chrono::year_month_day d{std::chrono::sys_days{std::chrono::days{days}}};
    char buf[16];
    std::snprintf(buf, sizeof buf, "%04d-%02u-%02u", static_cast<int>(d.year()), static_cast<unsigned>(d.month()),
                  static_cast<unsigned>(d.day()));
    return buf;
}

bool endsWithPdf(const std::string& path) {
    if (path.size() < 4) return false;
    std::string end = path.substr(path.size() - 4);
    std::transform(end.begin(), end.end(), end.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return end == ".pdf";
}

// The grand total: each category's total added to it as the window adds a
// row's amount, through the currency's text and its rounding.
void addTotal(const forms::CurrencyPort& currency, std::string& grand, const std::string& total) {
    try {
        grand = MoneyText(currency, MoneyValue(currency, grand) + MoneyValue(currency, total));
    } catch (const Failure&) {
        // A total the window could not give in figures adds nothing.
    }
}

// One category's part of the report, as the first pass found it.
struct Found {
    report::Sheet sheet;
    int items = 0;
};

} // namespace

void frmMain::mnuReport_Click() { Report().form.setVisible(true); }

// Two passes over the categories, each opened in the window as a click would
// open it, so that the report shows what the window shows: the first finds the
// totals and counts the pages, the second draws them. Only the page count of
// the whole and a few texts a category are held, never the items.
void frmMain::MakeInventoryReport(const std::vector<std::string>& names, bool pictures) {
    if (!platform.documents) {
        Message("Reports can't be made on this system.");
        return;
    }
    // The same today as the warranty list's: the regional settings' own.
    const std::string date = isoDate(platform.currency.today());
    std::optional<std::string> chosen = platform.dialogs.ShowSave("Quillmere inventory " + date + ".pdf", "PDF files (*.pdf)|*.pdf");
    if (!chosen) return;
    std::string path = *chosen;
    if (!endsWithPdf(path)) path += ".pdf";

    std::unique_ptr<forms::PageDocument> doc;
    try {
        doc = platform.documents->beginPdf(path, "Quillmere inventory " + date);
    } catch (const Failure&) {
        Message("The report could not be written to " + path + ".");
        return;
    }
    const std::string wasOpen = lstCategory.Text();
    forms::ProgressPort* progress = platform.progress;
    // Progress in hundredths of a category, told every few hundred items too,
    // so that a big category moves the bar and Cancel stops it in the middle.
    constexpr int kPerCategory = 100, kTellEvery = 256;
    if (progress) progress->start("Making the inventory report...", static_cast<int>(names.size()) * 2 * kPerCategory);
    int done = 0;
    bool cancelled = false, failed = false;
    auto tell = [&](int at) {
        if (progress && !progress->advance(at)) cancelled = true;
        return !cancelled;
    };
    auto step = [&] { return tell(done += kPerCategory); };
    // Opens a category in the window; false when it is gone from the list or
    // the window could not leave the one it had.
    auto open = [&](const std::string& name) {
        lstCategory.setText(name);
        return lstCategory.Text() == name && CurrentCategory && *CurrentCategory == name;
    };
    auto itemRows = [&] { return std::max(0, std::min(ItemRowCount, FG1.Rows()) - 1); };
    auto linkedPicture = [&](int row) -> std::string {
        const std::string link = LinkPath(platform.places.dataFolder, lblCategory.Caption(), std::string(FG1.TextMatrix(row, 0)));
        if (!platform.files.exists(link)) return {};
        const int n = files.FreeFile();
        try {
            files.OpenInput(n, link);
            std::string picture = files.ReadField(n);
            files.Close(n);
            return picture;
        } catch (const Failure&) {
            files.Close(n);
            return {};
        }
    };

    report::Pages pages(*doc, pictures);
    std::vector<Found> found;
    std::string grandCost = "0", grandValue = "0";
    int items = 0;
    // The open category's table, its items as the grid holds them; false when
    // the user cancels in the middle of it.
    auto sheet = [&](const Found& f) {
        pages.beginSheet(f.sheet);
        std::array<std::string_view, report::Pages::kColumns> cells;
        for (int r = 1; r <= f.items; ++r) {
            if (r % kTellEvery == 0 && !tell(done + static_cast<int>(std::int64_t{kPerCategory} * r / (f.items + 1))))
                return false;
            for (int c = 0; c < report::Pages::kColumns; ++c) cells[c] = c < FG1.Cols() ? FG1.TextMatrix(r, c) : "";
            pages.item(cells, pictures ? linkedPicture(r) : std::string());
        }
        pages.endSheet();
        return true;
    };
    try {
        // First pass: what each category holds and how many pages it takes.
        pages.titlePage({});
        for (const std::string& name : names) {
            if (open(name)) {
                Found f;
                f.sheet.name = name;
                for (int c = 0; c < report::Pages::kColumns && c < FG1.Cols(); ++c) f.sheet.headings[c] = FG1.TextMatrix(0, c);
                f.sheet.costLabel = Label1.Caption();
                f.sheet.valueLabel = Label2.Caption();
                f.sheet.cost = txtCost.Text();
                f.sheet.value = txtValue.Text();
                f.items = itemRows();
                if (!sheet(f)) break;
                addTotal(platform.currency, grandCost, f.sheet.cost);
                addTotal(platform.currency, grandValue, f.sheet.value);
                items += f.items;
                found.push_back(std::move(f));
            }
            if (!step()) break;
        }
        // Second pass: the pages themselves.
        if (!cancelled) {
            if (grandCost == "0") grandCost = MoneyText(platform.currency, 0);
            if (grandValue == "0") grandValue = MoneyText(platform.currency, 0);
            pages.setTotalPages(pages.pages());
            pages.rewind();
            pages.setDrawing(true);
            pages.titlePage({date, static_cast<int>(found.size()), items, "Total original cost of all items:", grandCost,
                             "Total current value of all items:", grandValue});
            for (const Found& f : found) {
                // The same texts as in the first pass: a category that changed
                // in between (nothing here changes one) would count its pages anew.
                if (!open(f.sheet.name) || itemRows() != f.items) throw Failure("category changed: " + f.sheet.name);
                if (!sheet(f) || !step()) break;
            }
            for (std::size_t k = found.size(); k < names.size() && !cancelled; ++k) step();
        }
        if (!cancelled) {
            pages.finish();
            doc->finish();
        }
    } catch (const Failure&) {
        failed = true;
    }
    if (cancelled || failed) doc->abandon();
    doc.reset();
    if (progress) progress->stop();
    if (!wasOpen.empty()) lstCategory.setText(wasOpen);
    if (failed) {
        Message("The report could not be written to " + path + ".");
        return;
    }
    if (cancelled) return;
    if (Message("The inventory report is saved as " + path + ".\n\nOpen it now?", forms::vbYesNo) == forms::vbYes)
        platform.program.openDocument(path);
}

} // namespace qm

#include "session.h"

#include <algorithm>
#include <stdexcept>

#include "forms/failure.h"
#include "forms/input.h"
#include "storage/places.h"

namespace robust {

namespace fs = std::filesystem;
using qmtest::Harness;
using qmtest::Table;

namespace {

// Names that sort in awkward places and need quotes, blanks or a slash in their files.
const std::vector<std::string> kCategoryNames = {
    "Antiques",        "Bikes",          "Books, old",      "Cameras \"pro\"", " Attic boxes",  "Car parts",
    "Électronique",    "Garden",         "Instruments",     "Jewellery",       "Kitchen",       "Lamps",
    "Mom's stuff",     "Office",         "Pictures/Frames", "Records",         "Sports",        "Tools",
    "Toys",            "Vinyl 12\"",     "Watches",         "Wine ✓",          "Xmas décor",    "Zoo tickets 🎟",
};

std::vector<std::string> itemRow(std::size_t cat, std::size_t i) {
    const std::string n = std::to_string(i + 1);
    return {"Item " + n + (i % 4 == 1 ? ", spare" : ""),
            std::to_string(10 + i * 3) + "." + (i % 2 ? "50" : "00"),
            i % 3 ? std::to_string(5 + i) : "",
            i % 5 == 0 ? "Shop \"Main\", Springfield" : "Market",
            std::to_string(1 + i % 12) + "/" + std::to_string(1 + cat) + "/2001",
            i % 2 ? "" : "never",
            i % 6 == 3 ? " SN " + n : "SN-" + std::to_string(cat) + "-" + n};
}

int indexOf(qm::frmMain& m, const std::string& name) {
    const auto& items = m.lstCategory.items();
    auto it = std::find(items.begin(), items.end(), name);
    if (it == items.end()) throw std::logic_error("the session expects a category named " + name);
    return static_cast<int>(it - items.begin());
}

void open(Harness& h, qm::frmMain& m, const std::string& name) {
    forms::input::selectEntry(h.runtime, m.lstCategory, indexOf(m, name));
}

void type(Harness& h, qm::frmMain& m, int row, int col, const std::u32string& text) {
    forms::input::clickCell(h.runtime, m.FG1, row, col);
    forms::input::text(h.runtime, m.T1, text);
}

void menu(Harness& h, qm::frmMain& m, const char* entry) { forms::input::menu(h.runtime, *m.form.menuBar().find(entry)); }

// A walk: the focus goes elsewhere, then back to the list.
void walk(Harness& h, qm::frmMain& m) {
    h.focus(m.cmdAddAsset);
    h.focus(m.lstCategory);
}

std::vector<Step> makeSteps() {
    std::vector<Step> s;
    auto add = [&](std::string what, std::function<void(Harness&, qm::frmMain&)> f) { s.push_back({std::move(what), std::move(f)}); };
    add("open Car parts", [](Harness& h, qm::frmMain& m) { open(h, m, "Car parts"); });
    add("type a cost", [](Harness& h, qm::frmMain& m) { type(h, m, 2, 1, U"19.99"); });
    add("type a description with a comma and quotes", [](Harness& h, qm::frmMain& m) { type(h, m, 3, 6, U", boxed \"new\""); });
    add("open Kitchen", [](Harness& h, qm::frmMain& m) { open(h, m, "Kitchen"); });
    add("add an item", [](Harness& h, qm::frmMain& m) {
        h.dialogs.inputAnswers.push_back("Lamp, desk");
        h.click(m.cmdAddAsset);
    });
    add("type its cost", [](Harness& h, qm::frmMain& m) { forms::input::text(h.runtime, m.T1, U"45"); });
    add("rename an item", [](Harness& h, qm::frmMain& m) {
        forms::input::clickCell(h.runtime, m.FG1, 1, 1);
        h.dialogs.inputAnswers.push_back("Kettle ✓");
        h.click(m.cmdRenameItem);
    });
    add("delete an item", [](Harness& h, qm::frmMain& m) {
        forms::input::clickCell(h.runtime, m.FG1, 2, 1);
        h.dialogs.msgAnswers.push_back(forms::vbYes);
        h.click(m.cmdDeleteAsset);
    });
    add("walk", walk);
    add("add a category", [](Harness& h, qm::frmMain& m) {
        h.dialogs.inputAnswers.push_back("Garden \"tools\", misc");
        h.click(m.cmdAddCategory);
    });
    add("add its first item", [](Harness& h, qm::frmMain& m) {
        h.dialogs.inputAnswers.push_back("Rake");
        h.click(m.cmdAddAsset);
    });
    add("type the item's cost", [](Harness& h, qm::frmMain& m) { forms::input::text(h.runtime, m.T1, U"7.5"); });
    add("open Antiques", [](Harness& h, qm::frmMain& m) { open(h, m, "Antiques"); });
    add("type a value", [](Harness& h, qm::frmMain& m) { type(h, m, 1, 2, U"1200"); });
    add("open Records", [](Harness& h, qm::frmMain& m) { open(h, m, "Records"); });
    add("rename Records", [](Harness& h, qm::frmMain& m) {
        h.dialogs.inputAnswers.push_back("Vinyl records");
        h.click(m.cmdRenameCat);
    });
    add("type in the renamed category", [](Harness& h, qm::frmMain& m) { type(h, m, 1, 3, U" flea market"); });
    add("open Lamps", [](Harness& h, qm::frmMain& m) { open(h, m, "Lamps"); });
    add("delete Lamps", [](Harness& h, qm::frmMain& m) {
        h.dialogs.msgAnswers.push_back(forms::vbYes);
        h.click(m.cmdDeleteCategory);
    });
    add("open Zoo tickets", [](Harness& h, qm::frmMain& m) { open(h, m, "Zoo tickets 🎟"); });
    add("delete all its items", [](Harness& h, qm::frmMain& m) {
        h.dialogs.msgAnswers.push_back(forms::vbYes);
        menu(h, m, "mnuDelItems");
    });
    add("open Watches", [](Harness& h, qm::frmMain& m) { open(h, m, "Watches"); });
    add("type a warranty date", [](Harness& h, qm::frmMain& m) { type(h, m, 2, 5, U"12/31/2030"); });
    add("open the first category", [](Harness& h, qm::frmMain& m) { open(h, m, " Attic boxes"); });
    add("delete it", [](Harness& h, qm::frmMain& m) {
        h.dialogs.msgAnswers.push_back(forms::vbYes);
        h.click(m.cmdDeleteCategory);
    });
    add("open Tools", [](Harness& h, qm::frmMain& m) { open(h, m, "Tools"); });
    add("type a name", [](Harness& h, qm::frmMain& m) { type(h, m, 3, 1, U"3"); });
    add("walk", walk);
    add("type once more", [](Harness& h, qm::frmMain& m) { type(h, m, 1, 6, U" (boxed)"); });
    add("exit", [](Harness& h, qm::frmMain& m) { h.click(m.cmdExit); });
    return s;
}

class CountingOutput : public forms::OutputStream {
public:
    CountingOutput(CountingFiles& owner, std::unique_ptr<forms::OutputStream> out, std::string path)
        : owner_(owner), out_(std::move(out)), path_(std::move(path)) {}
    void write(const char* data, std::size_t n) override {
        // A write cut short by the end of the process: half its bytes reach the file.
        if (owner_.count() == owner_.cutWriteAt) out_->write(data, n / 2);
        owner_.op(FileOp::Write, path_);
        out_->write(data, n);
        content_.append(data, n);
    }
    void commit() override {
        owner_.op(FileOp::Commit, path_);
        out_->commit();
        owner_.committed[fs::path(path_).filename().string()].push_back(content_);
    }
private:
    CountingFiles& owner_;
    std::unique_ptr<forms::OutputStream> out_;
    std::string path_;
    std::string content_;
};

} // namespace

void writeStartDatabase(Harness& h) {
    h.writeIndex(kCategoryNames);
    for (std::size_t c = 0; c < kCategoryNames.size(); ++c) {
        Table items;
        // One category without items, and one whose file is written and read in several pieces.
        const bool big = c == 2;
        const std::size_t n = c == 9 ? 0 : big ? 900 : 2 + (c * 7) % 19;
        for (std::size_t i = 0; i < n; ++i) {
            items.push_back(itemRow(c, i));
            if (big) items.back()[3] += std::string(40, '.');
        }
        h.writeCategory(storage::FileStem(kCategoryNames[c]), items);
    }
}

const std::vector<Step>& sessionSteps() {
    static const std::vector<Step> steps = makeSteps();
    return steps;
}

std::string stepName(std::size_t i) {
    return i == 0 ? std::string("start") : "step " + std::to_string(i) + " (" + sessionSteps()[i - 1].what + ")";
}

const char* opName(FileOp op) {
    switch (op) {
    case FileOp::OpenRead: return "open for reading";
    case FileOp::OpenWrite: return "open for writing";
    case FileOp::Write: return "write";
    case FileOp::Commit: return "close and rename";
    default: return "remove";
    }
}

void CountingFiles::op(FileOp kind, const std::string& path) {
    long n = count_++;
    if (hook) hook(n, kind, path);
}

std::unique_ptr<forms::InputStream> CountingFiles::openRead(const std::string& path) {
    op(FileOp::OpenRead, path);
    return StdFiles::openRead(path);
}

std::unique_ptr<forms::OutputStream> CountingFiles::openReplace(const std::string& path) {
    op(FileOp::OpenWrite, path);
    return std::make_unique<CountingOutput>(*this, StdFiles::openReplace(path), path);
}

void CountingFiles::remove(const std::string& path) {
    op(FileOp::Remove, path);
    StdFiles::remove(path);
}

void CountingFiles::removeMatching(const std::string& folder, const std::string& suffix) {
    op(FileOp::Remove, folder + "*" + suffix);
    StdFiles::removeMatching(folder, suffix);
}

Rig::Rig(const std::string& dataPlace, const std::string& floppyPlace, forms::FilesPort& files)
    : h(dataPlace, floppyPlace),
      platform{h.runtime, files, h.dialogs, h.pictures, h.printer, h.currency, h.program, {dataPlace, floppyPlace}},
      main(std::make_unique<qm::frmMain>(platform, h.globals)) {}

void runSession(Harness& h, qm::frmMain& m, const std::function<bool(std::size_t)>& before) {
    if (before && !before(0)) return;
    m.Start();
    const auto& steps = sessionSteps();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (before && !before(i + 1)) return;
        steps[i].run(h, m);
    }
}

std::map<std::string, std::string> folderContents(const fs::path& dir) {
    auto out = qmtest::folderBytes(dir);
    std::erase_if(out, [](const auto& e) { return forms::StdFiles::isTemporaryName(e.first); });
    return out;
}

void checkWholeFiles(const fs::path& dir, const std::map<std::string, std::set<std::string>>& versions, Tally& tally,
                     const std::string& kind, const std::string& where) {
    for (const auto& [name, bytes] : folderContents(dir)) {
        auto v = versions.find(name);
        if (v == versions.end() || !v->second.count(bytes))
            tally.add(kind, where + ": " + name + " (" + std::to_string(bytes.size()) + " bytes)");
    }
}

void copyFolder(const fs::path& from, const fs::path& to) {
    fs::copy(from, to, fs::copy_options::overwrite_existing | fs::copy_options::recursive);
}

Restart restartOn(const std::string& dataPlace, const std::string& floppyPlace) {
    Harness fresh(dataPlace, floppyPlace);
    auto& m = fresh.start();
    Restart r;
    r.list = m.lstCategory.items();
    r.count = m.CategoryCount.asText();
    r.tables = qmtest::openEveryCategory(fresh);
    return r;
}

namespace {
// The start database, written once and copied for each run.
const qmtest::TempDir& startDatabase() {
    static qmtest::TempDir data, floppy;
    static bool made = false;
    if (!made) {
        Harness writer(data.place(), floppy.place());
        writeStartDatabase(writer);
        made = true;
    }
    return data;
}
} // namespace

Folders::Folders() { copyFolder(startDatabase().path(), data.path()); }

const Reference& reference() {
    static Reference r;
    static bool done = false;
    if (done) return r;
    Folders f;
    for (const auto& [name, bytes] : folderContents(f.data.path())) r.versions[name].insert(bytes);
    {
        CountingFiles files;
        files.hook = [&](long n, FileOp op, const std::string&) {
            if (op != FileOp::OpenRead) r.writeOps.push_back(n);
        };
        Rig rig(f.data.place(), f.floppy.place(), files);
        qm::frmMain& m = *rig.main;
        runSession(rig.h, m, [&](std::size_t) {
            r.stepStart.push_back(files.count());
            r.lists.push_back(m.lstCategory.items());
            r.selected.push_back(m.lstCategory.Text());
            return true;
        });
        r.lists.push_back(m.lstCategory.items());
        r.selected.push_back(m.lstCategory.Text());
        r.lists[0] = r.lists[1]; // nothing is listed before the start, and the start changes no file
        r.totalOps = files.count();
        for (const auto& [name, contents] : files.committed)
            for (const auto& c : contents) r.versions[name].insert(c);
    }
    r.end = restartOn(f.data.place(), f.floppy.place());
    done = true;
    return r;
}

std::size_t stepOfOp(const Reference& r, long n) {
    std::size_t s = 0;
    while (s + 1 < r.stepStart.size() && r.stepStart[s + 1] <= n) ++s;
    return s;
}

bool toldUnsaved(const qmtest::ScriptedDialogs& d, std::size_t since) {
    for (std::size_t i = since; i < d.messages.size(); ++i)
        if (d.messages[i].text.find("could not be saved") != std::string::npos) return true;
    return false;
}

void runSessionRetrying(Harness& h, qm::frmMain& m, const Reference& ref) {
    m.Start();
    const auto& steps = sessionSteps();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const std::size_t told = h.dialogs.messages.size();
        steps[i].run(h, m);
        if (m.ended() || !toldUnsaved(h.dialogs, told)) continue;
        if (m.lstCategory.items() != ref.lists[i + 2] || m.lstCategory.Text() != ref.selected[i + 2]) steps[i].run(h, m);
        // A walk that was stopped keeps the category it could not leave open, and
        // its repeat ends there: the user goes back to the one they were in.
        if (!m.ended() && !ref.selected[i + 2].empty() && m.lstCategory.Text() != ref.selected[i + 2])
            open(h, m, ref.selected[i + 2]);
    }
}

std::size_t Tally::count(const std::string& kind) const {
    auto it = byKind.find(kind);
    return it == byKind.end() ? 0 : it->second.size();
}

std::string Tally::report(const std::string& kind) const {
    auto it = byKind.find(kind);
    if (it == byKind.end()) return "";
    // One example of each different outcome: the text behind the place.
    std::string s = kind + ": " + std::to_string(it->second.size()) + " times, for example:";
    std::set<std::string> outcomes;
    for (const auto& where : it->second) {
        const std::size_t colon = where.find(": ");
        if (!outcomes.insert(colon == std::string::npos ? where : where.substr(colon)).second) continue;
        s += "\n  " + where;
        if (outcomes.size() == 6) break;
    }
    return s;
}

std::string describeList(const std::vector<std::string>& list) {
    std::string s = std::to_string(list.size()) + " entries:";
    for (const auto& n : list) s += " [" + n + "]";
    return s;
}

} // namespace robust

#include "session.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "forms/failure.h"
#include "forms/input.h"
#include "storage/places.h"

namespace robust {

namespace fs = std::filesystem;
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

void open(Harness& h, qm::frmMain& m, const std::string& name) {
    const auto& items = m.lstCategory.items();
    auto it = std::find(items.begin(), items.end(), name);
    if (it == items.end()) throw std::logic_error("the session expects a category named " + name);
    forms::input::selectEntry(h.runtime, m.lstCategory, static_cast<int>(it - items.begin()));
}

using Run = std::function<void(Harness&, qm::frmMain&)>;

Run openStep(std::string name) {
    return [name](Harness& h, qm::frmMain& m) { open(h, m, name); };
}

// Text typed into the editor: on the cell clicked first, or where the editor stands (row 0).
Run typeStep(int row, int col, std::u32string text) {
    return [=](Harness& h, qm::frmMain& m) {
        if (row > 0) forms::input::clickCell(h.runtime, m.FG1, row, col);
        forms::input::text(h.runtime, m.T1, text);
    };
}

// A command's button, after a click on the item of a row (0: none), its prompt
// answered with the name or, for none, its question with Yes.
Run command(forms::Button qm::frmMain::*button, std::string name = "", int row = 0) {
    return [=](Harness& h, qm::frmMain& m) {
        if (row > 0) forms::input::clickCell(h.runtime, m.FG1, row, 1);
        if (name.empty()) h.dialogs.msgAnswers.push_back(forms::vbYes);
        else h.dialogs.inputAnswers.push_back(name);
        h.click(m.*button);
    };
}

std::vector<Step> makeSteps() {
    using F = qm::frmMain;
    // A walk: the focus goes elsewhere, then back to the list.
    const Run walk = [](Harness& h, F& m) {
        h.focus(m.cmdAddAsset);
        h.focus(m.lstCategory);
    };
    return {
        {"open Car parts", openStep("Car parts")},
        {"type a cost", typeStep(2, 1, U"19.99")},
        {"type a description with a comma and quotes", typeStep(3, 6, U", boxed \"new\"")},
        {"open Kitchen", openStep("Kitchen")},
        {"add an item", command(&F::cmdAddAsset, "Lamp, desk")},
        {"type its cost", typeStep(0, 0, U"45")},
        {"rename an item", command(&F::cmdRenameItem, "Kettle ✓", 1)},
        {"delete an item", command(&F::cmdDeleteAsset, "", 2)},
        {"walk", walk},
        {"add a category", command(&F::cmdAddCategory, "Garden \"tools\", misc")},
        {"add its first item", command(&F::cmdAddAsset, "Rake")},
        {"type the item's cost", typeStep(0, 0, U"7.5")},
        {"open Antiques", openStep("Antiques")},
        {"type a value", typeStep(1, 2, U"1200")},
        {"open Records", openStep("Records")},
        {"rename Records", command(&F::cmdRenameCat, "Vinyl records")},
        {"type in the renamed category", typeStep(1, 3, U" flea market")},
        {"open Lamps", openStep("Lamps")},
        {"delete Lamps", command(&F::cmdDeleteCategory)},
        {"open Zoo tickets", openStep("Zoo tickets 🎟")},
        {"delete all its items",
         [](Harness& h, F& m) {
             h.dialogs.msgAnswers.push_back(forms::vbYes);
             forms::input::menu(h.runtime, *m.form.menuBar().find("mnuDelItems"));
         }},
        {"open Watches", openStep("Watches")},
        {"type a warranty date", typeStep(2, 5, U"12/31/2030")},
        {"open the first category", openStep(" Attic boxes")},
        {"delete it", command(&F::cmdDeleteCategory)},
        {"open Tools", openStep("Tools")},
        {"type a name", typeStep(3, 1, U"3")},
        {"walk", walk},
        {"type once more", typeStep(1, 6, U" (boxed)")},
        {"exit", [](Harness& h, F& m) { h.click(m.cmdExit); }},
    };
}

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

void countEveryOperation(Harness& h) {
    h.files.tellNoStates();
    h.files.recordCommits = true;
}

void runSession(Harness& h, const std::function<bool(std::size_t)>& before) {
    qm::frmMain& m = h.make();
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

Versions versionsIn(const fs::path& dir) {
    Versions v;
    for (const auto& [name, bytes] : folderContents(dir)) v[name].insert(bytes);
    return v;
}

void addVersions(Versions& to, const Versions& more) {
    for (const auto& [name, contents] : more) to[name].insert(contents.begin(), contents.end());
}

void checkWholeFiles(const fs::path& dir, const Versions& versions, Tally& tally, const std::string& kind,
                     const std::string& where) {
    for (const auto& [name, bytes] : folderContents(dir)) {
        auto v = versions.find(name);
        if (v == versions.end() || !v->second.count(bytes))
            tally.add(kind, where + ": " + name + " (" + std::to_string(bytes.size()) + " bytes)");
    }
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

Folders::Folders() {
    // The start database, written once and copied for each run.
    static const qmtest::TempDir start, floppy;
    [[maybe_unused]] static const bool made = [] {
        Harness writer(start.place(), floppy.place());
        writeStartDatabase(writer);
        return true;
    }();
    fs::copy(start.path(), data.path(), fs::copy_options::overwrite_existing | fs::copy_options::recursive);
}

namespace {
Reference measureReference() {
    Reference r;
    Folders f;
    r.versions = versionsIn(f.data.path());
    {
        Harness h(f.data.place(), f.floppy.place());
        countEveryOperation(h);
        h.files.hook = [&](long n, qmtest::FaultyFiles::Op op, const std::string&) {
            if (op != qmtest::FaultyFiles::OpenRead) r.writeOps.push_back(n);
        };
        auto note = [&] {
            r.lists.push_back(h.m().lstCategory.items());
            r.selected.push_back(h.m().lstCategory.Text());
        };
        runSession(h, [&](std::size_t) {
            r.stepStart.push_back(h.files.operations());
            note();
            return true;
        });
        note();
        r.lists[0] = r.lists[1]; // nothing is listed before the start, and the start changes no file
        r.totalOps = h.files.operations();
        addVersions(r.versions, h.files.committed);
    }
    r.end = restartOn(f.data.place(), f.floppy.place());
    return r;
}

// Whether a message since the n-th said that a category could not be saved,
// added, renamed or deleted.
bool toldUnsaved(const qmtest::ScriptedDialogs& d, std::size_t since) {
    for (std::size_t i = since; i < d.messages.size(); ++i)
        if (d.messages[i].text.find("\" could not be ") != std::string::npos) return true;
    return false;
}
} // namespace

const Reference& reference() {
    static const Reference r = measureReference();
    return r;
}

std::size_t stepOfOp(const Reference& r, long n) {
    std::size_t s = 0;
    while (s + 1 < r.stepStart.size() && r.stepStart[s + 1] <= n) ++s;
    return s;
}

void runSessionRetrying(Harness& h, const Reference& ref) {
    qm::frmMain& m = h.make();
    m.Start();
    const auto& steps = sessionSteps();
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const std::size_t told = h.dialogs.messages.size();
        steps[i].run(h, m);
        if (m.ended() || !toldUnsaved(h.dialogs, told)) continue;
        // An Exit that could not store the open category has kept the program open.
        if (m.lstCategory.items() != ref.lists[i + 2] || m.lstCategory.Text() != ref.selected[i + 2] || steps[i].what == "exit")
            steps[i].run(h, m);
        // A walk that was stopped keeps the category it could not leave open, and
        // its repeat ends there: the user goes back to the one they were in.
        if (!m.ended() && !ref.selected[i + 2].empty() && m.lstCategory.Text() != ref.selected[i + 2])
            open(h, m, ref.selected[i + 2]);
    }
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

void Tally::finish(const char* property, int value, const std::string& figure, const std::string& tolerated) const {
    std::printf("%s\n", figure.c_str());
    ::testing::Test::RecordProperty(property, value);
    for (const auto& [kind, where] : byKind)
        if (kind != tolerated) ADD_FAILURE() << report(kind);
}

std::vector<long> pointsOr(const char* replay, std::vector<long> points) {
    if (const char* one = std::getenv(replay)) return {std::atol(one)};
    return points;
}

std::string describeList(const std::vector<std::string>& list) {
    std::string s = std::to_string(list.size()) + " entries:";
    for (const auto& n : list) s += " [" + n + "]";
    return s;
}

} // namespace robust

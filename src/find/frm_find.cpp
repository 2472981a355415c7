#include "find/frm_find.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "find/text_fold.h"
#include "find/warranty_dates.h"
#include "forms/declaration.h"
#include "forms/input.h"
#include "mainwindow/frm_main.h"

namespace qm {

namespace {

constexpr int kItemCol = 0, kWhereCol = 3, kWarrantyCol = 5, kSerialCol = 6;

// The captions of lstWarrantyChoice, in the order of WarrantyChoice.
constexpr const char* kChoices[] = {"warranty ends within N days", "warranty has ended", "any"};

void Fill(forms::ListBox& list, const std::vector<std::string>& entries) {
    list.Clear();
    for (const std::string& e : entries) list.AddItem(e);
}

// The switch a click on the category's entry makes (the list's gain of focus
// with its walk, then the selection), then the editor on the cell, laid there
// the way it follows a move of the current cell. The item's name is no cell
// the editor opens on: its row's first cell then.
void OpenAt(frmMain& m, const frmFind::Target& t) {
    forms::Runtime& rt = m.platform.runtime;
    const auto& names = m.lstCategory.items();
    const auto at = std::find(names.begin(), names.end(), t.category);
    if (at == names.end()) return;
    forms::input::selectEntry(rt, m.lstCategory, static_cast<int>(at - names.begin()));
    // The switch could not leave the category open before (it could not be stored).
    if (m.lstCategory.Text() != t.category || m.CurrentCategory != t.category) return;
    rt.dispatch([&] {
        if (t.row >= m.FG1.Rows() || !m.FG1.Visible()) return;
        const forms::Control* before = rt.focused();
        m.FG1.setCol(std::max(t.col, m.FG1.FixedCols()));
        m.FG1.setRow(t.row);
        // A move that handed the focus to the grid opens the editor once the
        // event ends; one that found the focus there already does not.
        if (rt.focused() != before) return;
        if (m.FG1.hasFocus()) m.FG1_GotFocus();
        else if (!m.T1.hasFocus() || !m.T1.Visible()) m.FG1.TrySetFocus();
    });
}

} // namespace

frmFind::frmFind(frmMain& m)
    : main(m), form(m.platform.runtime, "frmFind"), lblFind(form, nullptr, "lblFind"), txtFind(form, nullptr, "txtFind"),
      lstResults(form, nullptr, "lstResults"), lblCount(form, nullptr, "lblCount"), lblWarranty(form, nullptr, "lblWarranty"),
      lstWarrantyChoice(form, nullptr, "lstWarrantyChoice"), lblDays(form, nullptr, "lblDays"), txtDays(form, nullptr, "txtDays"),
      lstWarranty(form, nullptr, "lstWarranty"), cmdGo(form, nullptr, "cmdGo"), cmdClose(form, nullptr, "cmdClose"),
      index_(m.platform.files) {
    declareLayout();
    form.announce();
    lstWarrantyChoice.setSelected(static_cast<int>(WarrantyChoice::EndsWithin));
}

frmFind::~frmFind() { form.retire(); }

void frmFind::declareLayout() {
    const forms::Font comic{"Comic Sans MS", 8.25, false};
    forms::declareWindow(form, {.caption = "Find", .font = comic, .clientWidth = 7200, .clientHeight = 6855},
                         [this] { cmdClose_Click(); });
    auto place = [&](forms::Control& c, int left, int top, int width, int height, int tab) {
        c.move(left, top, width, height);
        c.setTabIndex(tab);
        c.setFont(comic);
    };
    place(lblFind, 120, 165, 1215, 255, 0);
    lblFind.setCaption("Find what:");
    place(txtFind, 1440, 120, 5640, 315, 1);
    place(lstResults, 120, 555, 6960, 2295, 2);
    place(lblCount, 120, 2925, 6960, 255, 3);
    place(lblWarranty, 120, 3360, 1215, 255, 4);
    lblWarranty.setCaption("Warranty:");
    place(lstWarrantyChoice, 1440, 3300, 3255, 675, 5);
    for (const char* c : kChoices) lstWarrantyChoice.AddItem(c);
    place(lblDays, 4800, 3360, 1095, 255, 6);
    lblDays.setCaption("N (days):");
    place(txtDays, 5985, 3300, 1095, 315, 7);
    txtDays.setText("30");
    place(lstWarranty, 120, 4080, 6960, 2055, 8);
    forms::declareButton(cmdGo, "&Go to", 120, 6240, 1455, 495, 9, [this] { cmdGo_Click(); });
    cmdGo.Default = true;
    forms::declareButton(cmdClose, "&Close", 5625, 6240, 1455, 495, 10, [this] { cmdClose_Click(); });
    cmdClose.Cancel = true;
    // What a screen reader says for each box and list, and the label beside it.
    const std::pair<forms::Control*, forms::Label*> named[] = {{&txtFind, &lblFind}, {&lstResults, nullptr}, {&lstWarrantyChoice, &lblWarranty},
                                                               {&txtDays, &lblDays}, {&lstWarranty, nullptr}};
    const char* names[] = {"Find what", "Results", "Warranty", "Number of days", "Warranty list"};
    for (std::size_t i = 0; i < std::size(names); ++i) {
        named[i].first->setAccessibleName(names[i]);
        if (named[i].second) named[i].first->setLabelledBy(named[i].second);
    }

    txtFind.Change = [this] { txtFind_Change(); };
    lstWarrantyChoice.Click = [this] { ShowWarranty(); };
    txtDays.Change = [this] { ShowWarranty(); };
    lstResults.DblClick = [this] { GoTo(lstResults); };
    lstWarranty.DblClick = [this] { GoTo(lstWarranty); };
    // Enter goes to an entry of the list the user works with.
    for (forms::Control* c : {static_cast<forms::Control*>(&txtFind), static_cast<forms::Control*>(&lstResults)})
        c->GotFocus = [this] { lastList_ = &lstResults; };
    for (forms::Control* c : {static_cast<forms::Control*>(&lstWarrantyChoice), static_cast<forms::Control*>(&txtDays),
                              static_cast<forms::Control*>(&lstWarranty)})
        c->GotFocus = [this] { lastList_ = &lstWarranty; };
}

void frmFind::txtFind_Change() {
    resultTargets_.clear();
    const std::string needle = Fold(txtFind.Text());
    std::vector<std::string> entries;
    if (!needle.empty()) {
        index_.refresh(main);
        std::vector<FindIndex::Cell> cells = index_.search(needle, kShownResults + 1);
        const bool more = cells.size() > static_cast<std::size_t>(kShownResults);
        if (more) cells.resize(kShownResults);
        for (const FindIndex::Cell& c : cells) {
            const std::string_view text = index_.text(c.category, c.row, c.col);
            const std::size_t at = Fold(text).find(needle);
            const auto [from, to] = OriginalSpan(text, at, at + needle.size());
            std::string entry = index_.name(c.category);
            entry.append(" / ").append(index_.text(c.category, c.row, kItemCol)).append(" / ");
            entry.append(frmMain::kColumnHeadings[c.col]).append(": ");
            entry.append(text.substr(0, from)).append("[").append(text.substr(from, to - from)).append("]").append(text.substr(to));
            entries.push_back(std::move(entry));
            resultTargets_.push_back(Target{index_.name(c.category), c.row, c.col,
                                            std::string(index_.text(c.category, c.row, kItemCol)), std::string(text)});
        }
        lblCount.setCaption(more ? "More than " + std::to_string(kShownResults) + " found: the first " +
                                       std::to_string(kShownResults) + " are shown."
                                 : cells.empty() ? "Not found." : std::to_string(cells.size()) + " found.");
    } else {
        lblCount.setCaption("");
    }
    Fill(lstResults, entries);
}

void frmFind::ShowWarranty() {
    warrantyTargets_.clear();
    std::vector<std::string> entries;
    const int choice = lstWarrantyChoice.ListIndex();
    int days = 0;
    const std::string& n = txtDays.Text();
    const auto read = std::from_chars(n.data(), n.data() + n.size(), days);
    if (choice == static_cast<int>(WarrantyChoice::EndsWithin) && (read.ec != std::errc() || read.ptr != n.data() + n.size() || days < 0)) {
        entries.push_back("N is not a number of days.");
        warrantyTargets_.emplace_back();
        Fill(lstWarranty, entries);
        return;
    }
    index_.refresh(main);
    const forms::DateRules rules = main.platform.currency.dateRules();
    const int today = main.platform.currency.today();
    struct Line {
        int day;
        std::string text;
        Target target;
    };
    std::vector<Line> dated, unread;
    for (int k = 0; k < index_.categories(); ++k) {
        index_.forEachRow(k, [&](int row, const std::string_view* cells) {
            const std::string_view date = cells[kWarrantyCol];
            if (date.find_first_not_of(' ') == std::string_view::npos) return; // no warranty noted
            const std::optional<int> day = ReadDate(date, rules);
            if (day) {
                const bool shown = choice == static_cast<int>(WarrantyChoice::Any) ||
                                   (choice == static_cast<int>(WarrantyChoice::Ended) && *day < today) ||
                                   (choice == static_cast<int>(WarrantyChoice::EndsWithin) && *day >= today && *day - today <= days);
                if (!shown) return;
            }
            std::string text(date);
            text.append(" - ").append(index_.name(k)).append(" / ").append(cells[kItemCol]);
            text.append(" - serial: ").append(cells[kSerialCol]).append(" - bought at: ").append(cells[kWhereCol]);
            Target target{index_.name(k), row, kWarrantyCol, std::string(cells[kItemCol]), std::string(date)};
            (day ? dated : unread).push_back(Line{day.value_or(0), std::move(text), std::move(target)});
        });
    }
    std::stable_sort(dated.begin(), dated.end(), [](const Line& a, const Line& b) { return a.day < b.day; });
    // A list of a whole big inventory helps nobody: the first ones of each
    // section, and how many more there are.
    auto show = [&](std::vector<Line>& lines) {
        for (std::size_t i = 0; i < lines.size() && i < kShownWarranties; ++i) {
            entries.push_back(std::move(lines[i].text));
            warrantyTargets_.push_back(std::move(lines[i].target));
        }
        if (lines.size() > kShownWarranties) {
            entries.push_back("and " + std::to_string(lines.size() - kShownWarranties) + " more");
            warrantyTargets_.emplace_back();
        }
    };
    show(dated);
    if (!unread.empty()) {
        entries.emplace_back("date not understood");
        warrantyTargets_.emplace_back();
        show(unread);
    }
    Fill(lstWarranty, entries);
}

void frmFind::cmdGo_Click() { GoTo(*lastList_); }

void frmFind::GoTo(const forms::ListBox& list) {
    const std::vector<std::optional<Target>>& targets = &list == &lstWarranty ? warrantyTargets_ : resultTargets_;
    int i = list.ListIndex();
    if (i < 0 || i >= static_cast<int>(targets.size()) || !targets[static_cast<std::size_t>(i)]) {
        const auto first = std::find_if(targets.begin(), targets.end(), [](const auto& t) { return t.has_value(); });
        if (i >= 0 || first == targets.end()) return;
        i = static_cast<int>(first - targets.begin());
    }
    Target t = *targets[static_cast<std::size_t>(i)];
    // The list was made from the items as they stood then: one added, removed
    // or changed since, here or by another program, moves the cell. The lists
    // are made again and the same cell of the same item is gone to where it stands now.
    if (!StillThere(t)) {
        txtFind_Change();
        ShowWarranty();
        const auto same = std::find_if(targets.begin(), targets.end(), [&](const auto& n) {
            return n && n->category == t.category && n->col == t.col && n->item == t.item && n->text == t.text;
        });
        if (same == targets.end()) {
            main.Message("The items have changed since this list was made: \"" + t.item + "\" no longer holds \"" + t.text +
                         "\" in \"" + t.category + "\". The lists are shown anew.");
            return;
        }
        t = **same;
    }
    // After the event that asked: the switch runs as the user's own click on the list.
    frmMain& m = main;
    m.platform.runtime.post([&m, t] { OpenAt(m, t); });
}

bool frmFind::StillThere(const Target& t) {
    index_.refresh(main);
    for (int k = 0; k < index_.categories(); ++k)
        if (index_.name(k) == t.category)
            return t.row <= index_.rows(k) && index_.text(k, t.row, kItemCol) == t.item && index_.text(k, t.row, t.col) == t.text;
    return false;
}

void frmFind::cmdClose_Click() { main.UnloadFind(); }

} // namespace qm

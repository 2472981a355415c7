#pragma once
// What tests compare: the cells of a grid, the files of a folder, the whole
// database as a fresh start of the program shows it.
#include <array>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "forms/grid.h"
#include "forms/std_files.h"
#include "support/scripted_platform.h"

namespace qmtest {

using Row = std::vector<std::string>;
using Table = std::vector<Row>;

// Every cell of the grid, row by row, heading row first.
inline Table gridCells(const forms::Grid& g) {
    Table t(static_cast<std::size_t>(g.Rows()));
    for (int r = 0; r < g.Rows(); ++r)
        for (int c = 0; c < g.Cols(); ++c) t[static_cast<std::size_t>(r)].emplace_back(g.TextMatrix(r, c));
    return t;
}

// The heading row of a category file as the program writes it.
inline Row headingRow() {
    return {"Item", "Original Cost", "Current Value", "Location Purchased", "Date Purchased", "Warranty Expiration",
            "Serial Number / Description"};
}

// A heading row and the given items, each padded to seven cells.
inline Table withHeading(const Table& items) {
    Table t{headingRow()};
    for (Row r : items) {
        r.resize(7);
        t.push_back(r);
    }
    return t;
}

// n items: "Item i", cost i, value i % 7, "Shop", "2001", no warranty, "SNi" and the note.
inline Table numberedItems(int n, const std::string& note = "") {
    Table t;
    for (int i = 1; i <= n; ++i)
        t.push_back({"Item " + std::to_string(i), std::to_string(i), std::to_string(i % 7), "Shop", "2001", "", "SN" + std::to_string(i) + note});
    return t;
}

// Names of the entries of a folder.
inline std::set<std::string> folderNames(const std::filesystem::path& dir) {
    std::set<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(dir)) names.insert(e.path().filename().string());
    return names;
}

// Every entry of a folder with its bytes ("<unreadable>" for one that can't be
// read, a folder among them); nothing for a folder that isn't there.
inline std::map<std::string, std::string> folderBytes(const std::filesystem::path& dir) {
    std::map<std::string, std::string> out;
    if (!std::filesystem::exists(dir)) return out;
    for (const auto& n : folderNames(dir)) out[n] = readFile(dir / n).value_or("<unreadable>");
    return out;
}

// Files being written that were never put in place.
inline std::vector<std::string> leftoverTemporaries(const std::filesystem::path& dir) {
    std::vector<std::string> found;
    for (const auto& n : folderNames(dir))
        if (forms::StdFiles::isTemporaryName(n)) found.push_back(n);
    return found;
}

// A category file in a form the program never writes (LF line ends), so that
// any rewrite of it shows.
inline std::string lfCategory(const std::vector<std::string>& itemLines) {
    std::string s = std::string(kHeadingLine) + "\n";
    for (const auto& l : itemLines) s += l + "\n";
    return s;
}

// Lines joined with CR LF after each.
inline std::string crlf(const std::vector<std::string>& lines) {
    std::string s;
    for (const auto& l : lines) s += l + "\r\n";
    return s;
}

// The window as named facts, written and read in one line:
// "A B* | B \"B\" | Item x | 2 at 1,6 [hidden] [disabled] fixed 11 [editor] focus T1"
// (the list with its selection starred, the open category and the heading's
// caption, the grid's first column up to 50 rows, items counted, current cell,
// the grid's state and fixed rows and columns, the cell editor, the focus).
struct WindowFacts {
    static constexpr std::array<const char*, 12> kNames{"list",   "open",     "caption", "first column", "rows",   "cell",
                                                        "hidden", "disabled", "fixed",   "editor",       "focus", "unread"};
    std::array<std::string, 12> fact;
    WindowFacts(const std::string& line) {
        static const std::regex form(R"re(^(.*?) ?\| (\S+) "(.*)" \|(.*) \| (\d+) at (\S+)( hidden)?( disabled)? fixed (\d+)( editor)? focus (\S+)$)re");
        std::smatch got;
        if (!std::regex_match(line, got, form)) fact[11] = line;
        else for (std::size_t i = 0; i < 11; ++i) fact[i] = got[i + 1].str();
    }
    WindowFacts(const char* line) : WindowFacts(std::string(line)) {}
    bool operator==(const WindowFacts&) const = default;
    std::string line() const {
        if (!fact[11].empty()) return fact[11];
        return fact[0] + (fact[0].empty() ? "" : " ") + "| " + fact[1] + " \"" + fact[2] + "\" |" + fact[3] + " | " + fact[4] + " at " + fact[5] +
               fact[6] + fact[7] + " fixed " + fact[8] + fact[9] + " focus " + fact[10];
    }
    friend void PrintTo(const WindowFacts& w, std::ostream* os) { *os << w.line(); }
};

// Each fact that differs, by name, as the window shows it beside what was expected.
inline testing::AssertionResult sameWindow(const char*, const char*, const WindowFacts& shown, const WindowFacts& expected) {
    if (shown == expected) return testing::AssertionSuccess();
    auto failure = testing::AssertionFailure() << "the window shows " << shown.line();
    for (std::size_t i = 0; i < WindowFacts::kNames.size(); ++i)
        if (shown.fact[i] != expected.fact[i])
            failure << "\n  " << WindowFacts::kNames[i] << ": \"" << shown.fact[i] << "\", expected \"" << expected.fact[i] << "\"";
    return failure;
}
#define EXPECT_WINDOW(h, expected) EXPECT_PRED_FORMAT2(qmtest::sameWindow, qmtest::window(h), qmtest::WindowFacts(expected))

inline WindowFacts window(const Harness& h) {
    const qm::frmMain& m = *h.main;
    const forms::Grid& g = m.FG1;
    std::ostringstream s;
    for (const auto& e : m.lstCategory.items()) s << e << (e == m.lstCategory.Text() ? "* " : " ");
    s << "| " << m.CurrentCategory.value_or("-") << " \"" << m.lblCategory.Caption() << "\" |";
    if (g.Rows() < 50)
        for (int r = 0; r < g.Rows(); ++r) s << " " << g.TextMatrix(r, 0);
    s << " | " << m.ItemRowCount << " at " << g.Row() << "," << g.Col() << (g.Visible() ? "" : " hidden")
      << (g.Enabled() ? "" : " disabled") << " fixed " << g.FixedRows() << g.FixedCols() << (m.T1.Visible() ? " editor" : "")
      << " focus " << (h.runtime.focused() ? h.runtime.focused()->name() : "-");
    return WindowFacts(s.str());
}

// A file's change time can't be set back: judged against a clock an hour
// ahead, every file's time is far enough back to be trusted.
constexpr std::int64_t kSettledNs = 3600'000'000'000;
inline void settle(Harness& h) { h.files.setClockAhead(kSettledNs); }

// Whether the program holds any file open.
inline bool anyFileOpen(const qm::frmMain& m) {
    for (int n = 1; n <= storage::FileTable::kMaxFiles; ++n)
        if (m.files.isOpen(n)) return true;
    return false;
}

// Counts the switches (runs of the list's click handling) from now on.
inline std::shared_ptr<int> countSwitches(qm::frmMain& m) {
    auto n = std::make_shared<int>(0);
    auto original = m.lstCategory.Click;
    m.lstCategory.Click = [n, original] {
        ++*n;
        original();
    };
    return n;
}

// Opens every category of a started program in turn, as clicks on the list
// would (without the walk a gain of focus runs), and collects what each shows.
inline std::map<std::string, Table> openEveryCategory(Harness& h) {
    std::map<std::string, Table> seen;
    qm::frmMain& m = h.m();
    for (int i = 0; i < m.lstCategory.ListCount(); ++i) {
        h.run([&] { m.lstCategory.setSelected(i); });
        seen[m.lstCategory.Text()] = gridCells(m.FG1);
    }
    return seen;
}

// What a new start of the program on the same folders shows in every category.
inline std::map<std::string, Table> categoriesAfterRestart(const Harness& h) { return openEveryCategory(*h.restart()); }

} // namespace qmtest

// The cell editor laid over the grid, below the window: the keys of its tables
// and the totals they change, keys reaching the grid while the editor is
// closed, and scrolling with the editor open. How Qt's keys become these is
// the GUI typing test's.
#include <gtest/gtest.h>

#include "forms/input.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
namespace key = forms::key;

namespace {

struct Editor : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;

    void SetUp() override {
        h.writeCategories({{"Tools",
                            {{"Hammer", "12", "10", "Store", "1/1/2000", "1/1/2001", "abc"},
                             {"Saw", "20", "15", "", "", "", ""},
                             {"Drill", "100", "80", "", "", "", "x"}}}});
        m = &h.startAndClick(0);
    }
    void press(int code, char32_t ch = 0) { forms::input::key(h.runtime, m->T1, code, 0, ch); }
    // Opens the editor on a cell the way a click does.
    void open(int row, int col) { forms::input::clickCell(h.runtime, m->FG1, row, col); }
    std::string cell(int r, int c) { return std::string(m->FG1.TextMatrix(r, c)); }
    bool at(int r, int c) { return m->FG1.Row() == r && m->FG1.Col() == c; }
    bool editorOpen() { return m->T1.Visible() && m->T1.hasFocus(); }
};

// ---- the keys of the editor's tables -------------------------------------------

// Garage open (kGarage) with an empty Kitchen beside it.
struct EditorKeys : Editor {
    void SetUp() override {
        h.writeCategories({{"Garage", kGarage}, {"Kitchen", {}}});
        m = &h.startAndClick(0);
    }
    void type(const std::string& s) {
        for (char c : s) press(c >= 'a' ? c - 32 : c, static_cast<char32_t>(c));
    }
};

// One key in the editor on a cell, with the caret at a place and some text
// typed first: where the editor is then, what the cell typed in holds, and the
// caret. Enter at the end asks for a new item, answered "Vice" (row 4).
struct KeyCase {
    const char* name;
    int row, col, caret; // caret -1: at the end, where a click leaves it
    const char* typed;
    int code;
    char32_t ch;
    int toRow, toCol;
    const char* typedCell;
    int caretAfter;
};
const int end = -1;
const KeyCase kKeys[] = {
    {"Backspace in the text", 1, 3, 2, "", key::Backspace, 8, 1, 3, "Sop", 1},
    {"Backspace at the start", 1, 3, 0, "", key::Backspace, 8, 1, 3, "Shop", 0},
    {"Delete in the text", 1, 3, 1, "", key::Delete, 0, 1, 3, "Sop", 1},
    {"A blank typed in the text", 1, 3, 2, "", key::Space, U' ', 1, 3, "Sh op", 3},
    {"Delete at the end", 1, 3, end, "", key::Delete, 0, 1, 3, "Shop", 4},
    {"Left inside the text", 1, 3, end, "", key::Left, 0, 1, 3, "Shop", 3},
    {"Left at the start: the cell before", 1, 4, 0, "", key::Left, 0, 1, 3, "2001", 4},
    {"Left at the start of column 1: the row above", 2, 1, 0, "", key::Left, 0, 1, 6, "1000", 3},
    {"Left at the first cell: nowhere", 1, 1, 0, "", key::Left, 0, 1, 1, "120.50", 0},
    {"Right inside the text", 1, 3, 1, "", key::Right, 0, 1, 3, "Shop", 2},
    {"Right at the end: the cell after", 1, 3, end, "", key::Right, 0, 1, 4, "Shop", 4},
    {"Right at the end of the last column: the row below", 1, 6, end, "", key::Right, 0, 2, 1, "SN1", 4},
    {"Right at the end of the last cell: nowhere", 3, 6, end, "", key::Right, 0, 3, 6, "abc", 3},
    {"Up with the caret inside", 2, 3, 1, "", key::Up, 0, 1, 3, "Shop", 4},
    {"Up in row 1: nowhere", 1, 2, end, "", key::Up, 0, 1, 2, "80", 0},
    {"Down with the caret inside", 1, 3, 1, "", key::Down, 0, 2, 3, "Shop", 4},
    {"Down in the last row: no new row", 3, 2, end, "", key::Down, 0, 3, 2, "5", 1},
    {"Home: the caret only", 1, 3, end, "", key::Home, 0, 1, 3, "Shop", 0},
    {"End: the caret only", 1, 3, 1, "", key::End, 0, 1, 3, "Shop", 4},
    {"Enter: the cell after", 1, 5, end, "", key::Enter, 13, 1, 6, "2003", 3},
    {"Enter at the end of a row: the row below", 1, 6, end, "", key::Enter, 13, 2, 1, "SN1", 4},
    {"Enter in the last cell: a new item", 3, 6, end, "", key::Enter, 13, 4, 1, "abc", 0},
    {"Enter with the caret inside: a new item", 1, 3, 2, "", key::Enter, 13, 4, 1, "Shop", 0},
    {"Esc: the text the cell had when entered", 1, 1, end, "99", key::Escape, 27, 1, 1, "120.50", 6},
};

void PrintTo(const KeyCase& k, std::ostream* os) { *os << k.name; }

class EditorKeyTable : public EditorKeys, public ::testing::WithParamInterface<KeyCase> {};

TEST_P(EditorKeyTable, MovesTheEditorAndEditsTheCell) {
    const KeyCase& k = GetParam();
    h.dialogs.inputAnswers.push_back("Vice");
    open(k.row, k.col);
    if (k.caret >= 0) forms::input::clickText(h.runtime, m->T1, k.caret);
    type(k.typed);
    press(k.code, k.ch);
    EXPECT_EQ((std::tuple{at(k.toRow, k.toCol), editorOpen(), std::string(m->T1.Text()) == cell(k.toRow, k.toCol), cell(k.row, k.col),
                          m->T1.SelStart(), m->FG1.Rows(), k.toRow < 4 || cell(4, 0) == "Vice"}),
              (std::tuple{true, true, true, std::string(k.typedCell), k.caretAfter, std::max(4, k.toRow + 1), true}));
}

INSTANTIATE_TEST_SUITE_P(Editor, EditorKeyTable, ::testing::ValuesIn(kKeys));

// A cost or value typed in a cell is in the totals at once.
TEST_F(EditorKeys, TypingACostOrValueChangesTheTotals) {
    open(1, 1);
    press(key::Home);
    type("1"); // 1120.50
    open(1, 2);
    type("0"); // 800
    EXPECT_EQ(std::string(m->txtCost.Text()) + "|" + std::string(m->txtValue.Text()), "$2,125.50|$1,804.99");
}

// Typed, left and entered again: Esc brings back the text of the second entry.
TEST_F(EditorKeys, EscBringsBackTheTextOfTheLastEntry) {
    open(1, 1);
    type("1");
    open(2, 1);
    open(1, 1);
    type("2");
    press(key::Escape, 27);
    EXPECT_EQ(cell(1, 1), "120.501");
}

// ---- the grid holding the focus with the editor closed ----------------------

struct GridKeys : Editor {
    // The grid holding the focus with the editor closed on the given cell, as a
    // scroll during the editor's opening leaves it.
    void gridOn(int row, int col) {
        open(row, col);
        auto got = m->FG1.GotFocus;
        m->FG1.GotFocus = nullptr;
        h.run([&] {
            m->T1.setVisible(false);
            m->FG1.SetFocus();
        });
        m->FG1.GotFocus = got;
        ASSERT_TRUE(m->FG1.hasFocus());
    }
    void gridPress(int code, char32_t ch = 0) { forms::input::gridKey(h.runtime, m->FG1, code, ch); }
};

// Keys pressed on the grid at a cell: what the cell holds after, whether the
// editor is open, and where the current cell is.
struct GridKeyCase {
    int row, col;
    std::vector<std::pair<int, char32_t>> keys;
    std::string text; // of the cell first pressed on
    bool editor;
    int endRow, endCol;
};

TEST_F(GridKeys, ActOnTheCellAsTheTableSays) {
    h.run([&] { m->FG1.setTextMatrix(2, 6, "ab"); });
    const GridKeyCase cases[] = {
        {1, 6, {{key::Backspace, 8}}, "a", true, 1, 6}, // up to two characters go
        {2, 6, {{key::Backspace, 8}}, "", true, 2, 6},
        {2, 5, {{key::Backspace, 8}}, "", false, 2, 5},
        {1, 6, {{'X', U'x'}}, "x", true, 1, 6}, // a character replaces the cell
        {1, 3, {{'A', 1}}, "Store", false, 1, 3}, // control characters do nothing
        {1, 3, {{key::Enter, 13}}, "Store", true, 1, 3},
        {2, 2, {{key::Right, 0}, {key::Up, 0}, {key::Up, 0}}, "15", false, 1, 3}, // arrows move, the editor stays shut
    };
    for (const GridKeyCase& c : cases) {
        gridOn(c.row, c.col);
        for (auto [code, ch] : c.keys) gridPress(code, ch);
        // With the editor shut the tag holds the cell's text.
        EXPECT_EQ(std::make_tuple(cell(c.row, c.col), c.editor ? editorOpen() : m->T1.Visible(), at(c.endRow, c.endCol), c.editor || m->FG1.Tag() == m->FG1.Text()),
                  std::make_tuple(c.text, c.editor, true, true)) << c.row << "," << c.col;
    }
    // Esc brings back what the cell held before the character.
    gridOn(1, 6);
    gridPress('Y', U'y');
    EXPECT_EQ(m->T1.SelStart(), 1);
    press(key::Escape, 27);
    EXPECT_EQ(cell(1, 6) + "|" + std::string(m->T1.Text()), "x|x");
}

// ---- scrolling with the editor open ---------------------------------------

struct Scrolling : Editor {
    // 30 items: nine item rows fit in the grid's view.
    void SetUp() override {
        h.writeCategories({{"Long", numberedItems(30)}});
        m = &h.startAndClick(0);
    }
    void scrollTo(int top) { forms::input::scrollGrid(h.runtime, m->FG1, top, m->FG1.LeftCol()); }
    bool editorOverCurrentCell() {
        bool over = false;
        h.run([&] {
            over = m->T1.Top() == m->FG1.Top() + m->FG1.CellTop() && m->T1.Left() == m->FG1.Left() + m->FG1.CellLeft();
        });
        return over;
    }
};

TEST_F(Scrolling, TheEditorComesBackOverItsCellOnlyIfTheCellIsStillInView) {
    struct Case {
        const char* what;
        int away, top;    // the first item rows the user scrolls to, in turn
        bool elsewhere;   // the focus was on a button (the editor parked)
        bool reopens;
        const forms::Control* focus;
    };
    const Case cases[] = {
        {"a row up, the cell stays in view", 16, 15, false, true, &m->T1},
        {"to the cell's own row", 16, 20, false, true, &m->T1},
        {"cell above the view", 16, 21, false, false, &m->FG1},
        {"cell below the view", 16, 1, false, false, &m->FG1},
        {"out of view and back", 1, 15, false, true, &m->T1},
        {"parked editor", 16, 15, true, false, &m->cmdAddAsset},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        h.focus(m->cmdAddAsset);
        open(20, 3); // the grid gains the focus: the editor opens
        ASSERT_TRUE(editorOpen());
        scrollTo(c.away);
        if (c.elsewhere) h.focus(m->cmdAddAsset);
        scrollTo(c.top);
        // The user's scroll is never undone; the editor, if open, is over its
        // cell with the caret at the end, so the next key appends.
        EXPECT_EQ((std::tuple{m->FG1.TopRow(), at(20, 3), m->T1.Visible(), h.runtime.focused(),
                              c.reopens && editorOverCurrentCell() && m->T1.SelStart() == m->T1.length()}),
                  std::make_tuple(c.top, true, c.reopens, c.focus, c.reopens));
    }
}

TEST_F(Scrolling, AClickAfterTheCellWasScrolledAwayOpensTheEditorAndAKeyAppends) {
    open(20, 3);
    scrollTo(1); // the grid keeps the focus, the editor is shut
    const std::string before = cell(5, 4);
    open(5, 4);
    press('Q', U'q');
    EXPECT_EQ((std::tuple{editorOpen(), editorOverCurrentCell(), cell(5, 4)}), std::make_tuple(true, true, before + "q"));
    press(key::Escape, 27);
    EXPECT_EQ(cell(5, 4), before);
}

TEST_F(Scrolling, AClickOnAPartlyShownCellOpensTheEditorEvenIfItsTextIsTheEditors) {
    open(18, 3); // "Shop", as the cell below it
    scrollTo(10); // row 19 shows only in part
    ASSERT_TRUE(editorOpen());
    open(19, 3);
    // Read in this order: the editor's place is read after the view.
    EXPECT_EQ((std::tuple{m->FG1.TopRow(), editorOpen(), editorOverCurrentCell(), m->T1.SelStart()}), std::make_tuple(11, true, true, 4));
}

} // namespace

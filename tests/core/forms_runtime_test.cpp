// The forms runtime: event order, nesting and deferred focus, and the control
// behaviour the program's procedures count on.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "forms/controls.h"
#include "forms/failure.h"
#include "forms/form.h"
#include "forms/grid.h"
#include "forms/listbox.h"
#include "forms/runtime.h"
#include "support/snapshots.h"

using namespace forms;
using Log = std::vector<std::string>;

namespace {

struct Fixture : ::testing::Test {
    Runtime rt;
    Form form{rt, "frmTest"};
    Frame frame{form, nullptr, "fraTest"};
    Grid grid{form, &frame, "FG1"};
    TextBox box{form, &frame, "T1"};
    ListBox list{form, &frame, "lstTest"};
    Log log;
    int clicks = 0;

    Fixture() {
        grid.setCols(3);
        grid.setRows(4);
        form.setVisible(true);
        grid.LeaveCell = [this] { log.push_back("Leave " + cell()); };
        grid.EnterCell = [this] { log.push_back("Enter " + cell()); };
        grid.GotFocus = [this] { log.push_back("GridGotFocus"); };
        box.GotFocus = [this] { log.push_back("BoxGotFocus"); };
        box.Change = [this] { log.push_back("Change " + box.Text()); };
        list.Sorted = true;
        list.Click = [this] { ++clicks; };
    }
    std::string cell() const { return std::to_string(grid.Row()) + "," + std::to_string(grid.Col()); }
    // One piece of user input: the log of what it ran, focus events included.
    Log input(const std::function<void()>& f) {
        log.clear();
        rt.dispatch(f);
        return log;
    }
};

using Forms = Fixture;

// Each case is one piece of input on a fresh form; `before` runs as input ahead of it.
struct EventCase {
    const char* what;
    void (*before)(Fixture&);
    void (*input)(Fixture&);
    Log log;
};

class Events : public Fixture, public ::testing::WithParamInterface<EventCase> {};

TEST_P(Events, RunInThisOrder) {
    const EventCase& c = GetParam();
    if (c.before) input([&] { c.before(*this); });
    EXPECT_EQ(input([&] { c.input(*this); }), c.log) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Runtime, Events,
    ::testing::Values(
        EventCase{"moving the current cell runs Leave then Enter inside the assignment; the same value runs nothing", nullptr,
                  [](Fixture& f) { f.grid.setRow(2); f.log.push_back("after Row"); f.grid.setCol(1); f.grid.setCol(1); },
                  {"Leave 0,0", "Enter 2,0", "after Row", "Leave 2,0", "Enter 2,1"}},
        EventCase{"TextMatrix and Text writes run no handler", nullptr,
                  [](Fixture& f) { f.grid.setTextMatrix(3, 2, "x"), f.grid.setText("y"), f.log.push_back(std::string(f.grid.TextMatrix(3, 2)) + std::string(f.grid.Text())); },
                  {"xy"}},
        EventCase{"a different text runs Change inside the write; the same text nothing", nullptr,
                  [](Fixture& f) { f.box.setText("abc"); f.log.push_back("after"); f.box.setText("abc"); }, {"Change abc", "after"}},
        EventCase{"handlers nest inside assignments made by other handlers", nullptr,
                  [](Fixture& f) {
                      f.grid.EnterCell = [&f] { f.log.push_back("Enter " + f.cell()); f.box.setText(f.grid.Text()); };
                      f.grid.setTextMatrix(1, 0, "one"), f.grid.setRow(1);
                  },
                  {"Leave 0,0", "Enter 1,0", "Change one"}},
        EventCase{"a failure in a handler ends that handler only, not the assignment", nullptr,
                  [](Fixture& f) { f.grid.LeaveCell = [] { throw Failure("boom"); }, f.grid.setRow(1), f.log.push_back("at " + f.cell()); },
                  {"Enter 1,0", "at 1,0"}},
        EventCase{"focus events wait until the outermost handler has ended", nullptr,
                  [](Fixture& f) { f.grid.SetFocus(); f.log.push_back(f.grid.hasFocus() ? "has it" : "hasn't"); },
                  {"has it", "GridGotFocus"}},
        EventCase{"the focus event goes to whoever holds the focus when the handler ends", nullptr,
                  [](Fixture& f) { f.grid.SetFocus(); f.box.SetFocus(); }, {"BoxGotFocus"}},
        EventCase{"a GotFocus handler that moves the focus causes another round", nullptr,
                  [](Fixture& f) { f.grid.GotFocus = [&f] { f.log.push_back("GridGotFocus"), f.box.SetFocus(); }, f.grid.SetFocus(); },
                  {"GridGotFocus", "BoxGotFocus"}},
        EventCase{"focus that leaves and comes back in one handler is delivered again", [](Fixture& f) { f.box.SetFocus(); },
                  [](Fixture& f) { f.grid.SetFocus(); f.box.SetFocus(); }, {"BoxGotFocus"}},
        EventCase{"a job posted in a handler runs after it", nullptr,
                  [](Fixture& f) { f.rt.post([&f] { f.log.push_back("posted"); }), f.log.push_back("handler"); }, {"handler", "posted"}},
        EventCase{"SetFocus on the focused control runs nothing", [](Fixture& f) { f.grid.SetFocus(); },
                  [](Fixture& f) { f.grid.SetFocus(); }, {}}));

TEST_F(Forms, AJobPostedOutsideAnyInputRunsAtOnce) {
    rt.post([&] { log.push_back("posted"); });
    EXPECT_EQ(log, Log{"posted"});
}

// A hidden container hides its controls.
TEST_F(Forms, SetFocusFailsOnHiddenDisabledOrOffScreenControls) {
    const std::function<void(bool)> ways[] = {[&](bool on) { box.setVisible(on); }, [&](bool on) { box.setEnabled(on); },
                                              [&](bool on) { frame.setVisible(on); }, [&](bool on) { form.setVisible(on); }};
    for (const auto& way : ways) {
        way(false);
        EXPECT_FALSE(box.canFocus());
        EXPECT_FALSE(box.TrySetFocus());
        EXPECT_THROW(box.SetFocus(), Failure);
        way(true);
    }
    EXPECT_TRUE(box.TrySetFocus());
    EXPECT_FALSE((Label{form, &frame, "lblTest"}.canFocus()));
}

// ---- grid shape --------------------------------------------------------------

TEST_F(Forms, GridRefusesCellsOutsideItAndFixedRowsItCantHold) {
    grid.setFixedRows(1);
    grid.setFixedCols(1);
    EXPECT_EQ(cell(), "1,1") << "the current cell leaves the fixed cells";
    for (const auto& refused : std::initializer_list<std::function<void()>>{
             [&] { grid.setRow(0); }, [&] { grid.setCol(0); }, [&] { grid.setRow(4); }, [&] { (void)grid.TextMatrix(4, 0); },
             [&] { (void)grid.TextMatrix(0, 3); }})
        EXPECT_THROW(refused(), Failure);
    grid.setRows(2);
    EXPECT_THROW(grid.RemoveItem(1), Failure) << "the last row below the fixed rows";
    grid.setFixedRows(0);
    grid.RemoveItem(1);
    EXPECT_THROW(grid.RemoveItem(0), Failure) << "a grid never has no row";
    EXPECT_THROW(grid.setFixedRows(1), Failure) << "fixed rows stay below Rows";
    EXPECT_EQ(grid.FixedRows(), 0);
    grid.setRows(3);
    grid.setFixedRows(1);
    grid.setFixedCols(2);
    grid.setRows(1), grid.setCols(1); // shrinking takes the fixed rows and columns down with it
    EXPECT_EQ(std::make_pair(grid.FixedRows(), grid.FixedCols()), std::make_pair(0, 0));
    grid.setRows(Grid::kMaxRows);
    EXPECT_THROW(grid.AddItem("one too many"), Failure);
    EXPECT_THROW(grid.setRows(Grid::kMaxRows + 1), Failure);
}

// The grid keeps every text as a plain table of strings would (rows grow empty,
// shrink from the end, close up on removal), whatever mix of edits, texts taken
// from its own cells, row and column changes it goes through. Tag = Text keeps
// the text the current cell had then, whatever happens to that cell, its row
// or the grid's storage afterwards.
TEST_F(Forms, GridTextsFollowAPlainTableThroughAnyEdits) {
    grid.setRows(1);
    grid.setCols(2);
    qmtest::Table model(1, qmtest::Row(2));
    std::string tag;
    std::mt19937 rng(11);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    auto someText = [&] { return std::string(static_cast<std::size_t>(pick(4) == 0 ? pick(3000) : pick(40)), static_cast<char>('a' + pick(26))); };
    for (int step = 0; step < 20000; ++step) {
        const int r = pick(grid.Rows()), c = pick(grid.Cols()), r2 = pick(grid.Rows()), c2 = pick(grid.Cols());
        switch (pick(11)) {
        case 0: grid.setTextMatrix(r, c, model[r][c] = someText()); break;
        case 1: grid.setText(model[grid.Row()][grid.Col()] = someText()); break;
        case 2: { // another cell's text, or a piece of the cell's own
            const std::string_view whole = grid.TextMatrix(r2, c2), from = pick(2) ? whole : whole.substr(whole.size() / 2);
            model[r][c] = std::string(from);
            grid.setTextMatrix(r, c, from);
            break;
        }
        case 3: if (grid.Rows() < 300) grid.AddItem(model.emplace_back(grid.Cols())[0] = someText()); break;
        case 4: if (grid.Rows() > 1) grid.RemoveItem(r), model.erase(model.begin() + r); break;
        case 5: { const int n = 1 + pick(pick(10) == 0 ? 300 : 5); grid.setRows(n), model.resize(n, qmtest::Row(grid.Cols())); break; }
        case 6: { const int n = 1 + pick(8); grid.setCols(n); for (auto& row : model) row.resize(n); break; }
        case 7: { // the texts go out, the first row's stay; edits meanwhile go when they come back
            const std::uint64_t revision = grid.Revision();
            Grid::Texts texts = grid.takeTexts();
            ASSERT_EQ(qmtest::gridCells(grid), qmtest::Table{model[0]});
            grid.setTextMatrix(0, c, someText());
            const std::uint64_t meanwhile = grid.Revision();
            grid.swapTexts(texts);
            ASSERT_EQ(std::make_pair(grid.Revision(), texts.revision()), std::make_pair(revision, meanwhile));
            grid.setTextMatrix(r, c, model[r][c]);
            ASSERT_GT(grid.Revision(), meanwhile) << "a revision given out twice";
            break;
        }
        case 8: input([&] { grid.setRow(r), grid.setCol(c); }), grid.setTag(grid.Text()), tag = model[r][c]; break;
        case 9: input([&] { grid.setCol(c2); }), grid.setTag(grid.Tag()); break; // the current cell moves on; the tag is given to itself
        case 10: grid.setTextMatrix(r, c, std::string(6000, 'w')), grid.setTextMatrix(r, c, model[r][c]); break; // bytes a later change packs away
        }
        if (step % 5 == 0) { ASSERT_EQ(grid.Tag(), tag) << "step " << step; } // reading it settles it: not every step
        if (step % 97 == 0 || step > 19900) { ASSERT_EQ(qmtest::gridCells(grid), model) << "step " << step; }
    }
}

// Texts swapped in come as a reload brings rows: the first row keeps its
// styles, the others lose them.
TEST_F(Forms, CellStylesBelongToSingleCellsAndOnlyTheFirstRowsSurviveASwap) {
    // Alignment, back colour (0: the grid's) and height of the first cell of each row.
    auto styles = [&] {
        std::ostringstream s;
        for (int r = 0; r < 3; ++r)
            s << grid.CellAlignment(r, 0) << "/" << (grid.CellBackColor(r, 0) == grid.BackColor() ? 0 : grid.CellBackColor(r, 0)) << "/" << grid.RowHeight(r) << " ";
        return s.str();
    };
    const std::string plain = std::to_string(grid.RowHeight(1));
    for (int r : {2, 0}) {
        input([&] { grid.setRow(r); });
        grid.setCellAlignment(Grid::AlignRightCenter);
        grid.setCellBackColor(0x123456);
        grid.setRowHeight(r, 500 + r);
    }
    const std::string set = std::to_string(Grid::AlignRightCenter) + "/" + std::to_string(0x123456) + "/";
    const std::string general = std::to_string(Grid::AlignGeneral) + "/0/" + plain + " ";
    EXPECT_EQ(styles(), set + "500 " + general + set + "502 ");
    Grid::Texts texts = grid.takeTexts();
    grid.swapTexts(texts);
    EXPECT_EQ(styles(), set + "500 " + general + general);
}

TEST_F(Forms, ReadingTheCellRectangleScrollsTheCellIntoViewAndRunsScroll) {
    grid.Scroll = [this] { log.push_back("Scroll"); };
    grid.move(0, 0, 3000, 1200);
    grid.setRows(100);
    grid.setFixedRows(1);
    input([&] { grid.setRow(50); });
    int top = 0;
    EXPECT_EQ(input([&] { top = grid.CellTop(); }), Log{"Scroll"});
    EXPECT_GT(grid.TopRow(), 1);
    EXPECT_LE(top + grid.CellHeight(), 1200);
    EXPECT_EQ(input([&] { (void)grid.CellTop(); }), Log{}) << "already in view";
}

// ---- list box ----------------------------------------------------------------

// "ab" before "abc"; "ÄRGER" before "ärger", "ōa" before "Ōb": case folded beyond ASCII.
TEST_F(Forms, ListSortsIgnoringCaseWithTiesByExactText) {
    for (const char* s : {"beta", "Alpha", "alpha", "ärger", "ABD", "Beta", "gamma", "ÄRGER", "ab", "zebra", "abc", "Ōb", "ōa"}) list.AddItem(s);
    EXPECT_EQ(list.items(), (Log{"ab", "abc", "ABD", "Alpha", "alpha", "ÄRGER", "ärger", "Beta", "beta", "gamma", "zebra", "ōa", "Ōb"}));
}

// Selecting runs Click only when the selection changes; adding, removing and
// clearing keep the selection on its entry (or none) and run no Click.
TEST_F(Forms, ListClickRunsOnlyForAChangedSelection) {
    // The selected entry, its index, the entries and the Clicks run so far.
    auto state = [&] { return std::string(list.Text()) + " " + std::to_string(list.ListIndex()) + "/" + std::to_string(list.ListCount()) + " " + std::to_string(clicks); };
    list.AddItem("m");
    list.AddItem("b");
    EXPECT_THROW(list.setSelected(2), Failure);
    std::string seen;
    for (const auto& step : std::initializer_list<std::function<void()>>{
             [&] { input([&] { list.setSelected(1), list.setSelected(1), list.setText("m"), list.setText("nothing like it"); }); },
             [&] { list.AddItem("a"); }, [&] { list.RemoveItem(0); }, [&] { list.RemoveItem(1); /* the selected one */ },
             [&] { input([&] { list.setText("b"); }); }, [&] { list.Clear(); }})
        step(), seen += state() + "; ";
    EXPECT_EQ(seen, "m 1/2 1; m 2/3 1; m 1/2 1;  -1/1 1; b 0/1 2;  -1/0 2; ");
}

// ---- text box ----------------------------------------------------------------

TEST_F(Forms, BoxCaretSelectionAndOwnEditsCountCharactersNotBytes) {
    input([&] { box.setText("äöü"); });
    EXPECT_EQ(box.length(), 3);
    box.setSelStart(99); // past the end: at the end
    EXPECT_EQ(box.SelStart(), 3);
    EXPECT_EQ(input([&] { box.applyOwnChar(key::Backspace), box.applyOwnChar(U'€'); }), (Log{"Change äö", "Change äö€"}));
    box.setSelStart(1);
    EXPECT_EQ(input([&] { box.applyOwnKey(key::Delete); }), Log{"Change ä€"});
    // Control characters never reach the text.
    for (char32_t c : {U'\r', U'\n', U'\t', char32_t(27), char32_t(1), char32_t(0x7F), char32_t(0x85)}) input([&] { box.applyOwnChar(c); });
    EXPECT_EQ(box.Text(), "ä€");
    // A typed character replaces the selection; writing SelStart clears it.
    box.setSelStart(0);
    box.setSelLength(1);
    EXPECT_EQ(input([&] { box.applyOwnChar(U'X'); }), Log{"Change X€"});
    box.setSelLength(1);
    box.setSelStart(0);
    EXPECT_EQ(box.SelLength(), 0);
}

} // namespace

// The forms runtime: event order, nesting and deferred focus, and the control
// behaviour the program's procedures count on.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "forms/controls.h"
#include "forms/failure.h"
#include "forms/form.h"
#include "forms/grid.h"
#include "forms/listbox.h"
#include "forms/runtime.h"

using namespace forms;

namespace {

struct Fixture : ::testing::Test {
    Runtime rt;
    Form form{rt, "frmTest"};
    Frame frame{form, nullptr, "fraTest"};
    Grid grid{form, &frame, "FG1"};
    TextBox box{form, &frame, "T1"};
    ListBox list{form, &frame, "lstTest"};
    Button button{form, &frame, "cmdTest"};
    std::vector<std::string> log;

    Fixture() {
        grid.setCols(3);
        grid.setRows(4);
        form.setVisible(true);
        grid.LeaveCell = [this] { log.push_back("Leave " + cell()); };
        grid.EnterCell = [this] { log.push_back("Enter " + cell()); };
        grid.GotFocus = [this] { log.push_back("GridGotFocus"); };
        box.GotFocus = [this] { log.push_back("BoxGotFocus"); };
        box.Change = [this] { log.push_back("Change " + box.Text()); };
    }
    std::string cell() const { return std::to_string(grid.Row()) + "," + std::to_string(grid.Col()); }
};

using Events = Fixture;

TEST_F(Events, MovingTheCurrentCellRunsLeaveThenEnterInsideTheAssignment) {
    rt.dispatch([&] {
        grid.setRow(2);
        log.push_back("after Row");
        grid.setCol(1);
        grid.setCol(1); // the same value runs nothing
    });
    EXPECT_EQ(log, (std::vector<std::string>{"Leave 0,0", "Enter 2,0", "after Row", "Leave 2,0", "Enter 2,1"}));
}

TEST_F(Events, TextMatrixAndTextWritesRunNoHandler) {
    rt.dispatch([&] {
        grid.setTextMatrix(3, 2, "x");
        grid.setText("y");
    });
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(grid.TextMatrix(3, 2), "x");
    EXPECT_EQ(grid.TextMatrix(0, 0), "y");
}

TEST_F(Events, WritingADifferentTextRunsChangeBeforeTheWriteReturns) {
    rt.dispatch([&] {
        box.setText("abc");
        log.push_back("after");
        box.setText("abc");
    });
    EXPECT_EQ(log, (std::vector<std::string>{"Change abc", "after"}));
}

TEST_F(Events, FocusEventsWaitUntilTheOutermostHandlerHasEnded) {
    rt.dispatch([&] {
        grid.SetFocus();
        log.push_back("after SetFocus");
        EXPECT_TRUE(grid.hasFocus());
    });
    EXPECT_EQ(log, (std::vector<std::string>{"after SetFocus", "GridGotFocus"}));
}

TEST_F(Events, FocusEventGoesToWhoeverHoldsTheFocusWhenTheHandlerEnds) {
    rt.dispatch([&] {
        grid.SetFocus();
        box.SetFocus();
    });
    EXPECT_EQ(log, (std::vector<std::string>{"BoxGotFocus"}));
}

TEST_F(Events, AGotFocusHandlerThatMovesTheFocusCausesAnotherRound) {
    grid.GotFocus = [this] {
        log.push_back("GridGotFocus");
        box.SetFocus();
    };
    rt.dispatch([&] { grid.SetFocus(); });
    EXPECT_EQ(log, (std::vector<std::string>{"GridGotFocus", "BoxGotFocus"}));
}

TEST_F(Events, FocusThatLeavesAndComesBackInOneHandlerIsDeliveredAgain) {
    rt.dispatch([&] { box.SetFocus(); });
    log.clear();
    rt.dispatch([&] {
        grid.SetFocus();
        box.SetFocus();
    });
    EXPECT_EQ(log, (std::vector<std::string>{"BoxGotFocus"}));
}

TEST_F(Events, SetFocusOnTheFocusedControlRunsNothing) {
    rt.dispatch([&] { grid.SetFocus(); });
    log.clear();
    rt.dispatch([&] { grid.SetFocus(); });
    EXPECT_TRUE(log.empty());
}

TEST_F(Events, SetFocusFailsOnHiddenDisabledOrOffScreenControls) {
    box.setVisible(false);
    EXPECT_THROW(box.SetFocus(), Failure);
    box.setVisible(true);
    box.setEnabled(false);
    EXPECT_THROW(box.SetFocus(), Failure);
    box.setEnabled(true);
    frame.setVisible(false); // a hidden container hides its controls
    EXPECT_FALSE(box.TrySetFocus());
    frame.setVisible(true);
    form.setVisible(false);
    EXPECT_FALSE(box.canFocus());
    form.setVisible(true);
    EXPECT_TRUE(box.TrySetFocus());
    Label label{form, &frame, "lblTest"};
    EXPECT_FALSE(label.canFocus());
}

TEST_F(Events, AFailureInAHandlerEndsThatHandlerOnly) {
    grid.LeaveCell = [] { throw Failure("boom"); };
    bool reached = false;
    rt.dispatch([&] {
        grid.setRow(1);
        reached = true;
    });
    EXPECT_TRUE(reached);
    EXPECT_EQ(grid.Row(), 1);
}

TEST_F(Events, HandlersNestInsideAssignmentsMadeByOtherHandlers) {
    grid.EnterCell = [this] {
        log.push_back("Enter " + cell());
        box.setText(grid.Text());
    };
    grid.setTextMatrix(1, 0, "one");
    rt.dispatch([&] { grid.setRow(1); });
    EXPECT_EQ(log, (std::vector<std::string>{"Leave 0,0", "Enter 1,0", "Change one"}));
}

// ---- grid shape --------------------------------------------------------------

using GridShape = Fixture;

TEST_F(GridShape, RemoveItemRefusesTheLastRowBelowTheFixedRows) {
    grid.setRows(2);
    grid.setFixedRows(1);
    EXPECT_THROW(grid.RemoveItem(1), Failure);
    grid.setFixedRows(0);
    grid.RemoveItem(1);
    EXPECT_EQ(grid.Rows(), 1);
    EXPECT_THROW(grid.RemoveItem(0), Failure); // a grid never has no row
}

TEST_F(GridShape, FixedRowsMustStayBelowRows) {
    grid.setRows(1);
    EXPECT_THROW(grid.setFixedRows(1), Failure);
    EXPECT_EQ(grid.FixedRows(), 0);
    grid.setRows(3);
    grid.setFixedRows(1);
    grid.setRows(1); // shrinking takes the fixed rows down with it
    EXPECT_EQ(grid.FixedRows(), 0);
}

TEST_F(GridShape, TheCurrentCellCannotEnterFixedCellsOrLeaveTheGrid) {
    grid.setFixedRows(1);
    grid.setFixedCols(1);
    EXPECT_EQ(grid.Row(), 1);
    EXPECT_EQ(grid.Col(), 1);
    EXPECT_THROW(grid.setRow(0), Failure);
    EXPECT_THROW(grid.setCol(0), Failure);
    EXPECT_THROW(grid.setRow(4), Failure);
    EXPECT_THROW((void)grid.TextMatrix(4, 0), Failure);
    EXPECT_THROW((void)grid.TextMatrix(0, 3), Failure);
}

TEST_F(GridShape, RowsGrowWithEmptyRowsAndShrinkFromTheEnd) {
    grid.setTextMatrix(1, 1, "keep");
    grid.setTextMatrix(3, 1, "drop");
    grid.setRows(2);
    grid.setRows(5);
    EXPECT_EQ(grid.TextMatrix(1, 1), "keep");
    EXPECT_EQ(grid.TextMatrix(3, 1), "");
    grid.AddItem("first");
    EXPECT_EQ(grid.Rows(), 6);
    EXPECT_EQ(grid.TextMatrix(5, 0), "first");
    EXPECT_EQ(grid.TextMatrix(5, 1), "");
}

TEST_F(GridShape, RemovingARowMovesTheRowsBelowUp) {
    for (int r = 0; r < 4; ++r) grid.setTextMatrix(r, 0, "r" + std::to_string(r));
    grid.RemoveItem(1);
    EXPECT_EQ(grid.TextMatrix(1, 0), "r2");
    EXPECT_EQ(grid.TextMatrix(2, 0), "r3");
}

TEST_F(GridShape, AGridHoldsAtMost32767Rows) {
    grid.setRows(Grid::kMaxRows);
    EXPECT_THROW(grid.AddItem("one too many"), Failure);
    EXPECT_THROW(grid.setRows(Grid::kMaxRows + 1), Failure);
}

TEST_F(GridShape, ReadingTheCellRectangleScrollsTheCellIntoViewAndRunsScroll) {
    grid.Scroll = [this] { log.push_back("Scroll"); };
    grid.move(0, 0, 3000, 1200);
    grid.setRows(100);
    grid.setFixedRows(1);
    rt.dispatch([&] { grid.setRow(50); });
    log.clear();
    int top = grid.CellTop();
    EXPECT_EQ(log, (std::vector<std::string>{"Scroll"}));
    EXPECT_GT(grid.TopRow(), 1);
    EXPECT_LE(top + grid.CellHeight(), 1200);
    log.clear();
    (void)grid.CellTop(); // already in view: no more scrolling
    EXPECT_TRUE(log.empty());
}

TEST_F(GridShape, CellStylesBelongToSingleCells) {
    rt.dispatch([&] { grid.setRow(2); });
    grid.setCellAlignment(Grid::AlignRightCenter);
    grid.setCellBackColor(syscolor::Window);
    EXPECT_EQ(grid.CellAlignment(2, 0), Grid::AlignRightCenter);
    EXPECT_EQ(grid.CellAlignment(1, 0), Grid::AlignGeneral);
    EXPECT_EQ(grid.CellBackColor(2, 0), syscolor::Window);
    EXPECT_EQ(grid.CellBackColor(1, 0), grid.BackColor());
}

// ---- list box ----------------------------------------------------------------

struct ListFixture : Fixture {
    int clicks = 0;
    ListFixture() {
        list.Sorted = true;
        list.Click = [this] { ++clicks; };
    }
};
using List = ListFixture;

TEST_F(List, SortsIgnoringCaseWithTiesByExactText) {
    for (const char* s : {"beta", "Alpha", "alpha", "Beta", "gamma", "Ärger", "zebra"}) list.AddItem(s);
    EXPECT_EQ(list.items(), (std::vector<std::string>{"Alpha", "alpha", "Ärger", "Beta", "beta", "gamma", "zebra"}));
    EXPECT_TRUE(ListBox::sortsBefore("abc", "ABD"));
    EXPECT_TRUE(ListBox::sortsBefore("ab", "abc"));
    EXPECT_TRUE(ListBox::sortsBefore("ÄRGER", "ärger"));
}

TEST_F(List, AddAndRemoveKeepTheSelectionOnItsEntryAndRunNoClick) {
    list.AddItem("m");
    rt.dispatch([&] { list.setSelected(0); });
    EXPECT_EQ(clicks, 1);
    list.AddItem("a");
    EXPECT_EQ(list.Text(), "m");
    EXPECT_EQ(list.ListIndex(), 1);
    list.RemoveItem(0);
    EXPECT_EQ(list.ListIndex(), 0);
    list.RemoveItem(0); // the selected one: none is selected after
    EXPECT_EQ(list.ListIndex(), -1);
    EXPECT_EQ(list.Text(), "");
    EXPECT_EQ(clicks, 1);
}

TEST_F(List, SelectingRunsClickOnlyWhenTheSelectionChanges) {
    list.AddItem("a");
    list.AddItem("b");
    rt.dispatch([&] {
        list.setSelected(1);
        list.setSelected(1);
        list.setText("b");
        list.setText("nothing like it");
    });
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(list.Text(), "b");
    rt.dispatch([&] { list.setText("a"); });
    EXPECT_EQ(clicks, 2);
    EXPECT_THROW(list.setSelected(2), Failure);
}

TEST_F(List, ClearEmptiesTheListWithoutAClick) {
    list.AddItem("a");
    rt.dispatch([&] { list.setSelected(0); });
    list.Clear();
    EXPECT_EQ(list.ListCount(), 0);
    EXPECT_EQ(list.ListIndex(), -1);
    EXPECT_EQ(clicks, 1);
}

// ---- text box ----------------------------------------------------------------

using Box = Fixture;

TEST_F(Box, CaretAndOwnEditsCountCharactersNotBytes) {
    rt.dispatch([&] { box.setText("äöü"); });
    EXPECT_EQ(box.length(), 3);
    box.setSelStart(3);
    EXPECT_EQ(box.SelStart(), 3);
    box.setSelStart(99); // past the end: at the end
    EXPECT_EQ(box.SelStart(), 3);
    log.clear();
    rt.dispatch([&] { box.applyOwnChar(key::Backspace); });
    EXPECT_EQ(box.Text(), "äö");
    rt.dispatch([&] { box.applyOwnChar(U'€'); });
    EXPECT_EQ(box.Text(), "äö€");
    box.setSelStart(1);
    rt.dispatch([&] { box.applyOwnKey(key::Delete); });
    EXPECT_EQ(box.Text(), "ä€");
    EXPECT_EQ(log, (std::vector<std::string>{"Change äö", "Change äö€", "Change ä€"}));
}

TEST_F(Box, WritingSelStartClearsTheSelection) {
    rt.dispatch([&] { box.setText("abcdef"); });
    box.setSelStart(1);
    box.setSelLength(3);
    EXPECT_EQ(box.SelLength(), 3);
    rt.dispatch([&] { box.applyOwnChar(U'X'); });
    EXPECT_EQ(box.Text(), "aXef");
    box.setSelLength(2);
    box.setSelStart(0);
    EXPECT_EQ(box.SelLength(), 0);
}

TEST_F(Box, ControlCharactersNeverReachTheText) {
    rt.dispatch([&] { box.setText("a"); });
    box.setSelStart(1);
    for (char32_t c : {U'\r', U'\n', U'\t', char32_t(27), char32_t(1)}) rt.dispatch([&] { box.applyOwnChar(c); });
    EXPECT_EQ(box.Text(), "a");
}

} // namespace

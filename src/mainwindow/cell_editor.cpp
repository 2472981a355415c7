#include <utility>

#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

namespace {

// Whether the current cell lies wholly in view, so that reading its position
// would not scroll. The grid answers it by its own reckoning: the read is tried,
// and a view it moved goes back where the user left it, with no Scroll event
// either way.
bool currentCellInView(forms::Grid& grid) {
    const int top = grid.TopRow(), left = grid.LeftCol();
    auto scroll = std::exchange(grid.Scroll, nullptr);
    (void)grid.CellTop();
    (void)grid.CellLeft();
    const bool inView = grid.TopRow() == top && grid.LeftCol() == left;
    if (!inView) grid.userScrollTo(top, left);
    grid.Scroll = std::move(scroll);
    return inView;
}

// The grid takes the focus and the editor stays closed: the grid's GotFocus
// would bring the current cell back into view and undo the user's scroll.
void focusGridKeepingEditorClosed(frmMain& m) {
    auto gotFocus = std::exchange(m.FG1.GotFocus, nullptr);
    m.platform.runtime.dispatch([&] { m.FG1.TrySetFocus(); });
    m.FG1.GotFocus = std::move(gotFocus);
}

bool editorCoversCurrentCell(frmMain& m) {
    return m.T1.Visible() && m.T1.hasFocus() && m.T1.Left() == m.FG1.Left() + m.FG1.CellLeft() &&
           m.T1.Top() == m.FG1.Top() + m.FG1.CellTop() && m.T1.Width() == m.FG1.CellWidth() &&
           m.T1.Height() == m.FG1.CellHeight();
}

// Lays the editor over the current cell for a grid that holds the focus
// already, where no GotFocus is coming to do it. Only placement: an Add Item
// still pending is not ours to run.
void openEditorInPlace(frmMain& m) {
    const auto pending = std::exchange(m.AddItemPending, std::int16_t{0});
    m.BeginCellEdit();
    m.AddItemPending = pending;
    m.FG1.setCellAlignment(forms::Grid::AlignRightCenter);
}

// After a scroll: the editor opens again over the current cell at its new place
// if the cell is in view, else the grid keeps the focus (its KeyDown then
// brings the cell back and opens the editor). Either way no key can reach a
// hidden editor that lies over some other cell, nor replace the cell's text.
void reopenAfterScroll(frmMain& m) {
    forms::Control* focused = m.platform.runtime.focused();
    if (focused != &m.T1 && focused != &m.FG1) return; // the user has gone elsewhere
    if (!m.FG1.canFocus() || m.FG1.Rows() <= 1) return;
    bool inView = false;
    m.platform.runtime.dispatch([&] {
        inView = currentCellInView(m.FG1);
        if (inView && !editorCoversCurrentCell(m)) openEditorInPlace(m);
    });
    if (!inView && focused == &m.T1) focusGridKeepingEditorClosed(m);
}

} // namespace

// Lays the editor exactly over the current cell with the caret at the end of
// its text and gives it the focus.
void frmMain::BeginCellEdit() {
    try {
        T1.setVisible(true);
        T1.setTop(FG1.Top() + FG1.CellTop());
        T1.setLeft(FG1.Left() + FG1.CellLeft());
        T1.setWidth(FG1.CellWidth());
        T1.setHeight(FG1.CellHeight());
        // A screen reader names the editor by the item and the column it edits.
        std::string name(FG1.TextMatrix(FG1.Row(), 0));
        T1.setAccessibleName(name.append(", ").append(FG1.TextMatrix(0, FG1.Col())));
        T1.setText(FG1.Text());
        T1.setSelStart(T1.length());
        T1.SetFocus();
        if (AddItemPending == -1) {
            cmdAddAsset_Click();
            AddItemPending = 0;
        }
    } catch (const Failure&) {
    }
}

void frmMain::FG1_GotFocus() {
    if (FG1.Rows() > 1) {
        BeginCellEdit();
        FG1.setCellAlignment(forms::Grid::AlignRightCenter);
    }
}

// ---- The two cell handlers and their replay, kept side by side ----------
// A load that finds the grid (or a category kept from before) holding what the
// file gives skips reading it (FileMemory::LoadsAs, via passHeldCells in
// storage/category_file.cpp). It must still leave what moving the current cell
// through every field would leave, so once the handlers only colour
// (CellEventsOnlyColour) it replays them with ReplayCellEvents instead of
// running them. Whatever LeaveCell or EnterCell come to do beyond that must be
// done by the replay as well, or CellEventsOnlyColour must answer false then:
// change the four together. (LoadOfWhatIsHeld in
// tests/core/unchanged_files_test.cpp compares a skipped load with a reading.)

// Runs for every cell a load passes, so it must stay cheap: a grid that can't
// take the focus ends the handler without the failure machinery, and only the
// first cell of a load finds the focus elsewhere.
void frmMain::FG1_LeaveCell() {
    if (FG1.hasFocus()) return FG1.setCellBackColor(kLeftCellColour);
    leaveCellTakingFocus();
}

void frmMain::leaveCellTakingFocus() {
    if (!FG1.TrySetFocus()) return;
    FG1.setCellBackColor(kLeftCellColour);
}

void frmMain::FG1_EnterCell() {
    T1.setVisible(false);
    FG1.setTag(FG1.Text());
}

// What the two cell handlers above come to while this holds: LeaveCell gives
// the cell it leaves the editor's colour, EnterCell hides an editor already
// hidden and points the tag at the new cell.
bool frmMain::CellEventsOnlyColour() const { return FG1.hasFocus() && !T1.Visible(); }

// The handlers' effect of moving the current cell forward, cell by cell, to
// (row, col), without running them: every cell passed gets LeaveCell's colour.
// The tag EnterCell would point at the last cell is left to the caller (a load
// points it there at its end in any case). False, with nothing done, while the
// handlers do more than colour.
bool frmMain::ReplayCellEvents(int row, int col) {
    if (!CellEventsOnlyColour()) return false;
    FG1.passTo(row, col, kLeftCellColour);
    return true;
}
// ---- end of the cell handlers and their replay -------------------------

// The editor doesn't follow the cell while the grid scrolls; once the event
// that scrolled is over, it comes back over the cell if the user was editing,
// also when an earlier scroll took the cell out of view and left the grid
// holding the focus: scrolling back must not leave the cell to a key that
// replaces it.
void frmMain::FG1_Scroll() {
    const bool editing = T1.hasFocus() || FG1.hasFocus();
    T1.setVisible(false);
    if (editing) platform.runtime.post([this] { reopenAfterScroll(*this); });
}

// A click on a cell while the grid holds the focus already (the editor closed
// by a scroll) brings no GotFocus: the editor opens here instead, as for any
// click, once the click and its focus events are over.
void frmMain::FG1_Click() {
    platform.runtime.post([this] {
        if (platform.runtime.focused() != &FG1 || T1.Visible() || FG1.Rows() <= 1) return;
        platform.runtime.dispatch([this] { openEditorInPlace(*this); });
    });
}

// A key never lands unseen in a cell scrolled out of view: the cell comes back
// into view with the editor open on it, caret at the end, and the key goes on
// to the editor like any key typed there. A modifier on its own does nothing.
void frmMain::FG1_KeyDown(int& KeyCode, int /*Shift*/) {
    if (KeyCode == forms::key::Shift || KeyCode == forms::key::Control || KeyCode == forms::key::Alt) return;
    if (FG1.Rows() <= 1 || currentCellInView(FG1)) return;
    ShowCurrentCell();
    FG1_GotFocus();
}

void frmMain::T1_Change() {
    // Keys write the cell before the box changes; text that came without a key
    // (a paste) is written here, so the cell never lags behind what it shows.
    if (FG1.Text() != T1.Text() && FG1.Rows() > 1 && FG1.Row() >= FG1.FixedRows()) FG1.setText(T1.Text());
    T1.setVisible(true);
    UpdateTotals();
    FG1.setCellAlignment(forms::Grid::AlignRightCenter);
}

} // namespace qm

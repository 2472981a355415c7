#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

// Lays the editor exactly over the current cell with the caret at the end of
// its text and gives it the focus.
void frmMain::BeginCellEdit() {
    try {
        T1.setVisible(true);
        T1.setTop(FG1.Top() + FG1.CellTop());
        T1.setLeft(FG1.Left() + FG1.CellLeft());
        T1.setWidth(FG1.CellWidth());
        T1.setHeight(FG1.CellHeight());
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

// Runs for every cell a load passes, so it must stay cheap: a grid that can't
// take the focus ends the handler without the failure machinery.
void frmMain::FG1_LeaveCell() {
    if (!FG1.TrySetFocus()) return;
    FG1.setCellBackColor(forms::syscolor::Window);
}

void frmMain::FG1_EnterCell() {
    T1.setVisible(false);
    FG1.setTag(FG1.Text());
}

void frmMain::FG1_Scroll() { T1.setVisible(false); }

void frmMain::T1_Change() {
    // Keys write the cell before the box changes; text that came without a key
    // (a paste) is written here, so the cell never lags behind what it shows.
    if (FG1.Text() != T1.Text() && FG1.Rows() > 1 && FG1.Row() >= FG1.FixedRows()) FG1.setText(T1.Text());
    T1.setVisible(true);
    UpdateTotals();
    FG1.setCellAlignment(forms::Grid::AlignRightCenter);
}

} // namespace qm

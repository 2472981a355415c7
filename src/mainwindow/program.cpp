#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

void frmMain::Start() {
    platform.runtime.dispatch([this] { Form_Load(); });
    form.setVisible(true);
    platform.runtime.dispatch([this] {
        auto order = form.tabOrder();
        if (!order.empty()) order.front()->TrySetFocus();
        // Told once the window is up.
        if (IndexKept()) platform.runtime.post([this] {
            if (!ended_) Message(IndexKeptMessage());
        });
        if (!IndexRepairedMessage.empty()) platform.runtime.post([this] {
            if (!ended_) Message(IndexRepairedMessage);
        });
    });
}

void frmMain::Form_Load() {
    FG1.setCellAlignment(forms::Grid::AlignRightCenter);
    globals.PicturePath = platform.places.dataFolder + "NoPic.jpg";
    bool loaded = false;
    try {
        WriteToFloppy = false;
        LoadCategoryList();
        ItemRowCount = 1;
        RenamePending = false;
        SetupGrid();
        loaded = true;
        // A colour file that can't be read ends the start here, quietly: the
        // colours behind it keep the window's own.
        LoadColors();
    } catch (const Failure&) {
        if (!loaded) {
            files.Close(1);
            WriteToFloppy = false;
            LoadCategoryList();
            ItemRowCount = 1;
            RenamePending = false;
            SetupGrid();
        }
    }
}

const char* const frmMain::kColumnHeadings[7] = {"Item", "Original Cost", "Current Value", "Location Purchased",
                                                 "Date Purchased", "Warranty Expiration", "Serial Number / Description"};

void frmMain::SetupGrid() {
    static const int kWidths[] = {1600, 900, 900, 1500, 1100, 1100, 3100};
    FG1.setRows(1);
    for (int c = 0; c < 7; ++c) FG1.setTextMatrix(0, c, kColumnHeadings[c]);
    FG1.setFixedRows(0);
    FG1.setFixedCols(1);
    for (int c = 0; c < 7; ++c) FG1.setColWidth(c, kWidths[c]);
    FG1.setRowHeight(0, 500);
}

// Exit stores the grid under the open category, then the index with its walk,
// and ends the program. Whatever road the program ends by, this runs once.
// A category that can't be stored would be lost with the program: the user
// may stay (No: the default, and what Esc or a closed box gives) and store
// it later.
void frmMain::runExitSteps(bool mayStay) {
    if (ended_ || askingToStay_) return;
    SaveCategoryFile();
    if (mayStay && MustKeepGrid() && form.Visible()) {
        askingToStay_ = true;
        const int answer = Message("The category \"" + *CurrentCategory +
                                       "\" could not be saved. If Quillmere ends now, its changes are lost. End "
                                       "Quillmere anyway and lose them? (No keeps it open, so that you can save them "
                                       "later.)",
                                   forms::vbYesNo | forms::vbDefaultButton2);
        askingToStay_ = false;
        if (answer != forms::vbYes) return;
    }
    ended_ = true;
    SaveCategoryList();
    // Another program's versions kept by these last saves are told before the window goes.
    if (mayStay && form.Visible() && !KeptVersionsToTell.empty()) Message(KeptVersionsText());
    form.setVisible(false);
    platform.program.endProgram();
}

void frmMain::cmdExit_Click() { runExitSteps(true); }

void frmMain::Form_Terminate() { runExitSteps(true); }

void frmMain::EndOfSession() { runExitSteps(false); }

} // namespace qm

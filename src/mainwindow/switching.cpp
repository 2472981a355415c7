#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"
#include "pictures/frm_pic.h"

namespace qm {

namespace {
constexpr int kParked = 100000;
} // namespace

void frmMain::ParkControls() {
    FG1.move(kParked, kParked, FG1.Width(), FG1.Height());
    lstCategory.move(kParked, kParked, lstCategory.Width(), lstCategory.Height());
    lblCategory.move(kParked, kParked, lblCategory.Width(), lblCategory.Height());
}

void frmMain::RestoreControls() {
    lstCategory.move(1800, 240, lstCategory.Width(), lstCategory.Height());
    FG1.move(120, 240, FG1.Width(), FG1.Height());
    lblCategory.move(4560, 240, lblCategory.Width(), lblCategory.Height());
}

// The switch: stores the grid under the category being left, opens the
// selected one (load, save, load again), adds up its totals and puts the window
// back together. Selecting an entry from code runs it too.
void frmMain::lstCategory_Click() {
    Pic().ShowStockPicture();
    txtLoading.setVisible(true);
    ParkControls();
    txtCost.setText("0");
    txtValue.setText("0");
    SaveCategoryFile();
    CurrentCategory = lstCategory.Text();
    LoadCategoryFile();
    FG1.setVisible(FG1.Rows() >= 2);
    T1.setVisible(false);
    // The window is on the screen at every switch but the ones of a start-up
    // test; a control that can't take the focus leaves it where it is.
    cmdAddAsset.TrySetFocus();
    SaveCategoryFile();
    LoadCategoryFile();
    UpdateTotals();
    if (FG1.Rows() > 1) FG1.setFixedRows(1);
    if (FG1.Cols() > 1) FG1.setFixedCols(1);
    RestoreControls();
    txtLoading.setVisible(false);
    lblCategory.setCaption(lstCategory.Text());
}

// Every gain of focus of the list stores the whole database, and finishes a
// category rename that a command has started.
void frmMain::lstCategory_GotFocus() {
    if (RenamePending) {
        std::string target = RenameTarget.value_or("");
        CurrentCategory = target;
        SaveCategoryFile();
        RemoveSelectedCategory();
        CategoryCount = CategoryCount.plus(1);
        lstCategory.AddItem(target);
        lstCategory.setText(target);
        RenamePending = false;
        RenameTarget = std::string();
    }
    SaveCategoryList();
}

void frmMain::lblCategory_Change() {
    std::size_t length = forms::utf8::length(lblCategory.Caption());
    if (length > 0 && length < 15) lblCategory.setFontSize(36);
    if (length > 15) lblCategory.setFontSize(20);
}

} // namespace qm

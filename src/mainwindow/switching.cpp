#include <algorithm>

#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"
#include "pictures/frm_pic.h"

namespace qm {

using forms::Failure;

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
    if (KeepingSelection) return;
    Pic().ShowStockPicture();
    txtLoading.setVisible(true);
    ParkControls();
    const std::string cost = txtCost.Text(), value = txtValue.Text();
    txtCost.setText("0");
    txtValue.setText("0");
    SaveCategoryFile();
    if (MustKeepGrid()) {
        // What the grid holds reached no disk: loading over it would lose it.
        // The category being left stays open and selected, the window as it was.
        KeepingSelection = true;
        lstCategory.setText(*CurrentCategory);
        KeepingSelection = false;
        txtCost.setText(cost);
        txtValue.setText(value);
        RestoreControls();
        txtLoading.setVisible(false);
        ReportUnsaved(*CurrentCategory);
        return;
    }
    CurrentCategory = lstCategory.Text();
    LoadCategoryFile();
    // A load from the backup disk tells what did not come across at its end.
    if (!ReadFromFloppy && OpenCategoryUnreadable()) ReportUnreadable(lstCategory.Text());
    else UnreadableTold.erase(lstCategory.Text());
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
        CompleteRename();
        RenamePending = false;
        RenameTarget = std::string();
    }
    SaveCategoryList();
}

// The new file first, then the index that names it, then the old file goes:
// at every moment the disk holds the category, listed under one of its names.
void frmMain::CompleteRename() {
    const std::string target = RenameTarget.value_or("");
    const std::optional<std::string> old = CurrentCategory;
    // No category open and selected (Delete All came in between): nothing to rename.
    if (!old || lstCategory.Text() != *old) return;
    const std::string newPath = CategoryPath(platform.places.dataFolder, target);
    const bool existed = files.files().exists(newPath);
    CurrentCategory = target;
    SaveCategoryFile();
    bool renamed = false;
    if (!SaveFailed) {
        // The new entry comes in before the old one goes. The count goes up
        // and down again, and is written as the number it then is.
        const storage::Value countBefore = CategoryCount;
        CategoryCount = CategoryCount.plus(1);
        lstCategory.AddItem(target);
        lstCategory.RemoveItem(lstCategory.ListIndex());
        CategoryCount = CategoryCount.plus(-1);
        renamed = StoreIndex(platform.places.dataFolder, false);
        if (!renamed) {
            // The old entry back, selected without a switch: the grid holds its items.
            const auto& items = lstCategory.items();
            lstCategory.RemoveItem(static_cast<int>(std::find(items.begin(), items.end(), target) - items.begin()));
            lstCategory.AddItem(*old);
            KeepingSelection = true;
            lstCategory.setText(*old);
            KeepingSelection = false;
            CategoryCount = countBefore;
        }
    }
    if (renamed) {
        try {
            files.Kill(CategoryPath(platform.places.dataFolder, *old));
        } catch (const Failure&) {
            // Listed under its new name with all its items: the old file is only left over.
        }
        lstCategory.setText(target);
        return;
    }
    CurrentCategory = old;
    try {
        if (!existed) files.Kill(newPath);
    } catch (const Failure&) {
    }
    ReportLater("The category \"" + *old +
                "\" could not be renamed: the disk could not store it (is it full?). Nothing was changed.");
}

bool frmMain::MustKeepGrid() const {
    // A copy to the backup disk walks categories that are already stored on
    // this computer: one the disk refuses is told at its end.
    if (!SaveFailed || !CurrentCategory || WriteToFloppy) return false;
    // A category no longer in the list (deleted, or renamed and saved under
    // its new name) has nothing left to keep.
    const auto& items = lstCategory.items();
    return std::find(items.begin(), items.end(), *CurrentCategory) != items.end();
}

void frmMain::ReportUnsaved(const std::string& name) {
    if (UnsavedToldThisEvent) return;
    UnsavedToldThisEvent = true;
    // Told when the event has ended: a walk goes on and meets the same disk at
    // every step, and the user gets one message for it.
    platform.runtime.post([this, name] {
        UnsavedToldThisEvent = false;
        if (ended_) return; // the program ends as it always did, in silence
        Message("The category \"" + name +
                "\" could not be saved. Its items are still in the window. Please check the disk (is it full?) and try "
                "again.");
    });
}

void frmMain::ReportLater(const std::string& text) {
    platform.runtime.post([this, text] {
        if (!ended_) Message(text);
    });
}

bool frmMain::OpenCategoryUnreadable() const {
    const std::string name = lstCategory.Text();
    return !name.empty() && UnreadableFiles.count(CategoryPath(platform.places.dataFolder, name));
}

std::string frmMain::UnreadableMessage(const std::string& name) const {
    return "The file of the category \"" + name +
           "\" can't be read, so nothing typed in this category can be stored until the file can be read. The file "
           "is left as it is.";
}

void frmMain::ReportUnreadable(const std::string& name) {
    if (!UnreadableTold.insert(name).second) return;
    ReportLater(UnreadableMessage(name));
}

bool frmMain::RefuseUnreadable() {
    if (!OpenCategoryUnreadable()) return false;
    Message(UnreadableMessage(lstCategory.Text()));
    return true;
}

std::string frmMain::IndexKeptMessage() const {
    return "The list of categories (NumCats.csv and CatFiles.csv in " + platform.places.dataFolder +
           ") can't be read. It will not be written over, so categories can't be added, renamed or deleted until it "
           "can be read.";
}

bool frmMain::RefuseKeptIndex() {
    if (!IndexKept()) return false;
    Message(IndexKeptMessage());
    return true;
}

void frmMain::lblCategory_Change() {
    std::size_t length = forms::utf8::length(lblCategory.Caption());
    if (length > 0 && length < 15) lblCategory.setFontSize(36);
    if (length > 15) lblCategory.setFontSize(20);
}

} // namespace qm

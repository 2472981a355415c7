#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

// Adds an item row under a name the user gives, stores it at once and makes
// its cost cell current. Every path ends on column 1 of the last row.
void frmMain::cmdAddAsset_Click() {
    try {
        bool add = false;
        std::string answer;
        if (lstCategory.Text().empty()) {
            Message("You must select a category in order to add an item.");
        } else if (RefuseUnreadable()) {
        } else if (ItemRowCount >= forms::Grid::kMaxRows) {
            Message("This category is full: it holds " + std::to_string(forms::Grid::kMaxRows - 1) +
                    " items, the most a category can hold. Nothing was added.");
        } else {
            answer = platform.dialogs.InputBox("Please type in name of item you would like to add", "Add Item");
            add = !answer.empty();
        }
        if (add) {
            ItemRowCount += 1;
            FG1.setVisible(true);
            FG1.setEnabled(true);
            FG1.setRows(ItemRowCount);
            FG1.setTextMatrix(ItemRowCount - 1, 0, answer);
            SaveCategoryFile();
            // A row that reached no file stays in the grid, to be stored by the next save.
            if (SaveFailed) ReportUnsaved(CurrentCategory.value_or(lstCategory.Text()));
            else LoadCategoryFile();
            FG1.setFixedRows(1);
            FG1.setFixedCols(1);
            CurrentCategory = lstCategory.Text();
            FG1.SetFocus();
        }
        FG1.setCol(1);
        FG1.setRow(ItemRowCount - 1);
    } catch (const Failure&) {
    }
}

// Renames the item of the selected row in the grid only; the file follows at the next save.
void frmMain::cmdRenameItem_Click() {
    if (RefuseUnreadable()) return;
    const int row = FG1.RowSel();
    std::string answer = platform.dialogs.InputBox("What would you like to change " + std::string(FG1.TextMatrix(row, 0)) + " to?", "");
    if (FG1.Visible() && !answer.empty()) FG1.setTextMatrix(row, 0, answer);
}

void frmMain::cmdDeleteAsset_Click() {
    if (RefuseUnreadable()) return;
    try {
        const int row = FG1.RowSel();
        if (Message("This will permanently DELETE the item: " + std::string(FG1.TextMatrix(row, 0)) +
                        ", and all the information on this item. Are you sure?",
                    forms::vbYesNo) == forms::vbNo)
            return;
        if (row == 0) {
            Message("There are no items to delete");
        } else {
            ItemRowCount -= 1;
            FG1.RemoveItem(row);
            // The cell under the editor may be another one now without having been
            // entered: its text on entry is what Esc brings back.
            FG1.setTag(FG1.Text());
            FG1.SetFocus();
        }
    } catch (const Failure&) {
        // The grid refuses to remove its last item row: that item goes below.
    }
    if (ItemRowCount < 2) {
        SetupGrid();
        T1.setVisible(false);
        FG1.setEnabled(false);
        ItemRowCount = 1;
    }
}

void frmMain::mnuDelItems_Click() {
    const std::string category = lstCategory.Text();
    if (category.empty()) {
        Message("Error deleting items: No category selected.");
        return;
    }
    if (RefuseUnreadable()) return;
    if (Message("This will permanently DELETE ALL items in category '" + category + "'. Are you sure?", forms::vbYesNo) ==
        forms::vbNo)
        return;
    FG1.setRows(1);
    ItemRowCount = 1;
    T1.setVisible(false);
    SaveCategoryFile();
    SaveCategoryList();
    // With one category the walk changes no selection and so runs no switch:
    // leave the grid as a switch leaves an empty category.
    if (FG1.Rows() < 2) FG1.setVisible(false);
}

} // namespace qm

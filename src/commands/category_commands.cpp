#include <algorithm>
#include <utility>

#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

std::string frmMain::CategoryNameProblem(const std::string& name) const {
    for (unsigned char c : name)
        if (c < 0x20 || c == 0x7F) return "A category name can't hold tabs, line breaks or other control characters.";
    if (name == "NumCats" || name == "CatFiles")
        return "\"" + name + "\" is the name of one of the program's own files. Please choose another name.";
    if (storage::FileStem(name).size() + 4 > storage::kMaxFileName)
        return "That name is too long for a file name. Please choose a shorter name.";
    return "";
}

// Adds a category after a walk has made sure no entry has the same name: the
// new entry is opened (its file made with the heading line) and the index stored.
void frmMain::cmdAddCategory_Click() {
    if (RefuseKeptIndex()) return;
    NewCategoryName =
        platform.dialogs.InputBox("Please enter name of category.  (ie: Mom's stuff, Car parts, etc.)", "Add Category");
    if (NewCategoryName.empty()) return;
    AddCategoryNamed(NewCategoryName);
}

bool frmMain::AddCategoryNamed(std::string name) {
    NewCategoryName = std::move(name);
    if (std::string problem = CategoryNameProblem(NewCategoryName); !problem.empty()) {
        Message(problem);
        NewCategoryName.clear();
        return false;
    }
    const int count = lstCategory.ListCount();
    for (int i = 0; i < count; ++i) {
        lstCategory.setSelected(i);
        // The entry's own text: a switch that had to keep an unsaved category
        // leaves the selection on that one.
        if (lstCategory.List(i) == NewCategoryName) {
            Message("You already have a category named " + NewCategoryName);
            NewCategoryName.clear();
            return false;
        }
    }
    const storage::Value countBefore = CategoryCount;
    const std::string left = lstCategory.Text(); // where the walk ended
    const std::string path = CategoryPath(platform.places.dataFolder, NewCategoryName);
    const bool existed = files.files().exists(path);
    CategoryCount = CategoryCount.plus(1);
    lstCategory.AddItem(NewCategoryName);
    lstCategory.setText(NewCategoryName);
    if (lstCategory.Text() != NewCategoryName) {
        // The open category could not be saved and stays open: the new one is
        // not added, and the user (told by the switch) can try again.
        for (int i = 0; i < lstCategory.ListCount(); ++i)
            if (lstCategory.List(i) == NewCategoryName) {
                lstCategory.RemoveItem(i);
                break;
            }
        CategoryCount = countBefore;
        NewCategoryName.clear();
        return false;
    }
    CurrentCategory = NewCategoryName;
    // One step: the new file and the index that lists it are stored, or the
    // entry is taken back. The gain of focus stores the index again, with its walk.
    if (SaveFailed || !StoreIndex(platform.places.dataFolder, false)) {
        const auto& items = lstCategory.items();
        lstCategory.RemoveItem(static_cast<int>(std::find(items.begin(), items.end(), NewCategoryName) - items.begin()));
        CategoryCount = countBefore;
        if (left.empty()) ClearOpenCategory();
        else lstCategory.setText(left);
        try {
            if (!existed) files.Kill(path);
        } catch (const Failure&) {
        }
        Message("The category \"" + NewCategoryName +
                "\" could not be added: the disk could not store it (is it full?). Nothing was changed.");
        NewCategoryName.clear();
        return false;
    }
    lstCategory.TrySetFocus();
    NewCategoryName.clear();
    return true;
}

// Starts a rename: the list's next gain of focus carries it out.
void frmMain::cmdRenameCat_Click() {
    const std::string old = lstCategory.Text();
    if (old.empty()) {
        Message("Error renaming category: No category selected.");
        return;
    }
    if (RefuseKeptIndex()) return;
    // The new name would get what the grid shows of a file that can't be read,
    // and the file itself would be deleted.
    if (UnreadableFiles.count(CategoryPath(platform.places.dataFolder, old))) {
        Message("The file of the category '" + old + "' can't be read, so it can't be renamed. Nothing was changed.");
        return;
    }
    RenameTarget = platform.dialogs.InputBox("What would you like to rename " + old + " to?", "Rename Category");
    const std::string target = *RenameTarget;
    if (!target.empty()) {
        if (std::string problem = CategoryNameProblem(target); !problem.empty()) {
            Message(problem);
            RenameTarget = std::string();
            return;
        }
    }
    const int remembered = lstCategory.ListIndex();
    for (int i = 0; i < lstCategory.ListCount(); ++i) {
        lstCategory.setSelected(i);
        if (lstCategory.List(i) == target) {
            Message("Error occured while renaming category. Category '" + target + "' already exists.");
            return;
        }
    }
    if (remembered >= 0 && remembered < lstCategory.ListCount()) lstCategory.setSelected(remembered);
    if (target.empty()) return;
    // A category the walk could not leave unsaved is open instead of the one
    // to be renamed: renaming it would be wrong; the user has been told.
    if (lstCategory.ListIndex() != remembered) return;
    RenamePending = true;
    lstCategory.TrySetFocus();
}

void frmMain::cmdDeleteCategory_Click() {
    const std::string name = lstCategory.Text();
    if (name.empty()) {
        Message("Error deleting category: No category selected.");
        return;
    }
    if (RefuseKeptIndex()) return;
    if (Message("This will permanently DELETE all contents of '" + name + "'. Are you sure?", forms::vbYesNo) != forms::vbYes)
        return;
    if (!RemoveSelectedCategory()) {
        Message("The category \"" + name +
                "\" could not be deleted: the disk could not store the list of categories (is it full?). Nothing was "
                "changed.");
        return;
    }
    if (lstCategory.ListCount() == 0) ClearOpenCategory();
}

// Takes the selected category out of the list and the index, then deletes its
// file. The walk comes first: its first switch writes the file once more. The
// file goes only once the index without it is stored.
bool frmMain::RemoveSelectedCategory() {
    const std::string name = lstCategory.Text();
    const storage::Value countBefore = CategoryCount;
    try {
        const std::string path = CategoryPath(platform.places.dataFolder, name);
        lstCategory.RemoveItem(lstCategory.ListIndex());
        CategoryCount = CategoryCount.plus(-1);
        if (!SaveCategoryList()) {
            CategoryCount = countBefore;
            lstCategory.AddItem(name);
            lstCategory.setText(name);
            return false;
        }
        files.Kill(path);
    } catch (const Failure&) {
    }
    return true;
}

void frmMain::mnuDelAllCats_Click() {
    if (lstCategory.ListCount() < 1) return;
    if (Message("WARNING: This will DELETE ALL Categories and ERASE EVERYTHING from the whole asset database. Are you sure?",
                forms::vbYesNo) != forms::vbYes)
        return;
    CategoryCount = storage::Value::number(0);
    files.Close(SaveFileNumber);
    files.Close(LoadFileNumber);
    lstCategory.Clear();
    try {
        files.KillMatching(platform.places.dataFolder, ".csv");
    } catch (const Failure&) {
    }
    UnreadableFiles.clear(); // what couldn't be read is gone
    SaveCategoryList();
    ClearOpenCategory();
    SaveCategoryFile();
}

void frmMain::ClearOpenCategory() {
    SetupGrid();
    FG1.setVisible(false);
    T1.setVisible(false);
    ItemRowCount = 1;
    CurrentCategory.reset();
    lblCategory.setCaption("");
    txtCost.setText("");
    txtValue.setText("");
}

} // namespace qm

#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

// Takes the selected category out of the list and the index, then deletes its
// file. The walk comes first: its first switch writes the file once more.
void frmMain::RemoveSelectedCategory() {
    try {
        const std::string path = CategoryPath(platform.places.dataFolder, lstCategory.Text());
        lstCategory.RemoveItem(lstCategory.ListIndex());
        CategoryCount = CategoryCount.plus(-1);
        SaveCategoryList();
        files.Kill(path);
    } catch (const Failure&) {
    }
}

} // namespace qm

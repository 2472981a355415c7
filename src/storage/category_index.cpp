#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

// Fills the list from "NumCats.csv" and "CatFiles.csv": exactly as many names
// as the count says. It adds to the list and never selects an entry; any
// failure ends it with what was done so far, and its file closed.
void frmMain::LoadCategoryList() {
    int n = 0;
    try {
        n = files.FreeFile();
        const std::string& place = ReadFromFloppy ? platform.places.floppyRoot : platform.places.dataFolder;
        files.OpenInput(n, place + "NumCats.csv");
        CategoryCount = storage::Value::text(files.ReadField(n));
        files.Close(n);
        files.OpenInput(n, place + "CatFiles.csv");
        std::optional<int> count = CategoryCount.toInt16();
        if (!count) throw Failure("type mismatch");
        for (int i = 0; i < *count; ++i) lstCategory.AddItem(files.ReadField(n));
        files.Close(n);
    } catch (const Failure&) {
        files.Close(n);
    }
}

// Writes the count and the names. It reads the names by selecting each entry
// in turn, so every category passes through the switch and is stored again:
// the walk. The selection goes back to where it was at the end.
void frmMain::SaveCategoryList() {
    const std::string remembered = lstCategory.Text();
    int n = 0;
    try {
        const std::string& place = WriteToFloppy ? platform.places.floppyRoot : platform.places.dataFolder;
        n = files.FreeFile();
        files.OpenOutput(n, place + "NumCats.csv");
        files.WriteLine(n, CategoryCount);
        files.Close(n);
        n = files.FreeFile();
        files.OpenOutput(n, place + "CatFiles.csv");
        const int count = lstCategory.ListCount();
        for (int i = 0; i < count; ++i) {
            lstCategory.setSelected(i);
            files.WriteLine(n, std::string_view(lstCategory.Text()));
        }
        files.Close(n);
    } catch (const Failure&) {
        // An index that could not be written whole is dropped: the old one stands.
        files.Abandon(n);
    }
    lstCategory.setText(remembered);
}

} // namespace qm

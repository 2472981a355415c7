#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

namespace {
constexpr const char* kCountFile = "NumCats.csv";
constexpr const char* kNamesFile = "CatFiles.csv";
} // namespace

// Fills the list from "NumCats.csv" and "CatFiles.csv": exactly as many names
// as the count says. It adds to the list and never selects an entry; any
// failure ends it with what was done so far, and its file closed. An index
// that exists but can't be read (a read error, a count that is no 16-bit
// number of entries) is kept from being written over for the rest of the run.
void frmMain::LoadCategoryList() {
    const std::string& place = ReadFromFloppy ? platform.places.floppyRoot : platform.places.dataFolder;
    bool unreadable = false;
    int n = 0;
    try {
        n = files.FreeFile();
        files.OpenInput(n, place + kCountFile);
        CategoryCount = storage::Value::text(files.ReadField(n));
        files.Close(n);
        files.OpenInput(n, place + kNamesFile);
        std::optional<int> count = CategoryCount.toInt16();
        if (!count || *count < 0) {
            // An empty count is what an exit with no category ever made leaves:
            // nothing to keep. Any other count that is no count is kept as found.
            files.Close(n);
            if (CategoryCount.asText().find_first_not_of(" \t") != std::string::npos) keepIndex(place);
            return;
        }
        for (int i = 0; i < *count; ++i) lstCategory.AddItem(files.ReadField(n));
        files.Close(n);
    } catch (const forms::FileNotFound&) {
        files.Close(n);
    } catch (const forms::EndOfFile&) {
        files.Close(n);
    } catch (const Failure&) {
        files.Close(n);
        unreadable = true;
    }
    if (unreadable) keepIndex(place);
}

void frmMain::keepIndex(const std::string& place) {
    UnreadableFiles.insert(place + kCountFile);
    UnreadableFiles.insert(place + kNamesFile);
}

// Writes the count and the names. It reads the names by selecting each entry
// in turn, so every category passes through the switch and is stored again:
// the walk. The selection goes back to where it was at the end.
void frmMain::SaveCategoryList() {
    const std::string remembered = lstCategory.Text();
    const std::string& place = WriteToFloppy ? platform.places.floppyRoot : platform.places.dataFolder;
    const bool keepIndex = UnreadableFiles.count(place + kCountFile) || UnreadableFiles.count(place + kNamesFile);
    int n = 0;
    try {
        if (!keepIndex) {
            n = files.FreeFile();
            files.OpenOutput(n, place + kCountFile);
            files.WriteLine(n, CategoryCount);
            files.Close(n);
            n = files.FreeFile();
            files.OpenOutput(n, place + kNamesFile);
        }
        const int count = lstCategory.ListCount();
        for (int i = 0; i < count; ++i) {
            lstCategory.setSelected(i);
            if (!keepIndex) files.WriteLine(n, std::string_view(lstCategory.Text()));
        }
        if (!keepIndex) files.Close(n);
    } catch (const Failure&) {
        // An index that could not be written whole is dropped: the old one stands.
        files.Abandon(n);
    }
    lstCategory.setText(remembered);
}

} // namespace qm

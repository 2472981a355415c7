#include "mainwindow/frm_main.h"
#include "storage/places.h"

namespace qm {

// Copies the database to the floppy root: the index and every category file
// reach it through a walk with the writes turned to the floppy. The data
// folder is brought up to date first, and is only read during the copy. At
// the end every file is read back from the disk, and "Save complete." is said
// only of a copy that is whole.
void frmMain::cmdSave_Click() {
    if (Message("Please insert a blank disk into A:\\ to save files to disk.. A message box will appear when save is "
                "complete. Please be patient, this may take a few minutes.",
                forms::vbOKCancel) == forms::vbCancel)
        return;
    txtLoading.setVisible(true);
    SaveCategoryList();
    SaveCategoryFile();
    if (SaveFailed || UnsavedToldThisEvent) {
        // A category the walk could not store is still only in the window: the
        // copy's walk would replace it with what the data folder holds.
        txtLoading.setVisible(false);
        Message("Nothing was copied to the disk, because not everything could be stored on this computer first. "
                "Please check this computer's disk (is it full?) and save again.");
        return;
    }
    // A category the disk refuses is noted at the end; the walk goes on.
    StickCapitalsEscaped = storage::CaseBlindClashes(lstCategory.items());
    WriteToFloppy = true;
    SaveCategoryList();
    SaveCategoryFile();
    WriteToFloppy = false;
    const std::vector<std::string> missing = NotCopiedToStick();
    if (missing.empty()) {
        Message("Save complete.");
    } else {
        Message("The copy on the disk is not complete. Not copied: " + NamedList(missing) +
                ". Everything is still on this computer. Please check the disk (is it in, writable and not full?) "
                "and save again.");
    }
}

} // namespace qm

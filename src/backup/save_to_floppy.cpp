#include "mainwindow/frm_main.h"

namespace qm {

// Copies the database to the floppy root: the index and every category file
// reach it through a walk with the writes turned to the floppy. The data
// folder is brought up to date first, and is only read during the copy.
void frmMain::cmdSave_Click() {
    if (Message("Please insert a blank disk into A:\\ to save files to disk.. A message box will appear when save is "
                "complete. Please be patient, this may take a few minutes.",
                forms::vbOKCancel) == forms::vbCancel)
        return;
    txtLoading.setVisible(true);
    SaveCategoryList();
    SaveCategoryFile();
    WriteToFloppy = true;
    SaveCategoryList();
    SaveCategoryFile();
    WriteToFloppy = false;
    Message("Save complete.");
}

} // namespace qm

#include "forms/failure.h"
#include "mainwindow/frm_main.h"
#include "storage/places.h"

namespace qm {

using forms::Failure;

// Replaces the database with the floppy's copy: every category comes from the
// floppy into the grid and from the grid into the emptied data folder.
void frmMain::cmdLoad_Click() {
    if (Message("WARNING: Loading from floppy will erase all information from hard drive and replace it with files from "
                "loaded floppy. If you would like to keep your current database files, choose 'cancel' and save to "
                "another floppy. Otherwise, choose 'Okay.",
                forms::vbOKCancel) == forms::vbCancel)
        return;
    if (Message("Please insert database disk into A:\\. A message box will appear when load is complete. Please be "
                "patient, this may take a few minutes.",
                forms::vbOKCancel) == forms::vbCancel)
        return;
    CompleteIndexPair(platform.places.floppyRoot); // a save to it that was cut short
    if (!FloppyIndexReadable()) {
        Message("The disk in " + platform.places.floppyRoot +
                " holds no Quillmere database that can be loaded. Nothing was changed.");
        return;
    }

    // The stick's names are in the list now: they tell its files' names.
    auto loadEveryCategory = [this] {
        StickCapitalsEscaped = storage::CaseBlindClashes(lstCategory.items());
        const int count = CategoryCount.toInt16().value_or(0);
        for (int i = 0; i < count; ++i) {
            lstCategory.setSelected(i);
            LoadCategoryFile();
        }
    };
    try {
        txtLoading.setVisible(true);
        lstCategory.Clear();
        files.KillMatching(platform.places.dataFolder, ".csv");
        UnreadableFiles.clear(); // what couldn't be read is gone
        ReadFromFloppy = true;
        LoadCategoryList();
        loadEveryCategory();
    } catch (const Failure&) {
        // The second pass: an empty data folder, where the delete finds nothing,
        // ends up here and is loaded in full.
        try {
            ReadFromFloppy = true;
            lstCategory.Clear();
            LoadCategoryList();
            loadEveryCategory();
        } catch (const Failure&) {
        }
    }
    ReadFromFloppy = false;
    // The index at once: the data folder holds the categories now, and a start
    // before the next walk must find them listed.
    StoreIndex(platform.places.dataFolder, false);
    const std::vector<std::string> missing = NotLoadedFromStick();
    if (missing.empty()) {
        Message("Load complete.");
    } else {
        Message("The load from the disk is not complete. Not loaded whole: " + NamedList(missing) +
                ". Please check the disk and load again.");
    }
}

} // namespace qm

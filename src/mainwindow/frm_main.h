#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "forms/controls.h"
#include "forms/form.h"
#include "forms/grid.h"
#include "forms/listbox.h"
#include "forms/revision_store.h"
#include "mainwindow/platform.h"
#include "mainwindow/totals.h"
#include "storage/file_table.h"
#include "storage/value.h"

namespace qm {

class frmPic;
class frmProperties;
class frmHow;
class frmAbout;
class frmContact;
class frmFind;
class frmImport;
class frmReport;

// The main window: the category list, the item grid with its cell editor and
// totals, the command buttons and the menu bar. Its fields are the program's
// state; its procedures live in the folder of the subsystem they belong to.
class frmMain {
public:
    // ---- making and wiring (mainwindow/frm_main.cpp) ------------------------
    frmMain(Platform& platform, modGlobalVars& globals);
    ~frmMain();
    frmMain(const frmMain&) = delete;
    frmMain& operator=(const frmMain&) = delete;

    Platform& platform;
    modGlobalVars& globals;
    storage::FileTable files;

    forms::Form form;

    // ---- controls (laid out by declareLayout in mainwindow/frm_main.cpp) ----
    forms::Frame fraCategory;
    forms::Button cmdAddCategory;
    forms::Button cmdDeleteCategory;
    forms::Button cmdRenameCat;
    forms::ListBox lstCategory;
    forms::TextBox txtLoading;
    forms::Label lblCategory;
    forms::CheckBox chkPic;

    forms::Frame fraFlexGrid;
    forms::Grid FG1;
    forms::TextBox T1;
    forms::Label Label1;
    forms::TextBox txtCost;
    forms::Label Label2;
    forms::TextBox txtValue;

    forms::Frame fraButtons;
    forms::Button cmdAddAsset;
    forms::Button cmdDeleteAsset;
    forms::Button cmdRenameItem;
    forms::Button cmdSave;
    forms::Button cmdLoad;
    forms::Button cmdPrint;
    forms::Button cmdExit;

    // ---- fields (set and read by the procedures below, in their files) ----
    storage::Value CategoryCount;
    std::optional<std::string> CurrentCategory; // nothing until the first switch
    bool WriteToFloppy = false;
    bool ReadFromFloppy = false;
    bool RenamePending = false;
    std::optional<std::string> RenameTarget;
    std::string NewCategoryName;
    std::int16_t AddItemPending = 0; // True is -1
    int ItemRowCount = 1;
    int SaveFileNumber = 0;
    int LoadFileNumber = 0;

    // Every name this window has seen in the data folder's index or listed
    // itself in this run: one that another writer's index lists and this
    // window does not is taken in only if it is new here (TakeInNamesListedElsewhere).
    std::set<std::string> IndexNamesSeen;
    // Category files that exist but could not be read whole in this run: never written over.
    std::set<std::string> UnreadableFiles;
    // Categories whose unreadable file the user has been told of.
    std::set<std::string> UnreadableTold;
    // The names of the index being backed up or loaded whose files on the stick
    // escape their capitals (storage::CaseBlindClashes).
    std::set<std::string> StickCapitalsEscaped;
    // What a start that repaired the data folder's index tells the user, or "".
    std::string IndexRepairedMessage;
    // The texts of categories the grid held before, kept while a file is
    // known to hold them: a switch back takes them instead of reading and
    // splitting the file again. Every click on the list runs a walk over all
    // categories, so this spares reading the whole database each time.
    forms::RevisionStore<forms::Grid::Texts> keptCategories{64u << 20};
    // Whether the last SaveCategoryFile met a failure, so that a caller about to
    // replace the grid can keep what did not reach the disk.
    bool SaveFailed = false;
    // A save failed before the grid was to be replaced, so the grid was kept:
    // the user has been told in the current event (once is enough).
    bool UnsavedToldThisEvent = false;
    // The switch puts the selection back on the category it could not leave;
    // that selection runs no switch.
    bool KeepingSelection = false;
    // Another program's versions of categories that were changed here too,
    // each kept as a category of its own: to be listed, to be told.
    struct KeptVersion {
        std::string name, copy;
    };
    std::vector<KeptVersion> KeptVersionsToList, KeptVersionsToTell;

    // ---- start and stop (mainwindow/program.cpp) --------------------------
    // Loads the window, shows it and gives the focus to the first control in tab order.
    void Start();
    void Form_Load();
    void cmdExit_Click();
    // The window closed by the window manager: Exit's steps, asking first, as
    // Exit does, when the open category can't be stored.
    void Form_Terminate();
    // The end of the session (a signal, the logout): Exit's steps without a
    // question, since the program can't stay.
    void EndOfSession();
    void SetupGrid();
    // The headings SetupGrid writes into row 0.
    static const char* const kColumnHeadings[7];
    bool ended() const { return ended_; }

    // ---- storage: the index (storage/category_index.cpp) --------------------
    void LoadCategoryList();
    // Both true when the index reached the disk.
    bool SaveCategoryList();
    bool StoreIndex(const std::string& place, bool walk);
    // Adds to the list the names another writer added to the data folder's index.
    void TakeInNamesListedElsewhere();
    // Whether the index in this place (in the data folder) could not be read
    // and is kept as it is.
    bool IndexKeptAt(const std::string& place) const;
    bool IndexKept() const;
    // Finishes or drops a change of the index pair that an end of the process cut.
    void CompleteIndexPair(const std::string& place);
    // Puts the names (written whole under n) and the count in place as a pair.
    void CommitIndexPair(const std::string& place, int n, const std::string& countLine, const std::string& names);

    // ---- storage: the category file (storage/category_file.cpp) ------------
    void SaveCategoryFile();
    void LoadCategoryFile();
    void openCategoryFile(const std::string& path);
    bool passHeldCells();

    // ---- file names (mainwindow/frm_main.cpp) -------------------------------
    std::string CategoryPath(const std::string& place, const std::string& name) const;
    // "NumCats.csv" or "CatFiles.csv" in either place.
    bool IsIndexFile(const std::string& path) const;

    // ---- versions changed elsewhere too (storage/kept_versions.cpp) ---------
    // Copies the file of a category that another program changed to a new
    // category's file, before the grid is written over it; fails when it can't.
    void KeepOtherVersion(const std::string& name, const std::string& path);
    std::string KeptVersionName(const std::string& name);
    void ListKeptVersions();
    void TellKeptVersions();
    // One sentence a version not told yet; "" when there is none.
    std::string KeptVersionsText();

    // ---- switching (mainwindow/switching.cpp) ------------------------------
    void lstCategory_Click();
    void lstCategory_GotFocus();
    // Stores the open category under RenameTarget and the index naming it, and
    // only then removes the old file; if a step fails nothing is renamed and
    // the user is told.
    void CompleteRename();
    void lblCategory_Change();
    void ParkControls();
    void RestoreControls();
    // Whether the grid holds a category of the list whose last save failed: it
    // must not be replaced until it has been saved.
    bool MustKeepGrid() const;
    // Tells the user, once per event and never while the program ends, that a
    // category could not be saved and stays in the window.
    void ReportUnsaved(const std::string& name);
    // Whether the open category's file exists but can't be read: nothing typed
    // in it can be stored, and the commands that change its items refuse.
    bool OpenCategoryUnreadable() const;
    std::string UnreadableMessage(const std::string& name) const;
    // Tells it once, when the event has ended, until the file is read again.
    void ReportUnreadable(const std::string& name);
    // Tells it now and answers true when the open category is unreadable.
    bool RefuseUnreadable();
    // The same for the data folder's index when it could not be read.
    std::string IndexKeptMessage() const;
    bool RefuseKeptIndex();

    // ---- cell editor (mainwindow/cell_editor.cpp) --------------------------
    void BeginCellEdit();
    void FG1_GotFocus();
    void FG1_Scroll();
    void FG1_Click();
    void FG1_KeyDown(int& KeyCode, int Shift);
    void T1_Change();
    // The two cell handlers and their replay: a load that skips reading a file
    // the grid holds already (passHeldCells) replays them instead of running
    // them, so a change to what they do is a change to ReplayCellEvents too.
    void FG1_LeaveCell();
    [[gnu::noinline]] void leaveCellTakingFocus();
    void FG1_EnterCell();
    // Whether the two handlers now only colour the cell left (and move the tag).
    bool CellEventsOnlyColour() const;
    // The colour FG1_LeaveCell gives the cell it leaves.
    static constexpr forms::Color kLeftCellColour = forms::syscolor::Window;
    // Moves the current cell forward to (row, col) as the handlers would, without
    // running them; false, doing nothing, unless CellEventsOnlyColour.
    bool ReplayCellEvents(int row, int col);

    // ---- cell editor keys (mainwindow/cell_editor_keys.cpp) ----------------
    void T1_KeyDown(int& KeyCode, int Shift);
    void T1_KeyPress(int& KeyAscii);
    void FG1_KeyPress(int& KeyAscii);
    void ShowCurrentCell();

    // ---- totals (mainwindow/totals.cpp) -------------------------------------
    void UpdateTotals();

    // ---- floppy backup (backup/save_to_floppy.cpp, backup/load_from_floppy.cpp)
    void cmdSave_Click();
    void cmdLoad_Click();

    // ---- what a backup did not copy (backup/copy_check.cpp) -----------------
    // Whether the floppy root holds an index that a load can read whole.
    bool FloppyIndexReadable();
    // What did not arrive whole at the other place, named for the user: the
    // list of categories, and categories by their names in quotes.
    std::vector<std::string> NotCopiedToStick();
    std::vector<std::string> NotLoadedFromStick();
    // Up to ten of them, then "and N more".
    static std::string NamedList(const std::vector<std::string>& items);

    // ---- pictures (pictures/frm_pic.cpp) --------------------------------------
    void chkPic_Click();
    void T1_GotFocus();
    // Whether a path is the index or the file of a category in the list.
    bool IsDatabaseFile(const std::string& path) const;

    // ---- appearance (appearance/colors.cpp) ---------------------------------
    void LoadColors();

    // ---- printing (printing/category_printing.cpp) --------------------------
    void cmdPrint_Click();

    // ---- inventory report (report/inventory_report.cpp) ---------------------
    void mnuReport_Click();
    // The report of these categories, as the window shows each, into a PDF
    // file the user names; with the pictures of the items if asked.
    void MakeInventoryReport(const std::vector<std::string>& names, bool pictures);

    // ---- category commands (commands/category_commands.cpp) ----------------
    void cmdAddCategory_Click();
    void cmdRenameCat_Click();
    void cmdDeleteCategory_Click();
    void mnuDelAllCats_Click();
    // False, with the category back in the list and its file kept, when the
    // index without it could not be stored.
    bool RemoveSelectedCategory();
    // Why a name can't be a category, or "" when it can.
    std::string CategoryNameProblem(const std::string& name) const;
    // After the last category has gone: nothing open, nothing shown.
    void ClearOpenCategory();
    // Add Category's steps after its prompt: the name's rules, the walk for a
    // duplicate, the new entry opened and the index stored. False, the user
    // told, when the category was not made.
    bool AddCategoryNamed(std::string name);

    // ---- spreadsheet import (import/frm_import.cpp) -------------------------
    void mnuImport_Click();

    // ---- item commands (commands/item_commands.cpp) ------------------------
    void cmdAddAsset_Click();
    void cmdRenameItem_Click();
    void cmdDeleteAsset_Click();
    void mnuDelItems_Click();

    // ---- message boxes (mainwindow/frm_main.cpp) ---------------------------
    // A message box with the program's title.
    int Message(const std::string& text, int buttons = forms::vbOKOnly);

    // ---- other windows (mainwindow/frm_main.cpp) ---------------------------
    // frmPic is made at its first use and stays until the end; the others are
    // made at their first use and dropped again by their OK or Close.
    frmPic& Pic();
    bool hasPic() const { return pic_ != nullptr; }
    frmProperties& Properties();
    frmProperties* propertiesIfLoaded() const { return properties_.get(); }
    void UnloadProperties();
    frmHow& How();
    frmHow* howIfLoaded() const { return how_.get(); }
    void UnloadHow();
    frmAbout& About();
    frmAbout* aboutIfLoaded() const { return about_.get(); }
    void UnloadAbout();
    frmContact& Contact();
    frmContact* contactIfLoaded() const { return contact_.get(); }
    void UnloadContact();
    frmFind& Find();
    frmFind* findIfLoaded() const { return find_.get(); }
    void UnloadFind();
    frmImport* importIfLoaded() const { return import_.get(); }
    void UnloadImport();
    frmReport& Report();
    frmReport* reportIfLoaded() const { return report_.get(); }
    void UnloadReport();

private:
    // mainwindow/frm_main.cpp
    void declareLayout();
    void wireEvents();
    forms::MenuItem& menu(const std::string& name);
    // storage/category_index.cpp: the index in this place could not be read:
    // it is not written over in this run.
    void keepIndex(const std::string& place);
    // mainwindow/program.cpp. mayStay: the user may keep the program open when
    // the open category can't be stored.
    void runExitSteps(bool mayStay);
    // mainwindow/switching.cpp: tells after the event, as a failed save is told.
    void ReportLater(const std::string& text);

    TotalsCache totalsCache_;
    std::unique_ptr<frmPic> pic_;
    std::unique_ptr<frmProperties> properties_;
    std::unique_ptr<frmHow> how_;
    std::unique_ptr<frmAbout> about_;
    std::unique_ptr<frmContact> contact_;
    std::unique_ptr<frmFind> find_;
    std::unique_ptr<frmImport> import_;
    std::unique_ptr<frmReport> report_;
    bool ended_ = false;
    bool askingToStay_ = false;
};

} // namespace qm

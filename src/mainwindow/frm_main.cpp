#include "mainwindow/frm_main.h"

#include <stdexcept>
#include <string_view>

#include "appearance/frm_properties.h"
#include "find/frm_find.h"
#include "import/frm_import.h"
#include "infowindows/frm_about.h"
#include "infowindows/frm_how.h"
#include "pictures/frm_pic.h"
#include "report/frm_report.h"
#include "storage/index_files.h"

namespace qm {

using forms::Font;

frmMain::frmMain(Platform& p, modGlobalVars& g)
    : platform(p), globals(g), files(p.files), form(p.runtime, "frmMain"),
      fraCategory(form, nullptr, "fraCategory"),
      cmdAddCategory(form, &fraCategory, "cmdAddCategory"),
      cmdDeleteCategory(form, &fraCategory, "cmdDeleteCategory"),
      cmdRenameCat(form, &fraCategory, "cmdRenameCat"),
      lstCategory(form, &fraCategory, "lstCategory"),
      txtLoading(form, &fraCategory, "txtLoading"),
      lblCategory(form, &fraCategory, "lblCategory"),
      chkPic(form, &fraCategory, "chkPic"),
      fraFlexGrid(form, nullptr, "fraFlexGrid"),
      FG1(form, &fraFlexGrid, "FG1"),
      T1(form, &fraFlexGrid, "T1"),
      Label1(form, &fraFlexGrid, "Label1"),
      txtCost(form, &fraFlexGrid, "txtCost"),
      Label2(form, &fraFlexGrid, "Label2"),
      txtValue(form, &fraFlexGrid, "txtValue"),
      fraButtons(form, nullptr, "fraButtons"),
      cmdAddAsset(form, &fraButtons, "cmdAddAsset"),
      cmdDeleteAsset(form, &fraButtons, "cmdDeleteAsset"),
      cmdRenameItem(form, &fraButtons, "cmdRenameItem"),
      cmdSave(form, &fraButtons, "cmdSave"),
      cmdLoad(form, &fraButtons, "cmdLoad"),
      cmdPrint(form, &fraButtons, "cmdPrint"),
      cmdExit(form, &fraButtons, "cmdExit"),
      totalsCache_(FG1) {
    declareLayout();
    wireEvents();
    form.announce();
}

frmMain::~frmMain() {
    find_.reset();
    import_.reset();
    report_.reset();
    contact_.reset();
    about_.reset();
    how_.reset();
    properties_.reset();
    pic_.reset();
    form.retire();
}

frmPic& frmMain::Pic() {
    if (!pic_) pic_ = std::make_unique<frmPic>(*this);
    return *pic_;
}

// Asked at every load and save of a walk: compared in place, nothing built.
bool frmMain::IsIndexFile(const std::string& path) const {
    const std::string_view p(path);
    for (const std::string* place : {&platform.places.dataFolder, &platform.places.floppyRoot})
        for (const std::string_view name : {storage::kCountFile, storage::kNamesFile})
            if (p.size() == place->size() + name.size() && p.starts_with(*place) && p.ends_with(name)) return true;
    return false;
}

namespace {
// A window made at its first use.
template <class W>
W& loaded(std::unique_ptr<W>& window, frmMain& main) {
    if (!window) window = std::make_unique<W>(main);
    return *window;
}
// Unloading hides the window at once and drops it once the event that asked
// for it has ended: its own button's handler may still be running.
template <class W>
void unload(std::unique_ptr<W>& window, forms::Runtime& runtime) {
    if (!window) return;
    window->form.setVisible(false);
    W* gone = window.get();
    runtime.post([&window, gone] {
        if (window.get() == gone) window.reset();
    });
}
} // namespace

frmProperties& frmMain::Properties() { return loaded(properties_, *this); }
void frmMain::UnloadProperties() { unload(properties_, platform.runtime); }
frmHow& frmMain::How() { return loaded(how_, *this); }
void frmMain::UnloadHow() { unload(how_, platform.runtime); }
frmAbout& frmMain::About() { return loaded(about_, *this); }
void frmMain::UnloadAbout() { unload(about_, platform.runtime); }
frmContact& frmMain::Contact() { return loaded(contact_, *this); }
void frmMain::UnloadContact() { unload(contact_, platform.runtime); }
frmFind& frmMain::Find() { return loaded(find_, *this); }
void frmMain::UnloadFind() { unload(find_, platform.runtime); }
void frmMain::UnloadImport() { unload(import_, platform.runtime); }
frmReport& frmMain::Report() { return loaded(report_, *this); }
void frmMain::UnloadReport() { unload(report_, platform.runtime); }

std::string frmMain::CategoryPath(const std::string& place, const std::string& name) const {
    if (place == platform.places.floppyRoot && place != platform.places.dataFolder)
        return place + storage::StickStem(name, StickCapitalsEscaped.count(name) > 0) + ".csv";
    return place + storage::FileStem(name) + ".csv";
}

void frmMain::wireEvents() {
    lstCategory.Click = [this] { lstCategory_Click(); };
    lstCategory.GotFocus = [this] { lstCategory_GotFocus(); };
    lblCategory.Change = [this] { lblCategory_Change(); };
    FG1.GotFocus = [this] { FG1_GotFocus(); };
    // A load that skips reading a file replays these two instead of running
    // them (ReplayCellEvents): another handler here needs a replay there.
    FG1.LeaveCell = [this] { FG1_LeaveCell(); };
    FG1.EnterCell = [this] { FG1_EnterCell(); };
    FG1.Scroll = [this] { FG1_Scroll(); };
    FG1.Click = [this] { FG1_Click(); };
    T1.Change = [this] { T1_Change(); };
    T1.KeyDown = [this](int& code, int shift) { T1_KeyDown(code, shift); };
    T1.KeyPress = [this](int& ascii) { T1_KeyPress(ascii); };
    FG1.KeyPress = [this](int& ascii) { FG1_KeyPress(ascii); };
    FG1.KeyDown = [this](int& code, int shift) { FG1_KeyDown(code, shift); };

    auto bind = [this](forms::Button& button, const char* menuEntry, void (frmMain::*command)()) {
        button.Click = [this, command] { (this->*command)(); };
        if (menuEntry) menu(menuEntry).Click = [this, command] { (this->*command)(); };
    };
    bind(cmdExit, "mnuExit", &frmMain::cmdExit_Click);
    bind(cmdAddAsset, "mnuAddItem", &frmMain::cmdAddAsset_Click);
    bind(cmdDeleteAsset, "mnuDelItem", &frmMain::cmdDeleteAsset_Click);
    // The menu's Rename Item runs the same command as the button.
    bind(cmdRenameItem, "mnuRenameItem", &frmMain::cmdRenameItem_Click);
    menu("mnuDelItems").Click = [this] { mnuDelItems_Click(); };
    bind(cmdAddCategory, "mnuAddCat", &frmMain::cmdAddCategory_Click);
    bind(cmdDeleteCategory, "mnuDelCat", &frmMain::cmdDeleteCategory_Click);
    bind(cmdRenameCat, "mnuRenameCat", &frmMain::cmdRenameCat_Click);
    menu("mnuDelAllCats").Click = [this] { mnuDelAllCats_Click(); };
    bind(cmdSave, "mnuSave", &frmMain::cmdSave_Click);
    bind(cmdLoad, "mnuLoad", &frmMain::cmdLoad_Click);
    bind(cmdPrint, "mnuPrint", &frmMain::cmdPrint_Click);
    chkPic.Click = [this] { chkPic_Click(); };
    T1.GotFocus = [this] { T1_GotFocus(); };
    // The windows of the Edit and Help menus: shown, made first if need be.
    menu("mnuProperties").Click = [this] { Properties().form.setVisible(true); };
    menu("mnuContents").Click = [this] { How().form.setVisible(true); };
    menu("mnuContact").Click = [this] { Contact().form.setVisible(true); };
    menu("mnuAbout").Click = [this] { About().form.setVisible(true); };
    // Find again while it is open: back to its text box.
    menu("mnuFind").Click = [this] {
        frmFind& find = Find();
        find.form.setVisible(true);
        find.txtFind.TrySetFocus();
    };
    menu("mnuImport").Click = [this] { mnuImport_Click(); };
    menu("mnuReport").Click = [this] { mnuReport_Click(); };
}

forms::MenuItem& frmMain::menu(const std::string& name) {
    forms::MenuItem* item = form.menuBar().find(name);
    if (!item) throw std::logic_error("no menu entry " + name);
    return *item;
}

int frmMain::Message(const std::string& text, int buttons) { return platform.dialogs.MsgBox(text, buttons, kAppTitle); }

// The window as it is designed: positions and sizes in twips inside each
// control's frame, fonts, captions with their access keys, tab order.
void frmMain::declareLayout() {
    const Font comic{"Comic Sans MS", 8.25, false};
    const Font comic12{"Comic Sans MS", 12, false};
    const Font sans{"MS Sans Serif", 8.25, false};

    form.Caption = kAppTitle;
    form.ClientWidth = 11025;
    form.ClientHeight = 7200;
    form.Border = forms::BorderStyle::Fixed;
    form.ControlBox = false;
    form.Centered = true;
    form.font = comic;

    auto place = [](forms::Control& c, int left, int top, int width, int height, int tab, const Font& font) {
        c.move(left, top, width, height);
        c.setTabIndex(tab);
        c.setFont(font);
    };

    place(fraCategory, 120, 120, 10815, 1815, 12, sans);
    place(fraFlexGrid, 120, 2040, 10815, 4215, 14, sans);
    place(fraButtons, 120, 6240, 10815, 855, 13, sans);
    for (forms::Frame* f : {&fraCategory, &fraFlexGrid, &fraButtons}) f->setTabStop(false);

    place(cmdAddCategory, 120, 240, 1575, 495, 0, sans);
    cmdAddCategory.Caption = "Add Category";
    place(cmdDeleteCategory, 120, 720, 1575, 495, 1, sans);
    cmdDeleteCategory.Caption = "Delete Category";
    place(cmdRenameCat, 120, 1200, 1575, 495, 2, sans);
    cmdRenameCat.Caption = "Rename Category";
    place(lstCategory, 1800, 240, 2535, 1425, 11, comic);
    lstCategory.Sorted = true;
    lstCategory.setAccessibleName("Categories");
    place(txtLoading, 1800, 240, 2535, 1455, 21, comic);
    txtLoading.setText("Loading...");
    txtLoading.setVisible(false);
    txtLoading.Locked = true;
    place(lblCategory, 4560, 600, 210, 1005, 20, Font{"Comic Sans MS", 36, false});
    lblCategory.AutoSize = true;
    lblCategory.setForeColor(0);
    place(chkPic, 4680, 1440, 2415, 255, 22, comic);
    chkPic.Caption = "Show/Hide Picture of Item";

    place(FG1, 120, 240, 10575, 3255, 10, comic);
    FG1.setAccessibleName("Items");
    FG1.setVisible(false);
    FG1.setCols(7);
    FG1.setRows(1);
    FG1.setFixedRows(0);
    FG1.setFixedCols(0);
    FG1.setBackColor(forms::syscolor::Menu);
    FG1.setForeColor(forms::syscolor::WindowText);
    place(T1, 1200, 960, 975, 285, 19, sans);
    T1.setVisible(false);
    T1.setTabStop(false);
    T1.setStandsFor(&FG1);
    T1.setBackColor(0x0000C000);
    place(Label1, 120, 3600, 3495, 375, 17, comic12);
    Label1.setCaption("Total cost of items in category:");
    place(txtCost, 3720, 3600, 1575, 405, 18, comic12);
    txtCost.setEnabled(false);
    txtCost.setAccessibleName("Total cost of items in category");
    txtCost.setLabelledBy(&Label1);
    place(Label2, 5520, 3600, 3615, 375, 16, comic12);
    Label2.setCaption("Total value of items in category:");
    place(txtValue, 9120, 3600, 1575, 375, 15, comic12);
    txtValue.setEnabled(false);
    txtValue.setAccessibleName("Total value of items in category");
    txtValue.setLabelledBy(&Label2);

    struct B { forms::Button* b; const char* caption; int left; int tab; };
    for (const B& b : {B{&cmdAddAsset, "Add Item", 120, 3}, B{&cmdDeleteAsset, "Delete Item", 1560, 4},
                       B{&cmdRenameItem, "Rename Item", 3000, 5}, B{&cmdSave, "&Save to disk", 4680, 6},
                       B{&cmdLoad, "&Load from Disk", 6120, 7}, B{&cmdPrint, "&Print", 7800, 8},
                       B{&cmdExit, "E&xit", 9240, 9}}) {
        place(*b.b, b.left, 240, 1455, 495, b.tab, sans);
        b.b->Caption = b.caption;
    }

    forms::MenuItem& bar = form.menuBar();
    forms::MenuItem& file = bar.add("mnuFile", "&File");
    file.add("mnuSave", "&Save to Floppy", "Ctrl+S");
    file.add("mnuLoad", "&Load from Floppy", "Ctrl+L");
    file.add("mnuHyphen", "-");
    file.add("mnuPrint", "Print", "Ctrl+P");
    file.add("mnuHyphen0", "-");
    file.add("mnuExit", "Exit", "Ctrl+X");
    file.add("mnuHyphen7", "-");
    file.add("mnuImport", "Import Spreadsheet...");
    file.add("mnuReport", "Inventory Report...");
    forms::MenuItem& edit = bar.add("mnuEdit", "&Edit");
    forms::MenuItem& cats = edit.add("mnuCategories", "&Categories");
    cats.add("mnuAddCat", "Add Category", "F1");
    cats.add("mnuDelCat", "Delete Category", "Shift+F1");
    cats.add("mnuRenameCat", "Rename Category", "Ctrl+F1");
    cats.add("mnuHyphen1", "-");
    cats.add("mnuDelAllCats", "Delete All Categories");
    forms::MenuItem& items = edit.add("mnuItems", "&Items");
    items.add("mnuAddItem", "Add Item", "F2");
    items.add("mnuDelItem", "Delete Item", "Shift+F2");
    items.add("mnuRenameItem", "Rename Item", "Ctrl+F2");
    items.add("mnuHyphen2", "-");
    items.add("mnuDelItems", "Delete All Items", "Shift+Ctrl+F2");
    edit.add("mnuHyphen3", "-");
    edit.add("mnuProperties", "Properties", "Ctrl+R");
    edit.add("mnuHyphen6", "-");
    edit.add("mnuFind", "Find...", "Ctrl+F");
    forms::MenuItem& help = bar.add("mnuHelp", "&Help");
    help.add("mnuContents", "Contents", "Ctrl+H");
    help.add("mnuHyphen4", "-");
    help.add("mnuContact", "Contact Me", "Ctrl+C");
    help.add("mnuHyphen5", "-");
    help.add("mnuAbout", "About Quillmere", "Ctrl+A");
}

} // namespace qm

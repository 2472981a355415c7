#include "pictures/frm_pic.h"

#include "forms/declaration.h"
#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

std::string LinkPath(const std::string& dataFolder, const std::string& category, const std::string& item) {
    return dataFolder + storage::FileStem(category + item) + ".csv";
}

frmPic::frmPic(frmMain& m)
    : main(m), form(m.platform.runtime, "frmPic"), cmdAddPic(form, nullptr, "cmdAddPic"),
      cmdClose(form, nullptr, "cmdClose"), picItem(form, nullptr, "picItem") {
    // The window has no close box; should the desktop close it anyway, it only hides.
    forms::declareWindow(form,
                         {.caption = "Item Picture",
                          .border = forms::BorderStyle::Sizable,
                          .controlBox = false,
                          .centered = false,
                          .font = {"Comic Sans MS", 8.25, false},
                          .clientWidth = 4665,
                          .clientHeight = 3825},
                         [this] { cmdClose_Click(); });
    forms::declareButton(cmdAddPic, "Change &Picture", 120, 2760, 4455, 495, 0, [this] { cmdAddPic_Click(); });
    forms::declareButton(cmdClose, "&Close", 120, 3240, 4455, 495, 1, [this] { cmdClose_Click(); });
    cmdClose.Cancel = true;
    picItem.move(120, 120, 4365, 2475);
    picItem.setTabIndex(2);
    picItem.AutoSize = true;
    picItem.setAccessibleName("Item picture");
    picItem.Change = [this] { picItem_Change(); };
    form.announce();
}

frmPic::~frmPic() { form.retire(); }

void frmPic::ShowStockPicture() {
    const std::string path = main.platform.places.dataFolder + "NoPic.jpg";
    std::shared_ptr<forms::Picture> pic;
    try {
        pic = main.platform.pictures.LoadPicture(path);
    } catch (const Failure&) {
        pic = main.platform.pictures.placeholder();
    }
    picItem.setPicture(std::move(pic));
}

// Links another picture to the item of the current row: the picture shows at
// once, and its path is stored in the item's link file.
void frmPic::cmdAddPic_Click() {
    frmMain& m = main;
    int n = 1;
    try {
        std::optional<std::string> chosen = m.platform.dialogs.ShowOpen(kFilter);
        if (!chosen) return; // Cancel: picture and link stay as they were
        picItem.setPicture(m.platform.pictures.LoadPicture(*chosen));
        m.globals.PicturePath = *chosen;
        const std::string item(m.FG1.TextMatrix(m.FG1.Row(), 0));
        if (item.empty()) return;
        const std::string path = LinkPath(m.platform.places.dataFolder, m.lblCategory.Caption(), item);
        if (m.IsDatabaseFile(path)) return; // shown, but never stored over the index or a category
        m.files.Close(n);
        m.files.OpenOutput(n, path);
        m.files.WriteLine(n, std::string_view(m.globals.PicturePath));
        m.files.Close(n);
    } catch (const Failure&) {
        m.files.Abandon(n);
    }
}

void frmPic::cmdClose_Click() {
    form.setVisible(false);
    main.chkPic.setValue(0);
}

// The window fits itself around the picture; each step reads the size the
// window really took in the step before.
void frmPic::picItem_Change() {
    form.setHeight(picItem.Height() + 1800);
    form.setWidth(picItem.Width() + 350);
    cmdAddPic.setTop(form.Height() - 1600);
    cmdAddPic.setWidth(std::max(0, form.Width() - 350));
    cmdClose.setTop(form.Height() - 1075);
    cmdClose.setWidth(std::max(0, form.Width() - 350));
}

// ---- on frmMain ------------------------------------------------------------------

void frmMain::chkPic_Click() { Pic().form.setVisible(chkPic.Value() != 0); }

// Each opening of the editor loads the picture of its row, shown or not.
void frmMain::T1_GotFocus() {
    int n = 0;
    try {
        const std::string path = LinkPath(platform.places.dataFolder, lblCategory.Caption(), std::string(FG1.TextMatrix(FG1.Row(), 0)));
        n = files.FreeFile();
        files.OpenInput(n, path);
        globals.PicturePath = files.ReadField(n);
        globals.LinkRead = true;
        files.Close(n);
        Pic().picItem.setPicture(platform.pictures.LoadPicture(globals.PicturePath));
    } catch (const Failure&) {
        files.Close(n);
    }
    if (!globals.LinkRead) Pic().ShowStockPicture();
    globals.LinkRead = false;
}

bool frmMain::IsDatabaseFile(const std::string& path) const {
    const std::string& data = platform.places.dataFolder;
    if (IsIndexFile(path)) return true;
    for (const std::string& name : lstCategory.items())
        if (path == CategoryPath(data, name)) return true;
    return false;
}

} // namespace qm

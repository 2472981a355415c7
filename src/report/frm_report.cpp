#include "report/frm_report.h"

#include <string>
#include <vector>

#include "forms/declaration.h"
#include "mainwindow/frm_main.h"

namespace qm {

frmReport::frmReport(frmMain& m)
    : main(m), form(m.platform.runtime, "frmReport"), lblCategories(form, nullptr, "lblCategories"),
      lstCategories(form, nullptr, "lstCategories"), chkPictures(form, nullptr, "chkPictures"), cmdOK(form, nullptr, "cmdOK"),
      cmdCancel(form, nullptr, "cmdCancel") {
    declareLayout();
    form.announce();
    Form_Load();
}

frmReport::~frmReport() { form.retire(); }

void frmReport::declareLayout() {
    const forms::Font sans{"MS Sans Serif", 8.25, false};
    forms::declareWindow(form, {.caption = "Inventory Report", .font = sans, .clientWidth = 4680, .clientHeight = 4560},
                         [this] { cmdCancel_Click(); });
    lblCategories.move(120, 120, 4440, 255);
    lblCategories.setTabIndex(0);
    lblCategories.setCaption("&Categories in the report:");
    lstCategories.move(120, 420, 4440, 2895);
    lstCategories.setTabIndex(1);
    lstCategories.CheckBoxes = true;
    lstCategories.setAccessibleName("Categories in the report");
    lstCategories.setLabelledBy(&lblCategories);
    chkPictures.move(120, 3435, 4440, 315);
    chkPictures.setTabIndex(2);
    chkPictures.Caption = "Include &pictures of items";
    forms::declareButton(cmdOK, "&OK", 1920, 3915, 1215, 495, 3, [this] { cmdOK_Click(); });
    cmdOK.Default = true;
    forms::declareButton(cmdCancel, "Cancel", 3345, 3915, 1215, 495, 4, [this] { cmdCancel_Click(); });
    cmdCancel.Cancel = true;
}

void frmReport::Form_Load() {
    for (const std::string& name : main.lstCategory.items()) lstCategories.AddItem(name);
    if (lstCategories.ListCount() > 0) lstCategories.setSelected(0);
    chkPictures.setValue(1);
}

void frmReport::cmdOK_Click() {
    std::vector<std::string> chosen;
    for (int i = 0; i < lstCategories.ListCount(); ++i)
        if (lstCategories.Checked(i)) chosen.push_back(lstCategories.List(i));
    if (chosen.empty()) {
        main.Message("No category chosen for the report.");
        return;
    }
    const bool pictures = chkPictures.Value() != 0;
    main.UnloadReport();
    main.MakeInventoryReport(chosen, pictures);
}

void frmReport::cmdCancel_Click() { main.UnloadReport(); }

} // namespace qm

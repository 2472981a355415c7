#include "pictures/frm_pic.h"

#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

frmPic::frmPic(frmMain& m)
    : main(m), form(m.platform.runtime, "frmPic"), cmdAddPic(form, nullptr, "cmdAddPic"),
      cmdClose(form, nullptr, "cmdClose"), picItem(form, nullptr, "picItem") {
    declareLayout();
    form.announce();
}

frmPic::~frmPic() { form.retire(); }

void frmPic::declareLayout() {
    form.Caption = "Item Picture";
    form.Border = forms::BorderStyle::Sizable;
    form.ControlBox = false;
    form.Centered = false;
    form.font = forms::Font{"Comic Sans MS", 8.25, false};
    form.ClientWidth = 4665;
    form.ClientHeight = 3825;
    cmdAddPic.move(120, 2760, 4455, 495);
    cmdAddPic.setTabIndex(0);
    cmdAddPic.Caption = "Change &Picture";
    cmdClose.move(120, 3240, 4455, 495);
    cmdClose.setTabIndex(1);
    cmdClose.Caption = "&Close";
    cmdClose.Cancel = true;
    picItem.move(120, 120, 4365, 2475);
    picItem.setTabIndex(2);
    picItem.AutoSize = true;
}

void frmPic::ShowStockPicture() {
    const std::string path = main.platform.places.dataFolder + "NoPic.jpg";
    try {
        picItem.setPicture(main.platform.pictures.LoadPicture(path));
    } catch (const forms::Failure&) {
        picItem.setPicture(main.platform.pictures.placeholder());
    }
}

} // namespace qm

#include "infowindows/frm_how.h"

#include <algorithm>

#include "mainwindow/frm_main.h"

namespace qm {

frmHow::frmHow(frmMain& m)
    : main(m), form(m.platform.runtime, "frmHow"), wbsReadme(form, nullptr, "wbsReadme"), cmdClose(form, nullptr, "cmdClose") {
    form.Caption = "How does Quillmere work?";
    form.Border = forms::BorderStyle::Sizable;
    form.ControlBox = true;
    form.Centered = true;
    form.font = forms::Font{"Comic Sans MS", 8.25, false};
    form.ClientWidth = 8880;
    form.ClientHeight = 6030;
    wbsReadme.move(120, 120, 2295, 1455);
    wbsReadme.setTabIndex(0);
    cmdClose.move(120, 1680, 1215, 495);
    cmdClose.setTabIndex(1);
    cmdClose.setFont(forms::Font{"MS Sans Serif", 8.25, false});
    cmdClose.Caption = "&Close";
    cmdClose.Default = true;
    cmdClose.Click = [this] { cmdClose_Click(); };
    form.Resize = [this] { Form_Resize(); };
    form.CloseRequested = [this] { cmdClose_Click(); };
    form.announce();
    wbsReadme.Navigate(m.platform.places.dataFolder + "Readme.htm");
}

frmHow::~frmHow() { form.retire(); }

// The browser fills the window and the button runs under it; a window too
// small for them leaves them at no size rather than a negative one.
void frmHow::Form_Resize() {
    cmdClose.setTop(form.Height() - 1125);
    cmdClose.setWidth(std::max(0, form.Width() - 325));
    wbsReadme.setWidth(std::max(0, form.Width() - 325));
    wbsReadme.setHeight(std::max(0, form.Height() - 1375));
}

void frmHow::cmdClose_Click() { main.UnloadHow(); }

} // namespace qm

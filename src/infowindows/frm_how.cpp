#include "infowindows/frm_how.h"

#include <algorithm>

#include "forms/declaration.h"
#include "mainwindow/frm_main.h"

namespace qm {

frmHow::frmHow(frmMain& m)
    : main(m), form(m.platform.runtime, "frmHow"), wbsReadme(form, nullptr, "wbsReadme"), cmdClose(form, nullptr, "cmdClose") {
    forms::declareWindow(form,
                         {.caption = "How does Quillmere work?",
                          .border = forms::BorderStyle::Sizable,
                          .font = {"Comic Sans MS", 8.25, false},
                          .clientWidth = 8880,
                          .clientHeight = 6030},
                         [this] { cmdClose_Click(); });
    wbsReadme.move(120, 120, 2295, 1455);
    wbsReadme.setTabIndex(0);
    forms::declareButton(cmdClose, "&Close", 120, 1680, 1215, 495, 1, [this] { cmdClose_Click(); });
    cmdClose.Default = true;
    form.Resize = [this] { Form_Resize(); };
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

#pragma once
#include "forms/controls.h"
#include "forms/form.h"

namespace qm {

class frmMain;

// The help: the data folder's Readme.htm in a browser that fills the window.
class frmHow {
public:
    explicit frmHow(frmMain& main);
    ~frmHow();

    frmMain& main;
    forms::Form form;
    forms::Browser wbsReadme;
    forms::Button cmdClose;

    void Form_Resize();
    void cmdClose_Click();
};

} // namespace qm

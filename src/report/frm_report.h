#pragma once
#include "forms/controls.h"
#include "forms/form.h"
#include "forms/listbox.h"

namespace qm {

class frmMain;

// The choice of what goes into the inventory report: which categories (all
// ticked at first) and whether with pictures.
class frmReport {
public:
    explicit frmReport(frmMain& main);
    ~frmReport();

    frmMain& main;
    forms::Form form;
    forms::Label lblCategories;
    forms::ListBox lstCategories;
    forms::CheckBox chkPictures;
    forms::Button cmdOK;
    forms::Button cmdCancel;

    // The categories of the main window's list, all ticked.
    void Form_Load();
    void cmdOK_Click();
    void cmdCancel_Click();

private:
    void declareLayout();
};

} // namespace qm

#pragma once
#include "forms/controls.h"
#include "forms/form.h"

namespace qm {

class frmMain;

// The window that shows the picture of the item being edited. Made at its
// first use, only ever hidden, kept to the end of the run.
class frmPic {
public:
    explicit frmPic(frmMain& main);
    ~frmPic();

    frmMain& main;
    forms::Form form;
    forms::Button cmdAddPic;
    forms::Button cmdClose;
    forms::PictureBox picItem;

    // The stock picture, or a plain placeholder where it can't be read.
    void ShowStockPicture();

private:
    void declareLayout();
};

} // namespace qm

#pragma once
#include <string>

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

    static constexpr const char* kFilter =
        "jpg/jpeg Files (*.jpg;*.jpeg)|*.jpg;*.jpeg|gif Files (*.gif)|*.gif|All Files (*.*)|*.*";

    void cmdAddPic_Click();
    void cmdClose_Click();
    void picItem_Change();

    // The stock picture, or a plain placeholder where it can't be read.
    void ShowStockPicture();
};

// The link file of an item: category and item name joined, in the data folder.
std::string LinkPath(const std::string& dataFolder, const std::string& category, const std::string& item);

} // namespace qm

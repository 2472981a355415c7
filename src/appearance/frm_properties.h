#pragma once
#include "appearance/colors.h"
#include "forms/controls.h"
#include "forms/form.h"

namespace qm {

class frmMain;

// The colour settings: a swatch and a button for each of the five colours,
// Reset and OK. Every change applies at once and is stored at once.
class frmProperties {
public:
    explicit frmProperties(frmMain& main);
    ~frmProperties();

    frmMain& main;
    forms::Form form;
    forms::Label Label1;
    forms::Line Line2;
    forms::Shape shpCatHead;
    forms::Button cmdHColor;
    forms::Shape shpCell;
    forms::Button cmdSelected;
    forms::Shape shpCatList;
    forms::Button cmdCatColor;
    forms::Shape shpCellText;
    forms::Button cmdCellText;
    forms::Shape shpListText;
    forms::Button cmdListText;
    forms::Button cmdColorReset;
    forms::Line Line3;
    forms::Button cmdChange;

    forms::Shape& swatch(ColorSetting which);
    // Shows a colour on its swatch, named for a reader by its setting and the colour.
    void paintSwatch(ColorSetting which, forms::Color c);

    // The load step: paints the swatches from the colour files.
    void Form_Load();
    void ChooseColor(ColorSetting which);
    void cmdColorReset_Click();
    void cmdChange_Click();

private:
    void declareLayout();
};

} // namespace qm

#include "appearance/frm_properties.h"

#include "forms/declaration.h"
#include "forms/failure.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;

frmProperties::frmProperties(frmMain& m)
    : main(m), form(m.platform.runtime, "frmProperties"), Label1(form, nullptr, "Label1"), Line2(form, nullptr, "Line2"),
      shpCatHead(form, nullptr, "shpCatHead"), cmdHColor(form, nullptr, "cmdHColor"), shpCell(form, nullptr, "shpCell"),
      cmdSelected(form, nullptr, "cmdSelected"), shpCatList(form, nullptr, "shpCatList"),
      cmdCatColor(form, nullptr, "cmdCatColor"), shpCellText(form, nullptr, "shpCellText"),
      cmdCellText(form, nullptr, "cmdCellText"), shpListText(form, nullptr, "shpListText"),
      cmdListText(form, nullptr, "cmdListText"), cmdColorReset(form, nullptr, "cmdColorReset"),
      Line3(form, nullptr, "Line3"), cmdChange(form, nullptr, "cmdChange") {
    declareLayout();
    form.announce();
    Form_Load();
}

frmProperties::~frmProperties() { form.retire(); }

void frmProperties::declareLayout() {
    forms::declareWindow(
        form, {.caption = "Properties", .font = {"Comic Sans MS", 8.25, false}, .clientWidth = 6270, .clientHeight = 3615},
        [this] { cmdChange_Click(); });

    Label1.move(120, 240, 855, 375);
    Label1.setTabIndex(1);
    Label1.setFont(forms::Font{"Comic Sans MS", 12, false});
    Label1.setCaption("Colors:");
    Line2.move(120, 600, 0, 0);
    Line2.X2 = 6120;
    Line2.Y2 = 600;
    Line3.move(120, 2880, 0, 0);
    Line3.X2 = 6120;
    Line3.Y2 = 2880;

    struct S { forms::Shape* s; int left, top; forms::Color initial; };
    for (const S& s : {S{&shpCatHead, 120, 840, 0}, S{&shpCell, 3360, 840, 65280}, S{&shpCatList, 120, 1440, forms::syscolor::Window},
                       S{&shpCellText, 3360, 1440, 0}, S{&shpListText, 120, 2040, 0}}) {
        s.s->move(s.left, s.top, 495, 495);
        s.s->setTabStop(false);
        s.s->setBackColor(s.initial);
    }
    auto choose = [this](ColorSetting which) { return [this, which] { ChooseColor(which); }; };
    forms::declareButton(cmdHColor, "Category Heading Color", 720, 840, 2055, 495, 2, choose(ColorSetting::Heading));
    forms::declareButton(cmdSelected, "Selected Cell Color", 3960, 840, 2055, 495, 5, choose(ColorSetting::EditorBack));
    forms::declareButton(cmdCatColor, "Category List Box Color", 720, 1440, 2055, 495, 4, choose(ColorSetting::ListBack));
    forms::declareButton(cmdCellText, "Cell Text Color", 3960, 1440, 2055, 495, 6, choose(ColorSetting::CellText));
    forms::declareButton(cmdListText, "Category List Text Color", 720, 2040, 2055, 495, 7, choose(ColorSetting::ListText));
    forms::declareButton(cmdColorReset, "&Reset Colors to Default", 3360, 2040, 2655, 495, 3, [this] { cmdColorReset_Click(); });
    forms::declareButton(cmdChange, "&OK", 120, 3000, 6015, 495, 0, [this] { cmdChange_Click(); });
    cmdChange.Default = true;
    for (const ColorFile& cf : kColorFiles) paintSwatch(cf.which, swatch(cf.which).BackColor());
}

forms::Shape& frmProperties::swatch(ColorSetting which) {
    switch (which) {
    case ColorSetting::Heading: return shpCatHead;
    case ColorSetting::ListBack: return shpCatList;
    case ColorSetting::EditorBack: return shpCell;
    case ColorSetting::CellText: return shpCellText;
    case ColorSetting::ListText: return shpListText;
    }
    return shpCatHead;
}

void frmProperties::paintSwatch(ColorSetting which, forms::Color c) {
    forms::Shape& s = swatch(which);
    s.setBackColor(c);
    // In the order of ColorSetting.
    const forms::Button* const buttons[] = {&cmdHColor, &cmdCatColor, &cmdSelected, &cmdCellText, &cmdListText};
    s.setAccessibleName(buttons[static_cast<int>(which)]->Caption + ": " + ColorName(c));
}

void frmProperties::Form_Load() {
    storage::FileTable& files = main.files;
    files.Close(1); // a read of the start that failed may still hold it
    try {
        for (const ColorFile& cf : kColorFiles) {
            files.OpenInput(1, main.platform.places.dataFolder + cf.file);
            main.globals.ColorValue = files.ReadField(1);
            files.Close(1);
            paintSwatch(cf.which, ColorFromText(main.globals.ColorValue));
        }
    } catch (const Failure&) {
        files.Close(1);
    }
}

// One colour from the colour dialog: on the main window, on its swatch and in
// its file. Cancel changes nothing; a file that can't be written still leaves
// the colour on for this run.
void frmProperties::ChooseColor(ColorSetting which) {
    std::optional<forms::Color> chosen = main.platform.dialogs.ShowColor();
    if (!chosen) return;
    main.globals.ColorValue = std::to_string(*chosen & 0xFFFFFFu);
    forms::Color c = ColorFromText(main.globals.ColorValue);
    ApplyColor(main, which, c);
    paintSwatch(which, c);
    WriteColorFile(main, which, 2);
}

void frmProperties::cmdColorReset_Click() {
    main.T1.setBackColor(65280);
    main.T1.setForeColor(0);
    main.FG1.setForeColor(0);
    main.lstCategory.setForeColor(0);
    main.lblCategory.setForeColor(0);
    main.lstCategory.setBackColor(16777215);
    for (const ColorFile& cf : kColorFiles) {
        main.globals.ColorValue = std::to_string(cf.defaultColor);
        paintSwatch(cf.which, cf.defaultColor);
        WriteColorFile(main, cf.which, 3);
    }
}

void frmProperties::cmdChange_Click() { main.UnloadProperties(); }

} // namespace qm

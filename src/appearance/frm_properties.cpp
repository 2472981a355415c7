#include "appearance/frm_properties.h"

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
    cmdHColor.Click = [this] { ChooseColor(ColorSetting::Heading); };
    cmdCatColor.Click = [this] { ChooseColor(ColorSetting::ListBack); };
    cmdSelected.Click = [this] { ChooseColor(ColorSetting::EditorBack); };
    cmdCellText.Click = [this] { ChooseColor(ColorSetting::CellText); };
    cmdListText.Click = [this] { ChooseColor(ColorSetting::ListText); };
    cmdColorReset.Click = [this] { cmdColorReset_Click(); };
    cmdChange.Click = [this] { cmdChange_Click(); };
    form.CloseRequested = [this] { cmdChange_Click(); };
    form.announce();
    Form_Load();
}

frmProperties::~frmProperties() { form.retire(); }

void frmProperties::declareLayout() {
    form.Caption = "Properties";
    form.Border = forms::BorderStyle::FixedDialog;
    form.ControlBox = true;
    form.Centered = true;
    form.font = forms::Font{"Comic Sans MS", 8.25, false};
    form.ClientWidth = 6270;
    form.ClientHeight = 3615;
    const forms::Font sans{"MS Sans Serif", 8.25, false};

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
    struct B { forms::Button* b; const char* caption; int left, top, width, tab; };
    for (const B& b : {B{&cmdHColor, "Category Heading Color", 720, 840, 2055, 2},
                       B{&cmdSelected, "Selected Cell Color", 3960, 840, 2055, 5},
                       B{&cmdCatColor, "Category List Box Color", 720, 1440, 2055, 4},
                       B{&cmdCellText, "Cell Text Color", 3960, 1440, 2055, 6},
                       B{&cmdListText, "Category List Text Color", 720, 2040, 2055, 7},
                       B{&cmdColorReset, "&Reset Colors to Default", 3360, 2040, 2655, 3},
                       B{&cmdChange, "&OK", 120, 3000, 6015, 0}}) {
        b.b->move(b.left, b.top, b.width, 495);
        b.b->setTabIndex(b.tab);
        b.b->setFont(sans);
        b.b->Caption = b.caption;
    }
    cmdChange.Default = true;
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

void frmProperties::Form_Load() {
    storage::FileTable& files = main.files;
    files.Close(1); // a read of the start that failed may still hold it
    try {
        for (const ColorFile& cf : kColorFiles) {
            files.OpenInput(1, main.platform.places.dataFolder + cf.file);
            main.globals.ColorValue = files.ReadField(1);
            files.Close(1);
            swatch(cf.which).setBackColor(ColorFromText(main.globals.ColorValue));
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
    swatch(which).setBackColor(c);
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
        swatch(cf.which).setBackColor(cf.defaultColor);
        WriteColorFile(main, cf.which, 3);
    }
}

void frmProperties::cmdChange_Click() { main.UnloadProperties(); }

} // namespace qm

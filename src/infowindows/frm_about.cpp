#include "infowindows/frm_about.h"

#include "forms/declaration.h"
#include "mainwindow/frm_main.h"

namespace qm {

namespace {

// Both windows: a fixed dialog, centred, with the program's icon, an etched
// rule and an OK button that Enter and Esc press and that unloads the window,
// as its close by the window manager does.
void declareInfoWindow(frmMain& m, forms::Form& form, const char* caption, int width, int height, forms::PictureBox& icon,
                       forms::Button& ok, int okLeft, int okTop, int okWidth, std::function<void()> unload) {
    forms::declareWindow(
        form, {.caption = caption, .font = {"Comic Sans MS", 8.25, false}, .clientWidth = width, .clientHeight = height},
        unload);
    icon.move(120, 120, 780, 780);
    icon.setTabIndex(1);
    icon.setPicture(m.platform.pictures.applicationIcon());
    icon.setAccessibleName("Quillmere icon");
    forms::declareButton(ok, "OK", okLeft, okTop, okWidth, 345, 0, std::move(unload));
    ok.Default = true;
    ok.Cancel = true;
}

void etchedRule(forms::Line& grey, forms::Line& white, int left, int top, int right, int whiteLeft, int whiteRight) {
    grey.move(left, top, 0, 0);
    grey.X2 = right;
    grey.Y2 = top;
    grey.setForeColor(0x00808080);
    white.move(whiteLeft, top + 15, 0, 0);
    white.X2 = whiteRight;
    white.Y2 = top + 15;
    white.BorderWidth = 2;
    white.setForeColor(0x00FFFFFF);
}

void label(forms::Label& l, const std::string& caption, int left, int top, int width, int height, int tab) {
    l.move(left, top, width, height);
    l.setTabIndex(tab);
    l.setCaption(caption);
}

// Where the values of the contact lines begin: where "Secondary E-Mail:" and
// its 24 blanks end in the 8-point MS Sans Serif the window was laid out in
// (73 + 24 x 2 pixels from its left at 1080). The other lines' blanks were
// meant to reach the same column; each value is a label of its own there, so
// the values stand in one column whatever font the desktop gives.
constexpr int kValueLeft = 2895;

// A contact line: its caption up to the values' column, its value behind it,
// each on one line at its own width.
void contactLine(forms::Label& caption, forms::Label& value, const std::string& text, const std::string& valueText,
                 int left, int top, int height, int tab) {
    label(caption, text, left, top, kValueLeft - left, height, tab);
    label(value, valueText, kValueLeft, top, 5730 - 60 - kValueLeft, height, tab);
    caption.AutoSize = true;
    value.AutoSize = true;
}

} // namespace

std::string VersionCaption() {
    return "Version " + std::to_string(QM_VERSION_MAJOR) + "." + std::to_string(QM_VERSION_MINOR) + "." +
           std::to_string(QM_VERSION_PATCH);
}

frmAbout::frmAbout(frmMain& m)
    : main(m), form(m.platform.runtime, "frmAbout"), cmdOK(form, nullptr, "cmdOK"), picIcon(form, nullptr, "picIcon"),
      cmdSysInfo(form, nullptr, "cmdSysInfo"), lblDescription(form, nullptr, "lblDescription"),
      lblDisclaimer(form, nullptr, "lblDisclaimer"), lblTitle(form, nullptr, "lblTitle"),
      lblVersion(form, nullptr, "lblVersion"), Line1(form, nullptr, "Line1"), Line1White(form, nullptr, "Line1White") {
    declareInfoWindow(m, form, "About Quillmere", 5865, 4260, picIcon, cmdOK, 4440, 3240, 1260, [this] { cmdOK_Click(); });
    forms::declareButton(cmdSysInfo, "&System Info...", 4440, 3720, 1245, 345, 2, [this] { cmdSysInfo_Click(); });
    label(lblDescription,
          "Quillmere is designed as a database utility, providing an easy way for anyone to keep track of and "
          "categorize any item(s) they wish. Anywhere from your personal belongings to your business inventory can all "
          "be stored in one easy to access database.",
          1050, 1125, 3885, 1170, 3);
    label(lblDisclaimer,
          "Quillmere is provided as it is, without warranty of any kind. Keep a copy of your database on removable "
          "media: the Save to disk button makes one.",
          255, 2625, 3870, 1545, 4);
    label(lblTitle, "Quillmere", 1050, 240, 3885, 480, 5);
    lblTitle.setFont(forms::Font{"Comic Sans MS", 8.25, false});
    label(lblVersion, VersionCaption(), 1050, 780, 3885, 225, 6);
    etchedRule(Line1, Line1White, 120, 2445, 5760, 105, 5280);
    form.announce();
}

frmAbout::~frmAbout() { form.retire(); }

void frmAbout::cmdOK_Click() { main.UnloadAbout(); }

void frmAbout::cmdSysInfo_Click() { StartSysInfo(); }

// There is no registry here: the platform looks for an installed system
// information program and starts it.
void frmAbout::StartSysInfo() {
    if (!main.platform.program.startSystemInfo()) main.Message("System Information Is Unavailable At This Time");
}

frmContact::frmContact(frmMain& m)
    : main(m), form(m.platform.runtime, "frmContact"), cmdOK(form, nullptr, "cmdOK"), picIcon(form, nullptr, "picIcon"),
      lblAuthor(form, nullptr, "lblAuthor"), lblTitle(form, nullptr, "lblTitle"), lblVersion(form, nullptr, "lblVersion"),
      lblEmail(form, nullptr, "lblEmail"), lblSecEmail(form, nullptr, "lblSecEmail"),
      lblProgrammer(form, nullptr, "lblProgrammer"), Line1(form, nullptr, "Line1"), Line1White(form, nullptr, "Line1White"),
      lblAuthorValue(form, nullptr, "lblAuthorValue"), lblEmailValue(form, nullptr, "lblEmailValue"),
      lblSecEmailValue(form, nullptr, "lblSecEmailValue"), lblProgrammerValue(form, nullptr, "lblProgrammerValue") {
    declareInfoWindow(m, form, "Contact Info", 5730, 2730, picIcon, cmdOK, 2040, 2280, 1500, [this] { cmdOK_Click(); });
    contactLine(lblAuthor, lblAuthorValue, "Author:", "The Quillmere project", 1050, 885, 210, 2);
    label(lblTitle, "Quillmere", 1050, 240, 3885, 240, 3);
    label(lblVersion, VersionCaption(), 1080, 480, 3885, 225, 4);
    contactLine(lblEmail, lblEmailValue, "E-Mail:", "the issue tracker", 1080, 1560, 255, 5);
    contactLine(lblSecEmail, lblSecEmailValue, "Secondary E-Mail:", "none", 1080, 1800, 255, 6);
    contactLine(lblProgrammer, lblProgrammerValue, "Programmer:", "The Quillmere developers", 1080, 1080, 255, 7);
    etchedRule(Line1, Line1White, 120, 2160, 5684, 120, 5669);
    form.announce();
}

frmContact::~frmContact() { form.retire(); }

void frmContact::cmdOK_Click() { main.UnloadContact(); }

} // namespace qm

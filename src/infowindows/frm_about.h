#pragma once
#include <string>

#include "forms/controls.h"
#include "forms/form.h"

namespace qm {

class frmMain;

// "Version 3.0.0": the program's version numbers.
std::string VersionCaption();

// About: the program's name, version and purpose, and a way to the system's
// information program.
class frmAbout {
public:
    explicit frmAbout(frmMain& main);
    ~frmAbout();

    frmMain& main;
    forms::Form form;
    forms::Button cmdOK;
    forms::PictureBox picIcon;
    forms::Button cmdSysInfo;
    forms::Label lblDescription;
    forms::Label lblDisclaimer;
    forms::Label lblTitle;
    forms::Label lblVersion;
    forms::Line Line1;
    forms::Line Line1White;

    void cmdOK_Click();
    void cmdSysInfo_Click();
    void StartSysInfo();
};

// Contact: who answers for the program.
class frmContact {
public:
    explicit frmContact(frmMain& main);
    ~frmContact();

    frmMain& main;
    forms::Form form;
    forms::Button cmdOK;
    forms::PictureBox picIcon;
    forms::Label lblAuthor;
    forms::Label lblTitle;
    forms::Label lblVersion;
    forms::Label lblEmail;
    forms::Label lblSecEmail;
    forms::Label lblProgrammer;
    forms::Line Line1;
    forms::Line Line1White;
    // The values of the four lines above, in one column.
    forms::Label lblAuthorValue;
    forms::Label lblEmailValue;
    forms::Label lblSecEmailValue;
    forms::Label lblProgrammerValue;

    void cmdOK_Click();
};

} // namespace qm

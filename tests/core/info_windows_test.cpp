// The help, about and contact windows: what they show, how the help fits its
// window, and the start of the system information program.
#include <gtest/gtest.h>

#include "forms/input.h"
#include "infowindows/frm_about.h"
#include "infowindows/frm_how.h"
#include "support/scripted_platform.h"

using namespace qmtest;

namespace {

struct Info : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;
    void SetUp() override { m = &h.start(); }
};

TEST_F(Info, HelpShowsTheReadmeOfTheDataFolderAndShrinksToNothing) {
    h.menu("mnuContents");
    ASSERT_NE(m->howIfLoaded(), nullptr);
    auto& how = *m->howIfLoaded();
    EXPECT_EQ(how.wbsReadme.location(), h.data("Readme.htm").string());
    h.run([&] { how.form.platformResized(200, 900); }); // smaller than the controls: no negative sizes
    EXPECT_EQ(std::make_pair(how.wbsReadme.Width(), how.wbsReadme.Height()), std::make_pair(0, 0));
    h.run([&] { how.form.platformResized(12000, 12000); }); // larger: the button runs under the browser, inside the window
    EXPECT_TRUE(how.cmdClose.Top() >= how.wbsReadme.Top() + how.wbsReadme.Height() && how.cmdClose.Top() + how.cmdClose.Height() <= how.form.Height());
}

// Opening and closing each window in the real face: tests/qt/small_windows_test.cpp.
// The menu on an open window changes nothing; system information starts
// where there is a program for it, else the user is told.
TEST_F(Info, AboutAndContactShowTheVersionAndStartSystemInformation) {
    h.menu("mnuAbout");
    auto* about = m->aboutIfLoaded();
    h.menu("mnuAbout");
    h.menu("mnuContact");
    ASSERT_NE(about, nullptr);
    ASSERT_NE(m->contactIfLoaded(), nullptr);
    EXPECT_EQ(m->aboutIfLoaded(), about);
    EXPECT_EQ(m->contactIfLoaded()->lblVersion.Caption(), about->lblVersion.Caption());
    EXPECT_TRUE(about->lblVersion.Caption().starts_with("Version "));
    forms::input::click(h.runtime, about->cmdSysInfo);
    EXPECT_EQ(h.dialogs.texts(), std::vector<std::string>{"System Information Is Unavailable At This Time"});
    h.program.hasSysInfo = true;
    forms::input::click(h.runtime, about->cmdSysInfo);
    EXPECT_EQ(std::make_pair(h.program.sysInfoStarts, h.dialogs.messages.size()), std::make_pair(2, std::size_t{1}));
}

} // namespace

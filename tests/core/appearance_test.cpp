// The five colours: applied at start from their files, chosen and reset in
// the Properties window, and kept across a restart.
#include <gtest/gtest.h>

#include "appearance/frm_properties.h"
#include "forms/input.h"
#include "support/scripted_platform.h"

using namespace qmtest;

namespace {

// Colour files, one value each, as the program writes them.
void writeColours(Harness& h, std::initializer_list<std::pair<const char*, const char*>> files) {
    for (auto& [name, value] : files) writeFile(h.data(name), std::string(value) + "\r\n");
}

struct Colours : ::testing::Test {
    Harness h;
};

TEST_F(Colours, AllFiveApplyToTheWindowAndTheirOwnSwatches) {
    writeColours(h, {{"HColor", "255"}, {"CatColor", "65535"}, {"SelectedCell", "16711680"}, {"CellText", "128"}, {"ListBoxText", "32768"}});
    auto& m = h.start();
    EXPECT_EQ(std::vector({m.lblCategory.ForeColor(), m.lstCategory.BackColor(), m.T1.BackColor(), m.T1.ForeColor(), m.FG1.ForeColor(),
                           m.lstCategory.ForeColor()}),
              std::vector<forms::Color>({255, 65535, 16711680, 128, 128, 32768}));
    ASSERT_NE(m.propertiesIfLoaded(), nullptr); // made hidden by the first swatch
    auto& p = *m.propertiesIfLoaded();
    EXPECT_FALSE(p.form.Visible());
    EXPECT_EQ(std::vector({p.shpCatHead.BackColor(), p.shpCatList.BackColor(), p.shpCell.BackColor(), p.shpCellText.BackColor(),
                           p.shpListText.BackColor()}),
              std::vector<forms::Color>({255, 65535, 16711680, 128, 32768}));
}

TEST_F(Colours, AMissingFileStopsTheReadingThere) {
    writeColours(h, {{"CatColor", "65535"}, {"SelectedCell", "16711680"}, {"CellText", "128"}, {"ListBoxText", "32768"}});
    auto& m = h.start(); // HColor missing: nothing at all
    EXPECT_EQ(std::make_pair(m.lstCategory.BackColor(), m.T1.BackColor()), std::make_pair(forms::syscolor::Window, forms::Color{0x0000C000}));

    Harness h2;
    writeColours(h2, {{"HColor", "255"}, {"CatColor", "65535"}, {"SelectedCell", "16711680"}, {"CellText", "128"},
                      {"ListBoxText", "not a colour"}});
    auto& m2 = h2.start(); // four of five
    // The window's own load stops at the same file: the last swatch keeps its design.
    EXPECT_EQ(std::make_tuple(m2.T1.ForeColor(), m2.lstCategory.ForeColor(), m2.Properties().shpListText.BackColor()),
              std::make_tuple(forms::Color{128}, forms::syscolor::WindowText, forms::Color{0}));
}

// A chosen colour applies at once and comes back after a restart; Cancel
// changes nothing; Reset restores the defaults and writes all five files.
TEST_F(Colours, AChosenColourIsKeptAndResetWritesTheDefaults) {
    auto& m = h.start();
    h.menu("mnuProperties");
    EXPECT_TRUE(m.Properties().form.Visible());
    h.dialogs.colorAnswers.push_back(0x00123456);
    forms::input::click(h.runtime, m.Properties().cmdSelected);
    EXPECT_EQ(std::make_tuple(m.T1.BackColor(), m.Properties().shpCell.BackColor(), h.text("SelectedCell")),
              std::make_tuple(forms::Color{0x00123456}, forms::Color{0x00123456}, std::to_string(0x00123456) + "\r\n"));
    forms::input::click(h.runtime, m.Properties().cmdCellText); // Cancel: nothing changes
    EXPECT_FALSE(std::filesystem::exists(h.data("CellText")));
    forms::input::click(h.runtime, m.Properties().cmdChange);
    EXPECT_EQ(m.propertiesIfLoaded(), nullptr);
    h.click(m.cmdExit);

    Harness again(h.dataDir.place(), h.floppyDir.place());
    writeColours(again, {{"HColor", "0"}, {"CatColor", "16777215"}});
    auto& m2 = again.start();
    EXPECT_EQ(m2.T1.BackColor(), 0x00123456u);
    again.menu("mnuProperties");
    forms::input::click(again.runtime, m2.Properties().cmdColorReset);
    EXPECT_EQ(std::make_pair(m2.T1.BackColor(), m2.lstCategory.BackColor()), std::make_pair(forms::Color{65280}, forms::Color{16777215}));
    EXPECT_EQ(std::vector({again.text("HColor"), again.text("CatColor"), again.text("SelectedCell"), again.text("CellText"),
                           again.text("ListBoxText")}),
              std::vector<std::string>({"0\r\n", "16777215\r\n", "65280\r\n", "0\r\n", "0\r\n"}));
}

} // namespace

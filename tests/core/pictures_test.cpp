// Item pictures: the link files, what the picture window shows as the editor
// moves, and how the window fits itself around a picture.
#include <gtest/gtest.h>

#include "forms/input.h"
#include "pictures/frm_pic.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

std::string shown(qm::frmMain& m) { return FakePicture::pathOf(m.Pic().picItem.picture()); }

struct Pictures : ::testing::Test {
    Harness h;
    qm::frmMain* m = nullptr;
    // A picture file in the data folder, by its path.
    std::string picture(const std::string& name, const std::string& content) {
        writeFile(h.data(name), content);
        return h.data(name).string();
    }
    std::string jack = picture("jack.jpg", "PIC 1440 720"), wrench = picture("wrench.gif", "PIC 2880 1440"),
                stock = picture("NoPic.jpg", "PIC 4365 2475");

    void SetUp() override {
        h.writeCategories({{"Car parts", {{"Jack", "25"}, {"Wrench", "5"}, {"", "1"}}}, {"Carparts", {{"x"}}}});
        m = &h.startAndClick(0);
    }
    void open(int row, int col) { forms::input::clickCell(h.runtime, m->FG1, row, col); }
    // The user ticks the check box if the window isn't up, then uses its button.
    void link(const std::string& path) {
        if (!m->Pic().form.Visible()) forms::input::toggle(h.runtime, m->chkPic);
        h.dialogs.openAnswers.push_back(path);
        forms::input::click(h.runtime, m->Pic().cmdAddPic);
    }
};

// The link file holds the path (in quotes for its comma), and the editor's focus on
// the row brings that picture back.
TEST_F(Pictures, LinkingStoresThePathUnderCategoryAndItemName) {
    const std::string odd = picture("a, b.jpg", "PIC 100 100");
    open(1, 3);
    link(odd);
    ASSERT_EQ(h.dialogs.filters.size(), 1u);
    EXPECT_EQ(h.dialogs.filters[0],
              "jpg/jpeg Files (*.jpg;*.jpeg)|*.jpg;*.jpeg|gif Files (*.gif)|*.gif|All Files (*.*)|*.*");
    EXPECT_EQ(readFile(h.data("Car partsJack.csv")), "\"" + odd + "\"\r\n");
    EXPECT_EQ(shown(*m), odd);
    EXPECT_EQ(h.globals.PicturePath, odd);
    open(2, 1);
    open(1, 1);
    EXPECT_EQ(shown(*m), odd);
}

// No link: the stock picture; a link to a missing picture: the previous one
// stays; Cancel in the file dialog changes nothing.
TEST_F(Pictures, TheEditorsFocusLoadsThePictureOfItsRow) {
    writeFile(h.data("Car partsJack.csv"), jack + "\r\n");
    open(1, 2);
    EXPECT_EQ(shown(*m), jack);
    open(2, 2);
    EXPECT_EQ(shown(*m), stock);
    writeFile(h.data("Car partsWrench.csv"), h.data("gone.jpg").string() + "\r\n");
    open(1, 2);
    open(2, 2);
    EXPECT_EQ(shown(*m), jack);
    EXPECT_FALSE(h.globals.LinkRead);
    open(1, 1);
    forms::input::toggle(h.runtime, m->chkPic);
    EXPECT_EQ(h.runtime.focused(), &m->chkPic); // the tick takes the focus, the window it opens doesn't
    forms::input::click(h.runtime, m->Pic().cmdAddPic); // no answer: Cancel
    EXPECT_EQ(readFile(h.data("Car partsJack.csv")), jack + "\r\n");
    EXPECT_EQ(shown(*m), jack);
}

// An item with no name stores no link (the category's own file is untouched),
// and a link is never written over another category's file.
TEST_F(Pictures, ALinkIsNeverWrittenOverACategorysFile) {
    open(3, 1);
    link(jack);
    EXPECT_EQ(shown(*m), jack);
    EXPECT_EQ(readFile(h.data("Car parts.csv"))->substr(0, 4), "Item");
    h.run([&] { m->FG1.setTextMatrix(1, 0, "parts"); }); // "Car" + "parts" is the other category's name
    h.run([&] { m->lblCategory.setCaption("Car"); });
    open(1, 1);
    link(wrench);
    EXPECT_EQ(shown(*m), wrench);
    EXPECT_EQ(h.text("Carparts.csv"), crlf({kHeadingLine, "x,,,,,,"}));
}

} // namespace

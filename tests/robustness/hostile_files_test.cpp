// Files that no version of the program wrote: NUL bytes, broken UTF-8, a
// line of 100 MB, 40000 rows, a count of 32768, a name of 10000 characters.
// Each is started on, walked, opened and left by Exit: no crash, no hang, and
// what could not be read whole is still there byte for byte afterwards.
#include <gtest/gtest.h>

#include "session.h"

using namespace qmtest;
using namespace std::string_literals;

namespace {

// Start, a walk, every category opened, Exit.
void useAndExit(Harness& h) {
    qm::frmMain& m = h.start();
    h.focus(m.lstCategory);
    openEveryCategory(h);
    h.click(m.cmdExit);
}

std::string heading() { return std::string(kHeadingLine) + "\r\n"; }

TEST(HostileFiles, NulBytesAndBrokenUtf8InCellsComeBackByteForByte) {
    Harness h;
    h.writeIndex({"Odd"});
    const std::string odd = heading() + "a\0b,\xff\xfe,\xc3(,\xe2\x82,\xed\xa0\x80,\xf4\x90\x80\x80,\xc0\xaf\r\n"s;
    writeFile(h.data("Odd.csv"), odd);
    useAndExit(h);
    EXPECT_EQ(readFile(h.data("Odd.csv")), odd);
    Table t = categoriesAfterRestart(h)["Odd"];
    ASSERT_EQ(t.size(), 2u);
    EXPECT_EQ(t[1][0], "a\0b"s);
    EXPECT_EQ(t[1][1], "\xff\xfe");
}

TEST(HostileFiles, BrokenUtf8InACategoryNameKeepsItsOwnFile) {
    Harness h;
    const std::string name = "Bad \xff\xc3(";
    h.writeCategories({{name, {{"odd item", "1"}}}, {"Good", {{"good item", "2"}}}});
    useAndExit(h);
    auto seen = categoriesAfterRestart(h);
    EXPECT_EQ(seen[name], withHeading({{"odd item", "1"}}));
    EXPECT_EQ(seen["Good"], withHeading({{"good item", "2"}}));
}

// A NUL cuts a path short where the file system meets it: the name must never
// reach the file that its first part names, such as the stock picture.
// Fails while a name read from the index goes into paths unchecked: see the report.
TEST(HostileFiles, ANulInACategoryNameNeverReachesTheFileBeforeIt) {
    Harness h;
    const std::string name = "NoPic.jpg\0x"s;
    h.writeIndex({name, "Good"});
    h.writeCategory("Good", {{"good item", "2"}});
    writeFile(h.data("NoPic.jpg"), "PIC 100 100");
    writeFile(h.data("HColor"), "255\r\n");
    useAndExit(h);
    EXPECT_EQ(readFile(h.data("NoPic.jpg")), "PIC 100 100");
    EXPECT_EQ(readFile(h.data("HColor")), "255\r\n");
    EXPECT_NE(readFile(h.data("Good.csv")).value_or("").find("good item"), std::string::npos);
}

TEST(HostileFiles, ALineOf100MegabytesIsReadAndWrittenWhole) {
    Harness h;
    h.writeIndex({"Big", "Small"});
    h.writeCategory("Small", {{"s", "1"}});
    std::string big = heading() + "Huge," + std::string(1 << 20, '7') + ",2,,,,";
    big.append(100u << 20, 'x');
    big += "\r\nAfter,1,,,,,\r\n";
    writeFile(h.data("Big.csv"), big);
    // Exit's walk reads and writes it twice: anything cut or lost shows in the file.
    qm::frmMain& m = h.start();
    h.click(m.cmdExit);
    EXPECT_TRUE(readFile(h.data("Big.csv")) == big) << "the file changed";
    EXPECT_EQ(m.lstCategory.Text(), "Small");
}

TEST(HostileFiles, ACountOf32768IsNoListAndTheIndexStays) {
    Harness h;
    h.writeIndex({"A", "B"}, "32768");
    h.writeCategory("A", {{"a", "1"}});
    const auto count = readFile(h.data("NumCats.csv"));
    const auto names = readFile(h.data("CatFiles.csv"));
    qm::frmMain& m = h.start();
    EXPECT_EQ(m.lstCategory.ListCount(), 0);
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("NumCats.csv")), count);
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), names);
}

TEST(HostileFiles, ANameOf10000CharactersStaysListedAndHarmsNothing) {
    Harness h;
    const std::string longName(10000, 'n');
    h.writeIndex({longName, "Good"});
    h.writeCategory("Good", {{"good item", "2"}});
    useAndExit(h);
    auto again = h.restart();
    EXPECT_EQ(again->m().lstCategory.items(), (std::vector<std::string>{"Good", longName}));
    EXPECT_EQ(openEveryCategory(*again)["Good"], withHeading({{"good item", "2"}}));
}

} // namespace

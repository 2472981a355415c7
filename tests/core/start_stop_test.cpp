// Start and stop: the window after the start, and the files that Exit (or any
// other end of the program) leaves behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>

#include <unistd.h>

#include "forms/menu.h"
#include "forms/std_files.h"
#include "storage/places.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

TEST(Start, WithNoFilesTheWindowIsUsableAndEmpty) {
    Harness h;
    auto& m = h.start();
    EXPECT_EQ(m.lstCategory.ListCount(), 0);
    EXPECT_EQ(m.lstCategory.ListIndex(), -1);
    EXPECT_TRUE(m.CategoryCount.isEmpty());
    EXPECT_FALSE(m.CurrentCategory.has_value());
    EXPECT_EQ(m.ItemRowCount, 1);
    EXPECT_FALSE(m.RenamePending);
    EXPECT_FALSE(m.WriteToFloppy);
    EXPECT_FALSE(m.ReadFromFloppy);
    EXPECT_EQ(h.globals.PicturePath, h.data("NoPic.jpg").string());
    // The grid: hidden, heading row only, the item names fixed.
    EXPECT_FALSE(m.FG1.Visible());
    EXPECT_EQ(gridCells(m.FG1), Table{headingRow()});
    EXPECT_EQ(m.FG1.FixedRows(), 0);
    EXPECT_EQ(m.FG1.FixedCols(), 1);
    EXPECT_EQ(m.lblCategory.Caption(), "");
    EXPECT_EQ(m.lblCategory.Left(), 4560);
    EXPECT_EQ(m.lblCategory.Top(), 600);
    EXPECT_EQ(m.txtCost.Text(), "");
    EXPECT_EQ(m.txtValue.Text(), "");
    EXPECT_FALSE(m.T1.Visible());
    EXPECT_FALSE(m.txtLoading.Visible());
    EXPECT_TRUE(m.cmdAddCategory.hasFocus());
    EXPECT_FALSE(m.hasPic());
    // Starting writes nothing.
    EXPECT_TRUE(folderNames(h.dataDir.path()).empty());
}

// ---- Exit ---------------------------------------------------------------------------------

// With no category to store (no files at all, or a count of 0), Exit runs no
// switch and leaves an index that the next start reads as an empty list.
TEST(Exit, WithNoCategoriesWritesAnEmptyIndexAndTheHeadingFile) {
    struct Case {
        const char* count; // "": no files
        const char* numCatsAfter;
        const char* countAfter;
    };
    for (const Case& c : {Case{"", "\r\n", ""}, Case{" 0 ", "0 \r\n", "0 "}}) {
        SCOPED_TRACE(c.count);
        Harness h;
        if (*c.count) h.writeIndex({}, c.count);
        auto& m = h.start();
        auto switches = countSwitches(m);
        h.click(m.cmdExit);
        EXPECT_EQ(*switches, 0);
        EXPECT_EQ(h.program.ends, 1);
        EXPECT_FALSE(m.form.Visible());
        EXPECT_EQ(folderBytes(h.dataDir.path()),
                  (std::map<std::string, std::string>{{".csv", crlf({kHeadingLine})}, {"CatFiles.csv", ""}, {"NumCats.csv", c.numCatsAfter}}));
        auto again = h.restart();
        auto& m2 = again->m();
        EXPECT_EQ(m2.lstCategory.ListCount(), 0);
        EXPECT_EQ(m2.CategoryCount.asText(), c.countAfter);
        EXPECT_EQ(m2.CategoryCount.plus(1).toInt16(), 1); // an empty count adds up as 0
    }
}

TEST(Exit, AtOnceWithAGoodIndexLosesNothing) {
    Harness h;
    h.writeIndex({"Alpha", "Beta", "Gamma"});
    h.writeCategory("Alpha", {{"a1", "1.00", "2.00", "Shop, town", "1/1/2000", "", "SN 1"}});
    h.writeCategory("Beta", {{"b1"}, {"b2", "3"}});
    // Gamma has no file yet.
    const auto alpha = readFile(h.data("Alpha.csv")), beta = readFile(h.data("Beta.csv"));
    auto& m = h.start();
    h.click(m.cmdExit);
    EXPECT_EQ(readFile(h.data("Alpha.csv")), alpha);
    EXPECT_EQ(readFile(h.data("Beta.csv")), beta);
    EXPECT_EQ(readFile(h.data("Gamma.csv")), crlf({kHeadingLine}));
    EXPECT_EQ(readFile(h.data(".csv")), crlf({kHeadingLine}));
    EXPECT_EQ(readFile(h.data("CatFiles.csv")), "Alpha\r\nBeta\r\nGamma\r\n");
    EXPECT_EQ(m.lstCategory.ListIndex(), 2);
    EXPECT_EQ(h.program.ends, 1);
}

TEST(Exit, WithTheDataFolderMissingStoresNothingAndCreatesNoFolder) {
    TempDir root;
    const std::string gone = root.place() + "gone/";
    Harness h(gone, root.place() + "floppy/");
    auto& m = h.start();
    EXPECT_EQ(m.lstCategory.ListCount(), 0);
    h.click(m.cmdExit);
    EXPECT_EQ(h.program.ends, 1);
    EXPECT_FALSE(std::filesystem::exists(gone));
}

// ---- the data folder at a first start ---------------------------------------------------------------

TEST(DataFolder, IsMadeWithTheShippedFilesAndTheUsersOwnAreKept) {
    TempDir root;
    const std::filesystem::path share = root.path() / "share", data = root.path() / "home/.local/share/Quillmere";
    std::filesystem::create_directories(share);
    writeFile(share / "NoPic.jpg", "shipped picture");
    writeFile(share / "Readme.htm", "shipped help");

    EXPECT_EQ(storage::PrepareDataFolder(data.string() + "/", share.string() + "/"), "");
    EXPECT_EQ(folderBytes(data), (std::map<std::string, std::string>{{"NoPic.jpg", "shipped picture"}, {"Readme.htm", "shipped help"}}));

    // A later start replaces nothing, and brings back only what is missing.
    writeFile(data / "Readme.htm", "the user's own");
    std::filesystem::remove(data / "NoPic.jpg");
    writeFile(share / "NoPic.jpg", "a newer picture");
    EXPECT_EQ(storage::PrepareDataFolder(data.string() + "/", share.string() + "/"), "");
    EXPECT_EQ(folderBytes(data), (std::map<std::string, std::string>{{"NoPic.jpg", "a newer picture"}, {"Readme.htm", "the user's own"}}));

    // Run from the build folder: no shipped files, nothing to say.
    TempDir other;
    EXPECT_EQ(storage::PrepareDataFolder(other.place() + "data/", other.place() + "nowhere/"), "");
    EXPECT_TRUE(std::filesystem::is_directory(other.path() / "data"));
    // A data folder that can't be made is told.
    writeFile(other.path() / "file", "");
    EXPECT_NE(storage::PrepareDataFolder(other.place() + "file/data/", share.string() + "/"), "");
}

TEST(DataFolder, OnlyOurOwnLeftoverTemporariesOfEndedProcessesAreCleared) {
    TempDir dir;
    const std::int64_t start = static_cast<std::int64_t>(std::time(nullptr));
    auto make = [&](const std::string& name, std::int64_t age) {
        writeFile(dir.path() / name, "x");
        const auto when = std::filesystem::file_time_type::clock::now() - std::chrono::seconds(age);
        std::filesystem::last_write_time(dir.path() / name, when);
    };
    // A process number that no process has: above the kernel's largest.
    const std::string gone = "4194305";
    make(".quillmere-tmp-" + gone + "-0", 60);                          // cleared
    make(".quillmere-tmp-" + gone + "-17", 3600);                       // cleared
    make(".quillmere-tmp-" + gone + "-1", -5);                          // newer than the start: kept
    make(".quillmere-tmp-1-3", 60);                                     // a process that runs: kept
    make(".quillmere-tmp-" + std::to_string(::getpid()) + "-2", 60);    // ours: kept
    make(".quillmere-tmp-" + gone + "-2.csv", 60);                      // not the pattern: kept
    make(".quillmere-tmp-x-2", 60);
    make(".quillmere-index", 60);
    make("Car parts.csv", 60);
    EXPECT_EQ(forms::StdFiles::removeLeftoverTemporaries(dir.place(), start), 2);
    const auto left = folderNames(dir.path());
    EXPECT_EQ(left.size(), 7u);
    EXPECT_EQ(left.count(".quillmere-tmp-" + gone + "-0"), 0u);
}

// ---- every road out ------------------------------------------------------------------------

enum class Road { ExitButton, ExitMenu, Terminate };

class EndRoads : public ::testing::TestWithParam<Road> {};

// However the program ends, it leaves the same files, and its exit steps run once.
TEST_P(EndRoads, LeaveTheSameFilesAsExit) {
    auto run = [](Road road, std::map<std::string, std::string>& files, int& ends, long& writesAfter) {
        Harness h;
        h.writeCategories({{"Alpha", {{"a1", "1"}}}, {"Beta", {{"b1", "2"}}}});
        auto& m = h.start();
        h.selectCategory(0);
        h.run([&] { m.FG1.setTextMatrix(1, 1, "7"); });
        switch (road) {
        case Road::ExitButton: h.click(m.cmdExit); break;
        case Road::ExitMenu: {
            forms::MenuItem* item = m.form.menuBar().find("mnuExit");
            ASSERT_NE(item, nullptr);
            h.run([&] { h.runtime.raise(item->Click); });
            break;
        }
        case Road::Terminate: h.run([&] { m.Form_Terminate(); }); break;
        }
        files = folderBytes(h.dataDir.path());
        // A second road out after the first (the window manager closing a
        // window that Exit already left) changes nothing.
        h.files.arm(FaultyFiles::OpenWrite, -1);
        h.run([&] { m.Form_Terminate(); });
        h.click(m.cmdExit);
        writesAfter = h.files.counted();
        ends = h.program.ends;
    };
    std::map<std::string, std::string> viaExit, viaRoad;
    int ends = 0;
    long writesAfter = 0;
    run(Road::ExitButton, viaExit, ends, writesAfter);
    run(GetParam(), viaRoad, ends, writesAfter);
    EXPECT_EQ(viaRoad, viaExit);
    EXPECT_EQ(viaRoad["Alpha.csv"], crlf({kHeadingLine, "a1,7,,,,,"}));
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(writesAfter, 0);
}

INSTANTIATE_TEST_SUITE_P(Exit, EndRoads, ::testing::Values(Road::ExitButton, Road::ExitMenu, Road::Terminate),
                         [](const auto& info) {
                             return std::string(std::array{"ExitButton", "ExitMenu", "Terminate"}[int(info.param)]);
                         });

} // namespace

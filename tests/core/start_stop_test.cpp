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

// A start with no files (or a count of 0): the window is usable and empty,
// and nothing is written. Exit then runs no switch and leaves an index that the
// next start reads as an empty list, and the file of the grid of no category.
TEST(StartAndExit, WithNoCategories) {
    for (const char* count : {"", " 0 "}) {
        SCOPED_TRACE(count);
        Harness h;
        if (*count) h.writeIndex({}, count);
        auto& m = h.start();
        EXPECT_EQ(m.CategoryCount.asText(), *count ? "0 " : "");
        // An empty list; the grid hidden, heading row only, the item names fixed; no editor.
        EXPECT_WINDOW(h, "| - \"\" | Item | 1 at 0,1 hidden fixed 01 focus cmdAddCategory");
        EXPECT_EQ(gridCells(m.FG1), Table{headingRow()});
        EXPECT_EQ(std::make_tuple(m.RenamePending, m.WriteToFloppy, m.ReadFromFloppy, m.txtLoading.Visible(), m.hasPic()),
                  std::make_tuple(false, false, false, false, false));
        EXPECT_EQ(h.globals.PicturePath, h.data("NoPic.jpg").string());
        EXPECT_EQ(std::make_tuple(m.lblCategory.Left(), m.lblCategory.Top(), m.txtCost.Text(), m.txtValue.Text()),
                  std::make_tuple(4560, 600, std::string(), std::string()));
        EXPECT_EQ(folderNames(h.dataDir.path()).size(), *count ? 2u : 0u) << "the start wrote a file";

        auto switches = countSwitches(m);
        h.click(m.cmdExit);
        EXPECT_EQ(std::make_tuple(*switches, h.program.ends, m.form.Visible()), std::make_tuple(0, 1, false));
        EXPECT_EQ(folderBytes(h.dataDir.path()), (std::map<std::string, std::string>{
                                                     {".csv", crlf({kHeadingLine})}, {"CatFiles.csv", ""}, {"NumCats.csv", *count ? "0 \r\n" : "\r\n"}}));
        auto again = h.restart();
        // An empty list, the count as written; an empty count adds up as 0.
        EXPECT_EQ(std::make_tuple(again->m().lstCategory.ListCount(), again->m().CategoryCount.asText(), again->m().CategoryCount.plus(1).toInt16()),
                  std::make_tuple(0, *count ? "0 " : "", std::optional<int>(1)));
    }
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

enum class Road { ExitButton, ExitMenu, Terminate, ExitAtOnce };

class EndRoads : public ::testing::TestWithParam<Road> {};

// However the program ends, it leaves the same files as Exit, and its exit
// steps run once: the edit stored, every other category as it was, a category
// with no file yet given the heading line, the index whole. An Exit right
// after the start, with no category shown, loses nothing either.
TEST_P(EndRoads, LeaveTheSameFilesAsExit) {
    std::map<std::string, std::string> files[2], before;
    for (int pass : {0, 1}) {
        const Road road = pass ? GetParam() : Road::ExitButton;
        Harness h;
        h.writeIndex({"Alpha", "Beta", "Gamma"}); // Gamma has no file yet
        h.writeCategory("Alpha", {{"a1", "1", "2.00", "Shop, town", "1/1/2000", "", "SN 1"}});
        h.writeCategory("Beta", {{"b1"}, {"b2", "3"}});
        before = folderBytes(h.dataDir.path());
        auto& m = h.start();
        if (road != Road::ExitAtOnce) {
            h.selectCategory(0);
            h.run([&] { m.FG1.setTextMatrix(1, 1, "7"); });
        }
        switch (road) {
        case Road::ExitButton: case Road::ExitAtOnce: h.click(m.cmdExit); break;
        case Road::ExitMenu: {
            forms::MenuItem* item = m.form.menuBar().find("mnuExit");
            ASSERT_NE(item, nullptr);
            h.run([&] { h.runtime.raise(item->Click); });
            break;
        }
        case Road::Terminate: h.run([&] { m.Form_Terminate(); }); break;
        }
        files[pass] = folderBytes(h.dataDir.path());
        EXPECT_EQ(m.lstCategory.ListIndex(), road == Road::ExitAtOnce ? 2 : 0) << "the walk ends on the selection, or the last entry";
        // A second road out after the first (the window manager closing a
        // window that Exit already left) changes nothing.
        h.files.arm(FaultyFiles::OpenWrite, -1); // count only
        h.run([&] { m.Form_Terminate(); });
        h.click(m.cmdExit);
        EXPECT_EQ(std::make_pair(h.files.counted(), h.program.ends), std::make_pair(0L, 1));
    }
    EXPECT_EQ(files[0]["Alpha.csv"], crlf({kHeadingLine, "a1,7,2.00,\"Shop, town\",1/1/2000,,SN 1"}));
    if (GetParam() == Road::ExitAtOnce) files[0]["Alpha.csv"] = before["Alpha.csv"]; // no edit
    EXPECT_EQ(files[1], files[0]);
    EXPECT_EQ(std::make_tuple(files[1]["Beta.csv"], files[1]["Gamma.csv"], files[1][".csv"], files[1]["CatFiles.csv"]),
              std::make_tuple(before["Beta.csv"], crlf({kHeadingLine}), crlf({kHeadingLine}), "Alpha\r\nBeta\r\nGamma\r\n"));
}

INSTANTIATE_TEST_SUITE_P(Exit, EndRoads, ::testing::Values(Road::ExitButton, Road::ExitMenu, Road::Terminate, Road::ExitAtOnce),
                         [](const auto& info) {
                             return std::string(std::array{"ExitButton", "ExitMenu", "Terminate", "ExitAtOnce"}[int(info.param)]);
                         });

} // namespace

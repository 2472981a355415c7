// Disks that fail. Through the files port, one fault a run: an open for
// writing, a write (which puts half its bytes down first), a close-and-rename
// or a delete fails; every one of the first walk in turn (a category written
// in several pieces among them), and one in 23 of the rest of the session,
// Exit included. A user who is told that a category could not be saved tries
// that step again. The data folder then holds no cut file,
// and a new start shows every category with its rows. And a real full disk: a
// small file system filled up under the program, then a walk and Exit; the old
// files stand.
//
// QM_FAULT_AT=k replays one fault of the sweep.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <sys/mount.h>
#include <unistd.h>

#include "forms/failure.h"
#include "forms/input.h"
#include "session.h"

using namespace robust;
using namespace qmtest;

namespace {

// Which writes fail: every one of the first walk and of Exit (a walk too), and
// an even spread over the rest of the session.
std::vector<long> faultsToInject(const Reference& ref) {
    const auto& steps = sessionSteps();
    std::size_t firstWalk = 0;
    while (firstWalk < steps.size() && steps[firstWalk].what != "walk") ++firstWalk;
    std::vector<long> ks;
    std::size_t spread = 0;
    for (long k : ref.writeOps) {
        const std::size_t step = stepOfOp(ref, k);
        const bool whole = step == firstWalk + 1 || step == steps.size();
        if (whole || spread++ % 23 == 0) ks.push_back(k);
    }
    return pointsOr("QM_FAULT_AT", ks);
}

// A run with a fault can make fewer operations than the reference run (a
// stopped walk or save is not done again in full), so a few faults numbered
// near the end may never come; they are counted, not failed.
TEST(DiskFaults, NoFaultLeavesACutFileALeftoverAnotherListOrLostRows) {
    const std::string never = "a fault that never came";
    int injected = 0;
    Tally problems;
    const Reference& ref = reference();
    for (long k : faultsToInject(ref)) {
        const std::string where = "a fault at operation " + std::to_string(k) + ", " + stepName(stepOfOp(ref, k));
        Folders f;
        Versions whole = versionsIn(f.data.path());
        {
            Harness h(f.data.place(), f.floppy.place());
            countEveryOperation(h);
            h.files.cutWriteAt = k; // a write that fails has put half its bytes down
            h.files.arm(~unsigned(FaultyFiles::Read), k);
            runSessionRetrying(h, ref);
            if (!h.files.fired()) {
                problems.add(never, where);
                continue;
            }
            addVersions(whole, h.files.committed);
        }
        ++injected;
        if (!leftoverTemporaries(f.data.path()).empty()) problems.add("unfinished files left behind", where);
        checkWholeFiles(f.data.path(), whole, problems, "a cut file, or one the program never wrote in that run", where);
        Restart r = restartOn(f.data.place(), f.floppy.place());
        if (r.list != ref.end.list) problems.add("a list other than the one at the end of the session", where + ": " + describeList(r.list));
        for (const auto& [name, table] : ref.end.tables) {
            auto t = r.tables.find(name);
            if (t != r.tables.end() && t->second != table) problems.add("a category without the rows typed into it", where + ": [" + name + "]");
        }
    }
    EXPECT_GT(injected, 300) << problems.report(never);
    problems.finish("faults", injected, std::to_string(injected) + " faults injected, one a session, among " +
                    std::to_string(ref.writeOps.size()) + " operations that change a file", never);
}

// ---- a real full disk -----------------------------------------------------------------

// A small tmpfs, mounted for the test and gone with it; why says why it could not be.
struct SmallFileSystem {
    TempDir dir;
    std::string why;
    explicit SmallFileSystem(const std::string& size) {
        if (::geteuid() != 0) why = "needs root to mount a small file system";
        else if (::mount("tmpfs", dir.path().c_str(), "tmpfs", 0, ("size=" + size).c_str()) != 0)
            why = std::string("can't mount a tmpfs here: ") + std::strerror(errno);
    }
    ~SmallFileSystem() {
        if (why.empty()) ::umount2(dir.path().c_str(), MNT_DETACH);
    }
};

// Writes a file until the file system has no byte left.
void fillUp(const std::filesystem::path& file) {
    std::FILE* f = std::fopen(file.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::setvbuf(f, nullptr, _IONBF, 0);
    std::string chunk(64 * 1024, 'x');
    for (std::size_t n = chunk.size(); n > 0; n /= 2)
        while (std::fwrite(chunk.data(), 1, n, f) == n) {
        }
    std::fclose(f);
}

TEST(FullDisk, AWalkAndExitOnAFullDiskLeaveTheOldFiles) {
    SmallFileSystem fs("2m");
    if (!fs.why.empty()) GTEST_SKIP() << fs.why;
    const std::filesystem::path data = fs.dir.path() / "data";
    std::filesystem::create_directory(data);
    TempDir floppy;
    const std::string place = data.string() + "/";
    {
        Harness writer(place, floppy.place());
        writeStartDatabase(writer);
    }

    std::map<std::string, std::string> before;
    std::string cell; // the one typed into, as it stands
    {
        Harness h(place, floppy.place());
        qm::frmMain& m = h.startAndClick(3); // stores the whole database once, as it stands
        before = folderContents(data);
        cell = m.FG1.TextMatrix(1, 1);
        fillUp(fs.dir.path() / "filler");
        forms::input::clickCell(h.runtime, m.FG1, 1, 1);
        forms::input::text(h.runtime, m.T1, U"99");
        h.focus(m.cmdAddAsset);
        h.focus(m.lstCategory); // a walk
        h.selectCategory(5);
        h.click(m.cmdExit);
    }
    EXPECT_TRUE(leftoverTemporaries(data).empty());
    EXPECT_EQ(folderContents(data), before) << "a file was changed while the disk was full";

    // With room again, the program stores again.
    std::filesystem::remove(fs.dir.path() / "filler");
    Harness h(place, floppy.place());
    qm::frmMain& m = h.startAndClick(3);
    forms::input::clickCell(h.runtime, m.FG1, 1, 1);
    forms::input::text(h.runtime, m.T1, U"7");
    h.click(m.cmdExit);
    EXPECT_EQ(categoriesAfterRestart(h)[m.lstCategory.items().at(3)].at(1).at(1), cell + "7");
}

// A rename on a nearly full disk, with room for the new file but not the
// index, or none for the file: the old name, items, index and message, no new file.
TEST(FullDisk, ARenameThatCantBeStoredWholeChangesNothing) {
    for (const bool newFileFits : {true, false}) {
        SmallFileSystem fs("1m");
        if (!fs.why.empty()) GTEST_SKIP() << fs.why;
        const std::filesystem::path data = fs.dir.path() / "data", filler = fs.dir.path() / "filler";
        std::filesystem::create_directory(data);
        Harness h(data.string() + "/", fs.dir.place());
        h.writeCategories({{"Bike", numberedItems(300)}, {"Car", {{"Car item"}}}});
        qm::frmMain& m = h.startAndClick(0);
        const auto before = folderContents(data);
        fillUp(filler);
        const auto pages = [](std::uintmax_t bytes) { return (bytes + 4095) / 4096; }; // of the file system
        if (newFileFits)
            std::filesystem::resize_file(filler, (pages(std::filesystem::file_size(filler)) - pages(std::filesystem::file_size(data / "Bike.csv"))) * 4096);
        h.dialogs.inputAnswers = {"Bicycle"};
        h.click(m.cmdRenameCat);
        EXPECT_EQ(std::make_tuple(folderContents(data), m.lstCategory.Text(), m.FG1.Rows(), h.dialogs.texts()),
                  std::make_tuple(before, "Bike", 301, std::vector<std::string>{"The category \"Bike\" could not be renamed: the disk could not "
                                                                               "store it (is it full?). Nothing was changed."}))
            << (newFileFits ? "the index did not fit" : "the new file did not fit");
    }
}

} // namespace

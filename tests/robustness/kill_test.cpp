// The program killed in the middle of a session. A child process runs the
// session on real files and stops itself exactly at its k-th file operation
// (counted through the files port, so every point can be replayed; a write
// hit there puts half its bytes on disk first); the parent then looks at what
// is left in the data folder and starts the program on it.
//
// SIGKILL at 300 points spread over the session: every file is whole (a
// content the program put there completely at some moment, or the one it had
// before), the index names no category without a file, it is the list from
// before or after the step that was cut, and its count is its number of names.
// An end request (SIGTERM, SIGHUP, SIGINT) is carried out as Exit once the
// input under way has ended: the Qt ports test raises them at the real
// handler, and the start-stop test checks that that end leaves Exit's files.
//
// QM_KILL_AT=k replays one point.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <algorithm>
#include <random>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "session.h"
#include "storage/places.h"
#include "storage/value.h"

using namespace robust;
using namespace qmtest;

namespace {

constexpr int kKillPoints = 300;
constexpr unsigned kSeed = 20240611;

// Operation numbers spread over the whole session: one drawn from each of n equal stretches.
std::vector<long> pointsToRun(long total, int n, unsigned seed) {
    std::mt19937 rng(seed);
    std::vector<long> points;
    for (int i = 0; i < n; ++i) {
        long lo = total * i / n, hi = std::max(lo + 1, total * (i + 1) / n);
        points.push_back(std::uniform_int_distribution<long>(lo, hi - 1)(rng));
    }
    return pointsOr("QM_KILL_AT", points);
}

// The step a child is in, where the parent can read it after the child's end:
// the count of file operations need not be the same from run to run when the
// program leaves unchanged files alone by their times.
std::size_t* sharedStep() {
    static void* page = ::mmap(nullptr, sizeof(std::size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) throw std::runtime_error("mmap failed");
    return static_cast<std::size_t*>(page);
}

// Runs the session in a child process on the folders and kills it at its k-th
// file operation, a write there cut short first. Gives the child's status and
// the step under way at its end.
std::pair<int, std::size_t> runChild(Folders& f, long k) {
    std::size_t* step = sharedStep();
    *step = 0;
    std::fflush(nullptr);
    pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        int code = 0;
        ::setenv("TMPDIR", f.scratch.path().c_str(), 1); // removed with f, however the child ends
        try {
            Harness h(f.data.place(), f.floppy.place());
            countEveryOperation(h);
            h.files.cutWriteAt = k;
            h.files.hook = [k](long n, FaultyFiles::Op, const std::string&) {
                if (n == k) ::raise(SIGKILL);
            };
            runSession(h, [&](std::size_t i) {
                if (i < sessionLength()) *step = i;
                return true;
            });
        } catch (...) {
            code = 3;
        }
        std::_Exit(code);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return {status, *step};
}

TEST(KillTest, SigkillLeavesWholeFilesAndAnIndexOfBeforeOrAfterTheStep) {
    Tally problems;
    const Reference& ref = reference();
    int killed = 0;
    for (long point : pointsToRun(ref.totalOps, kKillPoints, kSeed)) {
        Folders f;
        const auto [status, step] = runChild(f, point);
        const std::string where = "SIGKILL at operation " + std::to_string(point) + ", " + stepName(step);
        if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL) {
            problems.add("a child that was not killed", where + " (status " + std::to_string(status) + ")");
            continue;
        }
        ++killed;
        const auto contents = folderContents(f.data.path());
        checkWholeFiles(f.data.path(), ref.versions, problems, "a cut file, or one the program never wrote", where);
        Restart r = restartOn(f.data.place(), f.floppy.place());
        for (const auto& name : r.list)
            if (!contents.count(storage::FileStem(name) + ".csv")) problems.add("an index naming a category without a file", where + ": [" + name + "]");
        if (r.list != ref.lists[step] && r.list != ref.lists[step + 1])
            problems.add("an index that is neither the list before nor the one after the step", where + ": " + describeList(r.list));
        auto count = storage::Value::text(r.count).toInt16();
        if (!count || *count != static_cast<int>(r.list.size()))
            problems.add("a count that is not the number of names", where + ": count [" + r.count + "], " + std::to_string(r.list.size()) + " names");
    }
    problems.finish("kills", killed, std::to_string(killed) + " SIGKILLs at points spread over a session of " + std::to_string(ref.totalOps) + " file operations");
}

} // namespace

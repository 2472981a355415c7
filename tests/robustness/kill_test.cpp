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
// SIGTERM, SIGHUP, SIGINT at 300 more: as in the desktop program, the request
// waits for the input under way to end and is then carried out as Exit; the
// files are exactly those Exit leaves after that step.
//
// QM_KILL_AT=k (with QM_KILL_SIGNAL=15, 1 or 2 for the second test) replays one point.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <algorithm>
#include <array>
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
constexpr int kSignalPoints = 300;
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

volatile std::sig_atomic_t endRequested = 0;
extern "C" void onEndRequest(int) { endRequested = 1; }

// Runs the session in a child process on the folders and raises sig at its
// k-th file operation (a SIGKILL there cuts a write short first). As in the
// desktop program, an end request waits for the input under way, then ends the
// program. Gives the child's status and the step under way at its end.
std::pair<int, std::size_t> runChild(Folders& f, long k, int sig) {
    std::size_t* step = sharedStep();
    *step = 0;
    std::fflush(nullptr);
    pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        int code = 0;
        ::setenv("TMPDIR", f.scratch.path().c_str(), 1); // removed with f, however the child ends
        try {
            struct sigaction sa {};
            sa.sa_handler = onEndRequest;
            sigemptyset(&sa.sa_mask);
            for (int s : {SIGTERM, SIGHUP, SIGINT}) sigaction(s, &sa, nullptr);
            Harness h(f.data.place(), f.floppy.place());
            countEveryOperation(h);
            if (sig == SIGKILL) h.files.cutWriteAt = k;
            h.files.hook = [k, sig](long n, FaultyFiles::Op, const std::string&) {
                if (n == k) ::raise(sig);
            };
            auto before = [&](std::size_t i) {
                if (endRequested) h.runtime.dispatch([&] { h.m().Form_Terminate(); });
                else if (i < sessionLength()) *step = i;
                return !endRequested;
            };
            runSession(h, before);
            before(sessionLength());
        } catch (...) {
            code = 3;
        }
        std::_Exit(code);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return {status, *step};
}

// One child for each point, each on fresh folders, with the signal signalOf(p)
// for the p-th; check looks at what a child that ended as the signal should
// end it left. Gives how many did.
int sweep(const std::vector<long>& points, const std::function<int(std::size_t)>& signalOf, Tally& problems,
          const std::function<void(Folders& f, std::size_t step, const std::string& where)>& check) {
    int ended = 0;
    for (std::size_t p = 0; p < points.size(); ++p) {
        const int sig = signalOf(p);
        Folders f;
        const auto [status, step] = runChild(f, points[p], sig);
        const std::string where = std::string(strsignal(sig)) + " at operation " + std::to_string(points[p]) + ", " + stepName(step);
        const bool asItShould = sig == SIGKILL ? WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL
                                               : WIFEXITED(status) && WEXITSTATUS(status) == 0;
        if (!asItShould) {
            problems.add("a child that did not end as its signal ends it", where + " (status " + std::to_string(status) + ")");
            continue;
        }
        ++ended;
        check(f, step, where);
    }
    return ended;
}

TEST(KillTest, SigkillLeavesWholeFilesAndAnIndexOfBeforeOrAfterTheStep) {
    Tally problems;
    const Reference& ref = reference();
    const int killed = sweep(pointsToRun(ref.totalOps, kKillPoints, kSeed), [](std::size_t) { return SIGKILL; }, problems,
                             [&](Folders& f, std::size_t step, const std::string& where) {
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
    });
    problems.finish("kills", killed, std::to_string(killed) + " SIGKILLs at points spread over a session of " + std::to_string(ref.totalOps) + " file operations");
}

// What Exit right after step s leaves in the data folder.
const std::map<std::string, std::string>& exitAfter(std::size_t s) {
    static std::map<std::size_t, std::map<std::string, std::string>> cache;
    if (cache.count(s)) return cache[s];
    Folders f;
    Harness h(f.data.place(), f.floppy.place());
    countEveryOperation(h);
    runSession(h, [s](std::size_t i) { return i <= s; });
    if (!h.m().ended()) h.click(h.m().cmdExit);
    return cache[s] = folderContents(f.data.path());
}

TEST(KillTest, EndSignalsLeaveWhatExitLeaves) {
    Tally problems;
    const char* only = std::getenv("QM_KILL_SIGNAL");
    auto signalOf = [only](std::size_t p) { return only ? std::atoi(only) : std::array{SIGTERM, SIGHUP, SIGINT}[p % 3]; };
    const int ended = sweep(pointsToRun(reference().totalOps, kSignalPoints, kSeed + 1), signalOf, problems,
                            [&](Folders& f, std::size_t step, const std::string& where) {
        if (!leftoverTemporaries(f.data.path()).empty()) problems.add("unfinished files left behind", where);
        if (folderContents(f.data.path()) != exitAfter(step)) problems.add("files that differ from Exit's", where);
    });
    problems.finish("ends", ended, std::to_string(ended) + " end requests (SIGTERM, SIGHUP, SIGINT in turn) ended the session");
}

} // namespace

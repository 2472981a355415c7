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
constexpr int kSignalPoints = 300;
constexpr unsigned kSeed = 20240611;

// Operation numbers spread over the whole session: one drawn from each of n equal stretches.
std::vector<long> pointsToRun(long total, int n, unsigned seed) {
    if (const char* one = std::getenv("QM_KILL_AT")) return {std::atol(one)};
    std::mt19937 rng(seed);
    std::vector<long> points;
    for (int i = 0; i < n; ++i) {
        long lo = total * i / n, hi = std::max(lo + 1, total * (i + 1) / n);
        points.push_back(std::uniform_int_distribution<long>(lo, hi - 1)(rng));
    }
    return points;
}

// The step a child is in, where the parent can read it after the child's end:
// the count of file operations need not be the same from run to run when the
// program leaves unchanged files alone by their times.
std::size_t* sharedStep() {
    static void* page = ::mmap(nullptr, sizeof(std::size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) throw std::runtime_error("mmap failed");
    return static_cast<std::size_t*>(page);
}

struct ChildEnd {
    int status = 0;
    std::size_t step = 0; // the step under way at the end
};

// Runs the session in a child process on the folders; `arm` prepares the
// child's files port, `beforeStep` runs ahead of each step and at the end.
ChildEnd runChild(Folders& f, const std::function<void(CountingFiles&)>& arm,
                  const std::function<bool(qm::frmMain&, Harness&)>& beforeStep = {}) {
    std::size_t* step = sharedStep();
    *step = 0;
    std::fflush(nullptr);
    pid_t pid = ::fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        int code = 0;
        ::setenv("TMPDIR", f.scratch.path().c_str(), 1); // removed with f, however the child ends
        try {
            CountingFiles files;
            Rig rig(f.data.place(), f.floppy.place(), files);
            arm(files);
            auto before = [&](std::size_t i) {
                if (beforeStep && !beforeStep(*rig.main, rig.h)) return false;
                if (i < sessionLength()) *step = i;
                return true;
            };
            runSession(rig.h, *rig.main, before);
            before(sessionLength());
        } catch (...) {
            code = 3;
        }
        std::_Exit(code);
    }
    ChildEnd end;
    ::waitpid(pid, &end.status, 0);
    end.step = *step;
    return end;
}

// Every problem kind is reported with the first places that showed it.
TEST(KillTest, SigkillLeavesWholeFilesAndAnIndexOfBeforeOrAfterTheStep) {
    int killed = 0;
    Tally problems;
    const Reference& ref = reference();
    for (long k : pointsToRun(ref.totalOps, kKillPoints, kSeed)) {
        Folders f;
        ChildEnd end = runChild(f, [k](CountingFiles& files) {
            files.cutWriteAt = k;
            files.hook = [k](long n, FileOp, const std::string&) {
                if (n == k) ::raise(SIGKILL);
            };
        });
        const std::size_t step = end.step;
        const std::string where = "SIGKILL at operation " + std::to_string(k) + ", " + stepName(step);
        if (!WIFSIGNALED(end.status) || WTERMSIG(end.status) != SIGKILL) {
            problems.add("a child that was not killed", where + " (status " + std::to_string(end.status) + ")");
            continue;
        }
        ++killed;

        const auto contents = folderContents(f.data.path());
        checkWholeFiles(f.data.path(), ref.versions, problems, "a cut file, or one the program never wrote", where);
        Restart r = restartOn(f.data.place(), f.floppy.place());
        for (const auto& name : r.list)
            if (!contents.count(storage::FileStem(name) + ".csv")) problems.add("an index naming a category without a file", where + ": [" + name + "]");
        const auto& before = ref.lists[step];
        const auto& after = ref.lists[step + 1];
        if (r.list != before && r.list != after) problems.add("an index that is neither the list before nor the one after the step", where + ": " + describeList(r.list));
        auto count = storage::Value::text(r.count).toInt16();
        if (!count || *count != static_cast<int>(r.list.size()))
            problems.add("a count that is not the number of names", where + ": count [" + r.count + "], " + std::to_string(r.list.size()) + " names");
    }
    std::printf("%d SIGKILLs at points spread over a session of %ld file operations\n", killed, ref.totalOps);
    RecordProperty("kills", killed);
    for (const auto& [kind, where] : problems.byKind) ADD_FAILURE() << problems.report(kind);
}

// ---- end requests ------------------------------------------------------------------------

volatile std::sig_atomic_t endRequested = 0;
extern "C" void onEndRequest(int) { endRequested = 1; }

// What Exit right after step s leaves in the data folder.
const std::map<std::string, std::string>& exitAfter(std::size_t s) {
    static std::map<std::size_t, std::map<std::string, std::string>> cache;
    auto it = cache.find(s);
    if (it != cache.end()) return it->second;
    Folders f;
    Harness h(f.data.place(), f.floppy.place());
    qm::frmMain& m = h.start();
    const auto& steps = sessionSteps();
    for (std::size_t i = 0; i < s && i < steps.size(); ++i) steps[i].run(h, m);
    if (!m.ended()) h.click(m.cmdExit);
    return cache[s] = folderContents(f.data.path());
}

TEST(KillTest, EndSignalsLeaveWhatExitLeaves) {
    const Reference& ref = reference();
    const int signals[] = {SIGTERM, SIGHUP, SIGINT};
    Tally problems;
    int ended = 0;
    const char* only = std::getenv("QM_KILL_SIGNAL");
    std::vector<long> points = pointsToRun(ref.totalOps, kSignalPoints, kSeed + 1);
    for (std::size_t p = 0; p < points.size(); ++p) {
        const long k = points[p];
        const int sig = only ? std::atoi(only) : signals[p % 3];
        Folders f;
        ChildEnd end = runChild(
            f,
            [k, sig](CountingFiles& files) {
                struct sigaction sa {};
                sa.sa_handler = onEndRequest;
                sigemptyset(&sa.sa_mask);
                for (int s : {SIGTERM, SIGHUP, SIGINT}) sigaction(s, &sa, nullptr);
                files.hook = [k, sig](long n, FileOp, const std::string&) {
                    if (n == k) ::raise(sig);
                };
            },
            // As the desktop program does: the request waits for the input under way, then ends the program.
            [](qm::frmMain& m, Harness& h) {
                if (!endRequested) return true;
                h.runtime.dispatch([&] { m.Form_Terminate(); });
                return false;
            });
        const std::size_t step = end.step;
        const std::string where = std::string(strsignal(sig)) + " at operation " + std::to_string(k) + ", " + stepName(step);
        if (!WIFEXITED(end.status) || WEXITSTATUS(end.status) != 0) {
            problems.add("a child that did not end normally", where + " (status " + std::to_string(end.status) + ")");
            continue;
        }
        ++ended;
        if (!leftoverTemporaries(f.data.path()).empty()) problems.add("unfinished files left behind", where);
        const auto contents = folderContents(f.data.path());
        const auto& expected = exitAfter(step);
        if (contents != expected) {
            std::string diff;
            for (const auto& [name, bytes] : expected)
                if (!contents.count(name) || contents.at(name) != bytes) diff += " [" + name + "]";
            for (const auto& [name, bytes] : contents)
                if (!expected.count(name)) diff += " +[" + name + "]";
            problems.add("files that differ from Exit's", where + ":" + diff);
        }
    }
    RecordProperty("ends", ended);
    std::printf("%d end requests (SIGTERM, SIGHUP, SIGINT in turn) ended the session\n", ended);
    for (const auto& [kind, where] : problems.byKind) ADD_FAILURE() << problems.report(kind);
}

} // namespace

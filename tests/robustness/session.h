#pragma once
// A user's session on a database of two dozen categories, step by step, on
// files that number, record and interrupt the operations the program makes
// during it (the test support's FaultyFiles). The kill tests and the fault
// sweeps replay it; they and the round trips report what they found through a Tally.
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "forms/std_files.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

namespace robust {

using qmtest::Harness;
using qmtest::Versions;

// Writes the database the session starts on into the data folder of h.
void writeStartDatabase(Harness& h);

// One piece of user input (or a few that belong together, such as a click on
// a cell and the text typed into it).
struct Step {
    std::string what;
    std::function<void(Harness& h, qm::frmMain& m)> run;
};

// The session after the start: edits, switches, walks at the list's focus,
// adding, renaming and deleting categories and items, and Exit last.
const std::vector<Step>& sessionSteps();

// Makes the program on h and runs its start and then the steps in order.
// before(i) runs ahead of step i (i = 0 is the start, i = 1 the first step of
// sessionSteps()); when it returns false the session ends there.
void runSession(Harness& h, const std::function<bool(std::size_t)>& before = {});
inline std::size_t sessionLength() { return sessionSteps().size() + 1; }
std::string stepName(std::size_t i);

// Every file of a folder by name with its bytes; temporaries of unfinished writes left out.
std::map<std::string, std::string> folderContents(const std::filesystem::path& dir);

struct Tally;
// The operations to break the session at: these, or the one named by the environment variable replay.
std::vector<long> pointsOr(const char* replay, std::vector<long> points);
// The contents of the files of dir, and those added to them.
Versions versionsIn(const std::filesystem::path& dir);
void addVersions(Versions& to, const Versions& more);
// Tallies under kind each file of dir whose bytes are none of the contents known for its name.
void checkWholeFiles(const std::filesystem::path& dir, const Versions& versions, Tally& tally, const std::string& kind,
                     const std::string& where);

// What a new start of the program on a data folder shows.
struct Restart {
    std::vector<std::string> list;
    std::string count; // NumCats.csv's field as read
    std::map<std::string, qmtest::Table> tables;
};
Restart restartOn(const std::string& dataPlace, const std::string& floppyPlace);

std::string describeList(const std::vector<std::string>& list);

// Files whose operations are the same in every run of the session (no file
// shows a state), with every content committed recorded.
void countEveryOperation(Harness& h);

// Two temporary places for one run, the data folder holding the start database.
struct Folders {
    Folders();
    qmtest::TempDir data, floppy;
    // For the temporary folders of a child process that ends without cleaning up.
    qmtest::TempDir scratch;
};

// The session run once without interruption, as the runs that break it are measured against.
struct Reference {
    long totalOps = 0;
    std::vector<long> stepStart;                 // operation count when step i begins
    std::vector<std::vector<std::string>> lists; // the list when step i begins; the last one at the end
    std::vector<std::string> selected;           // the selected entry when step i begins; the last one at the end
    std::vector<long> writeOps;                  // numbers of the operations that change a file
    Versions versions;                           // the start content and every one committed
    Restart end;                                 // what a start after the session shows
};
const Reference& reference();
// The step (0: the start) during which operation n runs.
std::size_t stepOfOp(const Reference& r, long n);

// The session run by a user who reads the program's messages: a step after
// which the program said that a category could not be saved, and which did not
// get where it got in the reference run, is done once more.
void runSessionRetrying(Harness& h, const Reference& ref);

// Each problem found, by kind, with the first places that showed it.
struct Tally {
    std::map<std::string, std::vector<std::string>> byKind;
    void add(const std::string& kind, const std::string& where) { byKind[kind].push_back(where); }
    std::string report(const std::string& kind) const;
    // Prints the figure, records its value as the test's property and fails the
    // test once for each kind of problem but the tolerated one.
    void finish(const char* property, int value, const std::string& figure, const std::string& tolerated = "") const;
};

} // namespace robust

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "forms/failure.h"
#include "mainwindow/frm_main.h"
#include "storage/field_rules.h"
#include "storage/index_files.h"
#include "storage/whole_file.h"

namespace qm {

using forms::Failure;
using storage::kCountFile;
using storage::kNamesFile;

namespace {
// The two index files change together: when the count changes, the new count
// and names are first put here whole, then the names file and the count file
// replaced in that order, and this file removed. A start that finds it
// finishes the pair (the names are in place) or drops it (they are not).
// Hidden, and not ending in ".csv": the database's wildcard never takes it.
constexpr const char* kPairFile = ".quillmere-index";

} // namespace

// The pair file holds the length of the count's bytes on a line of its own,
// the count's bytes, then the names' bytes.
void frmMain::CompleteIndexPair(const std::string& place) {
    try {
        const std::optional<std::string> pair = storage::ReadWholeFile(files.files(), place + kPairFile);
        if (!pair) return;
        const std::size_t eol = pair->find("\r\n");
        std::size_t countSize = 0;
        bool whole = eol != std::string::npos && eol > 0 && eol <= 9 &&
                     pair->find_first_not_of("0123456789") == eol;
        if (whole) {
            countSize = std::stoul(pair->substr(0, eol));
            whole = eol + 2 + countSize <= pair->size();
        }
        if (whole) {
            const std::string_view count = std::string_view(*pair).substr(eol + 2, countSize);
            const std::string_view names = std::string_view(*pair).substr(eol + 2 + countSize);
            if (storage::ReadWholeFile(files.files(), place + kNamesFile) == std::optional<std::string>(names)) {
                const int n = files.FreeFile();
                files.OpenOutput(n, place + kCountFile);
                files.WriteBytes(n, count);
                files.Close(n);
            }
        }
        files.Kill(place + kPairFile);
    } catch (const Failure&) {
        // Left for the next start.
    }
}

// Called with the names file written whole and open under n.
void frmMain::CommitIndexPair(const std::string& place, int n, const std::string& countLine, const std::string& names) {
    std::optional<std::string> count;
    try {
        count = storage::ReadWholeFile(files.files(), place + kCountFile);
    } catch (const Failure&) {
    }
    if (count == countLine) {
        files.Close(n); // the count stands: the names alone change, in one step
        return;
    }
    int p = files.FreeFile();
    files.OpenOutput(p, place + kPairFile);
    files.WriteBytes(p, std::to_string(countLine.size()) + "\r\n" + countLine + names);
    files.Close(p);
    try {
        files.Close(n);
    } catch (const Failure&) {
        // The old pair stands: the pair file would be dropped at the next start.
        try {
            files.Kill(place + kPairFile);
        } catch (const Failure&) {
        }
        throw;
    }
    // From here on the pair file finishes the pair if this can't: the index
    // has reached the disk, whatever happens to the count now.
    p = 0;
    try {
        p = files.FreeFile();
        files.OpenOutput(p, place + kCountFile);
        files.WriteBytes(p, countLine);
        files.Close(p);
        files.Kill(place + kPairFile);
    } catch (const Failure&) {
        files.Abandon(p);
    }
}

// Fills the list from "NumCats.csv" and "CatFiles.csv": the names as the
// count lists them, or, when the count disagrees with the names, every name,
// the count repaired to match (told at start). It adds to the list and never
// selects an entry; any failure ends it with its file closed. An index that
// exists but can't be read whole (a read error, a count that is no 16-bit
// number of entries, a names file missing, names with no count) is kept from
// being written over for the rest of the run. A missing index is a new
// database.
void frmMain::LoadCategoryList() {
    const std::string& place = ReadFromFloppy ? platform.places.floppyRoot : platform.places.dataFolder;
    CompleteIndexPair(place);
    bool unreadable = false;
    int n = 0;
    try {
        n = files.FreeFile();
        // No count at all: a new database, unless there are names it would lose.
        const auto noCount = [&] {
            files.Close(n);
            const std::optional<std::string> names = storage::ReadWholeFile(files.files(), place + kNamesFile);
            if (names && names->find_first_not_of(" \t\r\n") != std::string::npos) keepIndex(place);
        };
        try {
            files.OpenInput(n, place + kCountFile);
            CategoryCount = storage::Value::text(files.ReadField(n));
        } catch (const forms::FileNotFound&) {
            return noCount();
        } catch (const forms::EndOfFile&) {
            return noCount();
        }
        files.Close(n);
        const std::optional<int> count = storage::ListedEntries(CategoryCount);
        // A count that is no count is kept as found.
        if (!count) return keepIndex(place);
        try {
            files.OpenInput(n, place + kNamesFile);
        } catch (const forms::FileNotFound&) {
            if (*count == 0) return;
            throw;
        }
        // Every field: the names decide, the count only agrees or is repaired.
        // A file with more names than a list holds is read no further.
        std::vector<std::string> fields;
        try {
            while (fields.size() <= forms::ListBox::kMaxEntries || fields.back().empty()) fields.push_back(files.ReadField(n));
        } catch (const forms::EndOfFile&) {
        }
        files.Close(n);
        // Every name read here has been seen by this window (TakeInNamesListedElsewhere).
        if (!ReadFromFloppy) IndexNamesSeen.insert(fields.begin(), fields.end());
        std::optional<storage::IndexNames> listed = storage::ListedNames(CategoryCount, std::move(fields));
        if (!listed) return keepIndex(place);
        if (listed->repaired) {
            // The stick's index is repaired alike; the load writes the data
            // folder's at once, and its check tells what did not come.
            if (!ReadFromFloppy) IndexRepairedMessage = storage::IndexRepairedMessage(CategoryCount, listed->names.size());
            CategoryCount = storage::Value::text(std::to_string(listed->names.size()));
        }
        for (const std::string& name : listed->names) lstCategory.AddItem(name);
    } catch (const Failure&) {
        files.Close(n);
        unreadable = true;
    }
    if (unreadable) keepIndex(place);
}

bool frmMain::IndexKeptAt(const std::string& place) const {
    return UnreadableFiles.count(place + kCountFile) || UnreadableFiles.count(place + kNamesFile);
}

bool frmMain::IndexKept() const { return IndexKeptAt(platform.places.dataFolder); }

void frmMain::keepIndex(const std::string& place) {
    UnreadableFiles.insert(place + kCountFile);
    UnreadableFiles.insert(place + kNamesFile);
}

// Writes the count and the names. It reads the names by selecting each entry
// in turn, so every category passes through the switch and is stored again:
// the walk. The selection goes back to where it was at the end. True when the
// index reached the disk.
bool frmMain::SaveCategoryList() {
    const std::string remembered = lstCategory.Text();
    const bool stored = StoreIndex(WriteToFloppy ? platform.places.floppyRoot : platform.places.dataFolder, true);
    lstCategory.setText(remembered);
    // Versions kept in this walk are listed before anyone reads the index.
    ListKeptVersions();
    return stored;
}

// The index of the list as it stands, after the walk if one is asked for. The
// two files are replaced together, after the walk; an index that can't be
// read is never written over. True when the index reached the disk.
bool frmMain::StoreIndex(const std::string& place, bool walk) {
    const bool keepIndex = IndexKeptAt(place);
    const bool dataFolder = place == platform.places.dataFolder;
    if (!keepIndex && dataFolder) TakeInNamesListedElsewhere();
    int n = 0;
    try {
        if (!keepIndex) {
            n = files.FreeFile();
            files.OpenOutput(n, place + kNamesFile);
        }
        const int count = lstCategory.ListCount();
        if (walk)
            for (int i = 0; i < count; ++i) lstCategory.setSelected(i);
        if (keepIndex) return false;
        // The entries' own texts: a switch that had to keep an unsaved
        // category leaves the selection on that one.
        std::string names;
        for (int i = 0; i < count; ++i) {
            storage::AppendField(names, lstCategory.List(i));
            names += "\r\n";
        }
        files.WriteBytes(n, names);
        CommitIndexPair(place, n, storage::EncodeValue(CategoryCount) + "\r\n", names);
    } catch (const Failure&) {
        // An index that could not be written whole is dropped: the old one stands.
        files.Abandon(n);
        return false;
    }
    if (dataFolder) IndexNamesSeen.insert(lstCategory.items().begin(), lstCategory.items().end());
    return true;
}

// Another writer (a second program on the same folder) may have added
// categories to the data folder's index since this window last read or wrote
// it: names this window never listed come into the list, so that writing the
// index over theirs leaves no category file unlisted. A name this window
// listed once and lists no more was deleted here and stays deleted; one the
// other writer took out stays in, as this window still holds its items.
void frmMain::TakeInNamesListedElsewhere() {
    const std::string path = platform.places.dataFolder + kNamesFile;
    if (files.KnownUnchanged(path)) return;
    std::optional<std::vector<std::string>> theirs;
    try {
        theirs = storage::ReadAllFields(files.files(), path);
    } catch (const Failure&) {
        return;
    }
    if (!theirs) return;
    const std::set<std::string> listed(lstCategory.items().begin(), lstCategory.items().end());
    for (const std::string& name : *theirs) {
        if (name.empty() || IndexNamesSeen.count(name) || listed.count(name) || !CategoryNameProblem(name).empty())
            continue;
        lstCategory.AddItem(name);
        CategoryCount = CategoryCount.plus(1);
        IndexNamesSeen.insert(name);
    }
}

} // namespace qm

#include <algorithm>
#include <utility>

#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"
#include "storage/whole_file.h"

namespace qm {

// The other program's bytes go, exactly as they are, to the file of a new
// category; the grid is written over them only once they are safe there.
void frmMain::KeepOtherVersion(const std::string& name, const std::string& path) {
    const std::optional<std::string> theirs = storage::ReadWholeFile(files.files(), path);
    if (!theirs) return; // gone meanwhile: nothing of theirs to keep
    const std::string copy = KeptVersionName(name);
    const int n = files.FreeFile();
    try {
        files.OpenOutput(n, CategoryPath(platform.places.dataFolder, copy));
        files.WriteBytes(n, *theirs);
        files.Close(n);
    } catch (const forms::Failure&) {
        files.Abandon(n);
        throw;
    }
    KeptVersionsToList.push_back({name, copy});
    // Listed and told once the event has ended: a walk may be going through
    // the list, and every version kept in it is told in one message.
    if (KeptVersionsToTell.empty()) platform.runtime.post([this] { TellKeptVersions(); });
    KeptVersionsToTell.push_back({name, copy});
}

// "NAME (changed elsewhere)", then "NAME (changed elsewhere 2)" and on, for
// the first that is neither in the list nor a file; NAME is shortened as far
// as a file name needs.
std::string frmMain::KeptVersionName(const std::string& name) {
    const auto& list = lstCategory.items();
    for (int number = 1;; ++number) {
        const std::string suffix = number == 1 ? " (changed elsewhere)" : " (changed elsewhere " + std::to_string(number) + ")";
        std::string base = name;
        while (!base.empty() && !CategoryNameProblem(base + suffix).empty())
            base = forms::utf8::mid(base, 0, forms::utf8::length(base) - 1);
        const std::string copy = base.empty() ? suffix.substr(1) : base + suffix;
        if (std::find(list.begin(), list.end(), copy) == list.end() &&
            !files.files().exists(CategoryPath(platform.places.dataFolder, copy)))
            return copy;
    }
}

// The kept versions become entries of the list, and the index is stored.
// Not while a backup walk has the flags turned: the copy then waits for the
// end of the event.
void frmMain::ListKeptVersions() {
    if (KeptVersionsToList.empty() || WriteToFloppy || ReadFromFloppy) return;
    for (const KeptVersion& v : std::exchange(KeptVersionsToList, {})) {
        lstCategory.AddItem(v.copy);
        CategoryCount = CategoryCount.plus(1);
    }
    StoreIndex(platform.places.dataFolder, false);
}

void frmMain::TellKeptVersions() {
    ListKeptVersions();
    const std::string text = KeptVersionsText();
    if (!ended_ && !text.empty()) Message(text);
}

std::string frmMain::KeptVersionsText() {
    std::string text;
    for (const KeptVersion& v : std::exchange(KeptVersionsToTell, {}))
        text += (text.empty() ? "" : "\n\n") + ("The category \"" + v.name +
                                                "\" was changed by another program while it was open here. Your version "
                                                "is kept as \"" + v.name + "\", the other as \"" + v.copy + "\".");
    return text;
}

} // namespace qm

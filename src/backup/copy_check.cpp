#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "forms/failure.h"
#include "mainwindow/frm_main.h"
#include "storage/index_files.h"
#include "storage/whole_file.h"

namespace qm {

using forms::Failure;

namespace {

constexpr const char* kIndexFiles[] = {storage::kCountFile, storage::kNamesFile};
constexpr const char* kTheList = "the list of categories";

// Both files hold the same bytes (or neither exists); a file that can't be
// read holds nothing the other does. The copy b is read from its device, not
// from what the system still holds of the write in memory.
bool sameBytes(forms::FilesPort& port, const std::string& a, const std::string& b) {
    try {
        return storage::ReadWholeFile(port, a) == storage::ReadWholeFile(port, b, true);
    } catch (const Failure&) {
        return false;
    }
}

// The same, or fields that read the same: a disk written by hand may hold a
// category in another form than the one the program writes.
bool sameRecords(forms::FilesPort& port, const std::string& a, const std::string& b) {
    if (sameBytes(port, a, b)) return true;
    try {
        return storage::ReadAllFields(port, a) == storage::ReadAllFields(port, b);
    } catch (const Failure&) {
        return false;
    }
}

// The names an index gives, read as the list reads them.
std::optional<storage::IndexNames> indexEntries(forms::FilesPort& port, const std::string& place) {
    try {
        const auto count = storage::ReadAllFields(port, place + storage::kCountFile);
        if (!count || count->empty()) return std::nullopt;
        const storage::Value value = storage::Value::text(count->front());
        const auto names = storage::ReadAllFields(port, place + storage::kNamesFile);
        if (!names && storage::ListedEntries(value) != 0) return std::nullopt;
        return storage::ListedNames(value, names.value_or(std::vector<std::string>{}));
    } catch (const Failure&) {
        return std::nullopt;
    }
}

std::string quoted(const std::string& name) { return "\"" + name + "\""; }

} // namespace

// A load empties the data folder before it reads the floppy's index, so the
// index is looked at first: a disk without one that can be read whole must
// cost the user nothing.
bool frmMain::FloppyIndexReadable() { return indexEntries(files.files(), platform.places.floppyRoot).has_value(); }

// Every file the disk should now hold, read back and compared byte for byte
// with the data folder's.
std::vector<std::string> frmMain::NotCopiedToStick() {
    forms::FilesPort& port = files.files();
    const std::string &data = platform.places.dataFolder, &stick = platform.places.floppyRoot;
    std::vector<std::string> missing;
    // The disk's index as a load reads it must list every category.
    const auto listed = indexEntries(port, stick);
    bool whole = listed && !listed->repaired && listed->names == lstCategory.items();
    for (const char* f : kIndexFiles) whole = whole && sameBytes(port, data + f, stick + f);
    if (!whole) missing.push_back(kTheList);
    for (const std::string& name : lstCategory.items())
        if (!sameBytes(port, CategoryPath(data, name), CategoryPath(stick, name))) missing.push_back(quoted(name));
    return missing;
}

// The data folder's files compared with the disk's after a load: the list the
// same, and each category the same bytes or the same fields.
std::vector<std::string> frmMain::NotLoadedFromStick() {
    forms::FilesPort& port = files.files();
    const std::string &data = platform.places.dataFolder, &stick = platform.places.floppyRoot;
    std::vector<std::string> missing;
    const auto entries = indexEntries(port, data), stickEntries = indexEntries(port, stick);
    if (!entries || !stickEntries || entries->names != stickEntries->names) missing.push_back(kTheList);
    for (const std::string& name : lstCategory.items()) {
        std::string onStick = CategoryPath(stick, name);
        const std::string older = stick + storage::FileStem(name) + ".csv";
        if (!port.exists(onStick) && port.exists(older)) onStick = older;
        if (!sameRecords(port, CategoryPath(data, name), onStick)) missing.push_back(quoted(name));
    }
    return missing;
}

std::string frmMain::NamedList(const std::vector<std::string>& items) {
    constexpr std::size_t kShown = 10;
    std::string text;
    const std::size_t shown = std::min(items.size(), kShown);
    for (std::size_t i = 0; i < shown; ++i) {
        if (i) text += i + 1 == shown && items.size() <= kShown ? " and " : ", ";
        text += items[i];
    }
    if (items.size() > kShown) text += " and " + std::to_string(items.size() - kShown) + " more";
    return text;
}

} // namespace qm

#include "list_clicks.h"

#include <cstdio>
#include <map>
#include <memory>
#include <stdexcept>

#include "io_floor.h"
#include "sample_data.h"

namespace qmbench {

namespace fs = std::filesystem;

ClickDatabase::ClickDatabase(int categories, int items) : categories(categories), items(items) {
    // A harness only to write the files in the program's own formats.
    qmtest::Harness writer(dir.place(), dir.place());
    for (int i = 1; i <= categories; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "Category %04d", i);
        names.emplace_back(name);
        writer.writeCategory(name, sampleItems(items, static_cast<unsigned>(i)));
    }
    writer.writeIndex(names);
    fs::copy_file(QM_STOCK_PICTURE, dir.path() / "NoPic.jpg");
}

void ClickDatabase::copyTo(const fs::path& dataFolder) const {
    for (const fs::directory_entry& e : fs::directory_iterator(dir.path()))
        fs::copy_file(e.path(), dataFolder / e.path().filename(), fs::copy_options::overwrite_existing);
}

std::vector<std::string> ClickDatabase::categoryFiles(const fs::path& dataFolder) const {
    std::vector<std::string> files;
    for (const std::string& n : names) files.push_back((dataFolder / (n + ".csv")).string());
    return files;
}

namespace {
std::map<std::pair<int, int>, std::unique_ptr<ClickDatabase>>& databases() {
    static std::map<std::pair<int, int>, std::unique_ptr<ClickDatabase>> made;
    return made;
}
} // namespace

const ClickDatabase& clickDatabase(int categories, int items) {
    auto& db = databases()[{categories, items}];
    if (!db) db = std::make_unique<ClickDatabase>(categories, items);
    return *db;
}

void releaseClickDatabases() { databases().clear(); }

ListClicks::ListClicks(const ClickDatabase& db, qm::frmMain& m, const fs::path& dataFolder, std::function<void(int)> click)
    : db_(db), m_(m), click_(std::move(click)), files_(db.categoryFiles(dataFolder)) {}

void ListClicks::click() {
    const int target = open_ == 0 ? 1 : 0;
    click_(target);
    open_ = target;
}

std::string ListClicks::problem() const {
    if (m_.lstCategory.ListCount() != db_.categories)
        return "the list has " + std::to_string(m_.lstCategory.ListCount()) + " entries";
    if (m_.lstCategory.ListIndex() != open_ || m_.CurrentCategory != db_.names[static_cast<std::size_t>(open_)])
        return "the click did not open " + db_.names[static_cast<std::size_t>(open_)];
    if (m_.FG1.Rows() != db_.items + 1) return "the open category has " + std::to_string(m_.FG1.Rows()) + " rows";
    return {};
}

std::string ListClicks::verify() {
    if (verified_) return {};
    for (int i = 0; i < 2; ++i) {
        click();
        if (std::string p = problem(); !p.empty()) return p;
    }
    for (std::size_t i = 0; i < files_.size(); ++i)
        if (readWholeFile(files_[i]) != readWholeFile((db_.dir.path() / (db_.names[i] + ".csv")).string()))
            return "two clicks changed " + files_[i];
    verified_ = true;
    return {};
}

} // namespace qmbench

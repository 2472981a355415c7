#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/scripted_platform.h"

namespace qmbench {

// A database of many categories written once per run in a folder of its own:
// the index, every category file and the stock picture. Each program that
// clicks on it gets a copy in its data folder.
class ClickDatabase {
public:
    ClickDatabase(int categories, int items);

    const int categories, items; // items per category, without the heading row
    qmtest::TempDir dir;
    std::vector<std::string> names; // in list order

    // Puts a copy of every file into this data folder.
    void copyTo(const std::filesystem::path& dataFolder) const;
    // The category files in a data folder holding a copy, in list order.
    std::vector<std::string> categoryFiles(const std::filesystem::path& dataFolder) const;
};

// Made at first use and kept for the run; released by releaseClickDatabases.
const ClickDatabase& clickDatabase(int categories, int items);

// The set-up of a click benchmark (a T made from a size, holding its ClickDatabase
// as db) kept for the run: made at first use, and made again when a benchmark
// of another size comes, so only one is held at a time.
template <class T>
T& setUpFor(std::unique_ptr<T>& current, int categories, int items) {
    if (!current || current->db.categories != categories || current->db.items != items) {
        current.reset();
        current = std::make_unique<T>(categories, items);
    }
    return *current;
}

// Clicks on the list of a program started on a copy of a ClickDatabase, taking
// turns between its first two entries: each click a walk over every category
// (the list gains the focus) and then a switch, with nothing changed.
class ListClicks {
public:
    // click(i): the user's click on entry i, with whatever follows it on the screen.
    ListClicks(const ClickDatabase& db, qm::frmMain& m, const std::filesystem::path& dataFolder,
               std::function<void(int)> click);

    void click();
    // Empty if the entry clicked last is selected and open with all its rows.
    std::string problem() const;
    // Once: two clicks leave every file of the data folder byte for byte as it was.
    std::string verify();
    const std::vector<std::string>& files() const { return files_; }

private:
    const ClickDatabase& db_;
    qm::frmMain& m_;
    std::function<void(int)> click_;
    std::vector<std::string> files_;
    int open_ = -1;
    bool verified_ = false;
};

} // namespace qmbench

#pragma once
#include <memory>
#include <string>

#include "support/scripted_platform.h"

namespace qmbench {

// The program started on two categories as large as a grid holds (32767 rows
// with the heading row), every cell filled, the first one open. Switching
// between the two makes every switch save one big file and load another twice.
class BigCategories {
public:
    static constexpr int kRows = forms::Grid::kMaxRows;

    BigCategories();

    qmtest::Harness h;
    std::string names[2];
    std::string files[2];     // paths, in list order
    std::string originals[2]; // their bytes as written
    std::string scratch;      // stem of the I/O floor's files: no category's
    int open = 0;             // list index of the open category

    qm::frmMain& m() { return h.m(); }
    // Selects the other entry of the list, as one piece of user input.
    void switchOver();
    // Empty if the grid holds the open category whole, else what is wrong.
    std::string problem();
    // Once per fixture: a switch opens at most two files for writing and both
    // files come out of two switches byte for byte as they were. Empty if so.
    std::string verifySwitch();

private:
    bool verified_ = false;
};

// Made at first use; fails with std::runtime_error if the program doesn't open them.
BigCategories& bigCategories();

} // namespace qmbench

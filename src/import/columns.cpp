#include "import/columns.h"

#include <algorithm>
#include <utility>

namespace spreadsheet {

namespace {

constexpr std::string_view kChoiceNames[kChoices] = {
    "Item", "Original Cost", "Current Value", "Location Purchased", "Date Purchased", "Warranty Expiration",
    "Serial Number / Description", "Description, with its heading", "Leave out"};

// Headings as people write them, lower case, words split by single blanks.
const std::pair<std::string_view, int> kKnownHeadings[] = {
    {"item", 0}, {"items", 0}, {"name", 0}, {"item name", 0}, {"title", 0}, {"product", 0}, {"article", 0},
    {"object", 0}, {"thing", 0},
    {"original cost", 1}, {"cost", 1}, {"price", 1}, {"purchase price", 1}, {"price paid", 1}, {"paid", 1},
    {"amount paid", 1}, {"original price", 1}, {"cost price", 1},
    {"current value", 2}, {"value", 2}, {"worth", 2}, {"current worth", 2}, {"estimated value", 2},
    {"replacement value", 2}, {"market value", 2}, {"resale value", 2},
    {"location purchased", 3}, {"purchased at", 3}, {"purchased from", 3}, {"bought at", 3}, {"bought from", 3},
    {"store", 3}, {"shop", 3}, {"vendor", 3}, {"seller", 3}, {"retailer", 3}, {"supplier", 3}, {"where bought", 3},
    {"where purchased", 3}, {"place of purchase", 3},
    {"date purchased", 4}, {"purchase date", 4}, {"purchased", 4}, {"purchased on", 4}, {"bought", 4},
    {"bought on", 4}, {"date bought", 4}, {"date of purchase", 4}, {"date", 4}, {"acquired", 4},
    {"warranty expiration", 5}, {"warranty", 5}, {"warranty expires", 5}, {"warranty end", 5},
    {"warranty until", 5}, {"warranty expiry", 5}, {"guarantee", 5}, {"guarantee until", 5},
    {"serial number description", 6}, {"serial number", 6}, {"serial", 6}, {"serial no", 6}, {"s n", 6}, {"sn", 6},
    {"description", 6}, {"notes", 6}, {"note", 6}, {"comments", 6}, {"comment", 6}, {"details", 6}, {"remarks", 6},
};

// Lower-case ASCII letters and digits, every run of anything else one blank,
// none at either end: "Serial No." and "serial-no" both give "serial no".
std::string normalized(std::string_view heading) {
    std::string out;
    bool gap = false;
    for (unsigned char c : heading) {
        const bool word = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c >= 0x80;
        if (!word) {
            gap = !out.empty();
            continue;
        }
        if (gap) out += ' ';
        gap = false;
        out += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    return out;
}

} // namespace

std::string_view ChoiceName(int choice) { return kChoiceNames[choice]; }

int ChoiceForHeading(std::string_view heading) {
    const std::string n = normalized(heading);
    for (const auto& [name, column] : kKnownHeadings)
        if (name == n) return column;
    return kIntoDescription;
}

std::vector<int> DefaultChoices(const std::vector<std::string>& headings) {
    std::vector<int> choices;
    bool taken[7] = {};
    for (const auto& h : headings) {
        int c = ChoiceForHeading(h);
        if (c < 7 && std::exchange(taken[c], true)) c = kIntoDescription;
        choices.push_back(c);
    }
    return choices;
}

std::vector<std::string> HeadingLabels(const Sheet& sheet) {
    std::vector<std::string> labels;
    if (sheet.rows.empty()) return labels;
    const Sheet::Row& head = sheet.rows.front();
    for (std::size_t i = 0; i < head.count; ++i) {
        std::string_view h = sheet.cell(head, i);
        while (!h.empty() && (h.front() == ' ' || h.front() == '\t')) h.remove_prefix(1);
        while (!h.empty() && (h.back() == ' ' || h.back() == '\t')) h.remove_suffix(1);
        labels.push_back(h.empty() ? "Column " + std::to_string(i + 1) : std::string(h));
    }
    return labels;
}

std::array<std::string_view, 7> ItemCells(const Sheet& sheet, const Sheet::Row& row, const std::vector<int>& choices,
                                          const std::vector<std::string>& labels, std::array<std::string, 7>& joined) {
    std::array<std::string_view, 7> item{};
    bool direct[7] = {}, built[7] = {};
    const std::size_t n = std::min<std::size_t>(row.count, choices.size());
    // The cells of columns chosen for a grid column first, in file order, then
    // those joined into the description.
    for (int pass = 0; pass < 2; ++pass)
        for (std::size_t i = 0; i < n; ++i) {
            const int choice = choices[i];
            if (choice == kLeaveOut || (choice == kIntoDescription) != (pass == 1)) continue;
            const std::string_view text = sheet.cell(row, i);
            const int column = choice == kIntoDescription ? 6 : choice;
            const bool first = choice != kIntoDescription && !std::exchange(direct[column], true);
            if (text.empty()) continue;
            std::string_view& cell = item[column];
            if (first && cell.empty()) {
                cell = text; // most cells: the file's own bytes, not copied here
                continue;
            }
            std::string& out = joined[column];
            if (!std::exchange(built[column], true)) out.assign(cell);
            if (!out.empty()) out += "; ";
            out.append(labels[i]).append(": ").append(text);
            cell = out;
        }
    return item;
}

} // namespace spreadsheet

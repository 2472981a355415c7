// Any bytes as a spreadsheet to import: reading never crashes, a refused file
// gives no rows, every row makes an item, and the cells read, written back
// with each cell quoted, read back as the same cells.
#include <string>
#include <vector>

#include "import/columns.h"
#include "import/spreadsheet.h"
#include "memory_platform.h"

namespace {

using Cells = std::vector<std::vector<std::string>>;

Cells cellsOf(const spreadsheet::Sheet& sheet) {
    Cells all;
    for (const auto& row : sheet.rows) {
        auto& out = all.emplace_back();
        for (std::size_t i = 0; i < row.count; ++i) out.emplace_back(sheet.cell(row, i));
    }
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const spreadsheet::Sheet sheet = spreadsheet::ReadSheet(std::string(reinterpret_cast<const char*>(data), size));
    if (!sheet.problem.empty()) {
        if (!sheet.rows.empty()) fuzzing::broken("a refused file gave rows");
        return 0;
    }
    const auto labels = spreadsheet::HeadingLabels(sheet);
    const auto choices = spreadsheet::DefaultChoices(labels);
    std::array<std::string, 7> item;
    for (const auto& row : sheet.rows) spreadsheet::ItemCells(sheet, row, choices, labels, item);

    const Cells cells = cellsOf(sheet);
    std::string again = "\xEF\xBB\xBF"; // the text is UTF-8 now, whatever it was
    for (const auto& row : cells) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i) again += sheet.separator;
            again += '"';
            for (char c : row[i]) again.append(c == '"' ? 2 : 1, c);
            again += '"';
        }
        again += "\r\n";
    }
    const spreadsheet::Sheet back = spreadsheet::ReadSheet(again);
    // A heading row of one cell names no separator: the rest may then be read by another.
    if (back.separator == sheet.separator && cellsOf(back) != cells)
        fuzzing::broken("cells written back quoted read back as other cells");
    return 0;
}

#pragma once
// Which of the seven columns of a category each column of a spreadsheet fills,
// and the seven cells of an item made from one of its rows.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "import/spreadsheet.h"

namespace spreadsheet {

// A file column goes to one of the seven grid columns (0 to 6), into the
// description with its heading, or nowhere.
enum Choice : int { kIntoDescription = 7, kLeaveOut = 8, kChoices = 9 };

// How the preview names each choice.
std::string_view ChoiceName(int choice);

// The grid column a heading names (case and punctuation ignored, common names
// of each column known), else kIntoDescription.
int ChoiceForHeading(std::string_view heading);

// One choice per heading: each grid column taken by the first heading that
// names it; a later heading naming the same column goes into the description.
std::vector<int> DefaultChoices(const std::vector<std::string>& headings);

// The headings as the description names them: the heading's text, or
// "Column n" for an empty one.
std::vector<std::string> HeadingLabels(const Sheet& sheet);

// The seven cells of the item a row makes. A grid column that only one file
// column fills gets that cell unchanged; further cells for it follow as
// "Heading: text", joined by "; " (so "Colour: red; Room: hall"). Empty cells add nothing.
// The texts are views into the sheet, or into `joined` for a column that
// several cells fill: they last until the next call with the same `joined`,
// whose texts keep their room from row to row.
std::array<std::string_view, 7> ItemCells(const Sheet& sheet, const Sheet::Row& row, const std::vector<int>& choices,
                                          const std::vector<std::string>& labels, std::array<std::string, 7>& joined);

} // namespace spreadsheet

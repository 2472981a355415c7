#pragma once
// A spreadsheet saved as text (CSV), read whole: its encoding turned into the
// UTF-8 the program holds, its separator found, its rows cut into cells.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace spreadsheet {

enum class Encoding { Utf8, Utf8WithMark, Windows1252 };

class Sheet {
public:
    struct Row {
        long line = 0;            // where the row begins in the file, from 1
        std::uint32_t first = 0;  // its first cell in the sheet's list of cells
        std::uint32_t count = 0;
    };

    char separator = ',';
    Encoding encoding = Encoding::Utf8;
    // Why nothing of the file can be taken, or "".
    std::string problem;
    // The line on which a quoted cell opens that the file never closes: that
    // row and everything behind it can't be told apart. 0 for none.
    long unclosedLine = 0;
    // Every row that holds at least one non-empty cell, the heading row first.
    std::vector<Row> rows;

    // Cell i of a row as it stood in the file, quotes taken off; "" past its last cell.
    std::string_view cell(const Row& row, std::size_t i) const {
        if (i >= row.count) return {};
        const Span& s = cells_[row.first + i];
        return std::string_view(s.quoted ? unquoted_ : text_).substr(s.at, s.len);
    }
    // The number of cells of a row up to its last non-empty one.
    std::size_t width(const Row& row) const;

private:
    friend Sheet ReadSheet(std::string bytes);
    struct Span {
        std::uint32_t at = 0, len = 0;
        bool quoted = false;
    };
    std::string text_;     // the file in UTF-8, without a byte-order mark
    std::string unquoted_; // the quoted cells, quotes taken off and doubled ones made single
    std::vector<Span> cells_;
};

// Reads the bytes of a file. A file that is empty, too big or not text gets a
// problem and no rows.
Sheet ReadSheet(std::string bytes);

// Whether the bytes are well-formed UTF-8.
bool IsUtf8(std::string_view bytes);
// Windows-1252 text in UTF-8; the five bytes that code page leaves unassigned
// stand for the control characters of the same number, as in Latin-1.
std::string FromWindows1252(std::string_view bytes);

} // namespace spreadsheet

#pragma once
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "forms/ports.h"

namespace report {

// What the first page of the report says.
struct TitleFacts {
    std::string date; // YYYY-MM-DD
    int categories = 0;
    int items = 0;
    std::string costLabel, cost;   // the window's label and the grand total
    std::string valueLabel, value;
};

// One category's table as the window holds it.
struct Sheet {
    std::string name;
    std::array<std::string, 7> headings;
    std::string costLabel, cost, valueLabel, value;
};

// The pages of the inventory report: a title page, then each category from a
// new page with its table of items and its totals; the category's name at the
// top and "Page N of M" at the foot of every page. Texts are wrapped at the
// column's width, long words broken, never cut, and a row too tall for a page
// goes on over the next. The same calls with drawing off only count the pages,
// so that a first pass can tell M.
class Pages {
public:
    static constexpr int kColumns = 7;

    Pages(forms::PageDocument& doc, bool pictures);

    // Drawing off: everything is laid out and counted, nothing drawn.
    void setDrawing(bool on) { drawing_ = on; }
    void setTotalPages(int n) { totalPages_ = n; }
    int pages() const { return page_; }
    // Back to before the first page, for the second pass.
    void rewind() {
        page_ = 0;
        widthAt_ = 0;
    }

    void titlePage(const TitleFacts& facts);
    void beginSheet(const Sheet& sheet);
    // An item's seven cells and the picture linked to it ("" for none).
    void item(const std::array<std::string_view, kColumns>& cells, const std::string& picture);
    void endSheet();
    // The foot of the last page.
    void finish();

    // The text in lines no wider than width: at blanks where it can, inside a
    // word that is wider alone; line ends in the text are kept. Nothing is dropped
    // but the blanks where a line breaks.
    std::vector<std::string> wrap(std::string_view text, double width, const forms::TextStyle& style);

private:
    void newPage();
    void sheetTop();
    void footer();
    void tableHeadings();
    // Room for h more points on the page, or a new page.
    void need(double h);
    double bottom() const;
    double columnX(int c, const std::string& s, const forms::TextStyle& style, double width = -1);
    // The width of a cell's whole text: measured while counting, and given back
    // in the same order while drawing, so the drawing pass measures only what it wraps.
    float cellWidth(std::string_view text);
    void text(double x, double y, const std::string& s, const forms::TextStyle& st) {
        if (drawing_) doc_.drawText(x, y, s, st);
    }
    void rule(double y) {
        if (drawing_) doc_.drawLine(0, y, doc_.pageWidth(), y);
    }

    forms::PageDocument& doc_;
    bool pictures_;
    bool drawing_ = false;
    int page_ = 0;
    int totalPages_ = 0;
    double y_ = 0;
    std::vector<float> widths_;
    std::size_t widthAt_ = 0;
    double bodyTop_ = 0; // where the rows of a page start, below the headings
    const Sheet* sheet_ = nullptr;
    std::array<double, kColumns> left_{}, width_{};
    double pictureLeft_ = 0;
    forms::TextStyle body_{8.5, false}, bold_{8.5, true}, small_{7.5, false}, heading_{13, true}, big_{22, true}, facts_{12, false};
    double bodyLine_ = 0, boldLine_ = 0, smallLine_ = 0, headingLine_ = 0;
};

} // namespace report

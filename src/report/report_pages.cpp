#include "report/report_pages.h"

#include <algorithm>

namespace report {

namespace {

constexpr double kGap = 6;         // between columns, half on each side
constexpr double kThumb = 48;      // a thumbnail's box, square
constexpr double kRowPad = 4;
// How wide each of the seven columns is against the others: the name and the
// description get the room, the dates and amounts what they need.
constexpr std::array<double, Pages::kColumns> kWeights{1.5, 0.8, 0.8, 1.3, 0.85, 0.85, 2.2};

// Where the code point after the one at i starts.
std::size_t nextPoint(std::string_view s, std::size_t i) {
    ++i;
    while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) ++i;
    return i;
}

} // namespace

Pages::Pages(forms::PageDocument& doc, bool pictures) : doc_(doc), pictures_(pictures) {
    bodyLine_ = doc_.lineHeight(body_);
    boldLine_ = doc_.lineHeight(bold_);
    smallLine_ = doc_.lineHeight(small_);
    headingLine_ = doc_.lineHeight(heading_);
    const double tableWidth = doc_.pageWidth() - (pictures_ ? kThumb + kGap : 0);
    double sum = 0;
    for (double w : kWeights) sum += w;
    double x = 0;
    for (int c = 0; c < kColumns; ++c) {
        left_[c] = x;
        width_[c] = tableWidth * kWeights[c] / sum;
        x += width_[c];
    }
    pictureLeft_ = tableWidth + kGap;
}

std::vector<std::string> Pages::wrap(std::string_view text, double width, const forms::TextStyle& style) {
    std::vector<std::string> lines;
    auto fits = [&](std::string_view s) { return doc_.textWidth(std::string(s), style) <= width; };
    std::size_t start = 0;
    while (true) {
        const std::size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        const std::string_view para = text.substr(start, end - start);
        if (fits(para)) {
            lines.emplace_back(para);
        } else {
            std::string line;
            bool any = false;
            std::size_t w = 0;
            while (w <= para.size()) {
                const std::size_t blank = std::min(para.find(' ', w), para.size());
                const std::string_view word = para.substr(w, blank - w);
                std::string candidate = any ? line + " " + std::string(word) : std::string(word);
                if (fits(candidate)) {
                    line = std::move(candidate);
                } else {
                    if (any) lines.push_back(std::move(line));
                    line = std::string(word);
                    // A word wider than the column alone is broken between its letters.
                    while (!fits(line)) {
                        std::size_t cut = nextPoint(line, 0);
                        for (std::size_t next = nextPoint(line, cut); next <= line.size() && fits(std::string_view(line).substr(0, next));
                             next = nextPoint(line, next))
                            cut = next;
                        lines.push_back(line.substr(0, cut));
                        line.erase(0, cut);
                    }
                }
                any = true;
                w = blank + 1;
            }
            lines.push_back(std::move(line));
        }
        if (end >= text.size()) break;
        start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
    return lines;
}

// Amounts stand right, as figures do; the rest left.
double Pages::columnX(int c, const std::string& s, const forms::TextStyle& style, double width) {
    const bool money = c == 1 || c == 2;
    if (!money || !drawing_) return left_[c] + kGap / 2;
    return left_[c] + width_[c] - kGap / 2 - (width >= 0 ? width : doc_.textWidth(s, style));
}

float Pages::cellWidth(std::string_view text) {
    if (drawing_ && widthAt_ < widths_.size()) return widths_[widthAt_++];
    const auto w = static_cast<float>(doc_.textWidth(std::string(text), body_));
    if (!drawing_) widths_.push_back(w);
    return w;
}

double Pages::bottom() const { return doc_.pageHeight() - smallLine_ - kGap; }

void Pages::newPage() {
    if (page_ > 0) {
        finish();
        if (drawing_) doc_.newPage();
    }
    ++page_;
    y_ = 0;
}

void Pages::finish() {
    if (page_ > 0) footer();
}

void Pages::footer() {
    const std::string n = "Page " + std::to_string(page_) + " of " + std::to_string(totalPages_);
    if (drawing_) text((doc_.pageWidth() - doc_.textWidth(n, small_)) / 2, doc_.pageHeight() - smallLine_, n, small_);
}

void Pages::need(double h) {
    if (y_ + h <= bottom()) return;
    newPage();
    sheetTop();
    tableHeadings();
}

void Pages::titlePage(const TitleFacts& f) {
    newPage();
    const double bigLine = doc_.lineHeight(big_), factsLine = doc_.lineHeight(facts_);
    y_ = doc_.pageHeight() / 5;
    text(0, y_, "Inventory Report", big_);
    y_ += bigLine * 1.5;
    const std::pair<std::string, std::string> rows[] = {
        {"Date:", f.date},
        {"Categories:", std::to_string(f.categories)},
        {"Items:", std::to_string(f.items)},
        {f.costLabel, f.cost},
        {f.valueLabel, f.value},
    };
    double labels = 0;
    for (const auto& r : rows) labels = std::max(labels, doc_.textWidth(r.first, facts_));
    for (const auto& r : rows) {
        text(0, y_, r.first, facts_);
        text(labels + 2 * kGap, y_, r.second, facts_);
        y_ += factsLine * 1.3;
    }
}

void Pages::sheetTop() {
    if (!sheet_) return;
    for (const std::string& line : wrap(sheet_->name, doc_.pageWidth(), heading_)) {
        text(0, y_, line, heading_);
        y_ += headingLine_;
    }
    y_ += kGap;
}

void Pages::tableHeadings() {
    if (!sheet_) return;
    std::size_t lines = 1;
    for (int c = 0; c < kColumns; ++c) {
        const auto parts = wrap(sheet_->headings[static_cast<std::size_t>(c)], width_[c] - kGap, bold_);
        lines = std::max(lines, parts.size());
        for (std::size_t k = 0; k < parts.size(); ++k) text(columnX(c, parts[k], bold_), y_ + k * boldLine_, parts[k], bold_);
    }
    if (pictures_) text(pictureLeft_, y_, "Picture", bold_);
    y_ += static_cast<double>(lines) * boldLine_ + kRowPad / 2;
    rule(y_);
    y_ += kRowPad / 2;
    bodyTop_ = y_;
}

void Pages::beginSheet(const Sheet& sheet) {
    sheet_ = &sheet;
    newPage();
    sheetTop();
    tableHeadings();
}

void Pages::item(const std::array<std::string_view, kColumns>& cells, const std::string& picture) {
    std::array<std::vector<std::string>, kColumns> parts;
    std::array<double, kColumns> single; // the width of a cell on one line, else -1
    std::size_t lines = 1;
    for (int c = 0; c < kColumns; ++c) {
        const float w = cellWidth(cells[c]);
        single[c] = -1;
        if (w <= width_[c] - kGap && cells[c].find_first_of("\r\n") == std::string_view::npos) {
            parts[c].emplace_back(cells[c]);
            single[c] = w;
        } else {
            parts[c] = wrap(cells[c], width_[c] - kGap, body_);
        }
        lines = std::max(lines, parts[c].size());
    }
    const bool thumb = pictures_ && !picture.empty();
    const double textHeight = static_cast<double>(lines) * bodyLine_;
    const double height = std::max(textHeight, thumb ? kThumb : 0.0) + kRowPad;
    if (y_ + height > bottom()) {
        // A row that a page holds whole is not split; a taller one starts here
        // if its first line (and its picture) still fit.
        if (bodyTop_ + height <= bottom()) need(height);
        else need((thumb ? kThumb : bodyLine_) + kRowPad);
    }
    const double top = y_;
    if (thumb && drawing_ && !doc_.drawPicture(picture, pictureLeft_, top + kRowPad / 2, kThumb, kThumb))
        text(pictureLeft_, top + kRowPad / 2, "(unreadable)", small_);
    double y = top + kRowPad / 2;
    bool broken = false;
    for (std::size_t k = 0; k < lines; ++k) {
        if (y + bodyLine_ > bottom()) {
            newPage();
            sheetTop();
            tableHeadings();
            y = y_;
            broken = true;
        }
        for (int c = 0; c < kColumns; ++c) {
            if (k >= parts[c].size()) continue;
            text(columnX(c, parts[c][k], body_, single[c]), y, parts[c][k], body_);
        }
        y += bodyLine_;
    }
    y_ = std::max(y, thumb && !broken ? top + kRowPad / 2 + kThumb : y) + kRowPad / 2;
    if (drawing_) doc_.drawLine(0, y_, doc_.pageWidth(), y_);
}

void Pages::endSheet() {
    need(2 * boldLine_ + 2 * kGap);
    y_ += kGap;
    text(0, y_, sheet_->costLabel + " " + sheet_->cost, bold_);
    y_ += boldLine_;
    text(0, y_, sheet_->valueLabel + " " + sheet_->value, bold_);
    y_ += boldLine_;
    sheet_ = nullptr;
}

} // namespace report

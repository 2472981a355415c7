// The report's pages as properties: long texts wrapped over random texts (no
// line wider than its column unless one character alone is, nothing lost but
// the one blank where a line breaks, every line as full as it can be), and
// tables of every length laid out above the foot of a numbered page.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "report/report_pages.h"

namespace {

// Every character one point wide, a line 10 high; each page's texts and
// pictures kept as (top, bottom, text), a picture's text "".
struct Monospace : forms::PageDocument {
    std::vector<std::vector<std::tuple<double, double, std::string>>> pages{{}};
    double pageWidth() const override { return 500; }
    double pageHeight() const override { return 300; }
    double textWidth(const std::string& t, const forms::TextStyle&) override {
        double n = 0;
        for (char c : t) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        return n;
    }
    double lineHeight(const forms::TextStyle&) override { return 10; }
    void drawText(double, double y, const std::string& s, const forms::TextStyle&) override { pages.back().emplace_back(y, y + 10, s); }
    bool drawPicture(const std::string&, double, double y, double, double h) override {
        pages.back().emplace_back(y, y + h, "");
        return true;
    }
    void drawLine(double, double, double, double) override {}
    void newPage() override { pages.emplace_back(); }
    void finish() override {}
    void abandon() override {}
};

TEST(ReportPages, WrappedTextsKeepEveryCharacterWithinTheWidth) {
    Monospace doc;
    report::Pages pages(doc, false);
    std::mt19937 rng(13);
    const std::string pieces[] = {"a", "b", " ", " ", "\xC3\xA9", "\n"};
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (int n = std::uniform_int_distribution(0, 60)(rng); n > 0; --n) text += pieces[rng() % std::size(pieces)];
        const int width = std::uniform_int_distribution(1, 12)(rng);
        const auto lines = pages.wrap(text, width, {});
        std::string joined;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            ASSERT_LE(doc.textWidth(lines[i], {}), width) << text;
            if (i > 0) {
                // A break stands at a line end of the text, at a blank, or inside a word too wide.
                const char at = text[joined.size()];
                ASSERT_TRUE(at == '\n' || at == ' ' || doc.textWidth(lines[i - 1], {}) + 1 > width) << text;
                // The line before could take nothing more from this one.
                const std::string firstWord = lines[i].substr(0, lines[i].find(' '));
                if (at == ' ' && !firstWord.empty()) {
                    ASSERT_GT(doc.textWidth(lines[i - 1] + " " + firstWord, {}), width) << text;
                }
                joined += at == '\n' || at == ' ' ? std::string(1, at) : "";
            }
            joined += lines[i];
        }
        ASSERT_EQ(joined, text);
    }
}

// Tables of 0 to 59 rows, the last taller than a page, with pictures or
// not, laid out in the report's two passes: each page after the first begins
// with the category's name and the headings and ends in "Page N of M" for the
// pages there are, and everything else stands above that foot.
TEST(ReportPages, EverythingStandsAboveTheFootOfANumberedPage) {
    const std::string tall(1500, 'x');
    const report::Sheet sheet{"Shed", {"Item", "Cost"}, "Cost:", "1", "Value:", "2"};
    for (int n = 0; n < 60; ++n) {
        Monospace doc;
        report::Pages pages(doc, n % 2);
        for (bool drawing : {false, true}) {
            pages.setTotalPages(pages.pages());
            pages.rewind();
            pages.setDrawing(drawing);
            pages.titlePage({});
            pages.beginSheet(sheet);
            for (int i = 0; i < n; ++i) pages.item({"a b", i == n - 1 ? tall : "1", "", "", "", "", ""}, i % 3 ? "" : "jack.jpg");
            pages.endSheet();
        }
        pages.finish();
        for (std::size_t p = 0; p < doc.pages.size(); ++p) {
            const auto& [footTop, footBottom, foot] = doc.pages[p].back();
            ASSERT_EQ(foot, "Page " + std::to_string(p + 1) + " of " + std::to_string(doc.pages.size()));
            ASSERT_TRUE(p == 0 || std::get<2>(doc.pages[p][0]) + "|" + std::get<2>(doc.pages[p][1]) == "Shed|Item") << p + 1;
            for (const auto& [top, bottom, text] : doc.pages[p])
                ASSERT_TRUE(&text == &foot || (top >= 0 && bottom <= footTop)) << n << " rows, page " << p + 1 << ": " << text << " at " << top;
        }
    }
}

} // namespace

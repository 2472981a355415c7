// The report's wrapping of long texts, as a property over random texts: no
// line wider than its column (unless one character alone is), nothing lost but
// the one blank where a line breaks, and every line as full as it can be.
#include <gtest/gtest.h>

#include <random>

#include "report/report_pages.h"

namespace {

// Every character one point wide, a line 10 high; nothing is drawn.
struct Monospace : forms::PageDocument {
    double pageWidth() const override { return 500; }
    double pageHeight() const override { return 300; }
    double textWidth(const std::string& t, const forms::TextStyle&) override {
        double n = 0;
        for (char c : t) n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        return n;
    }
    double lineHeight(const forms::TextStyle&) override { return 10; }
    void drawText(double, double, const std::string&, const forms::TextStyle&) override {}
    bool drawPicture(const std::string&, double, double, double, double) override { return true; }
    void drawLine(double, double, double, double) override {}
    void newPage() override {}
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

} // namespace

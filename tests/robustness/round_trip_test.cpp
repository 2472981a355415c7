// Any text a user can type comes back unchanged: 20000 random texts (fixed
// seed) of any script, emoji and combining marks, commas and double quotes
// anywhere, blanks at either end, empty ones, up to 32767 characters. Each is
// a cell, an item name and a category name, stored by the program, read by a
// new start, then saved to the floppy and loaded back from it.
//
// And files that no version of the program wrote: NUL bytes, broken UTF-8, a
// line of 100 MB, a name of 10000 characters. Each is started on, walked,
// opened and left by Exit: no crash, no hang, what could not be read whole is
// still there byte for byte afterwards, and a new start shows what it should.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "forms/input.h"
#include "forms/utf8.h"
#include "session.h"
#include "storage/places.h"
#include "storage/value.h"

using namespace qmtest;
using namespace std::string_literals;

namespace {

constexpr int kTexts = 20000;
constexpr unsigned kSeed = 7177;
constexpr int kMaxChars = 32767;

// Code points a user can type or paste into a single line: no control characters.
char32_t randomChar(std::mt19937& rng) {
    struct Range { char32_t from, to; int weight; };
    static const Range kRanges[] = {
        {0x20, 0x7E, 40}, {',', ',', 6}, {'"', '"', 6}, {' ', ' ', 6}, // ASCII, and more commas, quotes and blanks
        {0xA0, 0x24F, 6}, {0x300, 0x36F, 2},                           // Latin, no-break space; combining marks
        {0x370, 0x4FF, 4}, {0x590, 0x6FF, 3}, {0x900, 0x97F, 2},       // Greek, Cyrillic; Hebrew, Arabic; Devanagari
        {0x2000, 0x206F, 2}, {0x2215, 0x2215, 1},                      // zero-width joiner, line separator; division slash
        {0x3040, 0x30FF, 3}, {0x4E00, 0x9FFF, 4}, {0xAC00, 0xD7A3, 2}, // kana, CJK, Hangul
        {0xE000, 0xF8FF, 1}, {0xFE00, 0xFFFD, 1},                      // private use; variation selectors, BOM, U+FFFD
        {0x1F300, 0x1FAFF, 4}, {0x20000, 0x2A6DF, 1},                  // emoji, CJK extension B
    };
    static const int total = [] {
        int t = 0;
        for (const Range& r : kRanges) t += r.weight;
        return t;
    }();
    int pick = std::uniform_int_distribution<int>(0, total - 1)(rng);
    for (const Range& r : kRanges) {
        if (pick < r.weight) return std::uniform_int_distribution<char32_t>(r.from, r.to)(rng);
        pick -= r.weight;
    }
    return U'x';
}

std::string randomText(std::mt19937& rng) {
    std::uniform_int_distribution<int> percent(0, 99);
    int p = percent(rng);
    int length = p < 8 ? 0 : p < 80 ? std::uniform_int_distribution<int>(1, 40)(rng)
               : p < 99 ? std::uniform_int_distribution<int>(41, 400)(rng)
                        : std::uniform_int_distribution<int>(401, kMaxChars)(rng);
    std::string s;
    for (int i = 0; i < length; ++i) s += forms::utf8::encode(randomChar(rng));
    if (length > 0) {
        // Blanks at either end, a leading quote, commas: the texts that need quoting.
        if (percent(rng) < 15) s = "  " + s;
        if (percent(rng) < 15) s += " ";
        if (percent(rng) < 10) s = "\"" + s;
        if (percent(rng) < 10) s += ",";
    }
    // The grid's editor counts characters: none is longer than a cell can be typed.
    if (forms::utf8::length(s) > static_cast<std::size_t>(kMaxChars)) s = forms::utf8::mid(s, 0, kMaxChars);
    return s;
}

const std::vector<std::string>& texts() {
    static const std::vector<std::string> t = [] {
        std::mt19937 rng(kSeed);
        std::vector<std::string> v;
        for (int i = 0; i < kTexts; ++i) v.push_back(randomText(rng));
        return v;
    }();
    return t;
}

// Runs check on a new start on what the program stored, and again after a save
// to the floppy, a load back over the data folder and Exit.
void checkAfterRestartAndFloppy(const Harness& stored, const std::function<void(Harness&, const std::string& when)>& check) {
    auto again = stored.restart();
    check(*again, "after a restart");
    again->click(again->m().cmdSave);
    again->click(again->m().cmdLoad);
    ASSERT_FALSE(again->dialogs.messages.empty());
    EXPECT_EQ(again->dialogs.messages.back().text, "Load complete.");
    again->click(again->m().cmdExit);
    check(*again->restart(), "after the floppy");
}

// ---- cells and item names ------------------------------------------------------------------

constexpr int kRowsPerCategory = 2500;

std::string batchName(int b) { return "Batch " + std::to_string(b); }

// Row i of the whole table: text i as the item's name, another text in one of its cells.
Table expectedTable(int batch) {
    const auto& t = texts();
    Table table{headingRow()};
    for (int i = batch * kRowsPerCategory; i < std::min(kTexts, (batch + 1) * kRowsPerCategory); ++i) {
        Row row(7);
        row[0] = t[static_cast<std::size_t>(i)];
        row[static_cast<std::size_t>(1 + i % 6)] = t[static_cast<std::size_t>((i * 7919 + 13) % kTexts)];
        table.push_back(row);
    }
    return table;
}

constexpr int kBatches = (kTexts + kRowsPerCategory - 1) / kRowsPerCategory;

void checkAllTables(Harness& h, const std::string& when, robust::Tally& problems) {
    auto seen = openEveryCategory(h);
    for (int b = 0; b < kBatches; ++b) {
        const Table expected = expectedTable(b), &got = seen[batchName(b)];
        const auto diff = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end());
        if (diff.first != got.end() || diff.second != expected.end())
            problems.add("a category whose texts came back changed", when + ", " + batchName(b) + " from row " +
                         std::to_string(diff.first - got.begin()) + " of " + std::to_string(got.size()));
    }
}

TEST(RoundTrip, EveryTextAsACellAndAnItemNameComesBackUnchanged) {
    Harness h;
    std::vector<std::string> names;
    for (int b = 0; b < kBatches; ++b) names.push_back(batchName(b));
    h.writeIndex(names);
    qm::frmMain& m = h.start();
    for (int b = 0; b < kBatches; ++b) {
        h.run([&] { m.lstCategory.setText(batchName(b)); });
        const Table t = expectedTable(b);
        h.run([&] {
            m.FG1.setRows(static_cast<int>(t.size()));
            for (std::size_t r = 1; r < t.size(); ++r)
                for (std::size_t c = 0; c < 7; ++c) m.FG1.setTextMatrix(static_cast<int>(r), static_cast<int>(c), t[r][c]);
            m.ItemRowCount = m.FG1.Rows();
        });
    }
    h.click(m.cmdExit);
    robust::Tally problems;
    checkAfterRestartAndFloppy(h, [&](Harness& again, const std::string& when) { checkAllTables(again, when, problems); });
    problems.finish("texts", kTexts, std::to_string(kTexts) + " texts as cells and item names");
}

// The same texts typed and pasted by the user: through Add Item's prompt and the cell editor.
TEST(RoundTrip, TextsEnteredThroughTheCommandsComeBackUnchanged) {
    const auto& t = texts();
    std::vector<std::string> sample;
    for (std::size_t i = 0; i < t.size() && sample.size() < 150; i += 97)
        if (!t[i].empty()) sample.push_back(t[i]);
    Harness h;
    h.writeIndex({"Typed"});
    qm::frmMain& m = h.startAndClick(0);
    for (const auto& text : sample) {
        h.dialogs.inputAnswers.push_back(text);
        h.click(m.cmdAddAsset);
        forms::input::paste(h.runtime, m.T1, text); // into the new item's cost cell
    }
    h.click(m.cmdExit);
    Table seen = categoriesAfterRestart(h)["Typed"];
    ASSERT_EQ(seen.size(), sample.size() + 1);
    for (std::size_t i = 0; i < sample.size(); ++i) {
        EXPECT_EQ(seen[i + 1][0], sample[i]) << "item name " << i;
        EXPECT_EQ(seen[i + 1][1], sample[i]) << "cost cell " << i;
    }
}

// ---- category names --------------------------------------------------------------------------

TEST(RoundTrip, EveryTextAsACategoryNameComesBackOrIsRefusedWithAMessage) {
    // Names the add command refuses (empty, too long for a file name) and names
    // that are already there are not made; every other one must come back.
    std::vector<std::string> names;
    int refused = 0;
    Harness h;
    {
        qm::frmMain& m = h.start();
        std::set<std::string> seen, stems;
        for (const auto& text : texts()) {
            if (text.empty() || !m.CategoryNameProblem(text).empty()) {
                ++refused;
                continue;
            }
            // Two names whose files would be one are tried on their own below.
            if (!seen.insert(text).second || !stems.insert(storage::FileStem(text)).second) continue;
            // A name whose escaped form is too long for the backup disk is told by
            // the backup (see the backup test), not carried.
            if (storage::StickStem(text).size() + 4 > storage::kMaxFileName) {
                ++refused;
                continue;
            }
            names.push_back(text);
        }
        h.run([&] {
            for (const auto& n : names) m.lstCategory.AddItem(n);
            m.CategoryCount = storage::Value::number(static_cast<double>(names.size()));
        });
        h.click(m.cmdExit);
    }
    std::sort(names.begin(), names.end(), forms::ListBox::sortsBefore);
    checkAfterRestartAndFloppy(h, [&](Harness& again, const std::string& when) {
        ASSERT_TRUE(again.m().lstCategory.items() == names) << when;
        for (const auto& n : names)
            ASSERT_TRUE(std::filesystem::exists(again.data(storage::FileStem(n) + ".csv"))) << when << ": no file for [" << n << "]";
    });
    RecordProperty("refused", refused);
    robust::Tally().finish("names", static_cast<int>(names.size()), std::to_string(names.size()) + " category names came back, " +
                           std::to_string(refused) + " refused as no name or too long for a file or the backup disk");
}

// "/" can't stand in a file name and is written as the division slash: a name
// that holds the division slash itself must not end up in the same file.
TEST(RoundTrip, NamesThatDifferOnlyInASlashKeepTheirOwnItems) {
    Harness h;
    qm::frmMain& m = h.start();
    for (const char* name : {"A/B", "A\xE2\x88\x95" "B"}) {
        h.dialogs.inputAnswers.push_back(name);
        h.click(m.cmdAddCategory);
        h.dialogs.inputAnswers.push_back(std::string("item of ") + name);
        h.click(m.cmdAddAsset);
    }
    h.click(m.cmdExit);
    auto seen = categoriesAfterRestart(h);
    ASSERT_EQ(seen.size(), 2u);
    for (const auto& [name, table] : seen) {
        ASSERT_EQ(table.size(), 2u) << name;
        EXPECT_EQ(table[1][0], "item of " + name);
    }
}

// ---- files no version of the program wrote ----------------------------------------------

// A data folder of files as they stand: the index names the categories, some
// of them written as the program writes them.
struct Hostile {
    const char* what;
    std::vector<std::string> index;
    std::map<std::string, std::string> files; // come back byte for byte
    std::vector<std::string> list;            // as a new start lists it
    std::map<std::string, Table> shown;       // what a new start shows of these categories
    bool openEach = true;                     // else only Exit's walk reads them
};

std::string categoryFile(const Table& items) { return std::string(kHeadingLine) + "\r\n" + recordLines(items, 7); }

std::vector<Hostile> hostileFolders() {
    const std::string broken = "Bad \xff\xc3(", longName(10000, 'n');
    const Row oddCells = {"a\0b"s, "\xff\xfe", "\xc3(", "\xe2\x82", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xc0\xaf"};
    std::string big = std::string(kHeadingLine) + "\r\nHuge," + std::string(1 << 20, '7') + ",2,,,,";
    big.append(100u << 20, 'x');
    big += "\r\nAfter,1,,,,,\r\n";
    return {
        {"NUL bytes and broken UTF-8 in cells", {"Odd"}, {{"Odd.csv", categoryFile({oddCells})}}, {"Odd"}, {{"Odd", withHeading({oddCells})}}},
        {"names of broken UTF-8 and of 10000 characters", {broken, longName, "Good"},
         {{broken + ".csv", categoryFile({{"odd item", "1"}})}, {"Good.csv", categoryFile({{"good item", "2"}})}},
         {broken, "Good", longName}, {{broken, withHeading({{"odd item", "1"}})}, {"Good", withHeading({{"good item", "2"}})}}},
        // A NUL cuts a path short where the file system meets it: the name must
        // never reach the file its first part names, such as the stock picture.
        {"a NUL in a category name", {"NoPic.jpg\0x"s, "Good"},
         {{"Good.csv", categoryFile({{"good item", "2"}})}, {"NoPic.jpg", "PIC 100 100"}, {"HColor", "255\r\n"}},
         {"Good", "NoPic.jpg\0x"s}, {{"Good", withHeading({{"good item", "2"}})}}},
        // Exit's walk reads and writes it twice: anything cut or lost shows in the file.
        {"a line of 100 MB", {"Big", "Small"}, {{"Big.csv", big}, {"Small.csv", categoryFile({{"s", "1"}})}}, {"Big", "Small"}, {}, false},
    };
}

TEST(HostileFiles, AreUsedWithoutHarmAndWhatCouldNotBeReadStaysByteForByte) {
    for (const Hostile& c : hostileFolders()) {
        SCOPED_TRACE(c.what);
        Harness h;
        h.writeIndex(c.index);
        for (const auto& [name, bytes] : c.files) writeFile(h.data(name), bytes);
        qm::frmMain& m = h.start();
        if (c.openEach) {
            h.focus(m.lstCategory); // a walk
            openEveryCategory(h);
        }
        h.click(m.cmdExit);
        EXPECT_EQ(m.lstCategory.Text(), c.list.back()) << "Exit's walk stopped short";
        for (const auto& [name, bytes] : c.files) EXPECT_TRUE(readFile(h.data(name)) == bytes) << name << " changed";
        auto again = h.restart();
        EXPECT_EQ(again->m().lstCategory.items(), c.list);
        if (c.shown.empty()) continue;
        auto seen = openEveryCategory(*again);
        for (const auto& [name, table] : c.shown) EXPECT_EQ(seen[name], table) << name;
    }
}

} // namespace

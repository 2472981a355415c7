// Text records: how fields are read from a file and how texts are written, and
// how a file being written replaces the old one.
#include <gtest/gtest.h>

#include <csignal>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

#include "forms/failure.h"
#include "forms/std_files.h"
#include "storage/records.h"
#include "storage/value.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;

namespace {

struct FileTableTest : ::testing::Test {
    TempDir dir;
    forms::StdFiles real;
    storage::FileTable files{real};

    std::string path(const std::string& name) const { return dir.place() + name; }

    // Every field of the bytes, read until the one failure at the end of the file.
    std::vector<std::string> fieldsOf(const std::string& bytes, std::size_t limit = 100000) {
        writeFile(path("in.csv"), bytes);
        files.OpenInput(1, path("in.csv"));
        std::vector<std::string> out;
        try {
            while (out.size() < limit) out.push_back(files.ReadField(1));
            ADD_FAILURE() << "no end of file after " << limit << " fields";
        } catch (const forms::EndOfFile&) {
        }
        files.Close(1);
        return out;
    }

    std::string written(const std::function<void(int)>& write) {
        files.OpenOutput(1, path("out.csv"));
        write(1);
        files.Close(1);
        return readFile(path("out.csv")).value_or("<missing>");
    }
};

struct ReadCase {
    const char* what;
    std::string bytes;
    std::vector<std::string> fields;
};

class ReadFieldTable : public FileTableTest, public ::testing::WithParamInterface<ReadCase> {};

TEST_P(ReadFieldTable, GivesTheFieldsOfTheFile) {
    EXPECT_EQ(fieldsOf(GetParam().bytes), GetParam().fields) << GetParam().what;
}

// The rows of the reading rules, for files written the plain way, and the
// corners that quoting adds.
INSTANTIATE_TEST_SUITE_P(
    Records, ReadFieldTable,
    ::testing::Values(
        ReadCase{"plain text with inner blanks", "Hardware store\r\n", {"Hardware store"}},
        ReadCase{"empty text", "\r\n", {""}},
        ReadCase{"leading blanks are skipped", "   abc\r\n", {"abc"}},
        ReadCase{"a leading tab is skipped", "\t abc\r\n", {"abc"}},
        ReadCase{"inner double quote", "5\" disk\r\n", {"5\" disk"}},
        ReadCase{"comma splits, the blank behind it goes", "Tools, misc\r\n", {"Tools", "misc"}},
        ReadCase{"whole text in double quotes", "\"ab,c\"\r\n", {"ab,c"}},
        ReadCase{"characters behind the closing quote are dropped", "\"7\" wide\r\nnext\r\n", {"7", "next"}},
        ReadCase{"open quote runs over line ends to the next quote", "\"abc\r\nx,y\"tail\r\nlast\r\n",
                 {"abc\r\nx,y", "last"}},
        ReadCase{"open quote runs to the end of the file", "\"abc\r\nmore", {"abc\r\nmore"}},
        ReadCase{"a digit with no line end", "3", {"3"}},
        ReadCase{"empty field in the middle", "a,,c\r\n", {"a", "", "c"}},
        ReadCase{"two commas are three empty fields", ",,\r\n", {"", "", ""}},
        ReadCase{"no extra field behind the last line end", "x\r\ny\r\n", {"x", "y"}},
        ReadCase{"CR alone ends a line", "a\rb\r", {"a", "b"}},
        ReadCase{"LF alone ends a line", "a\nb\n", {"a", "b"}},
        ReadCase{"a blank line is one empty field", "a\r\n\r\nb\r\n", {"a", "", "b"}},
        ReadCase{"a line end after a comma is an empty field", "a,\r\nb\r\n", {"a", "", "b"}},
        ReadCase{"a doubled quote inside quotes is one quote", "\"say \"\"hi\"\"\",x\r\n", {"say \"hi\"", "x"}},
        ReadCase{"a quoted empty text", "\"\",x\r\n", {"", "x"}},
        ReadCase{"blanks at the end of an unquoted field stay", "abc  ,x \r\n", {"abc  ", "x "}},
        ReadCase{"a count as numbers are written", " 2 \r\n", {"2 "}},
        ReadCase{"a negative count", "-3 \r\n", {"-3 "}},
        ReadCase{"blanks before a quoted field", "a,  \"b,c\"\r\n", {"a", "b,c"}},
        ReadCase{"a file of blanks only holds no field", "   \t ", {}},
        ReadCase{"an empty file holds no field", "", {}},
        ReadCase{"UTF-8 text passes unchanged", "B\xC3\xBC" "cher,\xC3\x91" "and\xC3\xBA\r\n",
                 {"B\xC3\xBC" "cher", "\xC3\x91" "and\xC3\xBA"}},
        ReadCase{"a quoted field with line ends and quotes inside", "\"a\r\n\"\"b\"\"\r\nc\",d\r\n",
                 {"a\r\n\"b\"\r\nc", "d"}}),
    [](const auto& info) { return "Case" + std::to_string(info.index); });

TEST_F(FileTableTest, FieldsAcrossTheReadBufferComeBackWhole) {
    // Every special character of the tail lands on the edge of a 64 KiB read
    // for one of these prefix lengths.
    const std::string tail = "\"q\"\"uote\",\"x\"junk,\r\n a b ,last\r\n";
    for (std::size_t p = 65520; p < 65560; ++p) {
        const std::string prefix(p, 'x');
        EXPECT_EQ(fieldsOf(prefix + "\r\n" + tail), (std::vector<std::string>{prefix, "q\"uote", "x", "", "a b ", "last"}))
            << "prefix of " << p << " bytes";
    }
}

TEST_F(FileTableTest, FieldsLongerThanTheReadBuffer) {
    const std::string big(200000, 'b');
    std::string quoted = big;
    quoted[100000] = '"';
    EXPECT_EQ(fieldsOf(big + ",\"" + std::string(big).replace(100000, 1, "\"\"") + "\"\r\n"),
              (std::vector<std::string>{big, quoted}));
}

// ---- writing ------------------------------------------------------------------

struct WriteCase {
    std::string text;
    std::string bytes;
};

class WriteLineTable : public FileTableTest, public ::testing::WithParamInterface<WriteCase> {};

// A text is written as it stands whenever it reads back unchanged that way;
// otherwise it goes in double quotes with inner ones doubled.
TEST_P(WriteLineTable, WritesTheText) {
    const auto& c = GetParam();
    EXPECT_EQ(written([&](int n) { files.WriteLine(n, std::string_view(c.text)); }), c.bytes) << c.text;
    EXPECT_EQ(fieldsOf(c.bytes), std::vector<std::string>{c.text});
}

INSTANTIATE_TEST_SUITE_P(Records, WriteLineTable,
                         ::testing::Values(WriteCase{"Hardware store", "Hardware store\r\n"},
                                           WriteCase{"", "\r\n"},
                                           WriteCase{"5\" disk", "5\" disk\r\n"},
                                           WriteCase{"trailing ", "trailing \r\n"},
                                           WriteCase{"Tools, misc", "\"Tools, misc\"\r\n"},
                                           WriteCase{" lead", "\" lead\"\r\n"},
                                           WriteCase{"\tlead", "\"\tlead\"\r\n"},
                                           WriteCase{"\"7\" wide", "\"\"\"7\"\" wide\"\r\n"},
                                           WriteCase{"two\r\nlines", "\"two\r\nlines\"\r\n"},
                                           WriteCase{"lf\nonly", "\"lf\nonly\"\r\n"},
                                           WriteCase{"\"", "\"\"\"\"\r\n"}),
                         [](const auto& info) { return "Case" + std::to_string(info.index); });

TEST_F(FileTableTest, CountsAreWrittenAsTheirKind) {
    using storage::Value;
    EXPECT_EQ(written([&](int n) { files.WriteLine(n, Value::number(2)); }), " 2 \r\n");
    EXPECT_EQ(written([&](int n) { files.WriteLine(n, Value::number(-3)); }), "-3 \r\n");
    EXPECT_EQ(written([&](int n) { files.WriteLine(n, Value::number(0)); }), " 0 \r\n");
    EXPECT_EQ(written([&](int n) { files.WriteLine(n, Value()); }), "\r\n");
    EXPECT_EQ(written([&](int n) { files.WriteLine(n, Value::text("2 ")); }), "2 \r\n");
    // A number as written reads back as the same number.
    for (double x : {0.0, 2.0, -3.0, 32767.0, -32768.0}) {
        const std::string bytes = written([&](int n) { files.WriteLine(n, Value::number(x)); });
        auto f = fieldsOf(bytes);
        ASSERT_EQ(f.size(), 1u) << bytes;
        EXPECT_EQ(Value::text(f[0]).toInt16(), static_cast<int>(x)) << bytes;
    }
}

// Any text a user can type comes back unchanged, whatever stands around it in the file.
TEST_F(FileTableTest, EveryTextRoundTrips) {
    const std::vector<std::string> alphabet = {"a", "Z", "0", ".", " ", "\t", ",", "\"", "\r", "\n", "\xC3\xA9", "\xE2\x82\xAC"};
    std::mt19937 rng(20261123);
    std::vector<std::string> texts;
    for (int i = 0; i < 3000; ++i) {
        std::string t;
        int len = static_cast<int>(rng() % 9);
        for (int k = 0; k < len; ++k) t += alphabet[rng() % alphabet.size()];
        texts.push_back(t);
    }
    files.OpenOutput(1, path("many.csv"));
    for (const auto& t : texts) files.WriteLine(1, std::string_view(t));
    files.Close(1);
    EXPECT_EQ(fieldsOf(readFile(path("many.csv")).value()), texts);
}

// ---- the file as a whole ---------------------------------------------------------

TEST_F(FileTableTest, OldFileStandsUntilTheNewOneIsClosed) {
    writeFile(path("x.csv"), "old\r\n");
    files.OpenOutput(1, path("x.csv"));
    files.WriteLine(1, std::string_view("new"));
    EXPECT_EQ(readFile(path("x.csv")), "old\r\n");
    // The file being written lies beside it under a name the "*.csv" wildcard never takes.
    auto names = folderNames(dir.path());
    ASSERT_EQ(names.size(), 2u);
    for (const auto& n : names)
        EXPECT_TRUE(n == "x.csv" || !(n.size() >= 4 && n.compare(n.size() - 4, 4, ".csv") == 0)) << n;
    files.Close(1);
    EXPECT_EQ(readFile(path("x.csv")), "new\r\n");
    EXPECT_EQ(folderNames(dir.path()), std::set<std::string>{"x.csv"});
}

TEST_F(FileTableTest, AbandonedFileLeavesTheOldOneAndNoTrace) {
    writeFile(path("x.csv"), "old\r\n");
    files.OpenOutput(1, path("x.csv"));
    files.WriteLine(1, std::string_view(std::string(200000, 'n')));
    files.Abandon(1);
    EXPECT_EQ(readFile(path("x.csv")), "old\r\n");
    EXPECT_EQ(folderNames(dir.path()), std::set<std::string>{"x.csv"});
    EXPECT_FALSE(files.isOpen(1));
}

// Files whose writer dies (SIGKILL) just before its write or commit numbered killAt.
class DyingFiles : public forms::StdFiles {
public:
    explicit DyingFiles(long killAt) : killAt_(killAt) {}
    std::unique_ptr<forms::OutputStream> openReplace(const std::string& path) override {
        struct Out : forms::OutputStream {
            std::unique_ptr<forms::OutputStream> real;
            DyingFiles* owner;
            void write(const char* d, std::size_t n) override { owner->step(); real->write(d, n); }
            void commit() override { owner->step(); real->commit(); }
        };
        auto out = std::make_unique<Out>();
        out->real = StdFiles::openReplace(path);
        out->owner = this;
        return out;
    }
    void step() {
        if (count_++ == killAt_) ::raise(SIGKILL);
    }

private:
    long killAt_;
    long count_ = 0;
};

TEST_F(FileTableTest, KilledWriterLeavesTheOldFileWhole) {
    const std::string old = "old line\r\n";
    std::vector<std::string> lines;
    for (int i = 0; i < 5000; ++i) lines.push_back(std::to_string(i) + "," + std::string(90, 'n'));
    const std::string fresh = crlf(lines);
    bool survived = false;
    for (long k = 0; !survived && k < 100; ++k) {
        writeFile(path("x.csv"), old);
        pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            DyingFiles dying(k);
            storage::FileTable table(dying);
            table.OpenOutput(1, path("x.csv"));
            for (const auto& l : lines) table.WriteRawLine(1, l);
            table.Close(1);
            ::_exit(0);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        survived = WIFEXITED(status);
        const std::string now = readFile(path("x.csv")).value_or("<missing>");
        EXPECT_EQ(now, survived ? fresh : old) << "killed at step " << k;
        for (const auto& n : folderNames(dir.path()))
            EXPECT_TRUE(n == "x.csv" || forms::StdFiles::isTemporaryName(n)) << n;
    }
    EXPECT_TRUE(survived);
}

TEST_F(FileTableTest, ClosingTwiceOrClosingNothingDoesNothing) {
    files.OpenOutput(1, path("x.csv"));
    files.WriteLine(1, std::string_view("a"));
    files.Close(1);
    EXPECT_NO_THROW(files.Close(1));
    EXPECT_NO_THROW(files.Close(7));
    EXPECT_EQ(readFile(path("x.csv")), "a\r\n");
    EXPECT_EQ(files.FreeFile(), 1);
}

TEST_F(FileTableTest, MissingFileIsToldApartFromOneThatCannotBeRead) {
    EXPECT_THROW(files.OpenInput(1, path("none.csv")), forms::FileNotFound);
    EXPECT_FALSE(files.isOpen(1));
    // A folder where a file should be is no missing file and no empty one.
    std::filesystem::create_directory(dir.path() / "folder.csv");
    try {
        files.OpenInput(1, path("folder.csv"));
        files.ReadField(1);
        ADD_FAILURE() << "a folder read as a file";
    } catch (const forms::FileNotFound&) {
        ADD_FAILURE() << "a folder taken for a missing file";
    } catch (const forms::EndOfFile&) {
        ADD_FAILURE() << "a folder taken for an empty file";
    } catch (const forms::Failure&) {
    }
    files.Close(1);
}

TEST_F(FileTableTest, MissingFolderIsNeverCreated) {
    const std::string gone = dir.place() + "gone/";
    EXPECT_THROW(
        {
            files.OpenOutput(1, gone + "x.csv");
            files.WriteLine(1, std::string_view("a"));
            files.Close(1);
        },
        forms::Failure);
    files.Abandon(1);
    EXPECT_FALSE(std::filesystem::exists(gone));
}

TEST_F(FileTableTest, FreeFileGivesTheLowestNumberNotInUse) {
    writeFile(path("a.csv"), "a\r\n");
    files.OpenInput(files.FreeFile(), path("a.csv"));
    files.OpenOutput(files.FreeFile(), path("b.csv"));
    EXPECT_EQ(files.FreeFile(), 3);
    files.Close(1);
    EXPECT_EQ(files.FreeFile(), 1);
    files.Close(2);
}

// ---- the count's value ---------------------------------------------------------------

TEST(CountValue, ArithmeticCountsNothingAndNonNumbersAsZero) {
    using storage::Value;
    EXPECT_EQ(Value().plus(1).asNumber(), 1);
    EXPECT_EQ(Value::text("").plus(1).asNumber(), 1);
    EXPECT_EQ(Value::text("abc").plus(1).asNumber(), 1);
    EXPECT_EQ(Value::text(" 2 ").plus(1).asNumber(), 3);
    EXPECT_EQ(Value::text("2 ").plus(-1).asNumber(), 1);
    EXPECT_EQ(Value::number(5).plus(-1).asNumber(), 4);
    EXPECT_EQ(Value::text("").plus(1).kind(), Value::Kind::Number);
}

TEST(CountValue, SixteenBitConversion) {
    using storage::Value;
    EXPECT_EQ(Value::text(" 2 ").toInt16(), 2);
    EXPECT_EQ(Value::text("2 ").toInt16(), 2);
    EXPECT_EQ(Value::text("32767").toInt16(), 32767);
    EXPECT_EQ(Value::text("-32768").toInt16(), -32768);
    EXPECT_EQ(Value::text("32768").toInt16(), std::nullopt);
    EXPECT_EQ(Value::text("-32769").toInt16(), std::nullopt);
    EXPECT_EQ(Value::text("").toInt16(), std::nullopt);
    EXPECT_EQ(Value::text("two").toInt16(), std::nullopt);
    EXPECT_EQ(Value::text("2x").toInt16(), std::nullopt);
    EXPECT_EQ(Value().toInt16(), std::nullopt);
    EXPECT_EQ(Value::number(3).toInt16(), 3);
}

} // namespace

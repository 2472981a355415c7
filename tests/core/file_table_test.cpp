// The open-file table: how fields are read from a file and how texts are
// written, and how a file being written replaces the old one.
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "forms/failure.h"
#include "forms/std_files.h"
#include "storage/file_table.h"
#include "storage/value.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

using namespace qmtest;
using Fields = std::vector<std::string>;

namespace {

struct FileTableTest : ::testing::Test {
    TempDir dir;
    forms::StdFiles real;
    storage::FileTable files{real};

    std::string path(const std::string& name) const { return dir.place() + name; }

    // Every field of the bytes, read until the one failure at the end of the file.
    Fields fieldsOf(const std::string& bytes) {
        writeFile(path("in.csv"), bytes);
        files.OpenInput(1, path("in.csv"));
        Fields out;
        try {
            while (out.size() < 100000) out.push_back(files.ReadField(1));
            ADD_FAILURE() << "no end of file";
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

// The reading rules for what no save writes (what a save writes comes back
// whole: the round-trip program and the category file fuzz target): blanks before a field, text behind a closing quote, lone CR
// and LF, fields a line holds, quotes never closed, ends of the file.
TEST_F(FileTableTest, ReadFieldGivesTheFieldsOfTheFile) {
    for (const auto& [bytes, fields] : std::initializer_list<std::pair<std::string, Fields>>{
             {"   abc\r\n", {"abc"}}, {"\t abc\r\n", {"abc"}}, {"Tools, misc\r\n", {"Tools", "misc"}},
             {"\"7\" wide\r\nnext\r\n", {"7", "next"}}, {"\"abc\r\nx,y\"tail\r\nlast\r\n", {"abc\r\nx,y", "last"}},
             {"\"abc\r\nmore", {"abc\r\nmore"}}, {"3", {"3"}}, {"a,,c\r\n", {"a", "", "c"}}, {",,\r\n", {"", "", ""}},
             {"a\rb\r", {"a", "b"}}, {"a\nb\n", {"a", "b"}}, {"a\r\n\r\nb\r\n", {"a", "", "b"}}, {"a,\r\nb\r\n", {"a", "", "b"}},
             {"\"\",x\r\n", {"", "x"}}, {"abc  ,x \r\n", {"abc  ", "x "}}, {"a,  \"b,c\"\r\n", {"a", "b,c"}}, {"a,b,", {"a", "b"}}, {"   \t ", {}}, {"", {}}})
        EXPECT_EQ(fieldsOf(bytes), fields) << bytes;
}

// Files are read in pieces of 64 KiB: every special character of the tail lands
// on the edge of a piece for one of these prefix lengths, and a field can be
// longer than a piece.
TEST_F(FileTableTest, FieldsOnAndAcrossTheEdgesOfTheReadBuffer) {
    const std::string tail = "\"q\"\"uote\",\"x\"junk,\r\n a b ,last\r\n";
    for (std::size_t p = 65520; p < 65560; ++p) {
        const std::string prefix(p, 'x');
        EXPECT_EQ(fieldsOf(prefix + "\r\n" + tail), (Fields{prefix, "q\"uote", "x", "", "a b ", "last"})) << p << " bytes";
    }
    const std::string big(200000, 'b');
    std::string quoted = big;
    quoted[100000] = '"';
    EXPECT_EQ(fieldsOf(big + ",\"" + std::string(big).replace(100000, 1, "\"\"") + "\"\r\n"), (Fields{big, quoted}));
}

// ---- writing ------------------------------------------------------------------

// The count: a number is written with a blank on either side (a minus in place
// of the first), a text as it stands, nothing as nothing, and reads back as
// the same 16-bit number. The conversion takes blanks around a number and
// nothing else; arithmetic counts nothing and non-numbers as 0 and gives a number.
TEST_F(FileTableTest, CountsAreWrittenAsTheirKindAndReadBackAsTheirNumber) {
    using storage::Value;
    struct C {
        Value value;
        std::string bytes;
        std::optional<int> int16;
        double arithmetic;
    };
    for (const C& c : {C{Value::number(2), " 2 \r\n", 2, 2}, C{Value::number(-3), "-3 \r\n", -3, -3},
                       C{Value::number(0), " 0 \r\n", 0, 0}, C{Value::number(32767), " 32767 \r\n", 32767, 32767},
                       C{Value::number(-32768), "-32768 \r\n", -32768, -32768},
                       C{Value(), "\r\n", std::nullopt, 0}, C{Value::text(""), "\r\n", std::nullopt, 0},
                       C{Value::text("2 "), "2 \r\n", 2, 2}, C{Value::text(" 2 "), "\" 2 \"\r\n", 2, 2},
                       C{Value::text("two"), "two\r\n", std::nullopt, 0}, C{Value::text("2x"), "2x\r\n", std::nullopt, 0},
                       C{Value::text("32768"), "32768\r\n", std::nullopt, 32768},
                       C{Value::text("-32769"), "-32769\r\n", std::nullopt, -32769}}) {
        ASSERT_EQ(written([&](int n) { files.WriteLine(n, c.value); }), c.bytes);
        EXPECT_EQ(c.value.toInt16(), c.int16) << c.bytes;
        const Fields f = fieldsOf(c.bytes);
        ASSERT_EQ(f.size(), 1u) << c.bytes;
        EXPECT_EQ(Value::text(f[0]).toInt16(), c.int16) << c.bytes;
        EXPECT_EQ(std::make_pair(c.value.plus(-1).kind(), c.value.plus(-1).asNumber()), std::make_pair(Value::Kind::Number, c.arithmetic - 1))
            << c.bytes;
    }
}

// ---- the file as a whole ---------------------------------------------------------

TEST_F(FileTableTest, AFileIsReplacedOnlyAtItsCloseAndNoFolderIsMade) {
    writeFile(path("x.csv"), "old\r\n");
    files.OpenOutput(1, path("x.csv"));
    files.WriteLine(1, std::string_view(std::string(200000, 'n')));
    EXPECT_EQ(readFile(path("x.csv")), "old\r\n");
    // The file being written lies beside it under a name the "*.csv" wildcard never takes.
    const auto names = folderNames(dir.path());
    ASSERT_EQ(names.size(), 2u);
    for (const auto& n : names) EXPECT_TRUE(n == "x.csv" || !n.ends_with(".csv")) << n;
    files.Abandon(1); // dropped: the old file stands, and no trace of the new one
    EXPECT_FALSE(files.isOpen(1));
    EXPECT_EQ(readFile(path("x.csv")), "old\r\n");
    EXPECT_EQ(folderNames(dir.path()), std::set<std::string>{"x.csv"});
    files.OpenOutput(1, path("x.csv"));
    files.WriteLine(1, std::string_view("new"));
    files.Close(1);
    EXPECT_EQ(readFile(path("x.csv")), "new\r\n");
    EXPECT_EQ(folderNames(dir.path()), std::set<std::string>{"x.csv"});
    // A missing folder is never created.
    EXPECT_THROW((files.OpenOutput(1, path("gone/x.csv")), files.WriteLine(1, std::string_view("a")), files.Close(1)),
                 forms::Failure);
    files.Abandon(1);
    EXPECT_FALSE(std::filesystem::exists(path("gone")));
}

TEST_F(FileTableTest, FileNumbersAreTheLowestFreeAndClosingTwiceDoesNothing) {
    writeFile(path("a.csv"), "a\r\n");
    files.OpenInput(files.FreeFile(), path("a.csv"));
    files.OpenOutput(files.FreeFile(), path("b.csv"));
    files.WriteLine(2, std::string_view("b"));
    EXPECT_EQ(files.FreeFile(), 3);
    files.Close(1);
    EXPECT_EQ(files.FreeFile(), 1);
    files.Close(2);
    EXPECT_NO_THROW(files.Close(2));
    EXPECT_NO_THROW(files.Close(7));
    EXPECT_EQ(readFile(path("b.csv")), "b\r\n");
}

// A missing file is a new category; anything else that stands under the name
// but can't be read is no missing file and no empty one.
TEST_F(FileTableTest, MissingFileIsToldApartFromOneThatCannotBeRead) {
    EXPECT_THROW(files.OpenInput(1, path("none.csv")), forms::FileNotFound);
    EXPECT_FALSE(files.isOpen(1));
    std::filesystem::create_directory(dir.path() / "folder.csv");
    int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    const std::string socketPath = path("socket.csv");
    ASSERT_LT(socketPath.size(), sizeof addr.sun_path);
    std::copy(socketPath.begin(), socketPath.end(), addr.sun_path);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    for (const char* name : {"folder.csv", "socket.csv"}) {
        try {
            files.OpenInput(1, path(name));
            files.ReadField(1);
            ADD_FAILURE() << name << " read as a file";
        } catch (const forms::FileNotFound&) {
            ADD_FAILURE() << name << " taken for a missing file";
        } catch (const forms::EndOfFile&) {
            ADD_FAILURE() << name << " taken for an empty file";
        } catch (const forms::Failure&) {
        }
        files.Close(1);
    }
    ::close(fd);
}

} // namespace

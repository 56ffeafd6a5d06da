// Tables for other programs: what is quoted, what numbers become, and what a failing disk leaves.
#include "results/result_table.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>

#include "base/text.h"
#include "platform/file_system.h"
#include "support/temp_dir.h"

namespace photrak::test {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

std::string Content(const std::string& path) {
    std::string text, error;
    EXPECT_TRUE(ReadWholeFile(path, text, error)) << error;
    return text;
}

TEST(ResultTable, QuotesWhatOtherProgramsWouldSplit) {
    const struct {
        std::string text, csv, json;
    } rows[] = {
        {"plain", "plain", R"("plain")"},
        {"", "", R"("")"},
        {"a,b", R"("a,b")", R"("a,b")"},
        {R"(say "x")", R"("say ""x""")", R"("say \"x\"")"},
        {" led", R"(" led")", R"(" led")"},
        {"two\nlines", "\"two\nlines\"", R"("two\nlines")"},
        {"back\\slash\t\x01", "back\\slash\t\x01", R"("back\\slash\t\u0001")"},
        {"\xc3\xa9\xe2\x82\xac\xf0\x9f\x92\xa1", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x92\xa1",
         "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x92\xa1\""},
        // A lone byte, an overlong slash, half of a pair, beyond the last character, cut short.
        {"\xff", "\xff", "\"\xef\xbf\xbd\""},
        {"\xc0\xaf", "\xc0\xaf", "\"\xef\xbf\xbd\xef\xbf\xbd\""},
        {"\xed\xa0\x80", "\xed\xa0\x80", "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\""},
        {"\xf4\x90\x80\x80", "\xf4\x90\x80\x80",
         "\"\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\""},
        {"\xe2\x82", "\xe2\x82", "\"\xef\xbf\xbd\xef\xbf\xbd\""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(CsvField(row.text), row.csv);
        EXPECT_EQ(JsonText(row.text), row.json);
    }
}

TEST(ResultTable, WritesNumbersThatReadBackEqual) {
    for (const double value : {0.1, 1.0 / 3.0, -5e-324, 1.7976931348623157e308, 193.1e12, -0.0}) {
        const std::string text = JsonNumber(value);
        EXPECT_EQ(ReadDouble(text), value) << text;
        EXPECT_EQ(std::signbit(ReadDouble(text)), std::signbit(value)) << text;
    }
    const std::vector<std::string> names = {"a", "b", "c", "d"};
    const TableRow row = {nan, infinity, -infinity, std::int64_t{-7}};
    EXPECT_EQ(TableLine(names, row, TableFormat::Csv), "nan,inf,-inf,-7\r\n");
    EXPECT_EQ(TableLine(names, row, TableFormat::Json),
              R"({"a":null,"b":1e999,"c":-1e999,"d":-7})");
    EXPECT_EQ(TableLine({"x"}, {-nan}, TableFormat::Csv), "nan\r\n");
}

TEST(ResultTable, GivesEachColumnANameOfItsOwn) {
    const std::vector<std::string> expected = {"run", "run_2", "run_3", "run_2_2"};
    EXPECT_EQ(UniqueNames({"run", "run", "run", "run_2"}), expected);
}

/// What stands on the disk after each row is a whole document.
TEST(ResultTable, CanBeReadAfterEveryRow) {
    const TempDir directory;
    TableFile csv("t.csv", {"x", "a,b"}), json("t.JSON", {"x", "y"});
    EXPECT_EQ(Content("t.csv"), "x,\"a,b\"\r\n");
    EXPECT_EQ(Content("t.JSON"), "[\n]\n");
    for (int i = 1; i <= 3; ++i) {
        const TableRow row = {0.5 * i, std::string("n")};
        csv.Add(row);
        json.Add(row);
        EXPECT_TRUE(Content("t.csv").ends_with(Concat("\r\n", 0.5 * i, ",n\r\n")));
        EXPECT_TRUE(Content("t.JSON").ends_with(Concat("{\"x\":", 0.5 * i, ",\"y\":\"n\"}\n]\n")));
    }
    EXPECT_EQ(Content("t.JSON"),
              "[\n{\"x\":0.5,\"y\":\"n\"},\n{\"x\":1,\"y\":\"n\"},\n{\"x\":1.5,\"y\":\"n\"}\n]\n");
    EXPECT_EQ(csv.Failure() + json.Failure(), "");
    EXPECT_FALSE(TableFormatOf("t.txt"));
}

TEST(ResultTable, TellsWhenARowDoesNotFit) {
    const TempDir directory;
    std::filesystem::create_symlink("/dev/full", "full.csv");
    EXPECT_EQ(TableFile("full.csv", {"x"}).Failure(), "No space left on device");
    EXPECT_EQ(TableFile("none/t.json", {"x"}).Failure(), "No such file or directory");
    TableFile lost("lost.json", {"x"});
    std::filesystem::remove("lost.json");
    lost.Add({1.0});
    EXPECT_EQ(lost.Failure(), "No such file or directory");
    EXPECT_FALSE(std::filesystem::exists("lost.json"));
}

}  // namespace
}  // namespace photrak::test

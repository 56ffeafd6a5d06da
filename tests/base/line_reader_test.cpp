// How all text formats are cut into lines and tokens.
#include "base/line_reader.h"

#include <gtest/gtest.h>
#include <vector>

namespace photrak {
namespace {

std::vector<std::string> Words(LineReader& reader) {
    std::vector<std::string> words;
    for (auto word = reader.Word(); !word.empty(); word = reader.Word()) words.emplace_back(word);
    return words;
}

TEST(LineReader, SkipsBlankLinesAndLeadingWhiteSpaceOnly) {
    LineReader reader("\n  \t\r\n\v first line  \r\n\nlast", "a.top");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Line(), "first line  ");
    EXPECT_EQ(reader.Where(), "a.top:3");
    EXPECT_EQ(reader.BytesLeft(), 5u);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Line(), "last");
    EXPECT_EQ(reader.LineNumber(), 5);
    EXPECT_EQ(reader.BytesLeft(), 0u);
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.Word(), "");
}

TEST(LineReader, GivesBlankLinesWhenAsked) {
    LineReader reader("a\n\nb\n", "x");
    std::vector<std::string> lines;
    while (reader.NextEvenIfBlank()) lines.emplace_back(reader.Line());
    EXPECT_EQ(lines, (std::vector<std::string>{"a", "", "b"}));
}

TEST(LineReader, SplitsWordsAtRunsOfDelimiters) {
    LineReader reader("PARAM: DoubleType\t::name : \n", "x");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(Words(reader), (std::vector<std::string>{"PARAM", "DoubleType", "name"}));
    reader.Rewind();
    EXPECT_EQ(reader.Word(), "PARAM");
}

TEST(LineReader, TakesTextValuesToTheQuote) {
    struct Row {
        const char *line, *value;
    };
    constexpr Row rows[] = {
        {"VALUE \"1 2\" rest", "1 2"},
        {"VALUE 1 2", "1 2"},
        {"VALUE   12", "  12"},  // only one delimiter is used up by the keyword
        {"VALUE: \"12\"", " "},  // the blank behind the colon is the value
        {"VALUE \"\"", ""},
        {"VALUE \"open", "open"},
        {"VALUE", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        LineReader reader(row.line, "x");
        ASSERT_TRUE(reader.Next());
        EXPECT_EQ(reader.Word(), "VALUE");
        EXPECT_EQ(reader.Text(), row.value);
    }
}

TEST(LineReader, HandsOutTheRestAsItStands) {
    LineReader reader("NOTE  a: \"b\"  \n", "x");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Word(), "NOTE");
    EXPECT_EQ(reader.Rest(), " a: \"b\"  ");
    EXPECT_EQ(reader.Word(), "");
}

TEST(LineReader, TakesAZeroForABlank) {
    const std::string text("\0\0 one\0two\n\0\n", 13);
    LineReader reader(text, "x");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(Words(reader), (std::vector<std::string>{"one", "two"}));
    EXPECT_FALSE(reader.Next());
}

}  // namespace
}  // namespace photrak

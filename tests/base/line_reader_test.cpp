// How all text formats are cut into lines and tokens.
#include "base/line_reader.h"

#include <gtest/gtest.h>
#include <utility>
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
    ASSERT_TRUE(reader.NextEvenIfBlank());
    EXPECT_EQ(reader.Line(), "");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Line(), "last");
    EXPECT_EQ(reader.LineNumber(), 5);
    EXPECT_EQ(reader.BytesLeft(), 0u);
    EXPECT_FALSE(reader.Next());
    EXPECT_EQ(reader.Word(), "");
}

TEST(LineReader, SplitsWordsAtRunsOfDelimitersAndZeros) {
    const std::string_view text("PARAM: Double\0Type\t::name : \n\0\n NOTE  a: \"b\"  \n", 49);
    LineReader reader(text, "x");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(Words(reader), (std::vector<std::string>{"PARAM", "Double", "Type", "name"}));
    reader.Rewind();
    EXPECT_EQ(reader.Word(), "PARAM");
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Word(), "NOTE");
    EXPECT_EQ(reader.Rest(), " a: \"b\"  ");
    EXPECT_EQ(reader.Word(), "");
}

TEST(LineReader, TakesTextValuesToTheQuote) {
    constexpr std::pair<const char*, const char*> rows[] = {
        {"VALUE \"1 2\" rest", "1 2"},
        {"VALUE   12", "  12"},  // only one delimiter is used up by the keyword
        {"VALUE: \"12\"", " "},  // the blank behind the colon is the value
        {"VALUE \"open", "open"},
        {"VALUE", ""},
    };
    for (const auto& [line, value] : rows) {
        LineReader reader(line, "x");
        ASSERT_TRUE(reader.Next());
        EXPECT_EQ(reader.Word(), "VALUE");
        EXPECT_EQ(reader.Text(), value) << line;
    }
}

}  // namespace
}  // namespace photrak

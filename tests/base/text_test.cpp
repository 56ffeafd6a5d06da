// Numbers in and out of texts, message texts, the percent rule of the final message, and how all
// text formats are cut into lines and tokens.
#include "base/text.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "base/harmless_text.h"
#include "base/line_reader.h"
#include "base/log.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr auto maxInt = std::numeric_limits<std::int32_t>::max();
constexpr auto minInt = std::numeric_limits<std::int32_t>::min();

TEST(ReadNumber, TakesWhatStandsAtTheStartOfTheText) {
    const std::string zeros(400, '0');
    struct Row {
        std::string text;
        double value;
        std::size_t used;
    };
    const Row rows[] = {
        {"  \t-3e2 dB", -300.0, 7},
        {"+5", 5.0, 2},
        {".5x", 0.5, 2},
        {"5.", 5.0, 2},
        {"1e", 1.0, 1},
        {"0x10", 0.0, 1},
        {"inf", 0.0, 0},
        {"+-5", 0.0, 0},
        {".", 0.0, 0},
        {"1e99999999999999999999", HUGE_VAL, 22},
        {"0.0001e-99999999999", 0.0, 19},
        {"0." + zeros + "1e1000", HUGE_VAL, 408},
        {"0." + zeros + "1e401", 1.0, 407},
        {std::string("1\0002", 3), 1.0, 1},
    };
    for (const Row& row : rows) {
        std::size_t used = 99;
        EXPECT_EQ(ReadDouble(row.text, &used), row.value) << row.text;
        EXPECT_EQ(used, row.used) << row.text;
    }
    const Row integers[] = {
        {" 42abc", 42, 3}, {"3.9", 3, 1}, {"99999999999", maxInt, 11}, {"-99999999999", minInt, 12},
        {"x", 0, 0},
    };
    for (const Row& row : integers) {
        std::size_t used = 99;
        EXPECT_EQ(ReadInt(row.text, &used), row.value) << row.text;
        EXPECT_EQ(used, row.used) << row.text;
    }
}

TEST(FormatNumber, LooksTheSameOnEveryMachine) {
    EXPECT_EQ(FormatDefault(1234567.0), "1.23457e+06");
    EXPECT_EQ(FormatDefault(-0.00001), "-1e-05");
    EXPECT_EQ(FormatDefault(HUGE_VAL), "inf");
    EXPECT_EQ(FormatDefault(-std::nan("")), "nan");
    EXPECT_EQ(FormatSignificant(1.0 / 3.0, 12), "0.333333333333");
    EXPECT_EQ(FormatExponent(12345.678), "1.234568e+04");
    EXPECT_EQ(FormatExponent(1e-123), "1.000000e-123");
}

TEST(SaturateToInt, TruncatesTowardZeroInsideTheRange) {
    EXPECT_EQ(SaturateToInt(-2.9), -2);
    EXPECT_EQ(SaturateToInt(2147483646.9), maxInt - 1);
    EXPECT_EQ(SaturateToInt(1e300), maxInt);
    EXPECT_EQ(SaturateToInt(-HUGE_VAL), minInt);
    EXPECT_EQ(SaturateToInt(std::nan("")), minInt);
}

TEST(MessageTexts, NeverReadAPieceAsAFormat) {
    EXPECT_EQ(Concat("bad '", std::string("%n"), "' in line ", 12, ':', 0.5),
              "bad '%n' in line 12:0.5");
    EXPECT_EQ(FillIn("type '%s' of '%s'", {"%s%n", "b"}), "type '%s%n' of 'b'");
    EXPECT_EQ(FillIn("100%% of %d and %s, %s%", {"x"}), "100%% of %d and x, %s%");
    EXPECT_EQ(FillIn("%%s", {"x"}), "%%s");
    EXPECT_EQ(InterpretPercent("100%% of %s %n %%%"), "100% of %s %n %%");
}

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
        {"VALUE: \"12\"", " "},  // the blank after the colon is the value
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

TEST(HarmlessText, EscapesWhatSteersATerminalAndBoundsLines) {
    const std::string flood(10'000, 'x'), bells(5'000, '\x07');
    const std::pair<std::string, std::string> rows[] = {
        {"plain\n\tlines\n", "plain\n\tlines\n"},
        {"\x1b[2J\r\x7f", "\\x1b[2J\\x0d\\x7f"},
        {"a\x9b"
         "31m",
         "a\\x9b31m"},
        {"\xc2\x9b"
         "31m \xc2\xb5m \xe4",
         "\\u009b31m \xc2\xb5m \xe4"},
        {std::string("\0x", 2), "\\x00x"},
        {flood + "\nnext", flood.substr(0, 4056) + " ... (5944 more bytes)\nnext"},
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(HarmlessText(text), shown);
        EXPECT_EQ(HarmlessText(shown), shown) << "shown again it stays";
    }
    EXPECT_LE(HarmlessText(bells).size(), mostShownBytes);
}

/// Cuts at whole lines wherever the calls fall, so that a merged log is the log of one process.
TEST(Log, OfARunIsBoundedInWholeLinesWhateverTheCalls) {
    const TempDir folder;
    const std::string lines = "first line\nsecond line\nthird line\nfourth line\n";
    const auto logged = [&](std::size_t step) {
        std::remove("log.txt");
        {
            const LogBound bound(30);
            for (std::size_t at = 0; at < lines.size();) {
                const std::size_t end = lines.find('\n', std::min(at + step, lines.size() - 1)) + 1;
                LogText(lines.substr(at, end - at));
                at = end;
            }
        }
        LogText("Completed\n");
        return folder.Read("log.txt");
    };
    for (const std::size_t step : {1, 14, 100}) {
        EXPECT_EQ(logged(step),
                  "first line\nsecond line\n"
                  "The log of this run is full: what follows is left out, up to its end\n"
                  "Completed\n");
    }
}

/// Six digits are found without the library's conversion; that it gives the same is tried where the
/// rounding decides: at and beside the middle between two texts, at powers of ten, at the ends.
TEST(FormatDefault, GivesTheTextOfPrintfForEveryNumber) {
    const auto check = [](double value) {
        for (const double x :
             {value, -value, std::nextafter(value, 0.0), std::nextafter(value, HUGE_VAL)}) {
            char text[64];
            std::snprintf(text, sizeof text, "%g", x);
            ASSERT_EQ(FormatDefault(x), text);
        }
    };
    for (int power = -323; power <= 307; ++power) {
        const double ten = std::pow(10.0, power);
        for (const double digits : {1.0, 1.5, 9.999995, 9.9999949999, 1.234565, 1.2345649, 4.0})
            check(digits * ten);
    }
    std::mt19937_64 random(1);
    for (int i = 0; i < 200'000; ++i) {
        const auto tie = static_cast<double>(100'000 + random() % 900'000) + 0.5;
        check(tie * std::pow(10.0, static_cast<int>(random() % 80) - 40));
        check(std::bit_cast<double>(random() >> 1 & ~(std::uint64_t{1} << 62)));
    }
    check(0.0);
    EXPECT_EQ(FormatDefault(std::numeric_limits<double>::infinity()), "inf");
}

}  // namespace
}  // namespace photrak

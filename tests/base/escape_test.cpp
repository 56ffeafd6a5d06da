// Levels of the escape stack and the traces that failures leave.
#include "base/escape.h"

#include <deque>
#include <gtest/gtest.h>
#include <string>

#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

TEST(Escape, IsTakenOnlyFromAnArmedLevel) {
    EXPECT_NO_THROW(TakeEscape("level 0 is never armed"));
    const EscapeLevel outer(/*armed=*/true);
    {
        const EscapeLevel inner(/*armed=*/false);
        EXPECT_NO_THROW(TakeEscape("the inner level counts"));
    }
    try {
        TakeEscape("why");
        FAIL() << "an armed level must throw";
    } catch (const Escape& escape) {
        EXPECT_EQ(escape.message, "why");
    }
}

TEST(Escape, RefusesMoreLevelsThanThereAreAndKeepsCount) {
    {
        std::deque<EscapeLevel> levels;
        for (int i = 1; i < maxEscapeLevels; ++i) {
            EXPECT_FALSE(levels.emplace_back(i % 2 == 1).Refused());
        }
        EXPECT_EQ(EscapeLevelCount(), maxEscapeLevels - 1);
        const EscapeLevel refused(/*armed=*/false);
        EXPECT_TRUE(refused.Refused());
        EXPECT_THROW(TakeEscape(), Escape);  // still the last level that was pushed
    }
    EXPECT_EQ(EscapeLevelCount(), 0);
    PopEscape();
    EXPECT_EQ(EscapeLevelCount(), 0);
}

TEST(FatalError, CutsTheBoxBetweenCharactersAndReturnsWhenUnarmed) {
    RecordingHost host;
    const std::string text = std::string(254, 'x') + "\xC3\xA9 and %n more";
    FatalError(text);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, std::string(254, 'x'));
    EXPECT_EQ(host.boxes[0].title, "Photrak Error");

    FatalError(std::string(300, '\x80'));  // no characters to respect
    EXPECT_EQ(host.boxes[1].text.size(), 255u);

    const EscapeLevel level(/*armed=*/true);
    EXPECT_THROW(FatalError("%s"), Escape);
    EXPECT_EQ(host.boxes[2].text, "%s");
}

TEST(NumericFailure, LeavesThreeLinesAndThrowsFromAnyLevel) {
    const TempDir directory;
    RecordingHost host;
    EXPECT_THROW(NumericFailure("Singular %d"), Escape);
    EXPECT_EQ(directory.Read("pherror.txt"),
              "Simulation run-time error...\nSingular %d\n...now exiting simulation...\n");
    EXPECT_EQ(host.Errors(), "Singular %d");
    RuntimeError("lost");
    EXPECT_TRUE(directory.Read("pherror.txt").ends_with("Photrak runtime error:\nlost\n\n"));
}

}  // namespace
}  // namespace photrak

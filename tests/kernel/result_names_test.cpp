// Names of result files by the coordinates of the run, and the limits of where they may lead.
#include "kernel/result_names.h"

#include "kernel/run_record.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

TEST(ResultNames, FollowTheCoordinatesFromTheOutsideIn) {
    const struct {
        std::int16_t mode;
        std::int32_t outer, inner, runs, loops;
        const char* stem;
    } rows[] = {
        {0, 1, 1, 1, 1, "out_eye"},
        {0, 0, 0, 0, 2, "out_eye_L3"},
        {0, 0, 0, 5, 0, "out_eye"},  // runs count in statistical mode only
        {simMode::innerSweep, 0, 3, 0, 0, "scan_eye_in2"},
        {simMode::anyScan, 9, 3, 5, 2, "scan_eye_out7_in2_run4_L3"},
    };
    SimOptions options;
    options.OUTPUTPREFIX = "out_";
    options.SCANPREFIX = "scan_";
    options.SCANMETA1 = "_in";
    options.SCANMETA2 = "_out";
    options.RUNMETA = "_run";
    options.loopSuffix = "_L3";
    options.outerIndex = 7;
    options.innerIndex = 2;
    options.runIndex = 4;
    for (const auto& row : rows) {
        options.mode = row.mode;
        options.outerCount = row.outer;
        options.innerCount = row.inner;
        options.NUMRUNSTODO = row.runs;
        options.loopReps = row.loops;
        EXPECT_EQ(ResultStem(options, "eye"), row.stem);
    }
}

TEST(ResultNames, StayInsideTheDirectory) {
    for (const char* name : {"a.sig", "sub/a.sig", "a..sig", "..a", "%s%n", ".hidden", "a/.../b"}) {
        EXPECT_TRUE(IsAllowedResultName(name)) << name;
    }
    for (const char* name : {"", "/etc/x", "..", "../x", "a/../x", "a/..", "a//../x", "./.."}) {
        EXPECT_FALSE(IsAllowedResultName(name)) << name;
    }
    EXPECT_FALSE(IsAllowedResultName(std::string_view("a\0b", 3)));
    // Names stand bare on the lines of command files, which the viewer reads as a script.
    for (const char* name : {"a\n/quit", "a\rb", "a\tb", "\x1b[2J", "a\x7f"}) {
        EXPECT_FALSE(IsAllowedResultName(name));
    }
}

TEST(ResultNames, WrittenFilesAreListedOnceInOrder) {
    const TempDir directory;
    directory.Write("sub/old", "");
    ResetRunRecord();
    std::string errors;
    EXPECT_TRUE(WriteResultFile("z.sig", "1\n", errors));
    EXPECT_TRUE(WriteResultFile("sub/a.sig", "2\n", errors));
    EXPECT_TRUE(WriteResultFile("z.sig", "3\n", errors));
    EXPECT_FALSE(WriteResultFile("missing/a.sig", "4\n", errors));
    EXPECT_EQ(errors, "");
    EXPECT_FALSE(WriteResultFile("../%s.sig", "5\n", errors));
    EXPECT_NE(errors.find("ERROR"), std::string::npos);
    EXPECT_NE(errors.find("'../%s.sig'"), std::string::npos);
    EXPECT_EQ(errors.back(), '\n');
    EXPECT_EQ(CurrentRun().written.Names(), (std::vector<std::string>{"z.sig", "sub/a.sig"}));
    EXPECT_EQ(CurrentRun().failed.Names(),
              std::vector<std::string>{"'missing/a.sig': No such file or directory"});
    EXPECT_EQ(directory.Read("z.sig"), "3\n");
}

}  // namespace
}  // namespace photrak

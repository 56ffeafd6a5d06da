// The scan command through the real program: points, files, economy, stops, texts and faults.
#include <set>

#include "base/text.h"
#include "link/example_run.h"

namespace photrak::test {
namespace {

struct Scan : ExampleRun {
    /// A scan over the turns of one pattern, sent the signal when the file is there.
    static ProgramResult ScanPoints(const std::string& turns, int signal, const char* file) {
        return InterruptedPhotrak({"scan", "--no-commands", "--quiet", "--outer", "bits=4:4:1",
                                   "--inner", "turn=" + turns, "sweep-pattern.top"},
                                  signal, file);
    }
};

int Lines(const std::string& text) {
    return Count(text, "\n");
}

TEST_F(Scan, WritesEveryPointOfTheTopologysSweeps) {
    const ProgramResult result = Photrak("scan --no-commands --quiet sweep-pattern.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(Lines(result.out), 2 * (8 + 1)) << result.out;
    for (const int length : {4, 5}) {
        const std::string stem = Concat("sweep-trace_bits", length - 3, "_turn");
        const std::vector<double> first = Column(stem + "1_bin.sig", 1);
        ASSERT_EQ(first.size(), std::size_t{1} << length);
        for (int point = 2; point <= 4; ++point) {
            const auto turned = Column(Concat(stem, point, "_bin.sig"), 1);
            ASSERT_EQ(turned.size(), first.size());
            const int turn = 3 * (point - 1);  // the last row of a trace is its first bit again
            EXPECT_TRUE(std::equal(first.begin() + turn, first.end() - 1, turned.begin())) << point;
        }
    }
    const std::string log = FileText("log.txt");
    EXPECT_EQ(Lines(log), 2 + 2 * 8 + 2);
    EXPECT_EQ(log.rfind("Starting Parameter Scan\n", 0), 0u);
    EXPECT_NE(log.find("Parameter Scan Completed\n"), std::string::npos);
}

/// Stopped somewhere in a million points: what had finished is whole, and nothing else is left.
TEST_F(Scan, LeavesWholeFilesOfTheFinishedPointsWhenStopped) {
    std::set<std::string> expected = {"log.txt", "program.out", "program.err"};
    for (const std::string& name : directory_.Files()) expected.insert(name);
    const ProgramResult result = ScanPoints("0:1:1e-6", SIGINT, "sweep-trace_turn5.pcs");
    EXPECT_EQ(result.status, 130) << result.error;
    EXPECT_NE(result.error.find("stopped on request"), std::string::npos) << result.error;
    const int points = (Lines(result.out) - 2) / 2;  // two files each, two of the still one
    EXPECT_GE(points, 5);
    EXPECT_LT(points, 1000000);
    const std::string first = FileText("sweep-trace_turn1_bin.sig");
    EXPECT_EQ(Lines(first), 16);
    for (int point = 1; point <= points; ++point) {
        const std::string stem = "sweep-trace_turn" + std::to_string(point);
        ASSERT_EQ(FileText(stem + "_bin.sig"), first) << point;
        EXPECT_EQ(Count(FileText(stem + ".pcs"), stem + "_bin.sig"), 1);
    }
    std::istringstream listed(result.out);
    for (std::string name; std::getline(listed, name);) expected.insert(name);
    const std::vector<std::string> present = directory_.Files();
    EXPECT_EQ(std::set<std::string>(present.begin(), present.end()), expected);
    EXPECT_TRUE(FileText("log.txt").ends_with(
        "Parameter Scan Completed\nThe run was stopped before its end\n"));
}

TEST_F(Scan, GoesOnBehindAClosedTerminalIfTold) {
    const auto before = std::signal(SIGHUP, SIG_IGN);  // as nohup does
    const ProgramResult result = ScanPoints("1:200:1", SIGHUP, "sweep-trace_turn2.pcs");
    std::signal(SIGHUP, before);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(Lines(result.out), 402);
}

TEST_F(Scan, TakesSweepsFromTheCommandLine) {
    const std::string options =
        "scan --no-commands --quiet --outer 'bits=4:4:1' --inner=turn=0:bits:bits/2 "
        "--runs 2 --inner-tag .i --run-tag .r --prefix s ";
    const ProgramResult bad = Photrak(options + "first-bits.top");
    EXPECT_EQ(bad.status, 1);  // that topology has no such symbol
    EXPECT_NE(bad.error.find("--inner: P1209: sweep of 'turn': 'bits'"), std::string::npos);
    const ProgramResult good = Photrak(options + "sweep-pattern.top");
    ASSERT_EQ(good.status, 0) << good.error;
    for (const char* name : {"strace.i1.r1.pcs", "strace.i2.r1.pcs", "strace.i3.r1.pcs"}) {
        EXPECT_TRUE(std::filesystem::exists(name)) << good.out;
    }
}

TEST_F(Scan, SaysWhenPlotsAreSkippedAndWhenThereIsNothingToScan) {
    const ProgramResult untagged =
        Photrak("scan --no-commands --quiet --outer-tag '' sweep-pattern.top");
    EXPECT_EQ(untagged.status, 0) << untagged.error;
    EXPECT_EQ(untagged.out, "");
    EXPECT_EQ(
        untagged.error,
        "photrak: note: no tag for the outer sweep: plots are skipped if it has more than one "
        "point; --outer-tag gives one\n");
    const ProgramResult single = Photrak("scan --no-commands --quiet --prefix p first-bits.top");
    EXPECT_EQ(single.status, 0) << single.error;
    EXPECT_NE(single.error.find("simulating once"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists("pbits.pcs")) << single.out;
}

TEST_F(Scan, RefusesFaultySweeps) {
    for (const char* range : {"x", "x=1:2", "x=1:2:3:4", "=1:2:3", "x=:2:3",
                              "a234567890123456789012345678901234=1:2:3"}) {
        SCOPED_TRACE(range);
        const ProgramResult result =
            Photrak(std::string("scan --inner '") + range + "' sweep-pattern.top");
        EXPECT_EQ(result.status, 64);
        EXPECT_NE(result.error.find(range[0] == 'a' ? "longer" : "NAME=START:STOP:STEP"),
                  std::string::npos);
    }
    EXPECT_EQ(Photrak("scan --runs -1 sweep-pattern.top").status, 64);
    EXPECT_EQ(Photrak("run --runs 1 sweep-pattern.top").status, 64);
    const ProgramResult endless = Photrak("scan --inner turn=0:1:0 sweep-pattern.top");
    EXPECT_EQ(endless.status, 1);
    EXPECT_NE(endless.error.find("P1307: sweep of 'turn': a step of 0"), std::string::npos);
}

TEST_F(Scan, APointThatFailsLeavesThoseBeforeItAndIsNamed) {
    const ProgramResult result = Photrak(
        "scan --no-commands --quiet --outer bits=18:19:1 --inner turn=0:0:1 sweep-pattern.top");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.out.find("sweep-trace_bits1.pcs"), std::string::npos) << result.out;
    EXPECT_NE(result.error.find("the run failed at component 'Pattern' of type 'PseudoRandom"),
              std::string::npos)
        << result.error;
}

}  // namespace
}  // namespace photrak::test

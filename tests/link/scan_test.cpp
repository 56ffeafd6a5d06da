// The scan command through the real program: points, files, economy, stops, texts and faults.
#include <set>

#include "link/example_run.h"

namespace photrak::test {
namespace {

using Scan = ExampleRun;

int Lines(const std::string& text) {
    return Count(text, "\n");
}

TEST_F(Scan, WritesEveryPointOfTheTopologysSweeps) {
    const ProgramResult result = Photrak("scan --no-commands --quiet sweep-pattern.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(Lines(result.out), 2 * (8 + 1)) << result.out;
    for (std::size_t length = 4; length <= 5; ++length) {
        const std::string stem = "sweep-trace_bits" + std::to_string(length - 3) + "_turn";
        const std::vector<double> first = Column(stem + "1_bin.sig", 1);
        ASSERT_EQ(first.size(), std::size_t{1} << length);
        for (std::size_t point = 2; point <= 4; ++point) {
            const auto turned = Column(stem + std::to_string(point) + "_bin.sig", 1);
            ASSERT_EQ(turned.size(), first.size());
            const std::size_t turn = 3 * (point - 1);
            // The last row of a trace is its first bit again.
            for (std::size_t k = 0; k + turn + 1 < first.size(); ++k) {
                EXPECT_EQ(turned[k], first[k + turn]) << point << " " << k;
            }
        }
    }
    const std::string log = FileText("log.txt");
    EXPECT_EQ(Lines(log), 2 + 2 * 8 + 2);
    EXPECT_EQ(log.rfind("Starting Parameter Scan\n", 0), 0u);
    EXPECT_NE(log.find("Parameter Scan Completed\n"), std::string::npos);
}

/// A link of ten blocks, three of them behind the swept parameter of the receiver.
TEST_F(Scan, RunsTheFiberOnceForASweepOfTheReceiver) {
    std::string link = FileText("nrz-link.top");
    const std::string receiver = "INPUTFROM 5\nOUTPUTTO 6\n";
    link.insert(link.find(receiver) + receiver.size(),
                "PARAM pd_quantumEff DoubleType\nVALUE efficiency\nSTDDEV 0\n"
                "PROBDIST NoProbDist\nENDPARAM\n");
    link.insert(link.find("launch Double"), "efficiency DoubleType 1\n");
    link +=
        "COMPONENT Tester BERTester\nNOTE -\nICON i 1 1\nNUMINPUTS 2\nNUMOUTPUTS 1\n"
        "INPUTFROM 6 1\nOUTPUTTO 0\nENDCOMPONENT\n";
    WriteText("ten.top", link);
    Run("scan --inner efficiency=0.05:1:0.05 --inner-tag _e --prefix t- --set length=1e3 ten.top");
    const std::string log = FileText("log.txt");
    EXPECT_EQ(Count(log, "Simulating component"), 7 + 3 * 20) << log;
    EXPECT_EQ(Count(log, "Simulating component 'Fiber'"), 1);
    // The current, and so the swing of the voltage, goes with the efficiency.
    const auto swing = [](const std::string& file) {
        const std::vector<double> voltage = Column(file, 1);
        return Peak(voltage) - Least(voltage);
    };
    EXPECT_NEAR(swing("t-received_e20_real.sig") / swing("t-received_e1_real.sig"), 20.0, 0.01);
}

/// Stopped somewhere in a million points: what had finished is whole, and nothing else is left.
TEST_F(Scan, LeavesWholeFilesOfTheFinishedPointsWhenStopped) {
    std::set<std::string> expected;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        expected.insert(entry.path().filename().string());
    }
    const ProgramResult result =
        InterruptedPhotrak({"scan", "--no-commands", "--quiet", "--outer", "bits=4:4:1", "--inner",
                            "turn=0:1:1e-6", "sweep-pattern.top"},
                           SIGINT, "sweep-trace_turn5.pcs");
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
        const std::string script = FileText(stem + ".pcs");
        EXPECT_NE(script.find(stem + "_bin.sig"), std::string::npos) << script;
    }
    std::istringstream listed(result.out);
    for (std::string name; std::getline(listed, name);) expected.insert(name);
    for (const char* other : {"log.txt", "program.out", "program.err"}) expected.insert(other);
    std::set<std::string> present;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        present.insert(entry.path().filename().string());
    }
    EXPECT_EQ(present, expected);
    EXPECT_TRUE(FileText("log.txt").ends_with("Parameter Scan Completed\n"));
}

TEST_F(Scan, GoesOnBehindAClosedTerminalIfTold) {
    const auto before = std::signal(SIGHUP, SIG_IGN);  // as nohup does
    const ProgramResult result =
        InterruptedPhotrak({"scan", "--no-commands", "--quiet", "--outer", "bits=4:4:1", "--inner",
                            "turn=1:200:1", "sweep-pattern.top"},
                           SIGHUP, "sweep-trace_turn2.pcs");
    std::signal(SIGHUP, before);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(Lines(result.out), 402);
}

TEST_F(Scan, TakesSweepsFromTheCommandLine) {
    const ProgramResult result = Photrak(
        "scan --no-commands --quiet --outer 'bits=4:4:1' --inner=turn=0:bits:bits/2 "
        "--runs 2 --inner-tag .i --run-tag .r --prefix s first-bits.top");
    EXPECT_EQ(result.status, 1);  // that topology has no such symbol
    EXPECT_NE(result.error.find("ERROR in inner sweep stop settings"), std::string::npos);

    const ProgramResult good = Photrak(
        "scan --no-commands --quiet --outer bits=4:4:1 --inner=turn=0:bits:bits/2 "
        "--inner-tag .i --prefix s sweep-pattern.top");
    ASSERT_EQ(good.status, 0) << good.error;
    for (const char* name : {"strace.i1.pcs", "strace.i2.pcs", "strace.i3.pcs"}) {
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
    for (const char* range : {"x", "x=1", "x=1:2", "x=1:2:3:4", "=1:2:3", "x=:2:3",
                              "x=1:2:", "a234567890123456789012345678901234=1:2:3"}) {
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
    EXPECT_NE(endless.error.find("ERROR in inner sweep settings"), std::string::npos);
}

}  // namespace
}  // namespace photrak::test

// The scan command through the real program: points, files, texts and faults.
#include "link/run_program.h"

namespace photrak::test {
namespace {

class Scan : public ::testing::Test {
  protected:
    Scan() { std::filesystem::copy(PHOTRAK_SOURCE_DIR "/examples", "."); }
    TempDir directory_;
};

std::vector<double> Bits(const std::string& file) {
    std::vector<double> bits;
    for (const auto& row : Table(file)) bits.push_back(row.at(1));
    return bits;
}

std::size_t Lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST_F(Scan, WritesEveryPointOfTheTopologysSweeps) {
    const ProgramResult result = Photrak("scan --no-commands --quiet sweep-pattern.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(Lines(result.out), 2u * (8 + 1)) << result.out;
    for (std::size_t length = 4; length <= 5; ++length) {
        const std::string stem = "sweep-trace_bits" + std::to_string(length - 3) + "_turn";
        const std::vector<double> first = Bits(stem + "1_bin.sig");
        ASSERT_EQ(first.size(), std::size_t{1} << length);
        for (std::size_t point = 2; point <= 4; ++point) {
            const auto turned = Bits(stem + std::to_string(point) + "_bin.sig");
            ASSERT_EQ(turned.size(), first.size());
            const std::size_t turn = 3 * (point - 1);
            // The last row of a trace is its first bit again.
            for (std::size_t k = 0; k + turn + 1 < first.size(); ++k) {
                EXPECT_EQ(turned[k], first[k + turn]) << point << " " << k;
            }
        }
    }
    const std::string log = FileText("log.txt");
    EXPECT_EQ(Lines(log), 2u + 2 * 8 + 2);
    EXPECT_EQ(log.rfind("Starting Parameter Scan\n", 0), 0u);
    EXPECT_NE(log.find("Parameter Scan Completed\n"), std::string::npos);
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
    EXPECT_EQ(untagged.error,
              "photrak: note: the outer sweep has no tag, so its plots are skipped; --outer-tag "
              "gives one\n");
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

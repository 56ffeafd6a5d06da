// The example topologies through the real program, from the command line to the result files.
#include "link/example_run.h"

namespace photrak::test {
namespace {

class Examples : public ExampleRun {};

std::vector<int> Bits(const std::vector<std::vector<double>>& rows, std::size_t column) {
    std::vector<int> bits;
    for (const auto& row : rows) bits.push_back(static_cast<int>(row.at(column)));
    return bits;
}

/// A maximal-length sequence of degree 7 repeats after 127 bits and holds one 1 more than 0s; the
/// pattern adds the first bit once more.
TEST_F(Examples, FirstBitsAreAMaximalLengthSequence) {
    const ProgramResult result = Photrak("run --no-commands first-bits.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out, "first-bits_bin.sig\nfirst-bits.pcs\n");
    const auto rows = Table("first-bits_bin.sig");
    ASSERT_EQ(rows.size(), 128u);
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_NEAR(rows[i].at(0), 1e-10 * double(i), 1e-15);
    std::vector<int> bits = Bits(rows, 1);
    EXPECT_EQ(bits.front(), bits.back());
    bits.pop_back();
    EXPECT_EQ(std::count(bits.begin(), bits.end(), 1), 64);
    std::vector<bool> seen(128, false);  // every window of seven bits but seven zeros, once
    for (std::size_t start = 0; start < 127; ++start) {
        std::size_t window = 0;
        for (std::size_t k = 0; k < 7; ++k)
            window = 2 * window + std::size_t(bits[(start + k) % 127]);
        EXPECT_FALSE(seen[window]);
        seen[window] = true;
    }
    EXPECT_FALSE(seen[0]);
}

TEST_F(Examples, LogHasALineForEveryComponent) {
    ASSERT_EQ(Photrak("run --no-commands --quiet first-bits.top").status, 0);
    EXPECT_EQ(FileText("log.txt"),
              "Starting Simulation\n"
              "Simulating component 'Pattern' of type 'PseudoRandomBinarySequenceGenerator'\n"
              "Simulating component 'Trace' of type 'SignalPlot'\n"
              "Simulation Completed\n");
}

/// A trace of bits ends with its first bit again: the last bit is not visited, which is how the
/// plot block walks all but magnitudes.
TEST_F(Examples, PatternPortsFollowEachOtherByTheShift) {
    const ProgramResult result = Photrak("run --no-commands patterns.top");
    ASSERT_EQ(result.status, 0) << result.error;
    const auto rows = Table("patterns-ports_bin.sig");
    ASSERT_EQ(rows.size(), 32u);
    const auto first = Bits(rows, 1), second = Bits(rows, 2), third = Bits(rows, 3);
    for (std::size_t k = 0; k < 23; ++k) {
        EXPECT_EQ(second[k], first[k + 8]);
        EXPECT_EQ(third[k], second[k + 8]);
    }
    const std::vector<int> file = {1, 0, 1, 0, 1, 0, 1, 0, 1, 1, 0, 1, 0, 1, 0, 0,
                                   0, 0, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1};
    EXPECT_EQ(Bits(Table("patterns-custom_bin.sig"), 1), file);
}

TEST_F(Examples, ASymbolOnTheCommandLineReplacesTheFilesOwn) {
    ASSERT_EQ(Photrak("run --no-commands --set bits=4 --prefix s_ patterns.top").status, 0);
    EXPECT_EQ(Table("s_ports_bin.sig").size(), 16u);
}

TEST_F(Examples, NoPlottingWritesNoResults) {
    const ProgramResult result = Photrak("run --plotting none first-bits.top");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(std::filesystem::exists("first-bits.pcs"));
}

TEST_F(Examples, TheViewerGetsTheCommandFileAsOneWord) {
    WriteText("viewer", "#!/bin/sh\nprintf '%s|' \"$@\" >viewed.tmp && mv viewed.tmp viewed\n");
    std::filesystem::permissions("viewer", std::filesystem::perms::owner_all);
    setenv("PLOTCMD", "./viewer -x", 1);
    const ProgramResult result = Photrak("run --plotting display --prefix 'a b;' first-bits.top");
    unsetenv("PLOTCMD");
    EXPECT_EQ(result.status, 0) << result.error;
    for (int wait = 0; wait < 100 && !std::filesystem::exists("viewed"); ++wait) usleep(50000);
    EXPECT_EQ(FileText("viewed"), "-x|@a b;bits.pcs|");
}

}  // namespace
}  // namespace photrak::test

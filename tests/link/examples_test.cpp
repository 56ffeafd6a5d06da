// The example topologies through the real program, from the command line to the result files.
#include "link/example_run.h"
#include "support/paths.h"

namespace photrak::test {
namespace {

class Examples : public ExampleRun {};

/// 2^7 bits of 100 ps, of which a maximal-length sequence has one 1 more than 0s before it begins
/// anew.
TEST_F(Examples, FirstBitsAreAMaximalLengthSequence) {
    const ProgramResult result = Photrak("run --no-commands first-bits.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out, "first-bits_bin.sig\nfirst-bits.pcs\n");
    const auto times = Column("first-bits_bin.sig", 0), bits = Column("first-bits_bin.sig", 1);
    ASSERT_EQ(bits.size(), 128u);
    EXPECT_NEAR(times[127], 12.7e-9, 1e-15);
    EXPECT_EQ(std::count(bits.begin(), bits.end() - 1, 1.0), 64);
    EXPECT_EQ(bits.front(), bits.back());
    EXPECT_EQ(FileText("log.txt"),
              "Starting Simulation\n"
              "Simulating component 'Pattern' of type 'PseudoRandomBinarySequenceGenerator'\n"
              "Simulating component 'Trace' of type 'SignalPlot'\n"
              "Simulation Completed\n");
}

TEST_F(Examples, PatternsFollowTheShiftAndTheFile) {
    Run("run patterns.top");
    const auto rows = Table("patterns-ports_bin.sig");
    ASSERT_EQ(rows.size(), 32u);
    for (std::size_t k = 0; k < 23; ++k) {
        EXPECT_EQ(rows[k].at(2), rows[k + 8].at(1));
        EXPECT_EQ(rows[k].at(3), rows[k + 8].at(2));
    }
    const std::vector<double> file = {1, 0, 1, 0, 1, 0, 1, 0, 1, 1, 0, 1, 0, 1, 0, 0,
                                      0, 0, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 0, 1};
    EXPECT_EQ(Column("patterns-custom_bin.sig", 1), file);
}

TEST_F(Examples, ASymbolOnTheCommandLineReplacesTheFilesOwn) {
    Run("run --set bits=4 --prefix s_ patterns.top");
    EXPECT_EQ(Table("s_ports_bin.sig").size(), 16u);
}

TEST_F(Examples, NoPlottingWritesNoResults) {
    const ProgramResult result = Photrak("run --plotting none first-bits.top");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_FALSE(std::filesystem::exists("first-bits.pcs"));
}

/// A folder may come from anyone: a link in it, or under the name of a folder, is left alone.
TEST_F(Examples, ResultsAndLogsFollowNoLinks) {
    WriteText("precious", "mine\n");
    std::filesystem::create_symlink("precious", "first-bits_bin.sig");
    const ProgramResult result = Photrak("run --no-commands first-bits.top");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("error: could not write 'first-bits_bin.sig': a symbolic link "
                                "stands there, and results never follow one"),
              std::string::npos)
        << result.error;
    EXPECT_EQ(result.out.find("first-bits_bin.sig"), std::string::npos);
    EXPECT_EQ(FileText("precious"), "mine\n");

    std::filesystem::remove("first-bits_bin.sig");
    std::filesystem::remove("log.txt");
    std::filesystem::create_symlink("precious", "log.txt");
    Photrak("run --no-commands first-bits.top");
    EXPECT_EQ(FileText("precious"), "mine\n");

    std::filesystem::create_directory("away");
    std::filesystem::create_symlink("away", "sub");
    EXPECT_EQ(Photrak("run --no-commands --prefix sub/x first-bits.top").status, 1);
    EXPECT_TRUE(std::filesystem::is_empty("away"));
}

TEST_F(Examples, AFullStandardOutputIsTold) {
    EXPECT_EQ(RunProgram("sh -c '" + BinaryDir() + "/bin/photrak models >/dev/full'").status, 1);
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

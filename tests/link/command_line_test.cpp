// The command line itself: usage, faults and texts of every kind, through the real program.
#include "link/run_program.h"

namespace photrak::test {
namespace {

struct UsageRow {
    const char* arguments;
    int status;
    const char* expected;  // part of standard error or output
};

/// Names the case by its arguments.
void PrintTo(const UsageRow& row, std::ostream* out) {
    *out << "photrak " << row.arguments;
}

class Usage : public ::testing::TestWithParam<UsageRow> {
  protected:
    TempDir directory_;
};

TEST_P(Usage, IsAnsweredWithStatusAndText) {
    // On a display the program without words opens its window.
    const ProgramResult result =
        RunProgram("env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM " + BinaryDir() +
                   "/bin/photrak " + GetParam().arguments);
    EXPECT_EQ(result.status, GetParam().status) << result.error;
    EXPECT_NE((result.out + result.error).find(GetParam().expected), std::string::npos)
        << result.out << result.error;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Usage,
    ::testing::Values(UsageRow{"", 64, "no command given"}, UsageRow{"--version", 0, "photrak 0."},
                      UsageRow{"--help", 0, "photrak run [options] FILE.top"},
                      UsageRow{"run --help", 0, "--set NAME=EXPR"},
                      UsageRow{"run", 64, "wants a topology file"},
                      UsageRow{"fly away", 64, "unknown command 'fly'\n"},
                      UsageRow{"rnu x.top", 64, "'rnu'; did you mean 'run'?"},
                      UsageRow{"run --quite x.top", 64, "'--quite'; did you mean '--quiet'?"},
                      UsageRow{"models SignalPlto", 1, "did you mean 'SignalPlot'?"},
                      UsageRow{"check --lenient x.top", 64, "unknown option '--lenient'"},
                      UsageRow{"run --warp x.top", 64, "unknown option '--warp'"},
                      UsageRow{"run --set x x.top", 64, "--set wants NAME=EXPR"},
                      UsageRow{"run --plotting loud x.top", 64, "--plotting wants"},
                      UsageRow{"run a.top b.top", 64, "'b.top' is too many"},
                      UsageRow{"run --quiet=1 b.top", 64, "takes no value"},
                      UsageRow{"test a", 64, "wants a component and a topology file"},
                      UsageRow{"test a b.top c%s.top", 64, "'c%s.top' is too many"},
                      UsageRow{"test --prefix p a b.top", 64, "unknown option '--prefix'"},
                      UsageRow{"test --help", 0, "photrak test [options] COMPONENT FILE.top"},
                      UsageRow{"params a", 64, "wants a component and a topology file"},
                      UsageRow{"params -o d/ a b.top", 64, "-o wants the name of a file"},
                      UsageRow{"run --load-params =x b.top", 64, "wants COMPONENT=FILE.prm"},
                      UsageRow{"test -- -a missing.top", 1, "missing.top"},
                      UsageRow{"run missing.top", 1, "missing.top"},
                      UsageRow{"draw", 64, "wants a topology file"},
                      UsageRow{"draw --zoom 21 x.top", 64, "--zoom wants a number from 0.05 to 20"},
                      UsageRow{"draw missing.top", 1, "missing.top"},
                      UsageRow{"run missing/dir/x.top", 1, "cannot enter"},

                      UsageRow{"models", 0, "PseudoRandomBinarySequenceGenerator"},
                      UsageRow{"models PseudoRandomBinarySequenceGenerator", 0, "patternLength"},
                      UsageRow{"models Warp%s", 1, "no model 'Warp%s'"}));

/// A sequence generator on node 1 and a plot, with texts put in place.
std::string Link(const std::string& variables, const std::string& name, const std::string& note,
                 const std::string& length) {
    return "NOTE " + note + "\nBEGINVARIABLES\n" + variables +
           "ENDVARIABLES\nNODEBEGIN 1 BinSigType\nENDNODE\nCOMPONENT " + name +
           " PseudoRandomBinarySequenceGenerator\nNOTE " + note +
           "\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM 0\nOUTPUTTO 1\n"
           "PARAM patternLength IntType\nVALUE " +
           length +
           "\nENDPARAM\nENDCOMPONENT\n"
           "COMPONENT Plot%n SignalPlot\nNOTE\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM 1\n"
           "OUTPUTTO 0\nPARAM FilenameRoot StringType\nVALUE root%s\nENDPARAM\nENDCOMPONENT\n";
}

TEST(CommandLine, TextsWithPercentSignsAreOnlyTexts) {
    const TempDir directory;
    WriteText("p.top", Link("a%n DoubleType 100%\n", "Bits%s%n", "%n %s %d 100%", "5"));
    const ProgramResult result = Photrak("run --no-commands --prefix %d p.top");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_TRUE(std::filesystem::exists("%droot%s.pcs"));
    EXPECT_NE(FileText("log.txt").find("'Bits%s%n'"), std::string::npos);
    WriteText("q.top", Link("", "Bits%s%n", "%n", "%d%n%s"));
    const ProgramResult bad = Photrak("run --no-commands q.top");
    EXPECT_NE(bad.error.find("Bits%s%n"), std::string::npos) << bad.error;
}

/// The faults themselves are listed with the reader of topologies.
TEST(CommandLine, CheckTellsEveryFaultWithItsPlace) {
    const TempDir directory;
    WriteText("f.top", "FLY away\n" + Link("v ArrayType 1\n", "Bits", "", "99") + "COMPONENT\n");
    const ProgramResult result = Photrak("check f.top");
    EXPECT_EQ(result.status, 1);
    for (const char* text :
         {"f.top:1: P1002: unknown keyword 'FLY'",
          "f.top:4: P1301: variable 'v' cannot be of type 'ArrayType'",
          "f.top:16: P1214: component 'Bits', parameter 'patternLength': 99 (power of 2) is beyond "
          "the maximum of 64",
          "f.top:30: P1103: COMPONENT has neither name nor model"}) {
        EXPECT_NE(result.error.find(text), std::string::npos) << text << " is missing in\n"
                                                              << result.error;
    }
    EXPECT_FALSE(std::filesystem::exists("root%s.pcs"));
}

TEST(CommandLine, StrictTurnsWarningsIntoAStatus) {
    const TempDir directory;
    WriteText("w.top", Link("", "Bits", "", "nowhere"));
    EXPECT_EQ(Photrak("run --no-commands w.top").status, 1);
    EXPECT_EQ(Photrak("run --no-commands --lenient w.top").status, 0);
    EXPECT_EQ(Photrak("run --no-commands --lenient --strict w.top").status, 2);
    // With the symbol there is no fault, neither of the load nor of the run.
    const ProgramResult given = Photrak("run --no-commands --quiet --strict --set nowhere=5 w.top");
    EXPECT_EQ(given.status, 0);
    EXPECT_EQ(given.error, "");
}

/// From one block to another by a file, in the order of the options and before the symbols; paths
/// are the user's, not the topology's.
TEST(CommandLine, ParameterFilesGoFromBlockToBlock) {
    const TempDir directory;
    std::filesystem::create_directory("links");
    WriteText("links/p.top", Link("bits DoubleType 6\n", "Bits", "100 % n", "bits"));
    WriteText("links/q.top", Link("bits DoubleType 6\n", "Other", "q", "3"));
    const ProgramResult printed = Photrak("params Bits links/p.top");
    ASSERT_EQ(printed.status, 0) << printed.error;
    EXPECT_TRUE(printed.out.starts_with(
        "COMPONENT Bits PseudoRandomBinarySequenceGenerator\nNOTE 100 % n\n\nPARAM "))
        << printed.out;
    const ProgramResult saved = Photrak("params Bits links/p.top -o own");
    ASSERT_EQ(saved.status, 0) << saved.error;
    EXPECT_TRUE(saved.out.ends_with("/own.prm\n")) << saved.out;
    EXPECT_EQ(FileText("own.prm"), printed.out);

    std::string large = printed.out;
    large.replace(large.find("VALUE bits"), 10, "VALUE bits*1e6");
    WriteText("large.prm", large);
    // The last file counts; what it limits is a warning.
    const auto check = [](const std::string& options) {
        return Photrak("check --strict " + options + " links/q.top");
    };
    const ProgramResult limited =
        check("--load-params Other=own.prm --load-params Other=large.prm");
    EXPECT_EQ(limited.status, 2) << limited.error;
    EXPECT_NE(limited.error.find(
                  "large.prm:21: P1214: component 'Other', parameter 'patternLength': 6e+06"),
              std::string::npos)
        << limited.error;
    const ProgramResult run =
        Photrak("run --no-commands --load-params Other=own.prm --set bits=4 links/q.top");
    EXPECT_EQ(run.status, 0) << run.error;
    EXPECT_EQ(Table("links/phtmproot%s_bin.sig").size(), 16u) << run.out;

    const struct {
        const char *option, *expected;
    } faults[] = {{"Other=none.prm", "Cannot open file to load parameters."},
                  {"Nobody%s=own.prm", "no component 'Nobody%s'"},
                  {"Plot%n=own.prm", "Error: Parameter file model type doesn't match component"}};
    for (const auto& row : faults) {
        for (const std::string command : {"check ", "run --no-commands "}) {
            const ProgramResult result =
                Photrak(command + "--load-params " + row.option + " links/q.top");
            EXPECT_EQ(result.status, 1) << row.option;
            EXPECT_NE(result.error.find(row.expected), std::string::npos) << result.error;
        }
    }
}

}  // namespace
}  // namespace photrak::test

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
    const ProgramResult result = Photrak(GetParam().arguments);
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
                      UsageRow{"fly away", 64, "unknown command 'fly'"},
                      UsageRow{"run --warp x.top", 64, "unknown option '--warp'"},
                      UsageRow{"run --set x x.top", 64, "--set wants NAME=EXPR"},
                      UsageRow{"run --plotting loud x.top", 64, "--plotting wants"},
                      UsageRow{"run a.top b.top", 64, "'b.top' is too many"},
                      UsageRow{"run --quiet=1 b.top", 64, "takes no value"},
                      UsageRow{"test a", 64, "wants a component and a topology file"},
                      UsageRow{"test a b.top c%s.top", 64, "'c%s.top' is too many"},
                      UsageRow{"test --prefix p a b.top", 64, "unknown option '--prefix'"},
                      UsageRow{"test --help", 0, "photrak test [options] COMPONENT FILE.top"},
                      UsageRow{"test -- -a missing.top", 1, "missing.top"},
                      UsageRow{"run missing.top", 1, "missing.top"},
                      UsageRow{"run missing/dir/x.top", 1, "cannot enter"},
                      UsageRow{"link.top", 1, "no workbench"},
                      UsageRow{"models", 0, "PseudoRandomBinarySequenceGenerator"},
                      UsageRow{"models PseudoRandomBinarySequenceGenerator", 0, "patternLength"},
                      UsageRow{"models Warp%s", 1, "no model 'Warp%s'"}));

/// A sequence generator on node 1 and a plot, with texts put in place.
std::string Link(const std::string& variables, const std::string& name, const std::string& note,
                 const std::string& length) {
    return "NOTE " + note + "\nBEGINVARIABLES\n" + variables + "ENDVARIABLES\n" +
           "NODEBEGIN 1 BinSigType\nENDNODE\n"
           "COMPONENT " +
           name + " PseudoRandomBinarySequenceGenerator\nNOTE " + note +
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

TEST(CommandLine, SymbolsThatGrowWithoutEndAreRefusedAtOnce) {
    const TempDir directory;
    std::string variables = "self DoubleType self + 1\n";
    for (char c = 'a'; c < 'z'; ++c) {
        const std::string next(1, static_cast<char>(c + 1));
        variables += std::string("v") + c + " DoubleType v" + next + " + v" + next + "\n";
    }
    for (const char* length : {"va", "self"}) {
        WriteText("g.top", Link(variables + "vz DoubleType 1\n", "Bits", "", length));
        const ProgramResult result = Photrak("run --no-commands g.top");
        EXPECT_NE(result.error.find("'patternLength' value cannot be evaluated"), std::string::npos)
            << result.error;
    }
}

/// A dozen faults in one file: each is told with its own text, and nothing of them hides another.
TEST(CommandLine, CheckTellsEveryFault) {
    const TempDir directory;
    const std::string head = "NOTE\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\n";
    const std::string generator = " PseudoRandomBinarySequenceGenerator\n" + head;
    WriteText("f.top",
              "FLY away\n"
              "BEGINVARIABLES\nv ArrayType 1\nENDVARIABLES\n"
              "NODEBEGIN 1 BinSigType\nENDNODE\nNODEBEGIN 1 OpSigType\nENDNODE\n"
              "NODEBEGIN 2 OddSigType\nENDNODE\n"
              "NODEBEGIN 3 BinSigType\nSIGNALSAVEMODE Never\nENDNODE\n"
              "COMPONENT\n"
              "COMPONENT a Warp\n" +
                  head +
                  "INPUTFROM 0\nOUTPUTTO 1\nENDCOMPONENT\n"
                  "COMPONENT b" +
                  generator +
                  "INPUTTO 0\nOUTPUTTO 1\nENDCOMPONENT\n"
                  "COMPONENT c" +
                  generator +
                  "INPUTFROM 0\nOUTPUTAT 1\nENDCOMPONENT\n"
                  "COMPONENT d" +
                  generator +
                  "INPUTFROM 0 4 5\nOUTPUTTO 1\nENDCOMPONENT\n"
                  "COMPONENT e" +
                  generator +
                  "INPUTFROM 0\nOUTPUTTO 6\n"
                  "PARAM patternLength float\nVALUE 1\nENDPARAM\nENDCOMPONENT\n"
                  "COMPONENT g" +
                  generator +
                  "INPUTFROM 0\nOUTPUTTO 7\n"
                  "PARAM patternLength IntType\nVALUE nowhere\nENDPARAM\nENDCOMPONENT\n"
                  "COMPONENT h" +
                  generator +
                  "INPUTFROM 0\nOUTPUTTO 8\n"
                  "PARAM patternLength IntType\nVALUE 99\nENDPARAM\nENDCOMPONENT\n"
                  "COMPONENT i SignalPlot\n" +
                  head +
                  "INPUTFROM 9\nOUTPUTTO 0\nENDCOMPONENT\n"
                  "COMPONENT j" +
                  generator + "INPUTFROM 0\n");
    const ProgramResult result = Photrak("check f.top");
    EXPECT_EQ(result.status, 1);
    for (const char* text :
         {"I do not understand the following keyword: FLY", "variable cannot be type ArrayType",
          "node signaltype conflicts in node 1", "node signaltype cannot be type OddSigType",
          "node signalsavemode cannot be Never", "component name and type missing",
          "Cannot create component 'a' of model type 'Warp'", "Error in Component INPUT_FROM field",
          "Error in Component OUTPUTTO field", "in d input or output node counts", "'e'",
          "'patternLength' value cannot be evaluated",
          "'patternLength' greater than maximum value; change to 64", "'i'", "'j'", "f.top:3"}) {
        EXPECT_NE(result.error.find(text), std::string::npos) << text << " is missing in\n"
                                                              << result.error;
    }
}

TEST(CommandLine, StrictTurnsWarningsIntoAStatus) {
    const TempDir directory;
    WriteText("w.top", Link("", "Bits", "", "nowhere"));
    EXPECT_EQ(Photrak("run --no-commands w.top").status, 0);
    EXPECT_EQ(Photrak("run --no-commands --strict w.top").status, 2);
}

}  // namespace
}  // namespace photrak::test

// What people mistype in a topology or on the command line, one row each, on one link: the program
// refuses to start, names the line, what stands there and what was probably meant, once.
#include <algorithm>

#include "base/text.h"
#include "files/diagnostics.h"
#include "link/example_run.h"

namespace photrak::test {
namespace {

struct TypingError {
    const char *right, *typed;  // in the file
    const char* code;
    const char* suggestion;   // empty if there is none
    const char* counts = "";  // part of the message
    int linesDown = 0;        // from the first line of `typed` to the one that is named
};

// clang-format off
constexpr TypingError inTheFile[] = {
    // Keywords and blocks.
    {"\nSIMOPTIONS", "\nSIMOPTION", "P1002", "SIMOPTIONS", "", 1},
    {"BEGINVARIABLES", "BEGINVARIABLE", "P1002", "BEGINVARIABLES"},
    {"NODEBEGIN 3", "NODE 3", "P1002", "NODEBEGIN"},
    {"COMPONENT Fiber", "COMPONNENT Fiber", "P1002", "COMPONENT", "the line is skipped"},
    {"ENDVARIABLES", "ENDVARIABLE", "P1003", "ENDVARIABLES"},
    {"ENDVARIABLES\n", "", "P1003", "", "ENDVARIABLES is missing", 1},
    {"ENDSIMOPTIONS", "ENDSIMOPTION", "P1003", "ENDSIMOPTIONS"},
    {"ENDSIMOPTIONS\n", "", "P1003", "", "ENDSIMOPTIONS is missing", 1},
    {"ENDNODE\n\nNODEBEGIN 4", "ENDNOD\n\nNODEBEGIN 4", "P1002", "ENDNODE"},
    {"ENDNODE\n\nNODEBEGIN 4", "NODEBEGIN 4", "P1003", "", "ENDNODE is missing"},
    {"ENDCOMPONENT\n\nCOMPONENT Laser", "COMPONENT Laser", "P1003", "", "'Fiber': ENDCOMPONENT is missing"},
    {"ENDCOMPONENT\n\nCOMPONENT Laser", "ENDCOMPONET\n\nCOMPONENT Laser", "P1003", "ENDCOMPONENT"},
    {"ENDPARAM\n\nPARAM loss", "PARAM loss", "P1003", "", "'distance': ENDPARAM is missing"},
    {"ENDPARAM\n\nPARAM loss", "ENDPARM\n\nPARAM loss", "P1003", "ENDPARAM"},
    {"PARAM loss", "PARM loss", "P1002", "PARAM"},
    // Options and sweeps of the file.
    {"SpecifiedValueMode", "SpecifiedMode", "P1004", "SpecifiedValueMode", "the line is skipped"},
    {"NUMRUNSTODO 0", "NUMRUNSTODO O", "P1005", "", "0 counts"},
    {"NUMRUNSTODO 0", "NUMRUNTODO 0", "P1002", "NUMRUNSTODO"},
    {"SAVEPARAMS FALSE", "SAVEPARAMS True", "P1004", "TRUE", "FALSE counts"},
    {"SIGSAVEMODE DeleteIntermediate", "SIGSAVEMODE DeleteIntermediates", "P1004", "DeleteIntermediate"},
    {"PLOTTING UsePlotIconSettings", "PLOTTING PlotToFileOnly", "P1004", "PlotToFilesOnly", "DisplayAllPlots counts"},
    {"INNERSWEEPVARIABLE received", "INNERSWEEPVARIABLE recieved", "P1306", "received"},
    {"INNERSWEEPVARIABLE", "INERSWEEPVARIABLE", "P1002", "INNERSWEEPVARIABLE"},
    {"INNERSWEEPSTARTVAL -24", "INNERSWEEPSTARTVAL -24 dBm", "P1006", "", "'-24' counts"},
    {"INNERSWEEPSTOPVAL -18", "INNERSWEEPSTOPVAL -l8", "P1209", ""},
    {"INNERSWEEPSTEPVAL 1", "INNERSWEEPSTEPVAL -1", "P1307", ""},
    // Variables.
    {"received DoubleType -20", "received DoubleType 2o", "P1207", "", "0 counts"},
    {"received DoubleType -20", "received Double -20", "P1301", "DoubleType"},
    {"received DoubleType -20", "received DoubleType -20\nreceived DoubleType -10", "P1304", "", "'-10' counts", 1},
    {"received DoubleType -20", "received DoubleType -20*pi/pi\npi DoubleType 3", "P1303", "", "3.14159 counts", 1},
    // Nodes.
    {"NODEBEGIN 3 OpSigType", "NODEBEGIN 3 OpSignalType", "P1004", "OpSigType"},
    {"NODEBEGIN 3 OpSigType", "NODEBEGIN 4 OpSigType", "P1008", "", "node 4 is described twice", 4},
    {"NODEBEGIN 3 OpSigType", "NODEBEGIN III OpSigType", "P1005", ""},
    {"SIGNALSAVEMODE DeleteIntermediate", "SIGNALSAVEMODE Delete", "P1004", "DeleteIntermediate"},
    {"INPUTFROM 4\n", "INPUTFROM 4x\n", "P1005", "", "4 counts"},
    {"INPUTFROM 4\n", "INPUTFROM 4 6\n", "P1104", "", "2 nodes for 1 inputs"},
    {"INPUTFROM 4\n", "INPUTFORM 4\n", "P1002", "INPUTFROM"},
    {"NUMOUTPUTS 1\nINPUTFROM 4", "INPUTFROM 4", "P1007", "", "NUMOUTPUTS is missing"},
    // Blocks.
    {"Fiber NonlinearFiberModel", "Fiber NonLinearFiberModel", "P1101", "NonlinearFiberModel"},
    {"Fiber NonlinearFiberModel", "Long Fiber NonlinearFiberModel", "P1101", "FiberDelay"},
    {"Laser CWLaserModel", "Laser CWLaser", "P1101", "CWLaserModel"},
    {"COMPONENT Modulator Modulator", "COMPONENT Laser2", "P1103", "", "has no model"},
    // Parameters: names, types, lines.
    {"PARAM distance", "PARAM distence", "P1201", "distance", "the default 80000 of 'distance' counts"},
    {"PARAM distance", "PARAM Distance", "P1201", "distance"},
    {"PARAM distance", "PARAM length", "P1201", ""},
    {"PARAM loss DoubleType", "PARAM loss DoublType", "P1202", "DoubleType"},
    {"PARAM loss DoubleType", "PARAM loss IntType", "P1203", "DoubleType"},
    {"PARAM driveType EnumType", "PARAM driveType StringType", "P1203", "EnumType"},
    {"VALUE 0.2", "VALEU 0.2", "P1204", "VALUE", "the default"},
    {"VALUE 0.2", "VALUE 0.2\nVALUE 0.25", "P1205", "", "the later one counts", 1},
    {"VALUE 0.2", "VALUE 0.2\nUNITS cm", "P1212", "", "", 1},
    {"PARAM loss DoubleType", "PARAM distance DoubleType", "P1205", "", "the later one counts"},
    {"PROBDIST NoProbDist", "PROBDIST GaussProbDist", "P1004", "GausProbDist", "NoProbDist counts"},
    {"VALUE PRBS", "VALUE prbs", "P1210", "PRBS", "none of PRBS, alternating"},
    {"VALUE on_off_ramp", "VALUE on-off-ramp", "P1210", "on_off_ramp"},
    // Parameters: values.
    {"VALUE 80e3", "VALUE", "P1206", ""},
    {"VALUE 80e3", "VALUE 80 km", "P1208", "", "'km' is a unit and numbers take none: write 80000 (in m); 0 counts"},
    {"VALUE 30e-12", "VALUE 30ps", "P1208", "", "write 3e-11 (in s)"},
    {"VALUE 12e-3", "VALUE 12 mW", "P1208", "", "write 0.012 (in W)"},
    {"VALUE 12e-3", "VALUE 10 dBm", "P1208", "", "write 0.01 (in W)"},
    {"VALUE 10e9", "VALUE 10G", "P1208", "", "'G' is an SI suffix and numbers take none: write 1e+10"},
    {"VALUE 1550e-9", "VALUE 1,55e-6", "P1207", "", "write 1.55e-6"},
    {"VALUE 1550e-9", "VALUE 2*775E-9", "P1207", "", "small e"},
    {"VALUE 80e3", "VALUE 2(40e3)", "P1207", ""},
    {"VALUE 80e3", "VALUE (40e3+4e4", "P1207", "", "parenthesis"},
    {"VALUE 80e3", "VALUE 80e3/0", "P1207", "", "divides by zero"},
    {"VALUE 80e3", "VALUE sqr(4)*4e4", "P1209", "sqrt"},
    {"VALUE received", "VALUE recieved", "P1209", "received"},
    {"PARAM patternLength IntType\nVALUE 7", "PARAM patternLength IntType\nVALUE 6.9", "P1211", "", "6 counts", 1},
    {"STDDEV 0", "STDDEV O.1", "P1209", "", "0 counts"},
};
// clang-format on

constexpr struct {
    const char *options, *code, *suggestion, *part;
} onTheCommandLine[] = {
    {"--set recieved=-19", "P1305", "received", "no parameter reads this symbol"},
    {"--set c=3e8", "P1305", "", "built-in value"},
    {"--set received=-19dBm", "P1208", "", "'dBm' is a unit"},
    {"--inner recieved=-24:-18:1", "P1306", "received", "--inner"},
    {"--inner received=-24:-18:-1", "P1307", "", "does not lead from -24 to -18"},
    {"--outer power=1:2:1", "P1306", "", "--outer"},
};

class TypingErrors : public ExampleRun {
  protected:
    /// One finding of that code, and no run.
    static void ExpectRefused(const std::string& options, const std::string& place,
                              const std::string& code, const std::string& suggestion,
                              const std::string& part) {
        const ProgramResult result =
            Photrak("scan --no-commands --quiet --runs 0 " + options + " typed.top");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.error.find("photrak: error: " + place + ": " + code + ": "),
                  std::string::npos)
            << result.error;
        EXPECT_NE(result.error.find("typed.top: 1 fault, nothing was run"), std::string::npos)
            << result.error;
        EXPECT_NE(result.error.find(part), std::string::npos) << result.error;
        const std::string meant = "did you mean '" + suggestion + "'?";
        EXPECT_EQ(
            result.error.find(suggestion.empty() ? "did you mean" : meant) != std::string::npos,
            !suggestion.empty())
            << result.error;
    }
};

TEST_F(TypingErrors, InTheFileAreRefusedWithLineAndSuggestion) {
    static_assert(std::size(inTheFile) + std::size(onTheCommandLine) >= 60);
    const std::string right = FileText("ber-power.top");
    for (const TypingError& row : inTheFile) {
        SCOPED_TRACE(std::string(row.right) + " typed as " + row.typed);
        std::string typed = right;
        const std::size_t place = right.find(row.right);
        ASSERT_NE(place, std::string::npos);
        typed.replace(place, std::string(row.right).size(), row.typed);
        WriteText("typed.top", typed);
        const long line =
            1 + std::count(typed.begin(), typed.begin() + static_cast<long>(place), '\n');
        ExpectRefused("", "typed.top:" + std::to_string(line + row.linesDown), row.code,
                      row.suggestion, row.counts);
    }
}

TEST_F(TypingErrors, OnTheCommandLineAreRefusedWithSuggestion) {
    WriteText("typed.top", FileText("ber-power.top"));
    for (const auto& row : onTheCommandLine) {
        SCOPED_TRACE(row.options);
        const std::string options = row.options;
        const bool sweeps = options.find("--set") == std::string::npos;
        ExpectRefused(options, sweeps ? options.substr(0, 7) : "--set", row.code, row.suggestion,
                      row.part);
    }
}

/// What a run would find out by itself, or never.
TEST_F(TypingErrors, OfWiresAndFilesAreToldByACheck) {
    const struct {
        const char *right, *typed, *told;
        int status;
    } rows[] = {
        {"OUTPUTTO 5", "OUTPUTTO 6", "P1401: node 6 is driven by output 1 of '", 1},
        {"INPUTFROM 3 2", "INPUTFROM 2 3", "P1402: component 'Modulator': input port 1 takes OpSig",
         1},
        {"INPUTFROM 6", "INPUTFROM 66", "P1403: component 'Receiver': input port 1 is not wired",
         0},
        {"INPUTFROM 3 2", "INPUTFROM 3", "P1403: component 'Modulator': input port 2 stands on no",
         1},
        {"COMPONENT Receiver", "COMPONENT Power", "P1105: several components have the name", 0},
        {"INPUTFROM 4\n", "INPUTFROM 5\n", "P1404: ", 1},
        {"VALUE 12e-3", "VALUE -1",
         "P1214: component 'Laser', parameter 'peakPower': -1 W is beyond", 0},
        {"received DoubleType", "idle DoubleType 1\nreceived DoubleType", "P1308: variable 'idle'",
         0},
        {"PARAM patternType",
         "PARAM filename StringType\nVALUE none%s.txt\nENDPARAM\nPARAM patternType",
         "P1107: component 'Bits', parameter 'filename': there is no file 'none%s.txt'", 0},
    };
    const std::string right = FileText("ber-power.top");
    EXPECT_EQ(Photrak("check ber-power.top").out, "ber-power.top: 8 components, no faults\n");
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.right) + " typed as " + row.typed);
        std::string typed = right;
        typed.replace(right.find(row.right), std::string(row.right).size(), row.typed);
        WriteText("typed.top", typed);
        const ProgramResult result = Photrak("check typed.top");
        EXPECT_EQ(result.status, row.status);
        EXPECT_NE(result.error.find(row.told), std::string::npos) << result.error;
        EXPECT_EQ(std::filesystem::exists("ber-power.ber"), false);
    }
}

/// The place is in the file of the inside; the name is the whole path to the block.
/// The tag that tells the points of a scan apart is the same for both, and so no help.
TEST_F(TypingErrors, ThatLoseResultsAreRefusedWithBothBlocks) {
    const auto block = [](std::string_view type, std::string_view name, std::string_view values) {
        return Concat(
            "COMPONENT ", name, " ", type, "\nNOTE\nICON none 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\n",
            type == "LoadSigBlock" ? "INPUTFROM 0\nOUTPUTTO 9\n" : "INPUTFROM 6\nOUTPUTTO 0\n",
            values, "ENDCOMPONENT\n");
    };
    const std::string received = "PARAM FilenameRoot StringType\nVALUE received\nENDPARAM\n";
    const std::string noPlot = "PARAM Plot EnumType\nVALUE No\nENDPARAM\n";
    const std::string noRows = "PARAM SaveAllData EnumType\nVALUE NO\nENDPARAM\n";
    const auto file = [](std::string_view name) {
        return Concat("PARAM FileName StringType\nVALUE ", name, "\nENDPARAM\n");
    };
    const std::string save = block("SaveSigBlock", "Save", file("x"));
    const std::string_view saved =
        "P1110: component 'Save': saves onto 'eye-x.sgd', which component "
        "'Load' reads";
    WriteText("eye-x.sgd", "");
    std::filesystem::create_symlink("eye-x.sgd", "alias.sgd");
    const struct {
        std::string blocks;
        std::string_view told;  // empty: nothing is refused
    } rows[] = {
        {block("EyeDiagram", "Again", received),
         "P1109: component 'Received': writes 'eye-received.pce', as component 'Again' does"},
        {block("EyeDiagram", "Again", received + noPlot), ""},
        {block("SignalPlot", "received", ""), ""},
        {block("SignalPlot", "a", received) + block("ChirpPlot", "b", received),
         "P1109: component 'b': writes 'eye-received.pcs', as component 'a' does"},
        {block("BERTester", "a", received + noRows) + block("BERTester", "b", received),
         "P1109: component 'b': writes 'received.ber', as component 'a' does"},
        {save + block("LoadSigBlock", "Load", file("eye-x.sgd")), saved},
        {save + block("LoadSigBlock", "Load", file("alias.sgd")), saved},
        {save + block("LoadSigBlock", "Load", file(directory_.Path() + "eye-x.sgd")), saved},
    };
    const std::string right = FileText("eye-10g.top");
    const std::size_t at = right.find("COMPONENT Arrived");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.told);
        WriteText("lost.top", Concat(right.substr(0, at), row.blocks, right.substr(at)));
        EXPECT_NE(Photrak("check lost.top").error.find(row.told), std::string::npos);
        const ProgramResult run = Photrak("run lost.top");
        EXPECT_EQ(run.status, row.told.empty() ? 0 : 1) << run.error;
        EXPECT_NE(run.error.find(row.told), std::string::npos) << run.error;
        EXPECT_EQ(std::filesystem::remove("eye-sent.eye"), row.told.empty());
        // Into another folder nothing is saved over an input.
        const std::string apart = Photrak("run lost.top --out lost").error;
        EXPECT_EQ(apart.find("P1110"), std::string::npos) << apart;
        EXPECT_EQ(apart.find("P1109") != std::string::npos, row.told.starts_with("P1109"));
        std::filesystem::remove_all("lost");
    }
}

TEST_F(TypingErrors, InsideSuperBlocksAreNamedByTheirPath) {
    const std::string span = SourceDir() + "/catalogue/superblocks/AmplifiedSpan";
    for (const char* ending : {".top", ".dts"}) {
        std::filesystem::copy_file(span + ending, std::string("AmplifiedSpan") + ending);
    }
    std::string text = FileText("AmplifiedSpan.top");
    text.replace(text.find("PARAM distance"), 14, "PARAM distanse");
    text.replace(text.find("SIMMODE Spec"), 12, "SIMMODE Spex");
    WriteText("AmplifiedSpan.top", text);
    const ProgramResult result = Photrak("run --no-commands --quiet nested.top");
    EXPECT_EQ(result.status, 1);
    for (const char* told :
         {": P1201: component 'Line:First:Fiber': ", ": P1004: in 'Line:First': SIMMODE",
          "nested.top: 2 faults, nothing was run"}) {
        EXPECT_NE(result.error.find(told), std::string::npos) << result.error;
    }
    EXPECT_FALSE(std::filesystem::exists("log.txt"));
}

/// What a run finds out comes with the place, the point of the scan, and a count of its repeats.
TEST_F(TypingErrors, WarningsOfARunAreToldOnceWithValueAndPoint) {
    const ProgramResult result =
        Photrak("scan --no-commands --quiet --inner received=80:320:60 ber-power.top");
    EXPECT_EQ(result.status, 0);
    for (const char* told :
         {"photrak: warning: component 'Power': parameter 'AvePowerOut': 140 dBm is above the "
          "maximum of 100 dBm; 100 dBm counts (ber-power.top:187) [received = 140]\n",
          "photrak: warning: Optical Normalizer 'Power' applied a gain of 113.157 dB [received = "
          "140]\n",
          "photrak: note: 3 more times: Optical Normalizer 'Power'"}) {
        EXPECT_NE(result.error.find(told), std::string::npos) << result.error;
    }
}

/// The guide to the format holds: its blocks have no faults, or the one that their fence names.
TEST_F(TypingErrors, OfTheGuideToTopologiesAreThoseThatItSays) {
    std::istringstream lines(FileText(SourceDir() + "/docs/formats/topology.md"));
    const std::string fence = "```topology";
    std::string block, code;
    bool isInside = false;
    int checked = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(fence)) {
            isInside = true;
            code = line.substr(std::min(line.size(), fence.size() + 1));
            block.clear();
        } else if (isInside && line == "```") {
            isInside = false;
            SCOPED_TRACE(block);
            WriteText("guide.top", block);
            const ProgramResult result =
                Photrak("run --no-commands --quiet --plotting none guide.top");
            EXPECT_EQ(result.error.find("photrak: error: guide.top:") != std::string::npos,
                      !code.empty());
            EXPECT_NE(result.error.find(code), std::string::npos) << result.error;
            ++checked;
        } else if (isInside) {
            block += line + "\n";
        }
    }
    EXPECT_GE(checked, 9);
}

/// A page for each code, and a code that is no page's.
TEST_F(TypingErrors, EveryCodeIsExplained) {
    const ProgramResult list = Photrak("explain");
    EXPECT_EQ(list.status, 0);
    std::string former;
    for (const Diagnostic& row : Diagnostics()) {
        SCOPED_TRACE(row.code);
        EXPECT_LT(former, row.code);
        former = row.code;
        EXPECT_NE(list.out.find(former + "  "), std::string::npos);
        EXPECT_EQ(former.size(), 5u);
        for (const std::string_view line : row.page) EXPECT_TRUE(line.ends_with('.')) << line;
        EXPECT_EQ(FindDiagnostic(row.code), &row);
    }
    const ProgramResult page = Photrak("explain p1208");
    EXPECT_EQ(std::count(page.out.begin(), page.out.end(), '\n'), 4) << page.out;
    EXPECT_EQ(Photrak("explain P9999").status, 1);
}

}  // namespace
}  // namespace photrak::test

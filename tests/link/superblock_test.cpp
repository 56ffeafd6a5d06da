// Topologies as blocks of others, through the real program: the same link flat and nested must give
// the same numbers in every digit, and faults inside are named by their path.
#include <chrono>

#include "link/example_run.h"
#include "link/run_program.h"
#include "support/paths.h"

namespace photrak::test {
namespace {

struct BlockText {
    std::string name, type, inputs, outputs, parameters;
};

std::string Number(const std::string& name, const std::string& value,
                   const std::string& more = "STDDEV 0\nPROBDIST NoProbDist\n") {
    return "PARAM " + name + " DoubleType\nVALUE " + value + "\n" + more + "ENDPARAM\n";
}

std::string Port(const std::string& type = "OpSigType") {
    return "PARAM portNumber IntType\nVALUE 1\nENDPARAM\nPARAM signalType EnumType\nVALUE " + type +
           "\nENDPARAM\n";
}

std::size_t Words(const std::string& text) {
    std::istringstream stream(text);
    return static_cast<std::size_t>(std::distance(std::istream_iterator<std::string>(stream), {}));
}

std::string Topology(const std::string& head, const std::vector<BlockText>& blocks) {
    std::string text = head;
    for (const BlockText& b : blocks) {
        text += "COMPONENT " + b.name + " " + b.type + "\nNOTE\nICON x 0 0\nNUMINPUTS " +
                std::to_string(Words(b.inputs)) + "\nNUMOUTPUTS " +
                std::to_string(Words(b.outputs)) + "\nINPUTFROM " + b.inputs + "\nOUTPUTTO " +
                b.outputs + "\n" + b.parameters + "ENDCOMPONENT\n";
    }
    return text;
}

std::string Variables(const std::string& lines) {
    return "BEGINVARIABLES\n" + lines + "ENDVARIABLES\n";
}

const std::string sender = "PARAM patternLength IntType\nVALUE 5\nENDPARAM\n";

/// Bits, light, what stands between, receiver and tester. The launched power draws in statistical
/// runs.
std::vector<BlockText> Link(const std::vector<BlockText>& between) {
    std::vector<BlockText> blocks = {
        {"Bits", "PseudoRandomBinarySequenceGenerator", "0", "1", sender},
        {"Drive", "ElectricalSignalGenerator", "1", "2", ""},
        {"Laser", "CWLaserModel", "0", "3",
         Number("peakPower", "2e-3", "STDDEV 2e-4\nPROBDIST GausProbDist\n")},
        {"Modulator", "Modulator", "3 2", "4", ""},
        {"Receiver", "ReceiverModel", "6", "7", ""},
        {"Tester", "BERTester", "7 1", "0",
         "PARAM FilenameRoot StringType\nVALUE out\nENDPARAM\n"}};
    blocks.insert(blocks.end(), between.begin(), between.end());
    return blocks;
}

std::vector<BlockText> Span(const std::string& from, const std::string& over, const std::string& to,
                            const std::string& fiber, const std::string& amplifier) {
    return {{fiber, "NonlinearFiberModel", from, over, Number("distance", "length")},
            {amplifier, "OpticalAmplifier", over, to, Number("gain", "0.2*length/1000")}};
}

class SuperBlocks : public ::testing::Test {
  protected:
    SuperBlocks() {
        // Inner: one span. Middle: the same span as a block. "length" is handed down twice.
        std::vector<BlockText> span = Span("1", "2", "3", "Fiber", "Amplifier");
        span.push_back({"In", "InBlock", "0", "1", Port()});
        span.push_back({"Out", "OutBlock", "3", "0", ""});
        WriteText("span.top", Topology(Variables("length DoubleType 1\n"), span));
        Define("span.top");
        WriteText("middle.top",
                  Topology(Variables("length DoubleType 2\n"),
                           {{"In", "InBlock", "0", "1", Port()},
                            {"Span", "SuperBlock span", "1", "2", Number("length", "length")},
                            {"Out", "OutBlock", "2", "0", ""}}));
        Define("middle.top");
        const std::string head = Variables("length DoubleType 33333.3333333333\n") + options_;
        std::vector<BlockText> flat = Span("4", "5", "6", "Fiber", "Amplifier");
        WriteText("flat.top", Topology(head, Link(flat)));
        WriteText("nested.top", Topology(head, Link({{"Line", "SuperBlock middle", "4", "6",
                                                      Number("length", "length")}})));
    }
    static void Define(const std::string& file) {
        const ProgramResult result = Photrak("superblock " + file);
        ASSERT_EQ(result.status, 0) << result.error;
    }
    static std::string Bdt(const std::string& command) {
        std::filesystem::remove("out.bdt");
        const ProgramResult result = Photrak(command);
        EXPECT_EQ(result.status, 0) << result.error;
        return FileText("out.bdt");
    }

    TempDir directory_;
    const std::string options_ = "SIMOPTIONS\nSCANMETA1 _i\nRUNMETA _r\nENDSIMOPTIONS\n";
};

TEST_F(SuperBlocks, NestedLinksGiveTheFlatOnesNumbersInEveryDigit) {
    const std::string sweep = "scan --quiet --inner length=1e4:7e4:2.3e4 --runs 3 ";
    for (const std::string& command : {std::string("run --quiet "), sweep}) {
        const std::string flat = Bdt(command + "flat.top");
        EXPECT_EQ(Bdt(command + "nested.top"), flat) << command;
        EXPECT_NE(flat.find('\n'), std::string::npos);
    }
    const std::string log = FileText("log.txt");
    EXPECT_NE(log.find("Simulating component Line:Span:'Fiber' of type"), std::string::npos);
}

TEST_F(SuperBlocks, LoopsSendTheLightThroughABlock) {
    const auto looped = [](const std::vector<BlockText>& inside) {
        std::vector<BlockText> blocks = inside;
        blocks.push_back(
            {"Start", "LoopBeginBlock", "4", "8", "PARAM NumReps IntType\nVALUE 3\nENDPARAM\n"});
        blocks.push_back({"End", "LoopEndBlock", "9", "6", ""});
        return Link(blocks);
    };
    const std::string head = Variables("length DoubleType 2e4\n");
    WriteText("flat.top", Topology(head, looped(Span("8", "10", "9", "Fiber", "Amplifier"))));
    WriteText("nested.top", Topology(head, looped({{"Line", "SuperBlock middle", "8", "9",
                                                    Number("length", "length")}})));
    EXPECT_EQ(Bdt("run --quiet nested.top"), Bdt("run --quiet flat.top"));
}

TEST_F(SuperBlocks, ResultsInsideCarryThePathAndTheTagsOfTheLoopsOutside) {
    std::string span = FileText("span.top");
    span += Topology(
        "", {{"Look", "SignalPlot", "2", "0", "PARAM Plot EnumType\nVALUE Save\nENDPARAM\n"}});
    WriteText("span.top", span);
    const ProgramResult result =
        Photrak("scan --quiet --prefix p_ --inner length=1e4:2e4:1e4 nested.top");
    ASSERT_EQ(result.status, 0) << result.error;
    for (const char* name : {"p_Line_i1_Span_Look.pcs", "p_Line_i2_Span_Look.pcs"}) {
        EXPECT_NE(result.out.find(name), std::string::npos) << result.out;
        EXPECT_TRUE(std::filesystem::exists(name)) << name;
    }
}

TEST_F(SuperBlocks, FaultsInsideAreNamedByTheirPath) {
    std::string span = FileText("span.top");
    const std::string gain = "0.2*length/1000";
    span.replace(span.find(gain), gain.size(), "1e4");
    span.replace(span.find("VALUE length"), 12, "VALUE 1e-3 ");
    WriteText("span.top", span + Topology("", {{"Bad", "Modulator", "2 77", "78", ""}}));
    const ProgramResult check = Photrak("check nested.top");
    EXPECT_NE(check.error.find("Line:Span:Bad"), std::string::npos) << check.error;

    // A SuperBlock within itself, over two files.
    WriteText("span.top",
              Topology(Variables("length DoubleType 1\n"),
                       {{"In", "InBlock", "0", "1", Port()},
                        {"Again", "SuperBlock middle", "1", "2", Number("length", "length")},
                        {"Out", "OutBlock", "2", "0", ""}}));
    for (const char* command : {"check nested.top", "run --quiet nested.top"}) {
        const ProgramResult cycle = Photrak(command);
        EXPECT_EQ(cycle.status, 1) << command;
        EXPECT_NE(cycle.error.find("middle.top -> span.top -> middle.top"), std::string::npos)
            << cycle.error;
    }
}

TEST_F(SuperBlocks, ParametersOfEveryTypeGoDownExactlyAndDefaultsFollowThem) {
    const std::string types =
        "a DoubleType 2*d\nch CharType q\nd DoubleType 1e3\nn IntType 4\ns StringType x\n"
        "w EnumType red\nz ComplexType 1 2\n";
    WriteText("span.top", Topology(Variables(types), {{"In", "InBlock", "0", "1", Port()},
                                                      {"Delay", "FiberDelay", "1", "2",
                                                       Number("delay", "(a+n)*1e-15")},
                                                      {"Out", "OutBlock", "2", "0", ""}}));
    Define("span.top");
    // "a" keeps its default, which names a variable that only the inner topology has.
    const std::string set =
        Number("d", "k/3") +
        "PARAM n IntType\nVALUE 7.9\nENDPARAM\nPARAM s StringType\nVALUE %s%n\n" +
        "ENDPARAM\nPARAM z ComplexType\nVALUE zz\nENDPARAM\nPARAM ch CharType\nVALUE "
        "cc\nENDPARAM\n";
    WriteText("middle.top",
              Topology(Variables("cc CharType y\nk DoubleType 1\nzz ComplexType 0.1 -2\n"),
                       {{"In", "InBlock", "0", "1", Port()},
                        {"Span", "SuperBlock span", "1", "2", set},
                        {"Out", "OutBlock", "2", "0", ""}}));
    Define("middle.top");
    WriteText("out.top", Topology("", {{"Laser", "CWLaserModel", "0", "1", ""},
                                       {"Line", "SuperBlock middle", "1", "2", Number("k", "1e4")},
                                       {"Keep", "SaveSigBlock", "2", "0", ""}}));
    const ProgramResult result = Photrak("run --quiet --strict --lenient out.top");
    ASSERT_EQ(result.status, 0) << result.error;
    // 2e4/3 + 7 fs, all 16 digits of it: "%g" would have left 6.67367e-12.
    const std::string signal = FileText("Keep.sgd");
    const std::string word = "startTime ";
    const std::size_t at = signal.find(word);
    ASSERT_NE(at, std::string::npos) << signal;
    EXPECT_NEAR(std::stod(signal.substr(at + word.size())), (2e4 / 3 + 7) * 1e-15, 1e-26);
}

TEST_F(SuperBlocks, CheckTellsWhatADefinitionNoLongerFits) {
    const std::string span = FileText("span.top");
    const auto warnings = [&](const std::string& from, const std::string& to) {
        std::string changed = span;
        changed.replace(changed.find(from), from.size(), to);
        WriteText("span.top", changed);
        const ProgramResult check = Photrak("check --strict nested.top");
        EXPECT_EQ(check.status, 2) << check.error;
        return check.error;
    };
    const struct {
        std::string from, to, told;
    } rows[] = {
        {"VALUE OpSigType", "VALUE BinSigType", "its ports differ"},
        {"length DoubleType 1\n", "length DoubleType 1\nlonger DoubleType 2\n",
         "lacks the parameter 'longer'"},
        {"length DoubleType 1\n", "lengths DoubleType 1\nlength1 DoubleType 1\n",
         "no variable has the name of its parameter 'length'"},
        {"length DoubleType 1\n", "length DoubleType 1\nlength DoubleType 3\n",
         "variable 'length' is declared twice"},
        {"length DoubleType 1\n", "length DoubleType 1\npi DoubleType 3\n",
         "variable 'pi' is hidden by the built-in value"},
        {"portNumber IntType\nVALUE 1", "portNumber IntType\nVALUE 2", "input port 1 is left out"},
    };
    for (const auto& row : rows) {
        const std::string text = warnings(row.from, row.to);
        EXPECT_NE(text.find(row.told), std::string::npos) << text;
        EXPECT_NE(text.find("'Line:Span'"), std::string::npos) << text;
    }
    // The inner blocks are looked at with the values that the outer ones hand down.
    WriteText("span.top", span);
    EXPECT_EQ(Photrak("check --strict nested.top").status, 0);
    const ProgramResult set = Photrak("check --strict --set length=1e12 nested.top");
    EXPECT_EQ(set.status, 2) << set.error;
    EXPECT_NE(set.error.find("Line:Span:Fiber"), std::string::npos) << set.error;
}

TEST_F(SuperBlocks, TestersInsideAreListedByTheirPathInStatisticalRunsToo) {
    std::vector<BlockText> inside;
    for (const BlockText& block : Link({})) {
        const bool ends = block.name == "Receiver" || block.name == "Tester";
        if (ends) inside.push_back(block);
    }
    inside.push_back({"Light", "InBlock", "0", "6", Port()});
    inside.push_back({"Sent", "InBlock", "0", "1",
                      "PARAM portNumber IntType\nVALUE 2\nENDPARAM\nPARAM signalType EnumType\n"
                      "VALUE BinSigType\nENDPARAM\n"});
    inside[0].parameters = Number("fe_tZ", "500", "STDDEV 3\nPROBDIST GausProbDist\n");
    WriteText("end.top", Topology("", inside));
    Define("end.top");
    std::vector<BlockText> outer = Link(Span("4", "5", "6", "Fiber", "Amplifier"));
    std::erase_if(outer, [](const BlockText& b) { return b.name == "Receiver"; });
    outer[4] = {"End", "SuperBlock end", "6 1", "0", ""};
    WriteText("ends.top", Topology(Variables("length DoubleType 1e4\n") + options_, outer));
    ASSERT_EQ(outer[4].name, "End");
    const ProgramResult result = Photrak("scan --quiet --runs 3 ends.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_NE(result.out.find("BER End:Tester: "), std::string::npos) << result.out;
    for (const char* name : {"phtmp_End_r1_out.bdt", "phtmp_End_r3_out.bdt"}) {
        EXPECT_NE(result.out.find(name), std::string::npos) << result.out;
    }
    const std::string log = FileText("log.txt");
    const std::size_t told = log.find("'End:Receiver' does not draw");
    ASSERT_NE(told, std::string::npos) << log;
    EXPECT_EQ(log.find("does not draw", told + 40), std::string::npos) << "once, not for each draw";
}

TEST_F(SuperBlocks, HostileLevelsEndWithAnError) {
    // Deeper than any run may nest, each level a file of its own.
    for (int level = 0; level < 14; ++level) {
        const std::string file = "deep" + std::to_string(level) + ".top";
        const std::string next = level == 0 ? "span" : "deep" + std::to_string(level - 1);
        WriteText(file, Topology("", {{"In", "InBlock", "0", "1", Port()},
                                      {"A", "SuperBlock " + next, "1", "2", ""},
                                      {"Out", "OutBlock", "2", "0", ""}}));
        Define(file);
    }
    WriteText("out.top", Topology("", {{"Laser", "CWLaserModel", "0", "1", ""},
                                       {"Line", "SuperBlock deep13", "1", "2", ""},
                                       {"Keep", "SaveSigBlock", "2", "0", ""}}));
    for (const char* command : {"check out.top", "run --quiet out.top"}) {
        const ProgramResult deep = Photrak(command);
        EXPECT_EQ(deep.status, 1) << command;
        EXPECT_NE(deep.error.find("nested more than 12 deep"), std::string::npos) << deep.error;
    }
    // The topology went away after its definition was written.
    std::filesystem::remove("span.top");
    for (const char* command : {"check nested.top", "run --quiet nested.top"}) {
        const ProgramResult gone = Photrak(command);
        EXPECT_EQ(gone.status, 1) << command;
        EXPECT_NE(gone.error.find("Line:Span"), std::string::npos) << gone.error;
    }
}

TEST_F(SuperBlocks, AnInBlockThatStandsAloneNamesItsPort) {
    EXPECT_EQ(Photrak("run --quiet --strict span.top").status, 2);
    const std::string log = FileText("log.txt");
    EXPECT_NE(log.find("component 'In': nothing stands at input port 1; "), std::string::npos)
        << log;
}

TEST_F(SuperBlocks, ModelsShowsTheBlocksInsideByTheirPath) {
    const std::string list = Photrak("models").out;
    EXPECT_NE(list.find("SuperBlock:AmplifiedSpan"), std::string::npos) << list;
    const std::string text = Photrak("models SuperBlock:middle").out;
    for (const char* line : {"inputs:  1: optical", "  length", "middle:Span  SuperBlock:span\n",
                             "middle:Span:Fiber  NonlinearFiberModel\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << text;
    }
    EXPECT_EQ(Photrak("models SuperBlock:nowhere").status, 1);
}

TEST_F(SuperBlocks, ATopologyWithoutPortsIsNone) {
    EXPECT_EQ(Photrak("superblock flat.top").status, 1);
    WriteText("with blank.top", FileText("span.top"));
    EXPECT_EQ(Photrak("superblock 'with blank.top'").status, 1);
}

TEST_F(SuperBlocks, ASweepRunsAThousandPointsInSecondsAndOnlyWhatDependsOnIt) {
    WriteText("span.top", Topology(Variables("late DoubleType 0\n"),
                                   {{"In", "InBlock", "0", "1", Port()},
                                    {"Delay", "FiberDelay", "1", "2", Number("delay", "late")},
                                    {"Out", "OutBlock", "2", "0", ""}}));
    Define("span.top");
    WriteText("out.top", Topology(Variables("k DoubleType 0\n"),
                                  {{"Laser", "CWLaserModel", "0", "1", ""},
                                   {"Line", "SuperBlock span", "1", "2", Number("late", "k*1e-15")},
                                   {"Keep", "SaveSigBlock", "2", "0", ""}}));
    const auto start = std::chrono::steady_clock::now();
    const ProgramResult result = Photrak("scan --quiet --inner k=1:1000:1 out.top");
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_LT(took.count(), 5.0);
    const std::string log = FileText("log.txt");
    EXPECT_EQ(Count(log, "Simulating component Line:'Delay'"), 1000);
    EXPECT_EQ(Count(log, "Simulating component 'Laser'"), 1);
    EXPECT_NE(FileText("Keep1000.sgd").find("\nstartTime 1e-12\n"), std::string::npos);
}

TEST_F(SuperBlocks, ParametersOfEveryTypePassAndTheFirstOfANameCounts) {
    const std::string variables =
        "ch CharType q\nd DoubleType 1\nen EnumType RZ\ni IntType 2\ns StringType two words\n"
        "twice DoubleType 3e-12\ntwice DoubleType 5e-12\nz ComplexType 1 2\n";
    WriteText("span.top",
              Topology(Variables(variables), {{"In", "InBlock", "0", "1", Port()},
                                              {"Delay", "FiberDelay", "1", "2",
                                               Number("delay", "twice+(i-2)*1e-12+(d-1)*1e-12")},
                                              {"Out", "OutBlock", "2", "0", ""}}));
    Define("span.top");
    const auto delayOf = [](const std::string& values) {
        WriteText("out.top", Topology("", {{"Laser", "CWLaserModel", "0", "1", ""},
                                           {"Line", "SuperBlock span", "1", "2", values},
                                           {"Keep", "SaveSigBlock", "2", "0", ""}}));
        const ProgramResult result = Photrak("run --quiet out.top");
        EXPECT_EQ(result.status, 0) << result.error;
        return FileText("Keep.sgd");
    };
    // Placed as the definition says, the block gives what the topology gives alone.
    const std::string flat = delayOf("");
    const bool first = flat.find("3e-12") != std::string::npos;
    EXPECT_NE(first, flat.find("5e-12") != std::string::npos) << flat;
    EXPECT_NE(FileText("span.dts").find(first ? "VALUE 3e-12" : "VALUE 5e-12"), std::string::npos);
    const std::string values =
        "PARAM ch CharType\nVALUE %\nENDPARAM\n"
        "PARAM en EnumType\nVALUE NRZ\nENDPARAM\n"
        "PARAM i IntType\nVALUE 4\nENDPARAM\n"
        "PARAM s StringType\nVALUE 100 %s\nENDPARAM\n"
        "PARAM z ComplexType\nVALUE 3 -4\nENDPARAM\n" +
        Number("d", "2") + Number("twice", "1e-12");
    EXPECT_NE(delayOf(values).find("4e-12"), std::string::npos) << FileText("Keep.sgd");
}

TEST_F(SuperBlocks, CheckLooksAtATopologyThatIsToBeABlock) {
    WriteText("own.top",
              Topology(Variables("c DoubleType 1\n"), {{"In", "InBlock", "0", "1", Port()},
                                                       {"More", "InBlock", "0", "2", Port()}}));
    const std::string own = Photrak("check own.top").error;
    EXPECT_NE(own.find("input port 1 stands twice"), std::string::npos) << own;
    EXPECT_NE(own.find("'c' is hidden"), std::string::npos) << own;
}

// --- The examples ---

class SuperBlockExamples : public ExampleRun {
  protected:
    /// Appends a block that looks at a node and leaves FILE results.
    static void Look(const std::string& file, const std::string& type, const std::string& node,
                     const std::string& root, const std::string& more = "") {
        WriteText(file, FileText(file) +
                            Topology("", {{root, type, node, "0",
                                           "PARAM FilenameRoot StringType\nVALUE " + root +
                                               "\nENDPARAM\nPARAM Plot EnumType\nVALUE Save\n"
                                               "ENDPARAM\n" +
                                               more}}));
    }
};

/// The OSNR of the note: 0 dBm against N F (G - 1) h nu B. The spectrum has one polarization's
/// noise; five amplifiers lose some hundredths of a decibel to saturation.
TEST_F(SuperBlockExamples, AmplifiedSpansHaveTheOsnrOfTheNote) {
    Run("scan superblock-line.top");
    const auto rates = Table("line.ber");
    ASSERT_EQ(rates.size(), 4u);
    for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(rates[k].at(0), 40e3 + 20e3 * double(k));
    for (std::size_t k = 1; k < 4; ++k) EXPECT_GE(rates[k].at(1), rates[k - 1].at(1));
    std::string more;
    for (const char* row :
         {"Type EnumType\nVALUE Wavelength", "filterType EnumType\nVALUE Trapezoidal",
          "filterSpecMode EnumType\nVALUE Wavelength", "ShowNoise EnumType\nVALUE Both",
          "filterBW DoubleType\nVALUE 0.1e-9", "filterBW0dB DoubleType\nVALUE 0.1e-9"}) {
        more += "PARAM " + std::string(row) + "\nENDPARAM\n";
    }
    Look("superblock-line.top", "SignalSpectra", "4", "osa", more);
    const double c = 299792458.0, planck = 6.62607015e-34;
    const double band = c * 0.1e-9 / (1.55e-6 * 1.55e-6);
    for (const auto& [span, noted] : {std::pair{"40e3", 39.0}, std::pair{"100e3", 26.0}}) {
        Run("run --prefix p_ --set span=" + std::string(span) + " superblock-line.top");
        const double gain = std::pow(10, 0.02 * std::stod(span) / 1000);
        const double noise = 5 * (gain - 1) * std::pow(10, 0.5) * planck * c / 1.55e-6 * band * 1e3;
        const auto rows = Table("p_osa.frq");
        const double read = -(rows.at(rows.size() / 2).at(2) + 10 * std::log10(2));
        EXPECT_NEAR(read, -10 * std::log10(noise), 0.3) << span;
        EXPECT_NEAR(read, noted, 0.5) << span;
    }
}

TEST_F(SuperBlockExamples, TwoLevelsKeepThePowerAndNameTheTester) {
    Look("nested.top", "SignalPlot", "3", "launched");
    Look("nested.top", "SignalPlot", "4", "arrived");
    EXPECT_NE(Run("run nested.top").find("BER End:BER: "), std::string::npos);
    const double launched = Mean(Column("nested-launched_mag.sig", 1));
    const double arrived = Mean(Column("nested-arrived_mag.sig", 1));
    EXPECT_NEAR(launched, 1e-3, 1e-8);
    EXPECT_NEAR(10 * std::log10(arrived / launched), -0.1, 0.05);
    EXPECT_TRUE(std::filesystem::exists("nested-_End_BER.bdt"));
    EXPECT_NE(FileText("log.txt").find("Line:First:'Fiber'"), std::string::npos);
}

}  // namespace
}  // namespace photrak::test

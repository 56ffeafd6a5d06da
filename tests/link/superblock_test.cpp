// Topologies as blocks of others, through the real program: the same link flat and nested must give
// the same numbers in every digit, and faults inside are named by their path.
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

TEST_F(SuperBlocks, DefaultsThatAreExpressionsFollowWhatIsHandedDown) {
    WriteText("span.top",
              Topology(Variables("twice DoubleType 2*length\nlength DoubleType 1e3\n"),
                       {{"In", "InBlock", "0", "1", Port()},
                        {"Delay", "FiberDelay", "1", "2", Number("delay", "twice*1e-15")},
                        {"Out", "OutBlock", "2", "0", ""}}));
    Define("span.top");
    WriteText("out.top", Topology("", {{"Laser", "CWLaserModel", "0", "1", ""},
                                       {"Line", "SuperBlock span", "1", "2",
                                        Number("length", "4e3") + Number("twice", "2*length")},
                                       {"Keep", "SaveSigBlock", "2", "0", ""}}));
    const ProgramResult result = Photrak("run --quiet out.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_NE(FileText("Keep.sgd").find("8e-12"), std::string::npos) << FileText("Keep.sgd");
}

TEST_F(SuperBlocks, ATopologyWithoutPortsIsNone) {
    EXPECT_EQ(Photrak("superblock flat.top").status, 1);
    WriteText("with blank.top", FileText("span.top"));
    EXPECT_EQ(Photrak("superblock 'with blank.top'").status, 1);
}

}  // namespace
}  // namespace photrak::test

// Loading topologies: every block, the faults with their texts and places, what older files hold,
// and files that mean harm.
#include <gtest/gtest.h>

#include "base/memory.h"
#include "files/topology_support.h"
#include "kernel/parameters.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

std::vector<std::int32_t> Numbers(const std::vector<Node*>& nodes) {
    std::vector<std::int32_t> numbers;
    for (const Node* node : nodes) numbers.push_back(node->number);
    return numbers;
}

const std::string wholeFile = R"(NOTE a link: two blocks
LOCKED YES

BEGINVARIABLES
gain DoubleType 2 * half
half DoubleType 0.5
word StringType  two words
ENDVARIABLES
SIMOPTIONS
SIMMODE StatisticalMode
NUMRUNSTODO 12
SAVEPARAMS TRUE
SIGSAVEMODE SaveMemIntermediate
PLOTTING DoNotPlot
OUTERSWEEPVARIABLE half
SWEEPVARIABLE gain
SWEEPSTARTVAL 1 2
OUTPUTPREFIX run-
BINMETA bin
NEWKEYWORD 1
ENDSIMOPTIONS
ENDNODES 2
NODEBEGIN 1 OpSigType
SIGNALSAVEMODE SaveDiskIntermediate
LINE 1 -2 3 4 a drawn wire
LINE 5 6 7 8
ENDNODE
NODEBEGIN 7 ...
ENDNODE
COMPONENT laser Source
NOTE the light: 1 mW
ICON laser 10 -20
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 0
OUTPUTTO 1

PARAM power DoubleType
VALUE gain * 1e-3
STDDEV 0
PROBDIST UniformProbDist
ENDPARAM

PARAM gone DoubleType
VALUE 1
ENDPARAM

ENDCOMPONENT
COMPONENT end Sink
NOTE
ICON sink 30 40
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 1
OUTPUTTO 0
ENDCOMPONENT
)";

TEST(TopologyReader, ReadsEveryBlock) {
    const Loaded loaded = Load(wholeFile);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    EXPECT_EQ(loaded.Errors(), "");
    Workspace& w = *loaded.workspace;
    EXPECT_EQ(w.NOTE, "a link: two blocks");
    EXPECT_EQ(w.LOCKED, 1);
    EXPECT_EQ(FindVariable("word", w)->value, " two words");
    EXPECT_EQ(w.symbols.entries, nullptr) << "the table lasts for the load only";

    const SimOptions& o = *w.options;
    EXPECT_EQ(o.mode, simMode::statistical);
    EXPECT_EQ(o.NUMRUNSTODO, 12);
    EXPECT_EQ(o.SAVEPARAMS, 1);
    EXPECT_EQ(o.SIGSAVEMODE, 1);
    EXPECT_EQ(o.PLOTTING, DoNotPlot);
    EXPECT_EQ(o.OUTERSWEEPVARIABLE, "half");
    EXPECT_EQ(o.INNERSWEEPVARIABLE, "gain");
    EXPECT_EQ(o.INNERSWEEPSTARTVAL, "1") << "one word";
    EXPECT_EQ(o.OUTPUTPREFIX, "run-");
    EXPECT_EQ(o.BINMETA, "bin");

    const Node& wire = loaded.NodeAt(1);
    EXPECT_EQ(wire.SIGNALSAVEMODE, 2);
    ASSERT_EQ(wire.lines.size(), 2u);
    EXPECT_EQ(wire.lines[0].numbers[1], -2);
    EXPECT_EQ(wire.lines[0].text, "a drawn wire");
    EXPECT_EQ(wire.lines[1].text, "");
    EXPECT_EQ(loaded.NodeAt(7).type, EtcSigType);
    EXPECT_TRUE(loaded.NodeAt(2).flags & nodeFlag::end);

    ASSERT_EQ(w.components.size(), 2u);
    Component& end = *w.components[0];
    Component& laser = *w.components[1];
    EXPECT_EQ(laser.NOTE, "the light: 1 mW");
    EXPECT_EQ(laser.ICON, "laser");
    EXPECT_EQ(laser.x, 10);
    EXPECT_EQ(laser.y, -20);
    EXPECT_EQ(wire.drivers, std::list<Component*>{&laser});
    EXPECT_EQ(wire.readers, std::list<Component*>{&end});
    EXPECT_EQ(end.inputs[0].sigType, OpSigType) << "the node makes the sink's port definite";
    EXPECT_DOUBLE_EQ(GetParamDouble(laser.parameters, "power", -1), 1e-3);
    EXPECT_EQ(FindParameter("power", laser.parameters)->PROBDIST, UniformProbDist);
}

TEST(TopologyReader, LoadsUnknownKeywordsAndTellsThemOnTheErrorStream) {
    testing::internal::CaptureStderr();
    const Loaded loaded = Load("FUTURE %n%s\nNOTE kept\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\nTopologyLoad: I do not understand the following keyword: FUTURE\n");
    EXPECT_EQ(loaded.status, Status::Success);
    EXPECT_EQ(loaded.workspace->NOTE, "kept");

    std::string flood;
    for (int i = 0; i < 100'000; ++i) flood += "\x1b[2J\n";
    testing::internal::CaptureStderr();
    EXPECT_EQ(Load(flood).status, Status::Success);
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_LT(told.size(), 200'000u);
    EXPECT_EQ(told.find('\x1b'), std::string::npos) << "no word of a file steers a terminal";
}

TEST(TopologyReader, CutsNodeListsAsItReadsThem) {
    // Kept deliberately: two or more numbers drop node 0 and whatever the list held.
    const struct {
        std::string_view text;
        std::vector<std::int32_t> list;
    } rows[] = {
        {"BEGINNODES 5\n", {5, 0}},
        {"BEGINNODES 5 6 x 7\n", {5, 6, 7}},
        {"BEGINNODES 5 5 0\n", {5, 0}},
        {"BEGINNODES 5 6 0\n", {5, 6, 0}},
        {"BEGINNODES 5 6\nBEGINNODES 7\n", {7, 5, 6}},
        {"BEGINNODES 5 6\nBEGINNODES 7 8 6\n", {7, 8, 6}},
        {"BEGINNODES -4 99999999999\n", {-4, 2147483647}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const Loaded loaded = Load(row.text);
        EXPECT_EQ(Numbers(loaded.workspace->BEGINNODES), row.list);
        EXPECT_EQ(Numbers(loaded.workspace->ENDNODES), std::vector<std::int32_t>{0});
    }
}

TEST(TopologyReader, MapsNamesOfOlderFiles) {
    const Loaded loaded = Load(Block("scope Elec_Scope", "1", "0"));
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    EXPECT_EQ(loaded.Only().type, "EyeDiagram");
}

TEST(TopologyReader, EvaluatesComponentsInFrontOfTheVariablesWithoutSymbols) {
    const std::string variables = "BEGINVARIABLES\np DoubleType 2\nENDVARIABLES\n";
    const std::string laser =
        Block("laser Source", "0", "1", Parameter1("power", "DoubleType", "p"));
    EXPECT_EQ(Load(variables + laser).status, Status::Success);
    const Loaded early = Load(laser + variables);
    EXPECT_EQ(early.status, Status::Warning);
    EXPECT_EQ(early.Errors(),
              "Component 'laser' of type 'Source': WARNING in EvalParam: 'power' value cannot be "
              "evaluated\n  at link.top:1\n");
}

TEST(TopologyReader, GivesMissingHeadWordsWithAWarning) {
    const Loaded loaded = Load(Block("Sink", "1", "0"));
    EXPECT_EQ(loaded.status, Status::Warning);
    EXPECT_EQ(loaded.Errors(),
              "Warning loading topology: component name missing; set to 'Sink'\n"
              "  at link.top:1\n");
    EXPECT_EQ(loaded.Only().name, "Sink");
    EXPECT_EQ(loaded.Only().type, "Sink");
}

TEST(TopologyReader, TellsEachFaultWithItsPlace) {
    const std::string head = "COMPONENT a Sink\nNOTE\nICON x 1 2\n";
    const struct {
        std::string text, message;
        int line;
    } rows[] = {
        {"BEGINVARIABLES\nx float 1\nENDVARIABLES\n",
         "Error loading topology: variable cannot be type float\n", 2},
        {"BEGINVARIABLES\nx DoubleType 1\n",
         "ERROR reading topology file: the file ends inside the BEGINVARIABLES block\n", 2},
        {"SIMOPTIONS\n", "the file ends inside the SIMOPTIONS block\n", 1},
        {"NODEBEGIN 1 Light\nENDNODE\n",
         "Error loading topology: node signaltype cannot be type Light\n", 1},
        {"NODEBEGIN 1 OpSigType\nENDNODE\nNODEBEGIN 1 OpSigType\nENDNODE\n",
         "Error loading topology: node signaltype conflicts in node 1\n", 3},
        {"NODEBEGIN 1\nSIGNALSAVEMODE Never\nENDNODE\n",
         "Error loading topology: node signalsavemode cannot be Never\n", 2},
        {"NODEBEGIN 1\nLINE 1 2", "the file ends inside the NODEBEGIN block\n", 2},
        {"COMPONENT\n", "Error loading topology: component name and type missing\n", 1},
        {Block("a Nothing%s", "1", "0"),
         "ERROR reading topology file: Cannot create component 'a' of model type 'Nothing%s'\n", 5},
        {Block("a SuperBlock none", "1", "0"),
         "ERROR reading topology file: Cannot create component 'a' of model type "
         "SuperBlock:'none'\ncannot read 'none.dts': No such file or directory\n",
         5},
        {head + "NUMOUTPUTS 1\n",
         "ERROR reading topology file: component 'a' needs NUMINPUTS here\n", 4},
        {head + "\nNUMOUTPUTS 1\nINPUTFROM 1\nOUTPUTTO 0\nENDCOMPONENT\n",
         "ERROR reading topology file: component 'a' has no number of NUMINPUTS\n", 4},
        {head + "NUMINPUTS 1\nNUMOUTPUTS 1\nOUTPUTTO 0\n",
         "TopologyLoad: Error in Component INPUT_FROM field\n", 6},
        {head + "NUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM 1\nENDCOMPONENT\n",
         "TopologyLoad: Error in Component OUTPUTTO field\n", 7},
        {Block("a Sink", "1 2 3", "0"), "\nTopology load ERROR in a input or output node counts\n",
         7},
        {Block("a Bare", "1 2", "3"), "\nTopology load ERROR in a input or output node counts\n",
         7},
        {Block("a Sink", "1 2", "0"),
         "component 'a' has 1 input and 1 output ports, but 2 and 1 nodes\n", 7},
        {Block("a Source", "0", "1", "PARAM power float\nVALUE 1\nENDPARAM\n"), "'float'", 1},
        {head + "NUMINPUTS 1\nNUMOUTPUTS 1\n", "the file ends inside the COMPONENT 'a' block\n", 5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const bool endsEarly = row.message.find("the file ends") != std::string::npos;
        const Loaded loaded = Load(row.text + (endsEarly ? "" : "NOTE behind the fault\n"));
        const std::string& errors = loaded.Errors();
        EXPECT_EQ(loaded.status, Status::Error);
        EXPECT_NE(errors.find(row.message), std::string::npos) << errors;
        EXPECT_TRUE(errors.ends_with(Concat("  at link.top:", row.line, "\n"))) << errors;
        EXPECT_EQ(loaded.workspace->NOTE, "") << "reading ends at the fault";
    }
}

TEST(TopologyReader, TellsOfFilesItCannotRead) {
    std::unique_ptr<Workspace> workspace;
    EXPECT_EQ(TopologyLoad("", workspace, Models()), Status::Error);
    EXPECT_EQ(workspace->errorText, "ERROR: TopologyLoad: The filename was \"\"\n");
    const TempDir dir;
    EXPECT_EQ(TopologyLoad("missing.top", workspace, Models()), Status::Error);
    EXPECT_NE(workspace->errorText.find("missing.top"), std::string::npos);
    EXPECT_EQ(TopologyLoad(dir.Path(), workspace, Models()), Status::Error);
}

TEST(TopologyReader, EndsTheLoadWhenTheSymbolTableIsFull) {
    const RecordingHost host;
    std::string text = "BEGINVARIABLES\n";
    for (int i = 0; i <= symbolTableCapacity; ++i) text += Concat("v", i, " DoubleType 1\n");
    const Loaded loaded = Load(text + "ENDVARIABLES\nNOTE not reached\n");
    EXPECT_EQ(loaded.status, Status::Error);
    EXPECT_NE(loaded.Errors().find("Symbol table full, cannot insert v"), std::string::npos);
    EXPECT_EQ(loaded.workspace->NOTE, "");
    EXPECT_EQ(loaded.workspace->symbols.entries, nullptr);
    EXPECT_EQ(Load(wholeFile).status, Status::Success) << "the program goes on";
}

TEST(TopologyReader, KeepsPercentSignsAndLongLinesAsTheyAre) {
    const std::string percent = "%n %s %d 100% %";
    const std::string longText(100000, 'x');
    const Loaded loaded = Load(
        Concat("NOTE ", longText, "\nBEGINVARIABLES\nv StringType ", percent, "\nENDVARIABLES\n",
               Block("%n%s Source", "0", "1", Parameter1("root", "StringType", percent))));
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    EXPECT_EQ(loaded.workspace->NOTE, longText);
    EXPECT_EQ(loaded.workspace->variables[0].value, percent);
    EXPECT_EQ(loaded.Only().name, "%n%s");
    EXPECT_EQ(GetParamText(loaded.Only().parameters, "root", ""), percent);
    EXPECT_EQ(Load(std::string(100000, ':') + longText + "\n").status, Status::Success);
}

TEST(TopologyReader, BoundsWhatAHostileFileCanAskFor) {
    Catalogue catalogue = SmallCatalogue();
    ASSERT_TRUE(AddModel(catalogue, "Wide", "MAXINPUTS 9999\nMAXOUTPUTS 9999\nNUMINPUTS 1\n"));
    const std::string wide =
        "COMPONENT w Wide\nNOTE\nICON x 1e99 -99999999999\nNUMINPUTS 99999999999\n"
        "NUMOUTPUTS 1\nINPUTFROM 1\nOUTPUTTO 0\nENDCOMPONENT\n";
    const Loaded loaded = Load(wide, catalogue);
    EXPECT_EQ(loaded.status, Status::Error);
    EXPECT_NE(loaded.Errors().find("component 'w' would have more ports"), std::string::npos);

    ASSERT_TRUE(AddModel(catalogue, "Barred", "MAXINPUTS -3\nMAXOUTPUTS 1\nNUMOUTPUTS 1\n"));
    EXPECT_EQ(Load(Block("b Barred", "", "0"), catalogue).Errors(),
              "\nTopology load ERROR in b input or output node counts\n  at link.top:7\n");

    std::string nodes = "BEGINNODES";
    for (int i = 0; i < (1 << 20) + 5; ++i) nodes += Concat(" ", i);
    EXPECT_EQ(Load(nodes).status, Status::Error);

    // In descending order, each goes in front of all the others.
    std::string variables = "BEGINVARIABLES\n";
    for (int i = 1'000'000; i > 0; --i) variables += Concat("v", 1'000'000 + i, " IntType 1\n");
    const Loaded many = Load(variables);
    EXPECT_LT(many.workspace->variables.size(), 100'000u);
    EXPECT_NE(many.Errors().find("too many variables\n  at link.top:"), std::string::npos);
}

TEST(TopologyReader, SurvivesTruncationAtEveryByte) {
    for (std::size_t length = 0; length <= wholeFile.size(); ++length) {
        const Loaded loaded = Load(std::string_view(wholeFile).substr(0, length));
        ASSERT_NE(loaded.workspace, nullptr);
        if (loaded.status == Status::Error) {
            EXPECT_NE(loaded.Errors().find("link.top:"), std::string::npos) << length;
        }
        std::string text;
        static_cast<void>(TopologySaveText(*loaded.workspace, text));
    }
}

TEST(TopologyReader, SurvivesRefusedMemory) {
    ASSERT_EQ(Load(wholeFile).status, Status::Success);  // the fixture's catalogue stands from here
    for (std::int64_t n = 1;; ++n) {
        ASSERT_LT(n, 10000);
        RefuseAllocationsFrom(n);
        const Loaded loaded = Load(wholeFile);
        RefuseAllocationsFrom(-1);
        if (loaded.status == Status::Success) break;
        EXPECT_NE(loaded.Errors(), "");
    }
}

class SuperBlockLoad : public testing::Test {
  protected:
    SuperBlockLoad() { catalogue_.superBlockDirectory = dir_.Path() + "blocks/"; }

    TempDir dir_;
    Catalogue catalogue_ = SmallCatalogue();
};

TEST_F(SuperBlockLoad, TakesTheDefinitionFromTheCurrentDirectoryFirst) {
    const std::string definition =
        "SuperBlock other\nMAXINPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
        "INSIGTYPES ElecSigType\nOUTSIGTYPES ElecSigType\n"
        "PARAM gain DoubleType\nMINVALUE 0\nMAXVALUE 9\nVALUE 3\nSTDDEV 0\nENDPARAM\n"
        "ENDCOMPONENT\n";
    dir_.Write("blocks/amp.dts", definition);
    const std::string text =
        Block("a SuperBlock amp", "1", "2") +
        Block("b SuperBlock amp", "2", "3", Parameter1("gain", "DoubleType", "4"));
    const Loaded loaded = Load(text, catalogue_);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    const Component& b = *loaded.workspace->components[1];
    EXPECT_EQ(b.name, "b");
    EXPECT_EQ(b.type, "SuperBlock");
    EXPECT_EQ(b.superBlockFile, "amp") << "the topology's word wins over the definition's";
    EXPECT_EQ(GetParamDouble(b.parameters, "gain", 0), 4.0);
    EXPECT_EQ(GetParamDouble(loaded.Only().parameters, "gain", 0), 3.0);
    EXPECT_EQ(loaded.NodeAt(2).type, ElecSigType);

    dir_.Write("amp.dts",
               "SuperBlock amp\nMAXINPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
               "INSIGTYPES BinSigType\nENDCOMPONENT\n");
    EXPECT_EQ(Load(text, catalogue_).NodeAt(1).type, BinSigType);
}

TEST_F(SuperBlockLoad, IsNotHurtByItsDefinitionFile) {
    const std::string block = Block("a SuperBlock bad", "1", "2");
    const std::string huge(std::size_t{5} << 20, 'x');
    for (const std::string& definition :
         {std::string("MAXINPUTS 1\nMAXOUTPUTS 1\n"), huge, std::string("\0\xff", 2), std::string(),
          std::string("SuperBlock b\nMININPUTS 2147483647\nMAXINPUTS 2147483647\n"),
          std::string("SuperBlock b\nMAXINPUTS 1\nMAXOUTPUTS 1\nPARAM t DoubleArrayType\n"
                      "ROWS 65536\nCOLS 65536\nDATA\n1\n")}) {
        dir_.Write("bad.dts", definition);
        const Loaded loaded = Load(block, catalogue_);
        EXPECT_EQ(loaded.status, Status::Error) << definition.substr(0, 80);
    }
    dir_.Write("none.dts/inner", "");
    EXPECT_EQ(Load(Block("a SuperBlock none", "1", "2"), catalogue_).status, Status::Error);
    EXPECT_EQ(Load(Block("a SuperBlock", "1", "2"), catalogue_).status, Status::Error);
}

}  // namespace
}  // namespace photrak

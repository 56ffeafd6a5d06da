// Saving topologies: the text of every block, what a save keeps and drops, round trips, and the
// definition file of a SuperBlock.
#include <algorithm>
#include <gtest/gtest.h>

#include "files/topology_support.h"
#include "kernel/parameters.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

// The text that a load of its own gives back, but for the empty LINE text.
const std::string savedFile = R"(NOTE a link: two blocks
LOCKED YES

BEGINVARIABLES
gain DoubleType 2 * half
half DoubleType 0.5
ENDVARIABLES

SIMOPTIONS
SIMMODE SpecifiedValueMode
NUMRUNSTODO 12
SAVEPARAMS TRUE
SIGSAVEMODE SaveMemIntermediate
PLOTTING PlotToFilesOnly
OUTERSWEEPVARIABLE half
OUTERSWEEPSTARTVAL 0
OUTERSWEEPSTEPVAL 
OUTERSWEEPSTOPVAL 
INNERSWEEPVARIABLE gain
INNERSWEEPSTARTVAL 
INNERSWEEPSTEPVAL 
INNERSWEEPSTOPVAL 
OUTPUTPREFIX 
SCANPREFIX 
SCANMETA1 
SCANMETA2 
RUNMETA 
ENDSIMOPTIONS


BEGINNODES 5 0
ENDNODES 2 3

NODEBEGIN 0 NoSigType
SIGNALSAVEMODE DeleteIntermediate
ENDNODE

NODEBEGIN 1 OpSigType
SIGNALSAVEMODE SaveDiskIntermediate
LINE 1 -2 3 4 a drawn wire
LINE 5 6 7 8 NULL
ENDNODE

NODEBEGIN 2 UnknownSigType
SIGNALSAVEMODE DeleteIntermediate
ENDNODE

NODEBEGIN 3 EtcSigType
SIGNALSAVEMODE DeleteIntermediate
ENDNODE

NODEBEGIN 5 UnknownSigType
SIGNALSAVEMODE DeleteIntermediate
ENDNODE

COMPONENT end Sink 
NOTE 
ICON sink 30 40
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 1
OUTPUTTO 0
ENDCOMPONENT

COMPONENT laser Source 
NOTE the light: 1 mW
ICON laser 10 -20
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 0
OUTPUTTO 1

PARAM kind EnumType
VALUE custom
FIELD PRBS custom
ENDPARAM

PARAM power DoubleType
VALUE gain * 1e-3
STDDEV 0
PROBDIST UniformProbDist
UNITS W
ENDPARAM

PARAM root StringType
VALUE  a b
ENDPARAM

PARAM samples IntType
VALUE 8
UNITS none
ENDPARAM

ENDCOMPONENT

COMPONENT table Table 
NOTE 
ICON  0 7
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 1
OUTPUTTO

PARAM bits BinaryArrayType
ROWS 1
COLS 3
ROWSTEP 0
COLSTEP 0
ROWSTEPTITLE 
COLSTEPTITLE 
ROWSTEPUNITS 
COLSTEPUNITS 
XUNITS 
YUNITS 
DATA 
1
0
1
ENDPARAM

PARAM weights DoubleArrayType
ROWS 2
COLS 2
ROWSTEP 0.25
COLSTEP 0
ROWSTEPTITLE of rows
COLSTEPTITLE 
ROWSTEPUNITS 
COLSTEPUNITS 
XUNITS m
YUNITS 
DATA 
1
-2.5
1e+06
1e999
ENDPARAM

ENDCOMPONENT
)";

TEST(TopologyWriter, WritesBackWhatItLoads) {
    const Loaded loaded = Load(savedFile);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    EXPECT_EQ(Save(*loaded.workspace), savedFile);
    EXPECT_EQ(loaded.workspace->symbols.entries, nullptr);
}

TEST(TopologyWriter, DropsWhatASaveIsNotMeantToKeep) {
    // Kept deliberately: prefixes lose their texts, the run's statistical bit is not the saved one,
    // an empty wire text comes back as a word, old keywords come back as the present ones.
    const Loaded loaded = Load(
        "SIMOPTIONS\nSIMMODE StatisticalMode\nOUTPUTPREFIX a\nSCANMETA2 b\nBINMETA c\n"
        "SWEEPSTEPVAL 3\nENDSIMOPTIONS\nNODEBEGIN 4 BinSigType\nLINE 1 2 3 4\nENDNODE\n");
    const std::string text = Save(*loaded.workspace);
    for (const char* line : {"SIMMODE SpecifiedValueMode\n", "OUTPUTPREFIX \n", "SCANMETA2 \n",
                             "INNERSWEEPSTEPVAL 3\n", "LINE 1 2 3 4 NULL\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(text.find("BINMETA"), std::string::npos);
    EXPECT_EQ(text.find("\nSWEEP"), std::string::npos);
    EXPECT_EQ(Load(text).NodeAt(4).lines[0].text, "NULL");
    loaded.workspace->options->mode = simMode::savedStatistical;
    EXPECT_NE(Save(*loaded.workspace).find("SIMMODE StatisticalMode\n"), std::string::npos);
}

TEST(TopologyWriter, PrintsComplexElementsWithoutSeparator) {
    // Kept deliberately: 1.5 + 2i reads back as 1.52 + 0i, while a sign separates the two numbers.
    Catalogue catalogue = SmallCatalogue();
    ASSERT_TRUE(
        AddModel(catalogue, "Phasor",
                 "MAXINPUTS 1\nMAXOUTPUTS 1\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
                 "PARAM z ComplexArrayType\nROWS 2\nCOLS 1\nDATA\n1.5 2\n1.5 -2\nENDPARAM\n"));
    const Loaded loaded = Load(Block("p Phasor", "1", "0"), catalogue);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    const std::string text = Save(*loaded.workspace);
    EXPECT_NE(text.find("DATA \n1.52\n1.5-2\nENDPARAM\n"), std::string::npos) << text;
    const Loaded again = Load(text, catalogue);
    const auto* array = static_cast<ArrayRecord*>(again.Only().parameters->valactual);
    const auto* z = static_cast<Complex*>(array->data);
    EXPECT_EQ(z[0].re, 1.52);
    EXPECT_EQ(z[0].im, 0.0);
    EXPECT_EQ(z[1].im, -2.0);
}

TEST(TopologyWriter, KeepsEveryTextOnItsLine) {
    const Loaded loaded = Load(Block("laser Source", "0", "1"));
    Workspace& w = *loaded.workspace;
    w.NOTE = "first\nCOMPONENT x Sink\r";
    AddVariable(w, "two words", StringType, "a\nENDVARIABLES");
    AddVariable(w, "", DoubleType, "1");
    Component& laser = loaded.Only();
    laser.name = "bad: name";
    laser.NOTE = "100%\nNUMINPUTS 3";
    ASSERT_TRUE(SetText(&FindParameter("root", laser.parameters)->value, "x\nENDPARAM\n\"y"));
    const Loaded again = Load(Save(w));
    ASSERT_EQ(again.status, Status::Success) << again.Errors();
    EXPECT_EQ(again.workspace->NOTE, "first COMPONENT x Sink ");
    EXPECT_EQ(again.workspace->variables.size(), 2u);
    EXPECT_EQ(FindVariable("two_words", *again.workspace)->value, "a ENDVARIABLES");
    EXPECT_EQ(again.Only().name, "bad__name");
    EXPECT_EQ(again.Only().NOTE, "100% NUMINPUTS 3");
    EXPECT_EQ(GetParamText(again.Only().parameters, "root", ""), "x ENDPARAM ")
        << "a quote ends a value";
}

TEST(TopologyWriter, IsAFixedPointBehindOneLoad) {
    for (const std::string& text : {
             std::string("NODEBEGIN -3 ElecSigType\nENDNODE\n") + Block("b Bare", "-3", "9"),
             Block("s Sink", "4", "0") + Block("p Pipe", "5", "4") + Block("s Sink", "4", "7"),
             std::string("NOTE\ra\r\r\nBEGINVARIABLES\n\vx\f DoubleType\t 3\nENDVARIABLES\n"),
             std::string("SIMOPTIONS\nINNERSWEEPVARIABLE a\vb\nPLOTTING x\nENDSIMOPTIONS\n"),
             std::string("BEGINVARIABLES\nx IntType 1\nx IntType 2\nENDVARIABLES\n"),
             std::string("BEGINNODES 1 2\nBEGINNODES 3\nENDNODES 2 1 0\n"),
         }) {
        SCOPED_TRACE(text);
        const std::string once = Save(*Load(text).workspace);
        EXPECT_EQ(Save(*Load(once).workspace), once);
    }
}

TEST(TopologyWriter, LeavesTheOldFileWholeAfterAnError) {
    const TempDir dir;
    dir.Write("link.top", "old");
    const Loaded loaded = Load(Block("laser Source", "0", "1"));
    ASSERT_TRUE(SetText(&FindParameter("power", loaded.Only().parameters)->value, ""));
    EXPECT_EQ(TopologySave("link.top", loaded.workspace.get(), Models()), Status::Error);
    EXPECT_EQ(dir.Read("link.top"), "old");
    EXPECT_NE(loaded.Errors().find("component 'laser'"), std::string::npos);
    ASSERT_TRUE(SetText(&FindParameter("power", loaded.Only().parameters)->value, "nosuch"));
    EXPECT_EQ(TopologySave("link.top", loaded.workspace.get(), Models()), Status::Warning);
    EXPECT_TRUE(dir.Read("link.top").ends_with("ENDCOMPONENT\n"));
    EXPECT_EQ(dir.Files(), std::vector<std::string>{"link.top"});

    EXPECT_EQ(TopologySave("", loaded.workspace.get(), Models()), Status::Error);
    EXPECT_EQ(TopologySave("x.top", nullptr, Models()), Status::Error);
    EXPECT_EQ(TopologySave("no/such/x.top", loaded.workspace.get(), Models()), Status::Error);
}

std::string Port(std::string_view head, std::string_view nodes, std::string_view number,
                 std::string_view type = "") {
    const std::string sigType = type.empty() ? "" : Parameter1("signalType", "StringType", type);
    const bool isIn = head.ends_with("InBlock");
    return Block(head, isIn ? "0" : nodes, isIn ? nodes : "0",
                 Parameter1("portNumber", "IntType", number) + sigType);
}

class SuperBlockSave : public testing::Test {
  protected:
    SuperBlockSave() {
        catalogue_.modelDirectory = dir_.Path() + "models/";
        catalogue_.superBlockDirectory = dir_.Path() + "blocks/";
        dir_.Write("models/blanku.bmp", "blank");
        dir_.Write("models/sprblku.bmp", "common");
        dir_.Write("blocks/old.bmp", "drawn");
    }
    Status SaveAs(const std::string& fileName, const std::string& text) {
        const Loaded loaded = Load(text);
        EXPECT_EQ(loaded.status, Status::Success) << loaded.Errors();
        return TopologySave(fileName, loaded.workspace.get(), catalogue_);
    }

    TempDir dir_;
    RecordingHost host_;
    Catalogue catalogue_ = SmallCatalogue();
};

TEST_F(SuperBlockSave, WritesPortsAndVariables) {
    dir_.Write("sub.dir/keep", "");
    const std::string variables =
        "BEGINVARIABLES\nc CharType a\nd DoubleType 2\ne EnumType on\ni IntType 3\ns StringType t "
        "u\n"
        "z ComplexType 1 2\nENDVARIABLES\n";
    // Ports 1, 1, 2: of the two equal ones the later in the list ("b") goes first; the number of
    // "a" is a symbol.
    ASSERT_EQ(SaveAs("sub.dir/amp.top",
                     variables + Port("a InBlock", "1", "i - 2", "OpSigType") +
                         Port("b InBlock", "2", "1", "ElecSigType") + Port("c InBlock", "3", "0") +
                         Port("o OutBlock", "4", "2") + Port("p OutBlock", "5", "1") + "NOTE n\n" +
                         Block("s Source", "0", "4")),
              Status::Success);
    EXPECT_EQ(dir_.Read("sub.dir/amp.dts"), R"(SuperBlock amp
ICON amp.bmp 0 0
NOTE SuperBlock amp
MININPUTS 3
MAXINPUTS 3
MINOUTPUTS 2
MAXOUTPUTS 2
NUMINEQNUMOUTNODES FALSE
NUMINPUTS 3
NUMOUTPUTS 2
INSIGTYPES UnknownSigType ElecSigType OpSigType 
OUTSIGTYPES UnknownSigType OpSigType 

PARAM c CharType
VALUE a
ENDPARAM

PARAM d DoubleType
MINVALUE -1e32 
MAXVALUE 1e32 
VALUE 2
STDDEV 0
PROBDIST NoProbDist
UNITS unknown
ENDPARAM

PARAM e EnumType
VALUE on
FIELD on
ENDPARAM

PARAM i IntType
MINVALUE -1000000 
MAXVALUE 1000000 
VALUE 3
UNITS unknown
ENDPARAM

PARAM s StringType
VALUE t u
ENDPARAM

PARAM z ComplexType
MINVALUE -1e32 
MAXVALUE 1e32 
VALUE 1 2
STDDEV 0
PROBDIST NoProbDist
ISTDDEV 0
IPROBDIST NoProbDist
UNITS unknown
ENDPARAM

ENDCOMPONENT
)");
}

TEST_F(SuperBlockSave, CountsAMissingSideAsOnePort) {
    ASSERT_EQ(SaveAs("in.top", Port("a InBlock", "1", "1")), Status::Success);
    const std::string text = dir_.Read("in.dts");
    EXPECT_NE(text.find("MINOUTPUTS 1\nMAXOUTPUTS 1\n"), std::string::npos);
    EXPECT_NE(text.find("OUTSIGTYPES NoSigType\n\nENDCOMPONENT\n"), std::string::npos);
    ASSERT_EQ(SaveAs("plain.top", Block("s Source", "0", "1")), Status::Success);
    EXPECT_FALSE(dir_.Has("plain.dts"));
}

TEST_F(SuperBlockSave, AsksForAnIconOnceAndKeepsOneThatIsThere) {
    const std::string text = Port("a InBlock", "1", "1");
    host_.answers = {true, false, true};
    for (const char* name : {"new.top", "plain.top", "old.top", "new.top"}) {
        ASSERT_EQ(SaveAs(name, text), Status::Success);
    }
    ASSERT_EQ(host_.boxes.size(), 3u) << "not for a definition that exists";
    EXPECT_EQ(host_.boxes[0].text, "Create a new icon for this SuperBlock?");
    EXPECT_EQ(host_.boxes[0].title, "Photrak Query");
    EXPECT_EQ(dir_.Read("blocks/new.bmp"), "blank");
    EXPECT_EQ(dir_.Read("blocks/plain.bmp"), "common");
    EXPECT_EQ(dir_.Read("blocks/old.bmp"), "drawn");
    EXPECT_TRUE(host_.commands.empty());
}

TEST_F(SuperBlockSave, MakesABlockThatLoadsInAnotherTopology) {
    ASSERT_EQ(SaveAs("blocks/amp.top", "BEGINVARIABLES\ngain DoubleType 2\nENDVARIABLES\n" +
                                           Port("a InBlock", "1", "1", "OpSigType") +
                                           Port("o OutBlock", "1", "1")),
              Status::Success);
    const Loaded outer = Load(Block("x SuperBlock amp", "6", "7"), catalogue_);
    ASSERT_EQ(outer.status, Status::Success) << outer.Errors();
    EXPECT_EQ(outer.NodeAt(6).type, OpSigType);
    EXPECT_EQ(GetParamDouble(outer.Only().parameters, "gain", 0), 2.0);
    EXPECT_NE(Save(*outer.workspace).find("COMPONENT x SuperBlock amp\n"), std::string::npos);
}

}  // namespace
}  // namespace photrak

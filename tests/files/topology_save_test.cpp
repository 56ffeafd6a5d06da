// Saving topologies: the text of every block, what a save keeps and drops, round trips, and the
// definition file of a SuperBlock.
#include <gtest/gtest.h>

#include "files/model_definition.h"
#include "files/topology_support.h"
#include "files/value_inspection.h"
#include "kernel/parameters.h"
#include "support/holds.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

/// What the program writes itself holds nothing that is suspicious.
TEST(TopologyInspection, FindsNothingInASavedFile) {
    const Loaded loaded = Load(savedFile);
    Inspection found = InspectTopologyText(Save(*loaded.workspace), "link.top", Models());
    InspectValues(found, {}, Thoroughness::ForRun);
    for (const LoadFinding& finding : found.findings) ADD_FAILURE() << FindingLine(finding);
    EXPECT_EQ(found.components.size(), loaded.workspace->components.size());
}

TEST(TopologyWriter, WritesBackWhatItLoads) {
    const Loaded loaded = Load(savedFile);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    EXPECT_EQ(Save(*loaded.workspace), savedFile);
}

TEST(TopologyWriter, DropsWhatASaveIsNotMeantToKeep) {
    // By design: prefixes lose their texts, the run's statistical bit is not the saved one,
    // an empty wire text comes back as a word, a synonym comes back as the word of its row.
    const Loaded loaded = Load(
        "SIMOPTIONS\nSIMMODE StatisticalMode\nOUTPUTPREFIX a\nSCANMETA2 b\nBINMETA c\n"
        "SWEEPSTEPVAL 3\nENDSIMOPTIONS\nNODEBEGIN 4 BinSigType\nLINE 1 2 3 4\nENDNODE\n");
    EXPECT_EQ(loaded.NodeAt(4).lines[0].text, "");
    const std::string text = Save(*loaded.workspace);
    for (const char* line : {"SIMMODE SpecifiedValueMode\n", "OUTPUTPREFIX \n", "SCANMETA2 \n",
                             "INNERSWEEPSTEPVAL 3\n", "LINE 1 2 3 4 NULL\n"}) {
        EXPECT_TRUE(Holds(text, line));
    }
    EXPECT_FALSE(Holds(text, "BINMETA") || Holds(text, "\nSWEEP"));
}

TEST(TopologyWriter, KeepsEveryTextOnItsLine) {
    const Loaded loaded = Load(Block("laser Source", "0", "1"));
    Workspace& w = *loaded.workspace;
    w.NOTE = "first\nCOMPONENT x Sink\r";
    AddVariable(w, "two words", StringType, "a\nENDVARIABLES");
    Component& laser = loaded.Only();
    laser.name = "bad: name";
    ASSERT_TRUE(SetText(&FindParameter("root", laser.parameters)->value, "x\nENDPARAM\n\"y"));
    const Loaded again = Load(Save(w));
    ASSERT_EQ(again.status, Status::Success) << again.Errors();
    EXPECT_EQ(again.workspace->NOTE, "first COMPONENT x Sink ");
    EXPECT_EQ(FindVariable("two_words", *again.workspace)->value, "a ENDVARIABLES");
    EXPECT_EQ(again.Only().name, "bad__name");
    EXPECT_EQ(GetParamText(again.Only().parameters, "root", ""), "x ENDPARAM ")
        << "a quote ends a value";
}

TEST(TopologyWriter, IsAFixedPointBehindOneLoad) {
    for (const std::string& text : {
             "NODEBEGIN -3 ElecSigType\nENDNODE\n" + Block("b Bare", "-3", "9"),
             Block("s Sink", "4", "0") + Block("p Pipe", "5", "4") + Block("s Sink", "4", "7"),
             std::string("NOTE\ra\r\r\nBEGINVARIABLES\n\vx\f DoubleType\t 3\nENDVARIABLES\n"),
             std::string("BEGINNODES 1 2\nBEGINNODES 3\nENDNODES 2 1 0\n"),
         }) {
        const std::string once = Save(*Load(text).workspace);
        EXPECT_EQ(Save(*Load(once).workspace), once) << text;
    }
}

TEST(TopologyWriter, LeavesTheTargetWholeAfterAnError) {
    const TempDir dir;
    dir.Write("link.top", "old");
    const Loaded loaded = Load(Block("laser Source", "0", "1"));
    ASSERT_TRUE(SetText(&FindParameter("power", loaded.Only().parameters)->value, ""));
    EXPECT_EQ(TopologySave("link.top", loaded.workspace.get(), Models()), Status::Error);
    EXPECT_EQ(dir.Read("link.top"), "old");
    EXPECT_TRUE(Holds(loaded.Errors(), "component 'laser'"));
    EXPECT_EQ(dir.Files(), std::vector<std::string>{"link.top"});
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
        dir_.Write("old.bmp", "drawn");
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
    ASSERT_EQ(SaveAs("sub.dir/amp", variables + Port("a InBlock", "1", "i - 2", "OpSigType") +
                                        Port("b InBlock", "2", "1", "ElecSigType") +
                                        Port("c InBlock", "3", "0") + Port("o OutBlock", "4", "2") +
                                        Port("p OutBlock", "5", "1") + "NOTE n\n" +
                                        Block("s Source", "0", "4")),
              Status::Success);
    EXPECT_EQ(dir_.Read("sub.dir/amp.dts"), DataFile("every_port_and_variable.dts"));
}

TEST_F(SuperBlockSave, NamesTheTypesOfItsOutputsInTheOrderOfThePorts) {
    std::string text, types;
    int number = 0;
    for (const char* type : {"OpSigType", "ElecSigType", "OpOrElecSigType", "BinSigType",
                             "UnknownSigType", "NoSigType", "EtcSigType"}) {
        const std::string node = Concat(++number);
        text = Port(Concat("o", node, " OutBlock"), node, node) + text;
        types += Concat("NODEBEGIN ", node, " ", type, "\nENDNODE\n");
    }
    ASSERT_EQ(SaveAs("ports.top", types + text), Status::Success);
    // An output that stands for any number of ports is none of the prototype.
    EXPECT_TRUE(Holds(dir_.Read("ports.dts"),
                      "\nOUTSIGTYPES OpSigType ElecSigType OpOrElecSigType BinSigType "
                      "UnknownSigType NoSigType \n"));
}

TEST_F(SuperBlockSave, AsksForAnIconOnceAndKeepsOneThatIsThere) {
    host_.answers = {true, false, true};
    for (const char* name : {"new.top", "plain.top", "old.top", "new.top"}) {
        ASSERT_EQ(SaveAs(name, Port("a InBlock", "1", "1")), Status::Success);
    }
    ASSERT_EQ(host_.boxes.size(), 3u) << "not for a definition that exists";
    EXPECT_EQ(host_.boxes[0].text, "Create a new icon for this SuperBlock?");
    EXPECT_EQ(dir_.Read("new.bmp"), "blank");
    EXPECT_EQ(dir_.Read("plain.bmp"), "common");
    EXPECT_EQ(dir_.Read("old.bmp"), "drawn");
    // Yes was the answer for "new" and "old": each is opened as one argument, without waiting.
    ASSERT_EQ(host_.commands.size(), 2u);
    EXPECT_EQ(host_.commands[0].arguments, (std::vector<std::string>{"xdg-open", "new.bmp"}));
    EXPECT_FALSE(host_.commands[0].waited);
    host_.answers = {true};
    host_.environment["PHOTRAK_ICON_EDITOR"] = "draw -n";
    ASSERT_EQ(SaveAs("other.top", Port("a InBlock", "1", "1")), Status::Success);
    EXPECT_EQ(host_.commands.back().arguments,
              (std::vector<std::string>{"draw", "-n", "other.bmp"}));
}

TEST_F(SuperBlockSave, RefusesAStemThatNoTopologyCanName) {
    for (const char* name : {"a b.top", "a:b.top", "a'b.top", "a\"b.top"}) {
        const Loaded loaded = Load(Port("a InBlock", "1", "1"));
        EXPECT_EQ(TopologySave(name, loaded.workspace.get(), catalogue_), Status::Error);
        EXPECT_TRUE(Holds(loaded.Errors(), Concat("'", name, "'"))) << loaded.Errors();
        EXPECT_NE(dir_.Read(name), "") << "the topology itself is safe";
    }
    EXPECT_TRUE(host_.boxes.empty());
    EXPECT_FALSE(std::filesystem::exists("a b.dts"));
}

/// What a definition was written from is what its block has, whatever stands in the texts.
TEST_F(SuperBlockSave, EveryTypeOfVariableComesBackFromTheDefinition) {
    std::vector<Variable> variables;
    const auto add = [&](const char* name, const char* value, std::int32_t type) {
        variables.emplace_back();
        variables.back().name = name;
        variables.back().value = value;
        variables.back().type = type;
    };
    add("ch", "%", CharType);
    add("d", "2*x + 1e-3", DoubleType);
    add("d", "7", DoubleType);
    add("en", "NRZ", EnumType);
    add("i", "-3", IntType);
    add("s", "two  words: %s", StringType);
    add("z", "1 -2.5", ComplexType);
    const std::string text = SuperBlockText("stem", {}, variables);
    Component block;
    block.name = block.type = "SuperBlock";
    LineReader lines(text, "stem.dts");
    std::string errors;
    ASSERT_EQ(ReadModelDefinition(block, lines, errors), Status::Success) << errors;
    EXPECT_EQ(block.superBlockFile, "stem");
    int count = 0;
    for (const Variable& variable : variables) {
        const Parameter* parameter = FindParameter(variable.name, block.parameters);
        ASSERT_NE(parameter, nullptr) << variable.name;
        EXPECT_EQ(parameter->type, variable.type) << variable.name;
        if (variable.value == "7") continue;  // of equal names the first is written
        EXPECT_STREQ(parameter->value, variable.value.c_str()) << variable.name;
        ++count;
    }
    for ([[maybe_unused]] const Parameter& parameter : Items(block.parameters)) --count;
    EXPECT_EQ(count, 0);
}

}  // namespace
}  // namespace photrak

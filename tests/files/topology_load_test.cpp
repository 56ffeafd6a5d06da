// Loading and checking topologies: every block, the faults with their texts and places, words with
// synonyms, and files that mean harm.
#include <gtest/gtest.h>

#include "base/memory.h"
#include "files/topology_check.h"
#include "files/topology_support.h"
#include "kernel/parameters.h"
#include "support/holds.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

// The texts of the blocks are compared where they are written back.
TEST(TopologyReader, ReadsEveryBlock) {
    const Loaded loaded = Load(savedFile);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    Workspace& w = *loaded.workspace;
    EXPECT_EQ(w.options->SIGSAVEMODE, 1);
    const Node& wire = loaded.NodeAt(1);
    EXPECT_EQ(wire.SIGNALSAVEMODE, 2);
    EXPECT_TRUE(loaded.NodeAt(2).flags & nodeFlag::end);
    Component& laser = *w.components.at(1);
    EXPECT_EQ(wire.drivers, std::list<Component*>{&laser});
    EXPECT_EQ(w.components.at(2)->inputs[0].sigType, OpSigType) << "definite by its node";
    EXPECT_DOUBLE_EQ(GetParamDouble(laser.parameters, "power", -1), 1e-3);
}

TEST(TopologyReader, ReadsSynonymsAndPassesOverWhatItDoesNotKnow) {
    const std::string options =
        "SIMOPTIONS\nSIMMODE StatisticalMode\nSWEEPVARIABLE gain\nSWEEPSTARTVAL 1 2\n"
        "NEWKEYWORD 1\nENDSIMOPTIONS\nNODEBEGIN 7 ...\nENDNODE\n";
    const Loaded loaded =
        Load(options + Block("scope Elec_Scope", "1", "0", Parameter1("gone", "DoubleType", "1")));
    ASSERT_EQ(loaded.status, Status::Success) << loaded.Errors();
    const SimOptions& o = *loaded.workspace->options;
    EXPECT_EQ(o.mode, simMode::statistical);
    EXPECT_EQ(o.INNERSWEEPVARIABLE, "gain");
    EXPECT_EQ(o.INNERSWEEPSTARTVAL, "1") << "one word";
    EXPECT_EQ(loaded.NodeAt(7).type, EtcSigType);
    EXPECT_EQ(loaded.Only().type, "EyeDiagram");
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
    EXPECT_FALSE(Holds(told, "\x1b")) << "no word of a file steers a terminal";
}

TEST(TopologyReader, CutsNodeListsAsItReadsThem) {
    // By design: two or more numbers drop node 0 and whatever the list held.
    const struct {
        std::string_view text;
        std::vector<std::int32_t> list;
    } rows[] = {
        {"BEGINNODES 5\n", {5, 0}},
        {"BEGINNODES 5 6 x 7\n", {5, 6, 7}},
        {"BEGINNODES 5 6\nBEGINNODES 7 8 6\n", {7, 8, 6}},
        {"BEGINNODES -4 99999999999\n", {-4, 2147483647}},
    };
    for (const auto& row : rows) {
        const Loaded loaded = Load(row.text);
        std::vector<std::int32_t> numbers;
        for (const Node* node : loaded.workspace->BEGINNODES) numbers.push_back(node->number);
        EXPECT_EQ(numbers, row.list) << row.text;
    }
}

TEST(TopologyReader, TellsEachFaultWithItsPlace) {
    for (const auto& row : faultyFiles) {
        SCOPED_TRACE(row.text);
        const bool endsEarly = Holds(row.message, "the file ends");
        const Loaded loaded = Load(row.text + (endsEarly ? "" : "NOTE behind the fault\n"));
        EXPECT_EQ(loaded.status, Status::Error);
        EXPECT_TRUE(Holds(loaded.Errors(), row.message));
        EXPECT_TRUE(loaded.Errors().ends_with(Concat("  at link.top:", row.line, "\n")));
        EXPECT_EQ(loaded.workspace->NOTE, "") << "reading ends at the fault";
    }
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
}

TEST(TopologyReader, BoundsWhatAHostileFileCanAskFor) {
    Catalogue catalogue = SmallCatalogue();
    ASSERT_TRUE(AddModel(catalogue, "Wide", "MAXINPUTS 9999\nMAXOUTPUTS 9999\nNUMINPUTS 1\n"));
    const std::string wide =
        "COMPONENT w Wide\nNOTE\nICON x 1e99 -99999999999\nNUMINPUTS 99999999999\n"
        "NUMOUTPUTS 1\nINPUTFROM 1\nOUTPUTTO 0\nENDCOMPONENT\n";
    const Loaded loaded = Load(wide, catalogue);
    EXPECT_EQ(loaded.status, Status::Error);
    EXPECT_TRUE(Holds(loaded.Errors(), "component 'w' would have more ports"));

    // In descending order, each goes in front of all the others.
    std::string variables = "BEGINVARIABLES\n";
    for (int i = 1'000'000; i > 0; --i) variables += Concat("v", 1'000'000 + i, " IntType 1\n");
    const Loaded many = Load(variables);
    EXPECT_LT(many.workspace->variables.size(), 100'000u);
    EXPECT_TRUE(Holds(many.Errors(), "too many variables\n  at link.top:"));
}

TEST(TopologyReader, SurvivesTruncationAtEveryByte) {
    for (std::size_t length = 0; length <= savedFile.size(); ++length) {
        const Loaded loaded = Load(std::string_view(savedFile).substr(0, length));
        ASSERT_NE(loaded.workspace, nullptr);
        if (loaded.status == Status::Error) {
            EXPECT_TRUE(Holds(loaded.Errors(), "link.top:")) << length;
        }
        std::string text;
        static_cast<void>(TopologySaveText(*loaded.workspace, text));
    }
}

TEST(TopologyReader, SurvivesRefusedMemory) {
    ASSERT_EQ(Load(savedFile).status, Status::Success);  // the fixture's catalogue stands from here
    for (std::int64_t n = 1;; ++n) {
        ASSERT_LT(n, 10000);
        RefuseAllocationsFrom(n);
        const Loaded loaded = Load(savedFile);
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
    EXPECT_EQ(b.superBlockFile, "amp") << "the topology's word wins over the definition's";
    EXPECT_EQ(GetParamDouble(b.parameters, "gain", 0), 4.0);
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
          std::string("SuperBlock b\nMININPUTS 2147483647\nMAXINPUTS 2147483647\n")}) {
        dir_.Write("bad.dts", definition);
        const Loaded loaded = Load(block, catalogue_);
        EXPECT_EQ(loaded.status, Status::Error) << definition.substr(0, 80);
    }
}

Loaded Check(std::string_view text) {
    Loaded loaded;
    loaded.status = TopologyCheckText(text, "link.top", loaded.workspace, Models());
    return loaded;
}

TEST(TopologyCheck, TellsEveryFaultOfAFile) {
    std::string text;
    std::vector<std::string> messages = {
        "component 'lost' input port 1 is not wired: nothing drives node 77\n",
        "component 'short' output port 1 stands on no node\n",
        "'power' greater than maximum value; change to 1.000000e+01\nin component loud\n"};
    for (const auto& row : faultyFiles) {
        if (Holds(row.message, "the file ends")) continue;
        text += row.text;
        messages.push_back(row.message);
    }
    text += Block("lost Pipe", "77", "8") + Block("short Pipe", "8", "") +
            Block("loud Source", "0", "9", Parameter1("power", "DoubleType", "11")) +
            Block("odd Source", "0", "10", Parameter1("power", "DoubleType", "nosuch")) +
            Block("good Source", "0", "11") + "NOTE end\n";
    const Loaded checked = Check(text);
    EXPECT_EQ(checked.status, Status::Error);
    const std::string& errors = checked.Errors();
    for (const std::string& message : messages) EXPECT_TRUE(Holds(errors, message));
    EXPECT_EQ(checked.workspace->NOTE, "end");
    EXPECT_EQ(checked.workspace->components.size(), 5u) << "faulty components are left out";
    const std::string_view odd =
        "Component 'odd' of type 'Source': WARNING in EvalParam: 'power' value cannot be evaluated";
    EXPECT_TRUE(Holds(errors, odd));
    EXPECT_EQ(errors.find(odd), errors.rfind(odd)) << "reported once";
}

TEST(TopologyCheck, IsSilentAboutASoundLink) {
    const Loaded checked =
        Check("BEGINVARIABLES\np DoubleType 1e-3\nENDVARIABLES\n" +
              Block("laser Source", "0", "1", Parameter1("power", "DoubleType", "p")) +
              Block("sink Sink", "1", "0"));
    EXPECT_EQ(checked.status, Status::Success);
    EXPECT_EQ(checked.Errors(), "");
    EXPECT_EQ(checked.workspace->symbols.entries, nullptr);
}

}  // namespace
}  // namespace photrak

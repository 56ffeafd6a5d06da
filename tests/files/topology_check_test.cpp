// The check of a topology tells every fault of a file, each with its own text, and what is wrong
// with the graph.
#include "files/topology_check.h"

#include <gtest/gtest.h>

#include "files/topology_support.h"

namespace photrak {
namespace {

Loaded Check(std::string_view text) {
    Loaded loaded;
    loaded.status = TopologyCheckText(text, "link.top", loaded.workspace, Models());
    return loaded;
}

TEST(TopologyCheck, TellsADozenFaultsAtOnce) {
    const std::string text =
        "BEGINVARIABLES\nv Number 1\nENDVARIABLES\n"
        "NODEBEGIN 1 Light\nENDNODE\n"
        "NODEBEGIN 2 OpSigType\nSIGNALSAVEMODE Never\nENDNODE\n"
        "NODEBEGIN 2 OpSigType\nENDNODE\n" +
        Block("unknown Mystery", "0", "3") + Block("block SuperBlock none", "0", "3") +
        "COMPONENT cut Sink\nNOTE\nICON x 1 2\nNUMOUTPUTS 1\n" +  // its end is missing
        Block("greedy Sink", "1 2 3", "0") +
        Block("type Source", "0", "3", "PARAM power float\nVALUE 1\nENDPARAM\n") +
        Block("lost Pipe", "77", "8") + Block("short Pipe", "8", "") +
        Block("loud Source", "0", "9", Parameter1("power", "DoubleType", "11")) +
        Block("odd Source", "0", "10", Parameter1("power", "DoubleType", "nosuch")) +
        Block("good Source", "0", "11") + "NOTE end\nCOMPONENT\n";
    const Loaded checked = Check(text);
    EXPECT_EQ(checked.status, Status::Error);
    for (const char* message : {
             "variable cannot be type Number\n  at link.top:2\n",
             "node signaltype cannot be type Light\n  at link.top:4\n",
             "node signalsavemode cannot be Never\n",
             "node signaltype conflicts in node 2\n",
             "Cannot create component 'unknown' of model type 'Mystery'\n",
             "Cannot create component 'block' of model type SuperBlock:'none'\n",
             "component 'cut' needs NUMINPUTS here\n",
             "ERROR in greedy input or output node counts\n",
             "'float'",
             "in component 'type'\n",
             "component 'lost' input port 1 is not wired: nothing drives node 77\n",
             "component 'short' output port 1 stands on no node\n",
             "'power' greater than maximum value; change to 1.000000e+01\nin component loud\n",
             "Component 'odd' of type 'Source': WARNING in EvalParam: 'power' value cannot be "
             "evaluated\n",
             "component name and type missing\n",
         }) {
        EXPECT_NE(checked.Errors().find(message), std::string::npos) << message;
    }
    EXPECT_EQ(checked.workspace->NOTE, "end");
    EXPECT_EQ(checked.workspace->components.size(), 5u) << "faulty components are left out";
    const std::string_view odd = "value cannot be evaluated";
    EXPECT_EQ(checked.Errors().find(odd), checked.Errors().rfind(odd)) << "told once";
}

TEST(TopologyCheck, FindsAWiredCycle) {
    const Loaded checked = Check(Block("one Pipe", "1", "2") + Block("two Pipe", "2", "1") +
                                 Block("tap Sink", "2", "0"));
    EXPECT_EQ(checked.status, Status::Error);
    const std::string& errors = checked.Errors();
    EXPECT_TRUE(errors.find("'one'") != std::string::npos ||
                errors.find("'two'") != std::string::npos)
        << errors;
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

TEST(TopologyCheck, EndsOnAFloodOfFaults) {
    std::string text;
    for (int i = 0; i < 3000; ++i) text += "COMPONENT\n" + Block(Concat("s", i, " Pipe"), "5", "6");
    const Loaded checked = Check(text);
    EXPECT_EQ(checked.status, Status::Error);
    EXPECT_LT(checked.Errors().size(), 1000000u);
}

}  // namespace
}  // namespace photrak

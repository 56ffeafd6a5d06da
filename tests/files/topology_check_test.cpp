// The check of a topology tells every fault of a file, each with its own text, and what is wrong
// with the graph.
#include "files/topology_check.h"

#include <gtest/gtest.h>

#include "files/topology_support.h"
#include "support/holds.h"

namespace photrak {
namespace {

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
    EXPECT_EQ(errors.find(odd), errors.rfind(odd)) << "told once";
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

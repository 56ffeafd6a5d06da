// The run order: post-order from the sinks, loop levels, sorting at the end of a loop, long chains,
// cycles.
#include "kernel/order.h"

#include "support/small_link.h"

namespace photrak {
namespace {

struct Ordered {
    Status status;
    std::vector<std::string> names;
    std::vector<std::int32_t> nodes;
    std::string text;
};

Ordered Order(SmallLink& link) {
    Ordered result{};
    RunOrder order;
    NodeSet nodes;
    result.status = OrderWorkspace(*link.workspace, order, nodes, result.text);
    for (const Component* component : order) result.names.push_back(component->name);
    for (const auto& [number, node] : nodes) result.nodes.push_back(number);
    return result;
}

using Names = std::vector<std::string>;

TEST(RunOrder, PutsEveryComponentBehindWhatFeedsIt) {
    SmallLink link;
    link.Draw(
        "Source a\nSource b > Join join > Sink sink\n"
        "Source dangling\na > join.2");
    const Ordered result = Order(link);
    EXPECT_EQ(result.status, Status::Success) << result.text;
    EXPECT_EQ(result.names, (Names{"b", "a", "join", "sink"}));
    std::vector<std::int32_t> nodes;
    for (const char* name : {"a", "b", "join"}) {
        nodes.push_back(link[name].outputs[0].node->number);
    }
    EXPECT_EQ(result.nodes, nodes);
}

TEST(RunOrder, RunsPlotsRightBehindWhatFeedsThem) {
    SmallLink link;
    link.Model("Wide", {BinSigType, BinSigType}, {NoSigType});  // waits for its own turn
    link.Draw(
        "Source source > Step step > Sink last\n"
        "source > Sink plot\nsource > Wide wide");
    EXPECT_EQ(Order(link).names, (Names{"source", "plot", "step", "last", "wide"}));
}

TEST(LoopInputs, ComeBackFirstThenFromOutsideThenFromInside) {
    SmallLink link;
    link.LoopModels(6);
    link.Draw(
        "Source source > LoopBeginBlock begin > Step inside1 > LoopEndBlock end > Step back\n"
        "back > end.3\n"  // a wire round the end block itself
        "Source outside1 > end.2\nSource outside2 > end.5\n"
        "begin.2 > Step inside2 > end.4");
    std::string text;
    ASSERT_EQ(AssignLevels(*link.workspace, text), Status::Success);
    // Port 6 is not wired: nothing upstream, so it counts as outside.
    std::vector<Node*> expected;
    for (const std::size_t port : {3, 6, 5, 2, 4, 1}) {
        expected.push_back(link["end"].inputs[port - 1].node);
    }
    EXPECT_EQ(SortLoopInputs(link["end"], *link.workspace), expected);
}

// By design: an ordinary driver goes on with the adjustment of the loop block queued before
// it on the same node, so its inputs are walked in the order of a loop's end.
TEST(RunOrder, OrdinaryDriverKeepsTheAdjustmentOfTheLoopEndBeforeIt) {
    for (const bool behindLoopEnd : {false, true}) {
        SmallLink link;
        link.LoopModels();
        link.Draw("LoopBeginBlock begin\nLoopEndBlock end\nSource a > Join join > Sink sink");
        link.Draw("Source b > join.2");
        if (behindLoopEnd) {
            link.Draw("Source c > begin > end");
            // A second driver on the sink's node, as a file may have it.
            AttachOutput(link["end"], 1, link["sink"].inputs[0].node->number, *link.workspace);
        }
        const Names names = Order(link).names;
        const Names tail(names.end() - 4, names.end());
        EXPECT_EQ(tail, behindLoopEnd ? (Names{"b", "a", "join", "sink"})
                                      : (Names{"a", "b", "join", "sink"}));
    }
}

TEST(RunOrder, FollowsAChainOfAHundredThousandBlocks) {
    SmallLink link;
    link.LoopModels();
    constexpr int length = 100000;
    constexpr int digits = 1000000;  // keeps the names sorted as they are made
    Workspace& workspace = *link.workspace;
    const char* pattern[] = {"LoopBeginBlock", "Step", "LoopEndBlock"};
    for (int i = 0; i < length; ++i) {
        const char* type = i == 0 ? "Source" : i == length - 1 ? "Sink" : pattern[i % 3];
        Component* component = CreateComponent(std::to_string(digits + i), type, 0, 0,
                                               workspace.components, link.catalogue);
        ASSERT_NE(component, nullptr);
        AttachInput(*component, 1, i, workspace);
        AttachOutput(*component, 1, i == length - 1 ? 0 : i + 1, workspace);
    }
    const Ordered result = Order(link);
    EXPECT_EQ(result.status, Status::Success) << result.text;
    ASSERT_EQ(result.names.size(), static_cast<std::size_t>(length));
    EXPECT_TRUE(std::is_sorted(result.names.begin(), result.names.end()));
}

TEST(RunOrder, NamesAComponentOfAWiredCycle) {
    const std::pair<const char*, const char*> rows[] = {
        {"Source source > Join join%n > Step step > Sink sink\nstep > join%n.2", "step"},
        {"Source source > LoopBeginBlock begin > Step step\nstep > begin.2", "begin"},
    };
    for (const auto& [diagram, name] : rows) {
        SmallLink link;
        link.LoopModels(2);
        link.Draw(diagram);
        const Ordered result = Order(link);
        EXPECT_EQ(result.status, Status::Error);
        EXPECT_NE(result.text.find(Concat("ERROR: component '", name, "' is wired in a cycle")),
                  std::string::npos)
            << result.text;
    }
}

}  // namespace
}  // namespace photrak

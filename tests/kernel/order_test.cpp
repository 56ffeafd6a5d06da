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
    Component& a = link.Add("Source", "a");
    Component& b = link.Add("Source", "b");
    Component& join = link.Add("Join", "join");
    Component& sink = link.Add("Sink", "sink");
    link.Add("Source", "dangling");
    link.Chain({&b, &join, &sink});
    link.Wire(a, 1, join, 2);
    const Ordered result = Order(link);
    EXPECT_EQ(result.status, Status::Success) << result.text;
    EXPECT_EQ(result.names, (Names{"b", "a", "join", "sink"}));
    EXPECT_EQ(result.nodes,
              (std::vector<std::int32_t>{a.outputs[0].node->number, b.outputs[0].node->number,
                                         join.outputs[0].node->number}));
}

TEST(RunOrder, RunsPlotsRightBehindWhatFeedsThem) {
    SmallLink link;
    link.Model("Wide", {BinSigType, BinSigType}, {NoSigType});
    Component& source = link.Add("Source", "source");
    Component& step = link.Add("Step", "step");
    Component& last = link.Add("Sink", "last");
    Component& plot = link.Add("Sink", "plot");
    Component& wide = link.Add("Wide", "wide");  // two inputs: waits for its own turn
    link.Chain({&source, &step, &last});
    link.Wire(source, 1, plot, 1);
    link.Wire(source, 1, wide, 1);
    EXPECT_EQ(Order(link).names, (Names{"source", "plot", "step", "last", "wide"}));
}

TEST(LoopLevels, CountOpenLoopsOnTheDeepestWay) {
    SmallLink link;
    link.LoopModels();
    Component& source = link.Add("Source", "source");
    Component& outer = link.Add("LoopBeginBlock", "outer");
    Component& inner = link.Add("LoopBeginBlock", "inner");
    Component& body = link.Add("Join", "body");
    Component& innerEnd = link.Add("LoopEndBlock", "innerEnd");
    Component& outerEnd = link.Add("LoopEndBlock", "outerEnd");
    Component& sink = link.Add("Sink", "sink");
    Component& island = link.Add("Step", "island");
    link.Chain({&source, &outer, &inner, &body, &innerEnd, &outerEnd, &sink});
    link.Wire(source, 1, body, 2);
    std::string text;
    ASSERT_EQ(AssignLevels(*link.workspace, text), Status::Success);
    const std::pair<Component*, std::int32_t> expected[] = {
        {&source, 0},   {&outer, 0},    {&inner, 1}, {&body, 2},
        {&innerEnd, 2}, {&outerEnd, 1}, {&sink, 0},  {&island, levelNotReached}};
    for (const auto& [component, level] : expected) {
        EXPECT_EQ(component->level, level) << component->name;
    }
}

TEST(LoopInputs, ComeBackFirstThenFromOutsideThenFromInside) {
    SmallLink link;
    link.LoopModels(6);
    Component& source = link.Add("Source", "source");
    Component& begin = link.Add("LoopBeginBlock", "begin");
    Component& end = link.Add("LoopEndBlock", "end");
    Component& inside1 = link.Add("Step", "inside1");
    Component& inside2 = link.Add("Step", "inside2");
    Component& outside1 = link.Add("Source", "outside1");
    Component& outside2 = link.Add("Source", "outside2");
    Component& back = link.Add("Step", "back");
    link.Wire(source, 1, begin, 1);
    link.Wire(begin, 1, inside1, 1);
    link.Wire(begin, 2, inside2, 1);
    link.Wire(inside1, 1, end, 1);
    link.Wire(outside1, 1, end, 2);
    link.Wire(back, 1, end, 3);
    link.Wire(end, 1, back, 1);  // a wire round the end block itself
    link.Wire(inside2, 1, end, 4);
    link.Wire(outside2, 1, end, 5);
    std::string text;
    ASSERT_EQ(AssignLevels(*link.workspace, text), Status::Success);
    // Port 6 is not wired: nothing upstream, so it counts as outside.
    const std::vector<Node*> expected = {back.outputs[0].node,     end.inputs[5].node,
                                         outside2.outputs[0].node, outside1.outputs[0].node,
                                         inside2.outputs[0].node,  inside1.outputs[0].node};
    EXPECT_EQ(SortLoopInputs(end, *link.workspace), expected);
}

// Kept deliberately: an ordinary driver goes on with the adjustment of the loop block queued before
// it on the same node, so its inputs are walked in the order of a loop's end.
TEST(RunOrder, OrdinaryDriverKeepsTheAdjustmentOfTheLoopEndBeforeIt) {
    for (const bool behindLoopEnd : {false, true}) {
        SmallLink link;
        link.LoopModels();
        Component& begin = link.Add("LoopBeginBlock", "begin");
        Component& end = link.Add("LoopEndBlock", "end");
        Component& join = link.Add("Join", "join");
        Component& a = link.Add("Source", "a");
        Component& b = link.Add("Source", "b");
        Component& sink = link.Add("Sink", "sink");
        link.Chain({&a, &join, &sink});
        link.Wire(b, 1, join, 2);
        if (behindLoopEnd) {
            Component& source = link.Add("Source", "c");
            link.Chain({&source, &begin, &end});
            // A second driver on the sink's node, as a file may have it.
            AttachOutput(end, 1, sink.inputs[0].node->number, *link.workspace);
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
    SmallLink link;
    Component& join = link.Add("Join", "join%n");
    Component& step = link.Add("Step", "step");
    Component& source = link.Add("Source", "source");
    Component& sink = link.Add("Sink", "sink");
    link.Chain({&source, &join, &step, &sink});
    link.Wire(step, 1, join, 2);
    const Ordered result = Order(link);
    EXPECT_EQ(result.status, Status::Error);
    EXPECT_NE(result.text.find("ERROR: component 'step' is wired in a cycle"), std::string::npos)
        << result.text;
}

TEST(RunOrder, EndsWhenACycleOpensLoopsWithoutEnd) {
    SmallLink link;
    link.LoopModels(2);
    Component& begin = link.Add("LoopBeginBlock", "begin");
    Component& source = link.Add("Source", "source");
    Component& step = link.Add("Step", "step");
    link.Chain({&source, &begin, &step});
    link.Wire(step, 1, begin, 2);
    const Ordered result = Order(link);
    EXPECT_EQ(result.status, Status::Error);
    EXPECT_NE(result.text.find("'begin' is wired in a cycle"), std::string::npos) << result.text;
}

TEST(RunOrder, NamesAComponentWhosePortStandsOnNoNode) {
    SmallLink link;
    Component& source = link.Add("Source", "source");
    Component* join =
        CreateComponent("join", "Join", 0, 0, link.workspace->components, link.catalogue);
    Component& sink = link.Add("Sink", "sink");
    AttachInput(*join, 1, source.outputs[0].node->number, *link.workspace);
    AttachOutput(*join, 1, sink.inputs[0].node->number, *link.workspace);
    const Ordered result = Order(link);
    EXPECT_EQ(result.status, Status::Error);
    EXPECT_EQ(result.text, "ERROR: input 2 of component 'join' stands on no node\n");
}

}  // namespace
}  // namespace photrak

// Building and wiring a workspace: port types, unique names, connecting, disconnecting, checking;
// and the run order: post-order from the sinks, loop levels, long chains, cycles.
#include "kernel/graph.h"

#include "kernel/order.h"
#include "support/small_link.h"

namespace photrak {
namespace {

std::vector<std::int32_t> Types(const std::vector<Port>& ports) {
    std::vector<std::int32_t> types;
    for (const Port& port : ports) types.push_back(port.sigType);
    return types;
}

TEST(CreateComponent, GrowsPortsByTheTemplate) {
    struct Row {
        std::vector<std::int32_t> portTemplate;
        std::int32_t asked;
        std::vector<std::int32_t> inputs, outputs;
    };
    const Row rows[] = {
        {{0, 1, RepeatTwo}, 6, {0, 1, 0, 1, 0, 1}, {0, 1, 7, 7, 7, 7}},
        {{5, 0, 1, 3, RepeatThree}, 8, {5, 0, 1, 3, 0, 1, 3, 0}, {5, 0, 1, 3, 8, 8, 8, 8}},
        {{3, RepeatTwo}, 4, {3, 4, 3, 4}, {3, 7, 7, 7}},
        {{0, 1}, 4, {0, 1, 1, 1}, {0, 1, 1, 1}},
        {{0}, 9, {0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0}},  // limited to 8
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.portTemplate));
        SmallLink link;
        Component& model = link.Model("M", row.portTemplate, row.portTemplate);
        model.MININPUTS = model.MINOUTPUTS = 1;
        model.MAXINPUTS = model.MAXOUTPUTS = 8;
        const Component& made = link.Add("M", "m", row.asked, row.asked);
        EXPECT_EQ(Types(made.inputs), row.inputs);
        EXPECT_EQ(Types(made.outputs), row.outputs);
    }
}

TEST(AddComponent, MakesNamesUniqueAndKeepsThemSorted) {
    SmallLink link;
    for (const char* name : {"Fiber", "Zebra", "Fiber", "Fiber", "Amp"}) link.Add("Step", name);
    std::vector<std::string> names;
    for (const auto& component : link.workspace->components) names.push_back(component->name);
    EXPECT_EQ(names, (std::vector<std::string>{"Amp", "Fiber", "Fiber1", "Fiber11", "Zebra"}));
    EXPECT_EQ(link.Add("Step", "Fiber1").name, "Fiber111");
}

/// What becomes of an output of type o wired to an input of type i: the common type, or 'x'.
/// Rows: o = 0..6, columns: i = 0..6.
constexpr const char* outcomes[] = {
    "0x0x0xx",  // OpSigType
    "x11x1xx",  // ElecSigType
    "012x2xx",  // OpOrElecSigType
    "xxx33xx",  // BinSigType
    "012345x",  // UnknownSigType
    "xxxx55x",  // NoSigType
    "xxxxxx6",  // EtcSigType
};

TEST(ConnectComponents, ReconcilesTypesByTheTable) {
    for (std::int32_t o = 0; o <= EtcSigType; ++o) {
        for (std::int32_t i = 0; i <= EtcSigType; ++i) {
            SCOPED_TRACE(Concat("output ", o, ", input ", i));
            SmallLink link;
            link.Model("From", {}, {o});
            link.Model("To", {i}, {});
            const Port& output = link.Add("From", "from").outputs[0];
            const Port& input = link.Add("To", "to").inputs[0];
            const char outcome = outcomes[o][i];
            std::string text;
            const Status status =
                ConnectComponents(*link.workspace, link["from"], 1, link["to"], 1, text);
            EXPECT_EQ(text, outcome != 'x'
                                ? ""
                                : "ERROR: NO connection made: specified output of first component "
                                  "not compatible with specified input of second component\n");
            EXPECT_EQ(status, outcome == 'x' ? Status::Error : Status::Success);
            EXPECT_EQ(output.node == input.node, outcome != 'x');
            if (outcome == 'x') continue;
            EXPECT_EQ(output.sigType, outcome - '0');
            EXPECT_EQ(input.sigType, outcome - '0');
            EXPECT_NE(FindNode(0, *link.workspace), nullptr);  // ground never goes
        }
    }
}

TEST(ConnectComponents, ChoosesPortsLeftOpen) {
    SmallLink link;
    link.Model("Two", {OpSigType, BinSigType}, {OpSigType, BinSigType});
    link.Draw("Source s\nTwo two\nTwo other");
    const struct {
        const char* from;
        std::int32_t output, input;  // 0: any
        std::string text;
    } rows[] = {
        {"s", 0, 0, ""},  // takes input 2, so any further output of bits finds nothing
        {"s", 0, 0, "components are not compatible"},
        {"other", 2, 0, "first component not compatible with specified input of second component"},
        // A given input is chosen without a look at its driver, which then refuses.
        {"other", 0, 2, "specified input of second component already being driven by 's'"},
    };
    for (const auto& [from, output, input, refusal] : rows) {
        SCOPED_TRACE(refusal);
        std::string text;
        EXPECT_EQ(ConnectComponents(*link.workspace, link[from], output, link["two"], input, text),
                  refusal.empty() ? Status::Success : Status::Error);
        EXPECT_EQ(text, refusal.empty() ? "" : "ERROR: NO connection made: " + refusal + "\n");
    }
    EXPECT_EQ(link["two"].inputs[1].node, link["s"].outputs[0].node);
    std::string text;
    EXPECT_EQ(ConnectComponents(*link.workspace, link["s"], 2, link["two"], 1, text),
              Status::Error);
    EXPECT_EQ(text, "ERROR: invalid position number on first component to connect\n");
}

// By design: a refused connection leaves the types that it reconciled.
TEST(ConnectComponents, KeepsTheTypeChangeOfARefusedConnection) {
    SmallLink link;
    link.Model("Op", {}, {OpSigType});
    link.Model("Any", {UnknownSigType}, {UnknownSigType});
    link.Draw("Any first > Any second\nOp light");
    std::string text;
    EXPECT_EQ(ConnectComponents(*link.workspace, link["light"], 1, link["second"], 1, text),
              Status::Error);
    EXPECT_EQ(link["second"].inputs[0].sigType, OpSigType);
    EXPECT_EQ(link["first"].outputs[0].sigType, OpSigType);
}

TEST(ConnectComponents, MergesNodesWithAllThatStandsOnThem) {
    SmallLink link;
    link.Draw("Source s\nSink k");
    Node& node = *link["k"].inputs[0].node;
    node.lines.push_back({{1, 2, 3, 4}, "drawn"});
    node.flags = nodeFlag::end;
    link.workspace->ENDNODES.push_back(&node);
    const std::int32_t gone = node.number;
    link.Draw("s > k");
    Node* left = link["s"].outputs[0].node;
    EXPECT_EQ(FindNode(gone, *link.workspace), nullptr);
    EXPECT_EQ(left->lines.size(), 1u);
    EXPECT_EQ(left->flags, nodeFlag::end);
    EXPECT_EQ(link.workspace->ENDNODES.back(), left);
    EXPECT_EQ(left->readers, std::list<Component*>{&link["k"]});
}

TEST(DisconnectComponents, GivesPortsTheirOwnTypesBack) {
    SmallLink link;
    link.Model("Op", {}, {OpSigType});
    link.Model("Any", {UnknownSigType}, {UnknownSigType});
    link.Model("Two", {UnknownSigType, BinSigType}, {});
    link.Draw("Op light\nAny first > Two second.2\nlight > first");
    std::string text;
    const auto disconnect = [&](const char* from, std::int32_t output, const char* to,
                                std::int32_t input) {
        return DisconnectComponents(*link.workspace, link[from], output, link[to], input, text);
    };
    EXPECT_EQ(disconnect("light", 0, "second", 0), Status::Error);
    EXPECT_EQ(disconnect("light", 0, "second", 1), Status::Error);
    EXPECT_EQ(text,
              "ERROR: NO disconnection made: components were not connected\n"
              "ERROR: NO disconnection made: second component not connected to first component\n");
    ASSERT_EQ(disconnect("light", 0, "first", 0), Status::Success);
    const Port &output = link["light"].outputs[0], &input = link["first"].inputs[0];
    EXPECT_NE(output.node, input.node);
    EXPECT_EQ(input.sigType, UnknownSigType);
    EXPECT_EQ(output.sigType, OpSigType);
    EXPECT_TRUE(output.node->readers.empty());
    EXPECT_EQ(input.node->number, link.workspace->nodes.rbegin()->first);
}

TEST(RemoveComponent, LeavesNoTraceOnTheNodes) {
    SmallLink link;
    link.Draw("Source s > Sink k");
    Component* source = &link["s"];
    RemoveComponent(source, *link.workspace);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(link.workspace->components.size(), 1u);
    EXPECT_TRUE(link["k"].inputs[0].node->drivers.empty());
    EXPECT_TRUE(FindNode(0, *link.workspace)->readers.empty());
}

TEST(CheckPorts, ReportsCountsAndParametersTogether) {
    SmallLink link;
    Component& model = link.Model("M", {0, 0}, {0, 0, 0});
    model.parameters = LimitedParameter("n", IntType, "12", 0, 9);
    Component& made = link.Add("M", "100%s");
    made.NUMINEQNUMOUTNODES = 1;
    made.MAXINPUTS = 1;
    made.MINOUTPUTS = 4;
    std::string text;
    ASSERT_EQ(EvalParam(made.parameters, link.workspace.get(), text), Status::Success);
    EXPECT_EQ(CheckPorts(made, text), Status::Error);
    EXPECT_EQ(text,
              "ERROR: '100%s' number of input nodes does not equal number of output nodes!\n"
              "ERROR: '100%s' number of input nodes is greater than maximum number\n"
              "ERROR: '100%s' number of output nodes is less than minimum number\n"
              "WARNING: parameter 'n' greater than maximum value; change to 9\n"
              "in component 100%s\n");
}

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

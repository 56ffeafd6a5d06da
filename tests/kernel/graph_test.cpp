// Building and wiring a workspace: port types, unique names, connecting, disconnecting, checking.
#include "kernel/graph.h"

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

}  // namespace
}  // namespace photrak

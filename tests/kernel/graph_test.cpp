// Building and wiring a workspace: port types, unique names, connecting, disconnecting, checking.
#include "kernel/graph.h"

#include <limits>

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
        {{0, 1, 2, 3, RepeatFour, 0}, 7, {0, 1, 2, 3, 0, 1, 2}, {0, 1, 2, 3, 9, 0, 0}},
        {{3, RepeatTwo}, 4, {3, 4, 3, 4}, {3, 7, 7, 7}},
        {{0, 1}, 4, {0, 1, 1, 1}, {0, 1, 1, 1}},
        {{}, 2, {4, 4}, {4, 4}},
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
        EXPECT_EQ(made.NUMINPUTS, static_cast<std::int32_t>(row.inputs.size()));
    }
}

TEST(CreateComponent, RefusesUnknownTypesAndCountsBeyondMemory) {
    SmallLink link;
    link.Model("Huge", {0}, {0}).MAXINPUTS = std::numeric_limits<std::int32_t>::max();
    ComponentList& list = link.workspace->components;
    EXPECT_EQ(CreateComponent("x", "None", 0, 0, list, link.catalogue), nullptr);
    EXPECT_EQ(CreateComponent("x", "Huge", 2000000000, 0, list, link.catalogue), nullptr);
    EXPECT_TRUE(list.empty());
}

TEST(AddComponent, MakesNamesUniqueAndKeepsThemSorted) {
    SmallLink link;
    for (const char* name : {"Fiber", "Zebra", "Fiber", "Fiber", "Amp"}) link.Add("Step", name);
    std::vector<std::string> names;
    for (const auto& component : link.workspace->components) names.push_back(component->name);
    EXPECT_EQ(names, (std::vector<std::string>{"Amp", "Fiber", "Fiber1", "Fiber11", "Zebra"}));
    EXPECT_EQ(link.Add("Step", "Fiber1").name, "Fiber111");
}

TEST(Nodes, NewNumbersSurviveTheGreatestOne) {
    SmallLink link;
    FindOrCreateNode(41, *link.workspace);
    EXPECT_EQ(NewNodeNumber(*link.workspace), 42);
    FindOrCreateNode(std::numeric_limits<std::int32_t>::max(), *link.workspace);
    FindOrCreateNode(1, *link.workspace);
    EXPECT_EQ(NewNodeNumber(*link.workspace), 2);
}

// A node that already has its type must still draw a stray port along, and an old port must follow
// when the node's type was set from outside.
TEST(Nodes, EveryPortFollowsTheTypeOfItsNode) {
    SmallLink link;
    link.Model("Op", {OpSigType}, {});
    link.Model("Bin", {BinSigType}, {});
    link.Model("Any", {UnknownSigType}, {});
    std::vector<Component*> made;
    for (const char* type : {"Op", "Bin", "Any"}) {
        made.push_back(
            CreateComponent(type, type, 0, 0, link.workspace->components, link.catalogue));
        AttachInput(*made.back(), 1, 7, *link.workspace);
    }
    for (const Component* component : made) EXPECT_EQ(component->inputs[0].sigType, OpSigType);

    Node& node = *FindNode(7, *link.workspace);
    node.type = ElecSigType;
    Component* late =
        CreateComponent("Late", "Any", 0, 0, link.workspace->components, link.catalogue);
    AttachInput(*late, 1, 7, *link.workspace);
    AttachInput(*late, 5, 7, *link.workspace);  // no such port: only a reader
    made.push_back(late);
    for (const Component* component : made) EXPECT_EQ(component->inputs[0].sigType, ElecSigType);
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
            SCOPED_TRACE("output " + std::to_string(o) + ", input " + std::to_string(i));
            SmallLink link;
            link.Model("From", {}, {o});
            link.Model("To", {i}, {});
            Component& from = link.Add("From", "from");
            Component& to = link.Add("To", "to");
            const char outcome = outcomes[o][i];
            std::string text;
            const Status status = ConnectComponents(*link.workspace, from, 1, to, 1, text);
            if (outcome == 'x') {
                EXPECT_EQ(status, Status::Error);
                EXPECT_EQ(text,
                          "ERROR: NO connection made: specified output of first component not "
                          "compatible with specified input of second component\n");
                EXPECT_NE(from.outputs[0].node, to.inputs[0].node);
                continue;
            }
            EXPECT_EQ(status, Status::Success) << text;
            EXPECT_EQ(from.outputs[0].node, to.inputs[0].node);
            EXPECT_EQ(from.outputs[0].sigType, outcome - '0');
            EXPECT_EQ(to.inputs[0].sigType, outcome - '0');
            EXPECT_NE(FindNode(0, *link.workspace), nullptr);  // ground never goes
        }
    }
}

TEST(ConnectComponents, ChoosesPortsLeftOpen) {
    SmallLink link;
    link.Model("Two", {OpSigType, BinSigType}, {OpSigType, BinSigType});
    Component& source = link.Add("Source", "s");
    Component& two = link.Add("Two", "two");
    Component& other = link.Add("Two", "other");
    std::string text;
    ASSERT_EQ(ConnectComponents(*link.workspace, source, 0, two, 0, text), Status::Success);
    EXPECT_EQ(two.inputs[1].node, source.outputs[0].node);
    // Input 2 is driven, so any further output of bits finds nothing.
    EXPECT_EQ(ConnectComponents(*link.workspace, source, 0, two, 0, text), Status::Error);
    EXPECT_EQ(text, "ERROR: NO connection made: components are not compatible\n");
    text.clear();
    EXPECT_EQ(ConnectComponents(*link.workspace, other, 2, two, 0, text), Status::Error);
    EXPECT_EQ(text,
              "ERROR: NO connection made: first component not compatible with specified input of "
              "second component\n");
    text.clear();
    EXPECT_EQ(ConnectComponents(*link.workspace, source, 0, two, 1, text), Status::Error);
    EXPECT_EQ(text,
              "ERROR: NO connection made: second component not compatible with specified output of "
              "first component\n");
    text.clear();
    // A given input is chosen without a look at its driver, which then refuses.
    EXPECT_EQ(ConnectComponents(*link.workspace, other, 0, two, 2, text), Status::Error);
    EXPECT_EQ(text,
              "ERROR: NO connection made: specified input of second component already being driven "
              "by 's'\n");
    text.clear();
    EXPECT_EQ(ConnectComponents(*link.workspace, source, 1, two, 2, text), Status::Success);
    EXPECT_EQ(ConnectComponents(*link.workspace, source, 2, two, 1, text), Status::Error);
    EXPECT_EQ(ConnectComponents(*link.workspace, source, 1, two, 3, text), Status::Error);
    EXPECT_EQ(text,
              "ERROR: invalid position number on first component to connect\n"
              "ERROR: invalid position number on second component to connect\n");
}

// Kept deliberately: a refused connection leaves the types that it reconciled.
TEST(ConnectComponents, KeepsTheTypeChangeOfARefusedConnection) {
    SmallLink link;
    link.Model("Op", {}, {OpSigType});
    link.Model("Any", {UnknownSigType}, {UnknownSigType});
    Component& first = link.Add("Any", "first");
    Component& second = link.Add("Any", "second");
    Component& light = link.Add("Op", "light");
    link.Wire(first, 1, second, 1);
    std::string text;
    EXPECT_EQ(ConnectComponents(*link.workspace, light, 1, second, 1, text), Status::Error);
    EXPECT_EQ(second.inputs[0].sigType, OpSigType);
    EXPECT_EQ(first.outputs[0].sigType, OpSigType);
}

TEST(ConnectComponents, MergesNodesWithAllThatStandsOnThem) {
    SmallLink link;
    Component& source = link.Add("Source", "s");
    Component& sink = link.Add("Sink", "k");
    Node& node = *sink.inputs[0].node;
    node.lines.push_back({{1, 2, 3, 4}, "drawn"});
    node.flags = nodeFlag::end;
    link.workspace->ENDNODES.push_back(&node);
    const std::int32_t gone = node.number;
    link.Wire(source, 1, sink, 1);
    Node* left = source.outputs[0].node;
    EXPECT_EQ(FindNode(gone, *link.workspace), nullptr);
    EXPECT_EQ(left->lines.size(), 1u);
    EXPECT_EQ(left->flags, nodeFlag::end);
    EXPECT_EQ(link.workspace->ENDNODES.back(), left);
    EXPECT_EQ(left->readers, std::list<Component*>{&sink});
}

TEST(DisconnectComponents, GivesPortsTheirOwnTypesBack) {
    SmallLink link;
    link.Model("Op", {}, {OpSigType});
    link.Model("Any", {UnknownSigType, UnknownSigType}, {UnknownSigType});
    Component& light = link.Add("Op", "light");
    Component& first = link.Add("Any", "first");
    Component& second = link.Add("Any", "second");
    link.Wire(first, 1, second, 2);
    link.Wire(light, 1, first, 1);
    std::string text;
    EXPECT_EQ(DisconnectComponents(*link.workspace, light, 0, second, 0, text), Status::Error);
    EXPECT_EQ(DisconnectComponents(*link.workspace, light, 0, second, 1, text), Status::Error);
    EXPECT_EQ(DisconnectComponents(*link.workspace, light, 1, second, 1, text), Status::Error);
    EXPECT_EQ(text,
              "ERROR: NO disconnection made: components were not connected\n"
              "ERROR: NO disconnection made: second component not connected to first component\n"
              "ERROR: NO disconnection made: first component not connected to second component\n");
    text.clear();
    ASSERT_EQ(DisconnectComponents(*link.workspace, light, 0, first, 0, text), Status::Success);
    EXPECT_NE(light.outputs[0].node, first.inputs[0].node);
    EXPECT_EQ(first.inputs[0].sigType, UnknownSigType);
    EXPECT_EQ(light.outputs[0].sigType, OpSigType);
    EXPECT_TRUE(light.outputs[0].node->readers.empty());
    EXPECT_EQ(first.inputs[0].node->number, link.workspace->nodes.rbegin()->first);
    ASSERT_EQ(DisconnectComponents(*link.workspace, first, 1, second, 0, text), Status::Success);
    EXPECT_EQ(second.inputs[1].sigType, UnknownSigType);
}

TEST(RemoveComponent, LeavesNoTraceOnTheNodes) {
    SmallLink link;
    Component* source = &link.Add("Source", "s");
    Component& sink = link.Add("Sink", "k");
    link.Wire(*source, 1, sink, 1);
    RemoveComponent(source, *link.workspace);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(FindModel("s", link.workspace->components), nullptr);
    EXPECT_TRUE(sink.inputs[0].node->drivers.empty());
    EXPECT_TRUE(FindNode(0, *link.workspace)->readers.empty());
    ClearWorkspace(*link.workspace);
    EXPECT_EQ(link.workspace->nodes.size(), 1u);
    EXPECT_EQ(link.workspace->ENDNODES.front()->flags, nodeFlag::begin | nodeFlag::end);
}

TEST(CheckPorts, ReportsCountsAndParametersTogether) {
    SmallLink link;
    Component& model = link.Model("M", {0, 0}, {0, 0, 0});
    model.parameters = SmallLink::IntParameter("n", "12", 0, 9);
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

TEST(Variables, StandInOrderOfTheirNames) {
    SmallLink link;
    for (const char* name : {"b", "a", "c"}) AddVariable(*link.workspace, name, DoubleType, "1");
    AddVariable(*link.workspace, "b", DoubleType, "2");
    std::string names;
    for (const Variable& variable : link.workspace->variables) names += variable.name;
    EXPECT_EQ(names, "abbc");
    EXPECT_EQ(FindVariable("b", *link.workspace)->value, "2");  // a repeat stands before the older
    EXPECT_EQ(FindVariable("d", *link.workspace), nullptr);
}

}  // namespace
}  // namespace photrak

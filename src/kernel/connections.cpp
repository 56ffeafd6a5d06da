// Wiring two components: the choice of ports, the reconciling of their types, and the merging of
// two nodes into one; and the way back.
#include "kernel/connections.h"

#include <algorithm>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/port_types.h"

namespace photrak {
namespace {

constexpr const char* incompatibleComponents =
    "ERROR: NO connection made: components are not compatible\n";
constexpr const char* inputFitsNoOutput =
    "ERROR: NO connection made: second component not compatible with specified output of first "
    "component\n";
constexpr const char* outputFitsNoInput =
    "ERROR: NO connection made: first component not compatible with specified input of second "
    "component\n";
constexpr const char* incompatiblePorts =
    "ERROR: NO connection made: specified output of first component not compatible with specified "
    "input of second component\n";
constexpr const char* alreadyDriven =
    "ERROR: NO connection made: specified input of second component already being driven by '%s'\n";
constexpr const char* notConnected =
    "ERROR: NO disconnection made: components were not connected\n";
constexpr const char* inputNotConnected =
    "ERROR: NO disconnection made: second component not connected to first component\n";
constexpr const char* outputNotConnected =
    "ERROR: NO disconnection made: first component not connected to second component\n";

/// An output and an input, positions from 1; 0 stands for any, or for none found.
struct Wire {
    std::int32_t output = 0, input = 0;
};

bool IsPosition(std::int32_t position, const std::vector<Port>& ports) {
    return position >= 0 && static_cast<std::size_t>(position) <= ports.size();
}

Status CheckPositions(const Component& first, const Component& second, Wire wire,
                      std::string& errorText) {
    if (!IsPosition(wire.output, first.outputs)) {
        errorText += "ERROR: invalid position number on first component to connect\n";
        return Status::Error;
    }
    if (!IsPosition(wire.input, second.inputs)) {
        errorText += "ERROR: invalid position number on second component to connect\n";
        return Status::Error;
    }
    return Status::Success;
}

Port& At(std::vector<Port>& ports, std::int32_t position) {
    return ports[static_cast<std::size_t>(position) - 1];
}

bool IsDriven(const Port& input) {
    return input.node && !input.node->drivers.empty();
}

/// The first pair, output by output, that `fits(output, input)`; a position other than 0 is kept.
template <class Fits>
Wire FirstPair(Component& first, Component& second, Wire wanted, Fits fits) {
    for (std::size_t o = 1; o <= first.outputs.size(); ++o) {
        if (wanted.output != 0 && static_cast<std::size_t>(wanted.output) != o) continue;
        for (std::size_t i = 1; i <= second.inputs.size(); ++i) {
            if (wanted.input != 0 && static_cast<std::size_t>(wanted.input) != i) continue;
            if (fits(first.outputs[o - 1], second.inputs[i - 1])) {
                return {static_cast<std::int32_t>(o), static_cast<std::int32_t>(i)};
            }
        }
    }
    return {};
}

/// Fills the positions left open; both stay 0 when nothing fits.
Wire ChooseToConnect(Component& first, Component& second, Wire wanted) {
    if (wanted.output != 0 && wanted.input != 0) return wanted;
    return FirstPair(first, second, wanted, [&](const Port& output, const Port& input) {
        // A given input is taken as it stands: whether it has a driver shows in the end.
        return output.sigType == input.sigType && (wanted.input != 0 || !IsDriven(input));
    });
}

/// The more particular type goes onto the other port's node. False when the two never meet.
bool ReconcileTypes(const Port& output, const Port& input) {
    const std::int32_t o = output.sigType, i = input.sigType;
    if (IsMoreParticular(o, i)) {
        SetNodeSigType(*input.node, o);
    } else if (IsMoreParticular(i, o)) {
        SetNodeSigType(*output.node, i);
    }
    return o == i || IsMoreParticular(o, i) || IsMoreParticular(i, o);
}

void MovePorts(const std::list<Component*>& components, std::vector<Port> Component::*ports,
               const Node& from, Node& to) {
    for (Component* component : components) {
        for (Port& port : component->*ports) {
            if (port.node == &from) port.node = &to;
        }
    }
}

void AppendSignals(Node& from, Node& to) {
    SigRecord** tail = &to.signals;
    while (*tail) tail = &(*tail)->next;
    *tail = from.signals;
    from.signals = nullptr;
}

/// A begin or end list must not keep a node that is about to go.
void ReplaceInList(std::vector<Node*>& list, Node* from, Node* to) {
    const bool known = std::find(list.begin(), list.end(), to) != list.end();
    if (known) {
        list.erase(std::remove(list.begin(), list.end(), from), list.end());
    } else {
        std::replace(list.begin(), list.end(), from, to);
    }
}

/// Everything on `from` moves to `to`, and `from` goes.
void MergeNodes(Node& from, Node& to, Workspace& workspace) {
    MovePorts(from.readers, &Component::inputs, from, to);
    MovePorts(from.drivers, &Component::outputs, from, to);
    to.readers.splice(to.readers.end(), from.readers);
    to.drivers.splice(to.drivers.end(), from.drivers);
    to.settledType = NoSettledType;
    AppendSignals(from, to);
    std::move(from.lines.begin(), from.lines.end(), std::back_inserter(to.lines));
    to.flags |= from.flags;
    ReplaceInList(workspace.BEGINNODES, &from, &to);
    ReplaceInList(workspace.ENDNODES, &from, &to);
    workspace.nodes.erase(from.number);
}

/// A port that a file left without a node gets one of its own, so that it can be wired.
void GiveNodes(Workspace& workspace, Component& first, Component& second, Wire wire) {
    if (!At(first.outputs, wire.output).node) {
        AttachOutput(first, wire.output, NewNodeNumber(workspace), workspace);
    }
    if (!At(second.inputs, wire.input).node) {
        AttachInput(second, wire.input, NewNodeNumber(workspace), workspace);
    }
}

Status ConnectPorts(Workspace& workspace, Port& output, Port& input, std::string& errorText) {
    if (output.node == input.node) return Status::Success;
    if (!ReconcileTypes(output, input)) {
        errorText += incompatiblePorts;
        return Status::Error;
    }
    if (input.sigType != NoSigType && IsDriven(input)) {
        errorText += FillIn(alreadyDriven, {input.node->drivers.front()->name});
        return Status::Error;
    }
    // Ground never goes, whichever side stands on it.
    const bool intoInput = input.node->number == 0;
    MergeNodes(intoInput ? *output.node : *input.node, intoInput ? *input.node : *output.node,
               workspace);
    return Status::Success;
}

}  // namespace

Status ConnectComponents(Workspace& workspace, Component& first, std::int32_t output,
                         Component& second, std::int32_t input, std::string& errorText) {
    if (CheckPositions(first, second, {output, input}, errorText) == Status::Error) {
        return Status::Error;
    }
    const Wire wire = ChooseToConnect(first, second, {output, input});
    if (wire.output == 0) {
        errorText += output != 0  ? outputFitsNoInput
                     : input != 0 ? inputFitsNoOutput
                                  : incompatibleComponents;
        return Status::Error;
    }
    GiveNodes(workspace, first, second, wire);
    return ConnectPorts(workspace, At(first.outputs, wire.output), At(second.inputs, wire.input),
                        errorText);
}

Status DisconnectComponents(Workspace& workspace, Component& first, std::int32_t output,
                            Component& second, std::int32_t input, std::string& errorText) {
    if (CheckPositions(first, second, {output, input}, errorText) == Status::Error) {
        return Status::Error;
    }
    const Wire wire = FirstPair(
        first, second, {output, input},
        [](const Port& from, const Port& to) { return from.node && from.node == to.node; });
    if (wire.output == 0) {
        errorText += output != 0  ? outputNotConnected
                     : input != 0 ? inputNotConnected
                                  : notConnected;
        return Status::Error;
    }
    Port& shared = At(first.outputs, wire.output);
    Node& node = *shared.node;
    const auto reader = std::find(node.readers.begin(), node.readers.end(), &second);
    if (reader == node.readers.end()) {
        errorText += "ERROR: disconnection failed\n";
        return Status::Error;
    }
    node.readers.erase(reader);
    if (node.readers.empty()) SetNodeSigType(node, shared.modelType);
    Port& freed = At(second.inputs, wire.input);
    freed.node = nullptr;
    freed.sigType = freed.modelType;
    AttachInput(second, wire.input, NewNodeNumber(workspace), workspace);
    return Status::Success;
}

}  // namespace photrak

// The workspace, its nodes and its variables: made, found, emptied.
#include "kernel/graph.h"

#include <algorithm>
#include <limits>

#include "kernel/parameters.h"
#include "kernel/port_types.h"

namespace photrak {
namespace {

/// Node 0, the ground: sources read it, sinks drive it, so that every walk can start and end there.
void MakeGroundNode(Workspace& workspace) {
    Node& ground = FindOrCreateNode(0, workspace);
    ground.flags = nodeFlag::begin | nodeFlag::end;
    workspace.BEGINNODES = {&ground};
    workspace.ENDNODES = {&ground};
}

/// Puts one port on a node and lets the more particular of the two types win on it.
void AttachPort(Port& port, Node& node) {
    port.node = &node;
    if (IsMoreParticular(node.type, port.sigType)) {
        SetNodeSigType(node, node.type);
    } else if (IsMoreParticular(port.sigType, node.type)) {
        SetNodeSigType(node, port.sigType);
    }
}

Port* PortAt(std::vector<Port>& ports, std::int32_t position) {
    if (position < 1 || static_cast<std::size_t>(position) > ports.size()) return nullptr;
    return &ports[static_cast<std::size_t>(position) - 1];
}

}  // namespace

std::unique_ptr<Workspace> CreateWorkspace() {
    static std::atomic<std::int32_t> made{0};
    auto workspace = std::make_unique<Workspace>();
    workspace->id = ++made;
    workspace->options = std::make_unique<SimOptions>();
    MakeGroundNode(*workspace);
    return workspace;
}

void ClearWorkspace(Workspace& workspace) {
    ForgetParamCursor();
    workspace.components.clear();
    workspace.BEGINNODES.clear();
    workspace.ENDNODES.clear();
    workspace.nodes.clear();
    MakeGroundNode(workspace);
}

void DestroyWorkspace(std::unique_ptr<Workspace>& workspace) {
    if (workspace) ClearWorkspace(*workspace);
    workspace.reset();
}

Node& FindOrCreateNode(std::int32_t number, Workspace& workspace) {
    if (Node* known = FindNode(number, workspace)) return *known;
    auto made = std::make_unique<Node>();  // first: the list never holds a number without a node
    made->number = number;
    return *workspace.nodes.emplace(number, std::move(made)).first->second;
}

Node* FindNode(std::int32_t number, const Workspace& workspace) {
    const auto found = workspace.nodes.find(number);
    return found == workspace.nodes.end() ? nullptr : found->second.get();
}

std::int32_t NewNodeNumber(const Workspace& workspace) {
    if (workspace.nodes.empty()) return 1;
    const std::int32_t last = std::max(workspace.nodes.rbegin()->first, 0);
    if (last < std::numeric_limits<std::int32_t>::max()) return last + 1;
    std::int32_t number = 1;  // a file took the greatest number: the lowest free one serves
    for (auto at = workspace.nodes.lower_bound(1); at->first == number; ++at) ++number;
    return number;
}

void AttachInput(Component& component, std::int32_t position, std::int32_t nodeNumber,
                 Workspace& workspace) {
    Node& node = FindOrCreateNode(nodeNumber, workspace);
    node.readers.push_front(&component);
    ++node.freshReaders;
    if (Port* port = PortAt(component.inputs, position)) AttachPort(*port, node);
}

void AttachOutput(Component& component, std::int32_t position, std::int32_t nodeNumber,
                  Workspace& workspace) {
    Node& node = FindOrCreateNode(nodeNumber, workspace);
    node.drivers.push_front(&component);
    ++node.freshDrivers;
    if (Port* port = PortAt(component.outputs, position)) AttachPort(*port, node);
}

Variable& AddVariable(Workspace& workspace, std::string_view name, std::int32_t type,
                      std::string_view value) {
    std::vector<Variable>& all = workspace.variables;
    const auto place = std::lower_bound(
        all.begin(), all.end(), name,
        [](const Variable& v, std::string_view wanted) { return v.name < wanted; });
    Variable variable;
    variable.name = name;
    variable.type = type;
    variable.value = value;
    return *all.insert(place, std::move(variable));
}

Variable* FindVariable(std::string_view name, Workspace& workspace) {
    // Not by bisection: a nested run puts its parameters in front, unsorted, so that they win.
    for (Variable& variable : workspace.variables) {
        if (variable.name == name) return &variable;
    }
    return nullptr;
}

Parameter* FindParameter(std::string_view name, Parameter* list) {
    for (Parameter& parameter : Items(list)) {
        if (parameter.name && parameter.name == name) return &parameter;
    }
    return nullptr;
}

void ClearNodeSignals(Workspace& workspace) {
    for (auto& [number, node] : workspace.nodes) node->FreeSignals();
}

}  // namespace photrak

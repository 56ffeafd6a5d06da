// Components: made after a prototype, given nodes, removed, and checked before they run.
#include "kernel/components.h"

#include <algorithm>
#include <new>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/order.h"
#include "kernel/parameters.h"
#include "kernel/port_types.h"

namespace photrak {
namespace {

constexpr std::int32_t maxPorts = 1 << 16;  // no diagram has more; a broken count does

ComponentList::const_iterator FirstNotBelow(std::string_view name, const ComponentList& list) {
    return std::lower_bound(list.begin(), list.end(), name,
                            [](const std::unique_ptr<Component>& component,
                               std::string_view wanted) { return component->name < wanted; });
}

/// 0 asks for the model's own count; any other is moved into the model's range.
std::int32_t PortCount(std::int32_t asked, std::int32_t own, std::int32_t least,
                       std::int32_t greatest) {
    return std::min(std::max(asked == 0 ? own : asked, least), greatest);
}

std::size_t ListLength(std::int32_t count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

void CopyDescription(const Component& prototype, Component& component) {
    component.type = prototype.type;
    component.NOTE = prototype.NOTE;
    component.ICON = prototype.ICON;
    component.superBlockFile = prototype.superBlockFile;
    component.innerTexts = prototype.innerTexts;
    component.MININPUTS = prototype.MININPUTS;
    component.MINOUTPUTS = prototype.MINOUTPUTS;
    component.MAXINPUTS = prototype.MAXINPUTS;
    component.MAXOUTPUTS = prototype.MAXOUTPUTS;
    component.NUMINEQNUMOUTNODES = prototype.NUMINEQNUMOUTNODES;
    component.testOutput = prototype.testOutput;
}

/// Null when the parameters or the ports ask for more memory than there is.
std::unique_ptr<Component> CopyPrototype(const Component& prototype, std::string_view name,
                                         std::int32_t inputs, std::int32_t outputs) {
    auto component = std::make_unique<Component>();
    component->name = name;
    CopyDescription(prototype, *component);
    component->NUMINPUTS =
        PortCount(inputs, prototype.NUMINPUTS, prototype.MININPUTS, prototype.MAXINPUTS);
    component->NUMOUTPUTS =
        PortCount(outputs, prototype.NUMOUTPUTS, prototype.MINOUTPUTS, prototype.MAXOUTPUTS);
    if (component->NUMINPUTS > maxPorts || component->NUMOUTPUTS > maxPorts) return nullptr;
    if (CopyParameterList(&component->parameters, prototype.parameters) != 0) return nullptr;
    component->inputs =
        MakePorts(prototype.inputs, ListLength(component->NUMINPUTS), RepeatRule::Inputs);
    component->outputs =
        MakePorts(prototype.outputs, ListLength(component->NUMOUTPUTS), RepeatRule::None);
    return component;
}

/// Ground for a port that carries nothing, a node of its own for any other.
std::int32_t NodeForPort(const Port& port, const Workspace& workspace) {
    return port.sigType == NoSigType ? 0 : NewNodeNumber(workspace);
}

struct CountTest {
    bool (*fails)(const Component& c);
    const char* complaint;
};
// clang-format off
constexpr CountTest countTests[] = {
    {[](const Component& c) { return c.NUMINEQNUMOUTNODES != 0 && c.NUMINPUTS != c.NUMOUTPUTS; },
     "' number of input nodes does not equal number of output nodes!\n"},
    {[](const Component& c) { return c.NUMINPUTS < c.MININPUTS; },
     "' number of input nodes is less than minimum number\n"},
    {[](const Component& c) { return c.NUMINPUTS > c.MAXINPUTS; },
     "' number of input nodes is greater than maximum number\n"},
    {[](const Component& c) { return c.NUMOUTPUTS < c.MINOUTPUTS; },
     "' number of output nodes is less than minimum number\n"},
    {[](const Component& c) { return c.NUMOUTPUTS > c.MAXOUTPUTS; },
     "' number of output nodes is greater than maximum number\n"},
};
// clang-format on

}  // namespace

Component* FindComponent(std::string_view name, const ComponentList& list) {
    const auto found = FirstNotBelow(name, list);
    return found != list.end() && (*found)->name == name ? found->get() : nullptr;
}

Component* CreateComponentFrom(const Component& prototype, std::string_view name,
                               std::int32_t inputs, std::int32_t outputs, ComponentList& list) {
    try {
        std::unique_ptr<Component> component = CopyPrototype(prototype, name, inputs, outputs);
        if (!component) return nullptr;
        return list.insert(FirstNotBelow(name, list), std::move(component))->get();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Component* CreateComponent(std::string_view name, std::string_view type, std::int32_t inputs,
                           std::int32_t outputs, ComponentList& list, const Catalogue& catalogue) {
    const Component* prototype = FindComponent(type, catalogue.models);
    return prototype ? CreateComponentFrom(*prototype, name, inputs, outputs, list) : nullptr;
}

Component* AddComponent(Workspace& workspace, std::string_view type, std::string_view name,
                        std::int32_t inputs, std::int32_t outputs, const Catalogue& catalogue) {
    std::string unique(name);
    while (FindComponent(unique, workspace.components)) unique += '1';
    Component* component =
        CreateComponent(unique, type, inputs, outputs, workspace.components, catalogue);
    if (!component) return nullptr;
    std::int32_t position = 0;
    for (const Port& port : component->inputs) {
        AttachInput(*component, ++position, NodeForPort(port, workspace), workspace);
    }
    position = 0;
    for (const Port& port : component->outputs) {
        AttachOutput(*component, ++position, NodeForPort(port, workspace), workspace);
    }
    return component;
}

void RemoveComponent(Component*& component, Workspace& workspace) {
    if (!component) return;
    for (auto& [number, node] : workspace.nodes) {
        node->readers.remove(component);
        node->drivers.remove(component);
    }
    auto place =
        workspace.components.cbegin() +
        (FirstNotBelow(component->name, workspace.components) - workspace.components.cbegin());
    while (place != workspace.components.cend() && place->get() != component) ++place;
    component = nullptr;
    if (place != workspace.components.cend()) workspace.components.erase(place);
}

Status CheckPorts(Component& component, std::string& errorText, std::string_view path) {
    Status status = Status::Success;
    for (const CountTest& test : countTests) {
        if (!test.fails(component)) continue;
        AppendPiece(errorText, Concat("ERROR: '", path, component.name, test.complaint));
        status = Status::Error;
    }
    const bool handsDown = component.type == superBlockType;
    for (Parameter& parameter : Items(component.parameters)) {
        if (IsEvaluatedInside(component, parameter)) continue;
        // A block of a topology only hands it down, and its limits never bite.
        if (handsDown && parameter.type == ComplexType) continue;
        const std::size_t before = errorText.size();
        MergeStatus(status, ClampParam(parameter, errorText));
        if (errorText.size() > before) {
            AppendPiece(errorText, Concat("in component ", path, component.name, "\n"));
        }
    }
    return status;
}

}  // namespace photrak

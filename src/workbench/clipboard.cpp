// The wires of a copy are made anew by the rules of wiring; those of a paste come along as shared
// node numbers.
#include "workbench/clipboard.h"

#include <algorithm>
#include <limits>
#include <new>
#include <unordered_map>
#include <unordered_set>

#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/port_types.h"
#include "workbench/block_copy.h"

namespace photrak {
namespace {

constexpr const char* outOfMemoryText = "Out of Memory during Paste operation\n";

using Copies = std::unordered_map<const Component*, Component*>;

std::int32_t OutputOn(const Component& component, const Node& node) {
    const auto port = std::ranges::find(component.outputs, &node, &Port::node);
    return port == component.outputs.end()
               ? 0
               : static_cast<std::int32_t>(port - component.outputs.begin()) + 1;
}

/// The first driver of the node, in list order, among those that are copied; equal names stand
/// newest first, in the list as on the node.
const Component* FirstDriver(const Node& node, const Copies& copies) {
    const Component* first = nullptr;
    for (const Component* driver : node.drivers) {
        if (!copies.contains(driver)) continue;
        if (!first || driver->name < first->name) first = driver;
    }
    return first;
}

Status WireCopies(const std::vector<Component*>& selection, const Copies& copies,
                  Workspace& clipboard, std::string& errorText) {
    for (const Component* original : selection) {
        std::int32_t input = 0;
        for (const Port& port : original->inputs) {
            ++input;
            if (!port.node || port.node->number == 0) continue;
            const Component* driver = FirstDriver(*port.node, copies);
            const std::int32_t output = driver ? OutputOn(*driver, *port.node) : 0;
            if (output == 0) continue;
            const Status status = ConnectComponents(clipboard, *copies.at(driver), output,
                                                    *copies.at(original), input, errorText);
            if (status == Status::Error) return status;
        }
    }
    return Status::Success;
}

Status CopyAll(const std::vector<Component*>& selection, Workspace& clipboard,
               std::string& errorText) {
    Copies copies;
    for (const Component* original : selection) {
        std::unique_ptr<Component> copy;
        if (CopyComponent(original, copy, errorText) == Status::Error) return Status::Error;
        Component* placed = InsertByName(std::move(copy), clipboard.components);
        GiveFreshNodes(*placed, clipboard);
        copies[original] = placed;
    }
    return WireCopies(selection, copies, clipboard, errorText);
}

/// Not below 0, so that no shifted number can be the ground's.
std::int32_t LastNumber(const Workspace& workspace) {
    return workspace.nodes.empty() ? 0 : std::max(workspace.nodes.rbegin()->first, 0);
}

void AttachShifted(const Component& source, Component& copy, std::int32_t offset,
                   Workspace& target) {
    std::int32_t position = 0;
    for (const Port& port : source.inputs) {
        ++position;
        if (!port.node) continue;
        const std::int32_t n = port.node->number;
        AttachInput(copy, position, n == 0 ? 0 : n + offset, target);
    }
    position = 0;
    for (const Port& port : source.outputs) {
        ++position;
        if (!port.node) continue;
        const std::int32_t n = port.node->number;
        AttachOutput(copy, position, n == 0 ? 0 : n + offset, target);
    }
}

/// Ports of a node that lost its other end go back to what their models say.
void ReleaseNode(Node& node) {
    const bool readersOnly = node.drivers.empty(), driversOnly = node.readers.empty();
    if (node.number == 0 || readersOnly == driversOnly) return;
    std::int32_t type = UnknownSigType;
    const auto meet = [&](const std::list<Component*>& components, Side side) {
        for (Component* component : components) {
            for (Port& port : PortsOf(*component, side)) {
                if (port.node != &node) continue;
                port.sigType = port.modelType;
                if (IsMoreParticular(port.modelType, type)) type = port.modelType;
            }
        }
    };
    meet(node.readers, Side::Input);
    meet(node.drivers, Side::Output);
    SetNodeSigType(node, type);
}

}  // namespace

void GiveFreshNodes(Component& component, Workspace& workspace) {
    const auto number = [&](const Port& port) {
        return port.sigType == NoSigType ? 0 : NewNodeNumber(workspace);
    };
    std::int32_t position = 0;
    for (const Port& port : component.inputs) {
        AttachInput(component, ++position, number(port), workspace);
    }
    position = 0;
    for (const Port& port : component.outputs) {
        AttachOutput(component, ++position, number(port), workspace);
    }
}

Status CopySelectionToClipboard(const std::vector<Component*>& selection, Workspace& clipboard,
                                std::string& errorText) {
    ClearWorkspace(clipboard);
    Status status = Status::Error;
    try {
        status = CopyAll(selection, clipboard, errorText);
    } catch (const std::bad_alloc&) {
        errorText += "Error in allocating memory to Copy Component\n";
    }
    if (status == Status::Error) ClearWorkspace(clipboard);
    return status;
}

Status PasteIntoWorkspace(Workspace* target, const Workspace* source,
                          std::vector<Component*>* pasted, std::string& errorText) {
    if (!target || !source) {
        errorText += "PasteIntoWorkspace error: NULL parameter\n";
        return Status::Error;
    }
    const std::int32_t offset = LastNumber(*target);
    if (LastNumber(*source) > std::numeric_limits<std::int32_t>::max() - offset) {
        errorText += "Paste refused: the node numbers of the diagram leave no room\n";
        return Status::Error;
    }
    try {
        for (const auto& component : source->components) {
            std::unique_ptr<Component> copy;
            if (CopyComponent(component.get(), copy, errorText) == Status::Error) {
                errorText += outOfMemoryText;
                return Status::Error;
            }
            Component* placed = InsertByName(std::move(copy), target->components);
            if (pasted) pasted->push_back(placed);
            AttachShifted(*component, *placed, offset, *target);
        }
    } catch (const std::bad_alloc&) {
        errorText += outOfMemoryText;
        return Status::Error;
    }
    return Status::Success;
}

CanvasPoint LimitedMove(const std::vector<Component*>& group, CanvasPoint wanted) {
    if (group.empty()) return {};
    CanvasPoint low = DrawnAt(*group.front()), high = low;
    for (const Component* component : group) {
        const CanvasPoint at = DrawnAt(*component);
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
        high = {std::max(high.x, at.x), std::max(high.y, at.y)};
    }
    return {std::max(std::min(wanted.x, lastX - high.x), -low.x),
            std::max(std::min(wanted.y, lastY - high.y), -low.y)};
}

void MoveGroupTo(const std::vector<Component*>& group, CanvasPoint corner) {
    if (group.empty()) return;
    CanvasPoint low = DrawnAt(*group.front());
    for (const Component* component : group) {
        const CanvasPoint at = DrawnAt(*component);
        low = {std::min(low.x, at.x), std::min(low.y, at.y)};
    }
    const CanvasPoint by = LimitedMove(group, {corner.x - low.x, corner.y - low.y});
    for (Component* component : group) {
        const CanvasPoint at = DrawnAt(*component);
        component->x = at.x + by.x;
        component->y = at.y + by.y;
    }
}

void DeleteComponents(const std::vector<Component*>& components, Workspace& workspace) {
    std::unordered_set<Node*> touched;
    const std::unordered_set<const Component*> gone(components.begin(), components.end());
    for (Component* component : components) {
        for (const Side side : {Side::Input, Side::Output}) {
            for (Port& port : PortsOf(*component, side)) {
                if (port.node) touched.insert(port.node);
            }
        }
    }
    const auto isGone = [&](const Component* component) { return gone.contains(component); };
    for (Node* node : touched) {
        node->readers.remove_if(isGone);
        node->drivers.remove_if(isGone);
        node->settledType = NoSettledType;
        ReleaseNode(*node);
    }
    ForgetParamCursor();
    std::erase_if(workspace.components,
                  [&](const std::unique_ptr<Component>& c) { return gone.contains(c.get()); });
}

}  // namespace photrak

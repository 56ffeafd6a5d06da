// Loop levels: how many repetition loops are open around each component, counted along the wires
// from the ground node.
#include "kernel/levels.h"

#include <algorithm>
#include <deque>

#include "base/text.h"
#include "kernel/order.h"

namespace photrak {
namespace {

using Queue = std::deque<Component*>;

void Raise(const Node& node, std::int32_t level, Queue& queue) {
    for (Component* reader : node.readers) {
        if (reader->level >= level) continue;
        reader->level = level;
        queue.push_back(reader);
    }
}

}  // namespace

std::int32_t LoopStep(const Component& component) {
    if (component.type == loopBeginType) return 1;
    return component.type == loopEndType ? -1 : 0;
}

Status AssignLevels(Workspace& workspace, std::string& errorText) {
    std::int32_t greatestLevel = 0;  // no way without a cycle opens more loops than there are
    for (const auto& component : workspace.components) {
        component->level = levelNotReached;
        if (LoopStep(*component) > 0) ++greatestLevel;
    }
    if (workspace.BEGINNODES.empty()) return Status::Success;
    const Node& start = *workspace.BEGINNODES.front();
    Queue queue;
    Raise(start, 0, queue);
    while (!queue.empty()) {
        const Component& component = *queue.front();
        queue.pop_front();
        const std::int32_t level = component.level + LoopStep(component);
        if (level > greatestLevel) {
            AppendPiece(errorText, Concat("ERROR: component '", workspace.name, component.name,
                                          "' is wired in a cycle that opens a repetition loop "
                                          "without closing it\n"));
            return Status::Error;
        }
        for (const Port& port : component.outputs) {
            // Ground joins all sinks to all sources; no loop stays open across it.
            if (!port.node || port.node == &start || port.node->number == 0) continue;
            Raise(*port.node, level, queue);
        }
    }
    return Status::Success;
}

std::vector<Component*> DriversByLevel(const Node& node) {
    // Equal levels: each goes before those already queued, and a repeat of the last is dropped.
    std::vector<Component*> drivers(node.drivers.rbegin(), node.drivers.rend());
    std::stable_sort(drivers.begin(), drivers.end(),
                     [](const Component* a, const Component* b) { return a->level > b->level; });
    drivers.erase(std::unique(drivers.begin(), drivers.end()), drivers.end());
    return drivers;
}

}  // namespace photrak

// The run order: which component runs after which, found by walking from the sinks against the
// wires.
#pragma once

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

using RunOrder = std::vector<Component*>;       // borrowed from the workspace
using NodeSet = std::map<std::int32_t, Node*>;  // ascending, no duplicates

/// Gives every component its loop level: the greatest number of open repetition loops on a way from
/// node 0, levelNotReached without one. Error with a text that names a component when levels grow
/// without end (a wired cycle through a LoopBeginBlock).
Status AssignLevels(Workspace& workspace, std::string& errorText);

/// Drivers of a node in descending order of level, as the searches take them.
std::vector<Component*> DriversByLevel(const Node& node);

/// Sorts the input ports of a component that closes a repetition loop: feedback ports first, then
/// those whose greatest running sum of LoopBegin (+1) and LoopEnd (-1) blocks on any path upstream
/// is below 1, then the rest; within each of the three the later port comes first. Node 0 is left
/// out.
std::vector<Node*> SortLoopInputs(Component& component, Workspace& workspace);

/// Post-order walk from `node` against the wires; appends to the order and the node set. Iterative:
/// a chain of any length is fine. Error with a text that names the component on a wired cycle, and
/// when a port has no node.
Status OrderFromNode(Node& node, std::int32_t depth, Workspace& workspace, RunOrder& order,
                     NodeSet& nodes, std::string& errorText);

}  // namespace photrak

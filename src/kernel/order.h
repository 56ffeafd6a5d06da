// The run order: which component runs after which, found by walking from the sinks against the
// wires.
#pragma once

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

using RunOrder = std::vector<Component*>;       // borrowed from the workspace
using NodeSet = std::map<std::int32_t, Node*>;  // ascending, no duplicates

inline constexpr std::string_view loopBeginType = "LoopBeginBlock", loopEndType = "LoopEndBlock";

/// The change of the number of open repetition loops across a component, along the wires: 1, -1, 0.
std::int32_t LoopStep(const Component& component);

/// Gives every component its loop level: the greatest number of open repetition loops on a way from
/// node 0, levelNotReached without one. Error with a text that names a component when levels grow
/// without end (a wired cycle through a LoopBeginBlock).
Status AssignLevels(Workspace& workspace, std::string& errorText);

/// Drivers of a node in descending order of level, as the searches take them; of equal levels the
/// one attached first comes first.
std::vector<Component*> DriversByLevel(const Node& node);

/// Sorts the input ports of a component that closes a repetition loop: feedback ports first, then
/// those whose greatest running sum of LoopBegin (+1) and LoopEnd (-1) blocks on any path upstream
/// is below 1, then the rest; within each of the three the later port comes first. Node 0 is left
/// out.
std::vector<Node*> SortLoopInputs(Component& component, Workspace& workspace);

/// Error with a text that names the component when one of its ports stands on no node.
Status CheckPortNodes(const Component& component, std::string& errorText);

/// Post-order walk from `node` against the wires; appends to the order and the node set. Iterative:
/// a chain of any length is fine. Error with a text that names the component on a wired cycle, and
/// when a port has no node.
Status OrderFromNode(Node& node, std::int32_t depth, Workspace& workspace, RunOrder& order,
                     NodeSet& nodes, std::string& errorText);

/// The whole order of a workspace: clears all run flags, assigns the levels, walks from every end
/// node.
Status OrderWorkspace(Workspace& workspace, RunOrder& order, NodeSet& nodes,
                      std::string& errorText);

}  // namespace photrak

// The run order: which component runs after which, found by walking from the sinks against the
// wires.
#pragma once

#include "base/status.h"
#include "kernel/levels.h"
#include "kernel/loop_inputs.h"
#include "kernel/workspace.h"

namespace photrak {

using RunOrder = std::vector<Component*>;       // borrowed from the workspace
using NodeSet = std::map<std::int32_t, Node*>;  // ascending, no duplicates

inline constexpr std::string_view loopBeginType = "LoopBeginBlock", loopEndType = "LoopEndBlock";

/// Error with a text that names the component when one of its ports stands on no node.
Status CheckPortNodes(const Workspace& workspace, const Component& component,
                      std::string& errorText);

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

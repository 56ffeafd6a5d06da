// Building and wiring a workspace: components, nodes, port types, connections, port checks.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/components.h"
#include "kernel/connections.h"
#include "kernel/workspace.h"

namespace photrak {

/// An empty workspace with node 0 on the begin and end lists and default options.
std::unique_ptr<Workspace> CreateWorkspace();
/// Frees components, begin and end lists and nodes; makes a new node 0 on new lists.
void ClearWorkspace(Workspace& workspace);
/// ClearWorkspace, then frees options, variables and the record; empties the reference.
void DestroyWorkspace(std::unique_ptr<Workspace>& workspace);

Node& FindOrCreateNode(std::int32_t number, Workspace& workspace);
Node* FindNode(std::int32_t number, const Workspace& workspace);
/// A number that no node has: the last node's plus one.
std::int32_t NewNodeNumber(const Workspace& workspace);
/// Sets the type of the node and of every port of every reader and driver that stands on it.
void SetNodeSigType(Node& node, std::int32_t sigType);
/// Puts the port at `position` (from 1) on the node and reconciles their types; never an error.
void AttachInput(Component& component, std::int32_t position, std::int32_t nodeNumber,
                 Workspace& workspace);
void AttachOutput(Component& component, std::int32_t position, std::int32_t nodeNumber,
                  Workspace& workspace);

/// Inserted in ascending order of name, a repeat before the component that has the name already.
Variable& AddVariable(Workspace& workspace, std::string_view name, std::int32_t type,
                      std::string_view value);
Variable* FindVariable(std::string_view name, Workspace& workspace);
/// Plain search by name, without memory.
Parameter* FindParameter(std::string_view name, Parameter* list);

/// Frees all signals on all nodes.
void ClearNodeSignals(Workspace& workspace);

}  // namespace photrak

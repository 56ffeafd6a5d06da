// Building and wiring a workspace: components, nodes, port types, connections, port checks.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
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

/// A copy of the catalogue's prototype under `name`, inserted in the list; counts of 0 take the
/// prototype's, others are limited to its range. Null if the type is unknown or memory is
/// exhausted.
Component* CreateComponent(std::string_view name, std::string_view type, std::int32_t inputs,
                           std::int32_t outputs, ComponentList& list, const Catalogue& catalogue);
/// The same from a given prototype (a SuperBlock's is not in the catalogue).
Component* CreateComponentFrom(const Component& prototype, std::string_view name,
                               std::int32_t inputs, std::int32_t outputs, ComponentList& list);
/// CreateComponent under a name made unique by appended "1"s, on nodes of its own.
Component* AddComponent(Workspace& workspace, std::string_view type, std::string_view name,
                        std::int32_t inputs, std::int32_t outputs, const Catalogue& catalogue);
/// Unlinks it from all nodes, frees it and empties the reference.
void RemoveComponent(Component*& component, Workspace& workspace);

/// Wires an output to an input; position 0 means any. Error with a text, or success.
Status ConnectComponents(Workspace& workspace, Component& first, std::int32_t output,
                         Component& second, std::int32_t input, std::string& errorText);
/// Takes the second component's input off the node it shares with the first; ports that are left
/// alone get the types of their models back.
Status DisconnectComponents(Workspace& workspace, Component& first, std::int32_t output,
                            Component& second, std::int32_t input, std::string& errorText);

/// Port counts against their limits, then every parameter through ClampParam.
Status CheckPorts(Component& component, std::string& errorText);

/// Inserted in ascending order of name, a repeat before the component that has the name already.
Variable& AddVariable(Workspace& workspace, std::string_view name, std::int32_t type,
                      std::string_view value);
Variable* FindVariable(std::string_view name, Workspace& workspace);
/// Plain search by name, without memory.
Parameter* FindParameter(std::string_view name, Parameter* list);
/// The first of its name in a list, or null; among prototypes the name is the type.
Component* FindComponent(std::string_view name, const ComponentList& list);

/// Frees all signals on all nodes.
void ClearNodeSignals(Workspace& workspace);

}  // namespace photrak

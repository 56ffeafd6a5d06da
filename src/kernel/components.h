// Components of a workspace: made from their prototypes, found, checked, removed.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

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
/// Port counts against their limits, then every parameter through ClampParam. `path` is that of the
/// SuperBlocks around the component, for the messages.
Status CheckPorts(Component& component, std::string& errorText, std::string_view path = {});
/// The first of its name in a list, or null; among prototypes the name is the type.
Component* FindComponent(std::string_view name, const ComponentList& list);

}  // namespace photrak

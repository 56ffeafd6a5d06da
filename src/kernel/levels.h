// Loop levels: how many repetition loops stand open around a component.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// The change of the number of open repetition loops across a component, along the wires: 1, -1, 0.
std::int32_t LoopStep(const Component& component);
/// Gives every component its loop level: the greatest number of open repetition loops on a way from
/// node 0, levelNotReached without one. Error with a text that names a component when levels grow
/// without end (a wired cycle through a LoopBeginBlock).
Status AssignLevels(Workspace& workspace, std::string& errorText);
/// Drivers of a node in descending order of level, as the searches take them; of equal levels the
/// one attached first comes first.
std::vector<Component*> DriversByLevel(const Node& node);

}  // namespace photrak

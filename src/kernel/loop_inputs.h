// The order in which the inputs of a loop's end are searched.
#pragma once

#include <vector>

#include "kernel/workspace.h"

namespace photrak {

/// Sorts the input ports of a component that closes a repetition loop: feedback ports first, then
/// those whose greatest running sum of LoopBegin (+1) and LoopEnd (-1) blocks on any path upstream
/// is below 1, then the rest; within each of the three the later port comes first. Node 0 is left
/// out.
std::vector<Node*> SortLoopInputs(Component& component, Workspace& workspace);

}  // namespace photrak

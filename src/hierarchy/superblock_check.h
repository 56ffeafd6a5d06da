// What can be said of SuperBlocks without running them.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Looks into every SuperBlock of a workspace that was loaded from `workspace.fileName`, through
/// all levels; faults name blocks by their path ("Link:Span:Fiber"). Error: a topology that is
/// missing or faulty, one that contains itself. A workspace with In or Out blocks is itself looked
/// at as a SuperBlock.
Status CheckSuperBlocks(const Workspace& workspace, const Catalogue& catalogue,
                        std::string& errorText);

/// Warnings about a topology that is to be a SuperBlock: two In or two Out blocks at one port, a
/// gap in the port numbers, a variable that a predefined symbol hides or that is declared twice.
Status CheckAsSuperBlock(const Workspace& workspace, std::string& errorText);

}  // namespace photrak

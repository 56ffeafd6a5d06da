// What the wires of a loaded topology tell before anything runs.
#pragma once

#include "base/status.h"
#include "files/topology_inspection.h"
#include "kernel/workspace.h"

namespace photrak {

/// Adds findings on names, ports, nodes and the order of a whole workspace; places come from the
/// inspection of its file. Signal kinds are those of the models, whatever the wires made of them.
void InspectGraph(Workspace& workspace, Inspection& inspection);

}  // namespace photrak

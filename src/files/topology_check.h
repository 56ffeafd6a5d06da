// What can be said about a topology before it runs: ports without a node, inputs that nothing
// drives, parameters and port counts out of range, wired cycles.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Appends a text for each finding, naming the component and the port number; a text that
/// `errorText` holds already is not reported again. Parameters are evaluated against the
/// workspace's symbols.
Status CheckTopologyGraph(Workspace& workspace, std::string& errorText);

/// "WARNING: N components are named 'NAME'" for each name that several have, a line each: results
/// of one replace those of the other.
std::string RepeatedNamesText(const Workspace& workspace);

}  // namespace photrak

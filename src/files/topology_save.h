// Writing a workspace as a topology file.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Writes the topology (temporary file, flush, rename) and, with In or Out blocks, its .dts. An
/// error, also one in a parameter, leaves the target as it was; its reason is added to the
/// workspace's errorText.
Status TopologySave(const std::string& fileName, Workspace* workspace, const Catalogue& catalogue);
/// The text of a topology with its parameters as typed: nothing is evaluated.
void TopologyText(const Workspace& workspace, std::string& text);
/// What TopologySave would write: the same, after each component has been evaluated.
Status TopologySaveText(Workspace& workspace, std::string& text);

}  // namespace photrak

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
/// What TopologySave would write.
Status TopologySaveText(Workspace& workspace, std::string& text);

}  // namespace photrak

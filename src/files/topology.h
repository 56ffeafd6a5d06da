// Topology files (.top): a whole workspace as text, and the definition file (.dts) of a SuperBlock.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Destroys the old workspace and makes a new one from the file. Messages are in the new
/// workspace's errorText and name file and line; after an error the new, partial workspace stays.
/// An escape (a full symbol table) ends the load with an error.
Status TopologyLoad(const std::string& fileName, std::unique_ptr<Workspace>& workspace,
                    const Catalogue& catalogue);
/// The same from a text in memory; `fileName` is for messages and SuperBlock lookup.
Status TopologyLoadText(std::string_view text, const std::string& fileName,
                        std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue);

/// Writes the topology (temporary file, flush, rename) and, with In or Out blocks, its .dts.
Status TopologySave(const std::string& fileName, Workspace* workspace, const Catalogue& catalogue);

/// In and Out blocks in port order.
struct SuperBlockPorts {
    std::vector<Component*> ins, outs;
};
Status WriteSuperBlockFile(const std::string& fileName, const SuperBlockPorts& ports,
                           const std::vector<Variable>& variables, const Catalogue& catalogue);

}  // namespace photrak

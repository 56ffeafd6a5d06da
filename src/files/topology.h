// Topology files (.top): a whole workspace as text, and the definition file (.dts) of a SuperBlock.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Destroys the present workspace and makes a new one from the file. Messages are in the new
/// workspace's errorText, each followed by a line "  at FILE:LINE"; after an error the new, partial
/// workspace stays. An escape (a full symbol table) ends the load with an error.
Status TopologyLoad(const std::string& fileName, std::unique_ptr<Workspace>& workspace,
                    const Catalogue& catalogue);
/// The same from a text in memory; `fileName` is for messages and SuperBlock lookup.
Status TopologyLoadText(std::string_view text, const std::string& fileName,
                        std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue);

/// As TopologyLoad, but goes on behind a faulty block to the next one, so that every fault of the
/// file is told; a faulty component is left out. Then the graph is checked (topology_check.h).
Status TopologyCheck(const std::string& fileName, std::unique_ptr<Workspace>& workspace,
                     const Catalogue& catalogue);
Status TopologyCheckText(std::string_view text, const std::string& fileName,
                         std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue);

/// Writes the topology (temporary file, flush, rename) and, with In or Out blocks, its .dts. An
/// error, also one in a parameter, leaves the target as it was; its reason is added to the
/// workspace's errorText.
Status TopologySave(const std::string& fileName, Workspace* workspace, const Catalogue& catalogue);
/// What TopologySave would write.
Status TopologySaveText(Workspace& workspace, std::string& text);

/// In and Out blocks in port order.
struct SuperBlockPorts {
    std::vector<Component*> ins, outs;
};
/// Writes the definition file beside the topology `fileName`; asks for an icon if it is new.
Status WriteSuperBlockFile(const std::string& fileName, const SuperBlockPorts& ports,
                           const std::vector<Variable>& variables, const Catalogue& catalogue);

/// Where a file of a SuperBlock is: the name as it stands, relative to the current directory, else
/// behind the SuperBlock directory; empty if there is neither.
std::optional<std::string> FindSuperBlockFile(const std::string& name, const Catalogue& catalogue);

}  // namespace photrak

// The definition file of a SuperBlock, beside its topology.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// In and Out blocks in port order: ascending by `portNumber`, of equal numbers the later block
/// first. The parameters are evaluated.
struct SuperBlockPorts {
    std::vector<Component*> ins, outs;
};
SuperBlockPorts FindSuperBlockPorts(const Workspace& workspace);
/// Whether other topologies can name the file: its stem holds no blank, colon or quote.
bool CanNameASuperBlock(const std::string& topologyFile);
/// True if a definition has the counts and types of ports that a save would give it now.
bool HasPortsOf(const Component& definition, const SuperBlockPorts& ports);
/// The definition: one parameter for each variable, the first of those with one name.
std::string SuperBlockText(const std::string& stem, const SuperBlockPorts& ports,
                           const std::vector<Variable>& variables);
/// Writes the definition file beside the topology `fileName`; asks for an icon if it is new. Error
/// with a line in `errorText` for a stem that no topology can name, or a file that is not written.
Status WriteSuperBlockFile(const std::string& fileName, const SuperBlockPorts& ports,
                           const std::vector<Variable>& variables, const Catalogue& catalogue,
                           std::string& errorText);
/// Where a file of a SuperBlock is: the name as it stands, relative to the current directory, else
/// in the SuperBlock directory, else in `folder`, that of the topology that names it (empty: none).
/// Nothing if it is in none of them.
std::optional<std::string> FindSuperBlockFile(const std::string& name, const Catalogue& catalogue,
                                              const std::string& folder = {});

}  // namespace photrak

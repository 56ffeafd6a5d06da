// Reading a topology file into a new workspace.
#pragma once

#include <memory>
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
/// As TopologyLoad, but goes on after a faulty block to the next one, so that every fault of the
/// file is reported; a faulty component is left out. Then the graph is checked (topology_check.h).
Status TopologyCheck(const std::string& fileName, std::unique_ptr<Workspace>& workspace,
                     const Catalogue& catalogue);
/// The same for the inside of a SuperBlock: findings name components with `path` ("Link:Span:")
/// before their names.
Status TopologyCheckNamed(const std::string& fileName, const std::string& path,
                          std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue);
Status TopologyCheckText(std::string_view text, const std::string& fileName,
                         std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue);

}  // namespace photrak

// The check on demand: what can be said of a diagram without a run, by block.
#pragma once

#include <map>
#include <string>

#include "workbench/workbench.h"

namespace photrak {

/// Looks at ports, wires, parameters, cycles and SuperBlocks of the view's diagram, and keeps the
/// texts by the names of the blocks that they name, until the next check. The message pane tells
/// how many there are, the log all of them. A box instead while the diagram runs.
void CheckDiagram(Workbench& workbench, DiagramView& view);

/// The findings of a text by the block that each names; those without one under "".
std::map<std::string, std::string> FindingsByBlock(const Workspace& workspace,
                                                   std::string_view text);

}  // namespace photrak

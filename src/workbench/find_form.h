// Find: components by name, type or parameter.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "workbench/workbench.h"

namespace photrak {

struct FoundBlock {
    Component* component = nullptr;
    std::string text;  // "Fiber (NonlinearFiberModel)", with the parameter that matches behind it
};

/// Components whose name, type, palette name, or a parameter's name or text holds the words, case
/// aside: by name first, then by type, then by parameter, each in list order; at most 1000.
std::vector<FoundBlock> FindBlocks(const Workbench& workbench, const Workspace& workspace,
                                   std::string_view words);

/// The dialog: what is typed lists the matches, the selected one is selected in the diagram too.
void OpenFindForm(Workbench& workbench, DiagramView& view);

}  // namespace photrak

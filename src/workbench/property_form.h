// The property dialog of one component: its name and the parameters that a table can hold.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

/// Opens the dialog for a component of the view.
void OpenPropertyForm(Workbench& workbench, DiagramView& view, Component& component);

/// Help topic of a model type; 0 for a type without one. The names are compared over the 31
/// characters that a symbol table holds.
std::int32_t HelpTopicOf(std::string_view type);

}  // namespace photrak

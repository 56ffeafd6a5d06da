// The Symbol Table Editor: the variables of a diagram as names with numbers or expressions.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void OpenSymbolsForm(Workbench& workbench, DiagramView& view);

}  // namespace photrak

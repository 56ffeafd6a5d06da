// The choice among the plots that a block wrote in the last run.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void OpenPlotChoiceForm(Workbench& workbench, DiagramView& view, const Component& component);

}  // namespace photrak

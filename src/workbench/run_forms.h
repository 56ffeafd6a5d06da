// The dialogs in front of a run: Simulation Parameters and the scan's.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void OpenSimulationForm(Workbench& workbench, DiagramView& view);
void OpenScanForm(Workbench& workbench, DiagramView& view);

}  // namespace photrak

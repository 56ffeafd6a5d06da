// What a double click opens: the summary of a port's signals, the plots of a block's last run, the
// inside of a SuperBlock.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void OpenBlock(Workbench& workbench, DiagramView& view, const Hit& hit);
/// Starts the viewer on a command file of the view's directory; a box tells if it does not start.
void ShowPlot(Workbench& workbench, const DiagramView& view, const std::string& file);

}  // namespace photrak

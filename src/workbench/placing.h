// New blocks: a click in Icon mode, and the choice of a SuperBlock's file.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

/// Places a block of the picked model in the cell of the point, unless the cell is taken.
void PlaceBlock(Workbench& workbench, DiagramView& view, CanvasPoint at);

/// Asks for a SuperBlock's file and makes a component of it; null if none was chosen or it cannot
/// be read, which a box has told.
Component* ChooseSuperBlock(Workbench& workbench, DiagramView& view);

}  // namespace photrak

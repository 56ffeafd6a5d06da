// The Edit menu: undo, clipboard, delete, selection, and the steps of the history.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void EditUndo(Workbench& workbench);
void EditCut(Workbench& workbench);
void EditCopy(Workbench& workbench);
void EditPaste(Workbench& workbench);
void EditDelete(Workbench& workbench);
void EditDuplicate(Workbench& workbench);
void EditSelectAll(Workbench& workbench);
void StepBack(Workbench& workbench);
void StepForward(Workbench& workbench);
/// Moves the selection by whole cells, by the rules of a move.
void Nudge(Workbench& workbench, std::int32_t columns, std::int32_t rows);

}  // namespace photrak

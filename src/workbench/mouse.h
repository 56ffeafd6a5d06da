// The mouse on the canvas: what presses, moves and releases do in each mode.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

struct PressEvent {
    CanvasPoint at;  // pixels of the canvas
    bool right = false, shift = false;
    bool isDouble = false;  // the second press of a double click
};

void MousePress(Workbench& workbench, DiagramView& view, const PressEvent& event);
void MouseMove(Workbench& workbench, DiagramView& view, CanvasPoint at);
void MouseRelease(Workbench& workbench, DiagramView& view, CanvasPoint at, bool right);
/// Escape: drops a drag.
void DropDragOf(DiagramView& view);

/// Moves the blocks of the selection that find room, as a release does, and notes them. True if any
/// moved.
bool MoveSelection(DiagramView& view, CanvasPoint by, Touched& touched);
/// The cells where a move in progress would land, model units.
std::vector<CanvasPoint> LandingCells(const Workbench& workbench, const DiagramView& view);

}  // namespace photrak

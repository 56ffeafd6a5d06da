// The View menu: the zoom that all views share.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void ViewNormal(Workbench& workbench);
void ViewFull(Workbench& workbench);
/// All of the diagram in the window, exactly, unlike ViewFull.
void ViewFit(Workbench& workbench);
void ViewIn(Workbench& workbench);
void ViewOut(Workbench& workbench);
void ViewLast(Workbench& workbench);
void ViewRedraw(Workbench& workbench);

/// The zoom at which a diagram prints on a page so many device pixels wide: to its width, an icon
/// at most 3.75 percent of it.
double PrintZoom(const Workbench& workbench, const DiagramView& view, std::int32_t pageWidth);

}  // namespace photrak

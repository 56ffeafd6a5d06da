// File New, Open, Save, Save As, Close: diagrams from files and back.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

enum class OpenAgain { NewView, BringToFront };

/// A new diagram: an empty workspace under "untitled.top".
DiagramView& NewDiagram(Workbench& workbench);
/// Opens a topology in a new view, or brings the view that has the very file to the front. No path
/// gives a new diagram. A file that does not load leaves an empty untitled diagram, so that a save
/// cannot replace the file.
DiagramView& OpenDiagram(Workbench& workbench, const std::string& path, OpenAgain again);
/// Asks for a file and opens it.
void ChooseAndOpen(Workbench& workbench);

/// False if nothing was written: the user canceled, or a box told why.
bool SaveDiagram(Workbench& workbench, DiagramView& view);
bool SaveDiagramAs(Workbench& workbench, DiagramView& view);
/// False while the view's run is on, which a box tells.
bool CloseDiagram(Workbench& workbench, DiagramView& view);
/// From the most recently active on, up to the first refusal.
bool CloseAll(Workbench& workbench);

}  // namespace photrak

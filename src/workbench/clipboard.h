// Copy, paste and delete over whole workspaces: the clipboard is a workspace of the process, so
// that copying between diagrams works.
#pragma once

#include <string>
#include <vector>

#include "base/status.h"
#include "workbench/canvas_geometry.h"

namespace photrak {

/// A port without a signal goes to ground, any other to a node of its own; inputs first.
void GiveFreshNodes(Component& component, Workspace& workspace);

/// Empties the clipboard and fills it with copies of the selection, in its order, each on fresh
/// nodes, wired among themselves as the originals are. An error leaves it empty.
Status CopySelectionToClipboard(const std::vector<Component*>& selection, Workspace& clipboard,
                                std::string& errorText);

/// Adds copies of all components of `source` to `target`; their nodes are shifted by the target's
/// highest number, node 0 stays. Names are kept. `pasted`, if given, gets the copies in the order
/// of insertion. Error with a text: a workspace is missing, memory is exhausted (copies made so far
/// stay), or the node numbers would not fit (nothing is added).
Status PasteIntoWorkspace(Workspace* target, const Workspace* source,
                          std::vector<Component*>* pasted, std::string& errorText);

/// Moves the blocks so that the corner of all lands on `corner` (model units), or as near to it as
/// keeps them on the canvas.
void MoveGroupTo(const std::vector<Component*>& group, CanvasPoint corner);
/// The part of a move that keeps the whole group on the canvas; the corner at (0, 0) at worst.
CanvasPoint LimitedMove(const std::vector<Component*>& group, CanvasPoint wanted);

/// Removes the blocks; a node that is left with readers or drivers alone goes back to the types of
/// its ports' models.
void DeleteComponents(const std::vector<Component*>& components, Workspace& workspace);

}  // namespace photrak

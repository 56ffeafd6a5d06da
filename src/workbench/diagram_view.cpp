// The selection of a view, and what a save of it would write.
#include "workbench/diagram_view.h"

#include <algorithm>

#include "files/topology.h"

namespace photrak {

bool DiagramView::IsSelected(const Component* component) const {
    return std::ranges::find(selection, component) != selection.end();
}

void DiagramView::Select(Component* component) {
    selection.push_back(component);
}

void DiagramView::Deselect(const Component* component) {
    std::erase(selection, component);
    if (current == component) current = nullptr;
}

void DiagramView::ClearSelection() {
    selection.clear();
    current = nullptr;
}

void DiagramView::DropDrag() {
    if (drag.kind == DragKind::None) return;
    const bool moves = drag.kind == DragKind::Move;
    drag = {};
    current = nullptr;
    if (moves) ghost = {};
}

const CanvasIndex& DiagramView::Index() const {
    if (!indexed || index.Count() != workspace->components.size()) index.Build(*workspace);
    indexed = true;
    return index;
}

bool DiagramView::Differs() const {
    return !history.Empty() && !SavesAlike(history.Present(), saved);
}

void DiagramView::MarkSaved() {
    if (!history.Empty()) saved = history.Present();
}

std::string TextOf(const Workspace& workspace) {
    std::string text;
    TopologyText(workspace, text);
    return text;
}

}  // namespace photrak

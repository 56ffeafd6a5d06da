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

bool DiagramView::Differs() const {
    return workspace && TextOf(*workspace) != savedText;
}

std::string TextOf(const Workspace& workspace) {
    std::string text;
    TopologyText(workspace, text);
    return text;
}

}  // namespace photrak

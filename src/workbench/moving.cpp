// Moving a selection by whole cells: blocks whose target is taken stay, and what then stands in the
// way of others makes these stay too.
#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "workbench/clipboard.h"
#include "workbench/mouse.h"

namespace photrak {
namespace {

CanvasPoint Plus(CanvasPoint a, CanvasPoint b) {
    return {a.x + b.x, a.y + b.y};
}

/// All blocks whose target a block that stays may hold.
void AddBlockedBy(const Component& staying, CanvasPoint by, const CanvasIndex& index,
                  std::vector<const Component*>& blocked) {
    const CanvasPoint at = DrawnAt(staying);
    constexpr std::int32_t far = iconUnits + portZoneUnits;
    index.Near({at.x - portZoneUnits - by.x, at.y - portZoneUnits - by.y},
               {at.x + far - by.x, at.y + far - by.y},
               [&](const CanvasIndex::Entry& entry) { blocked.push_back(entry.component); });
}

/// The part of the selection that can move by this difference. What stays may block others, which
/// stand where it would have made room.
std::vector<Component*> Movers(const DiagramView& view, CanvasPoint by) {
    std::unordered_set<const Component*> moving(view.selection.begin(), view.selection.end());
    std::vector<const Component*> toTest(view.selection.begin(), view.selection.end());
    const CanvasIndex& index = view.Index();
    while (!toTest.empty()) {
        const Component* component = toTest.back();
        toTest.pop_back();
        if (!moving.contains(component)) continue;
        const CanvasPoint target = Plus(DrawnAt(*component), by);
        const auto stays = [&](const Component* other) { return !moving.contains(other); };
        if (!AnyHolds(index, target, stays)) continue;
        moving.erase(component);
        AddBlockedBy(*component, by, index, toTest);
    }
    std::vector<Component*> movers;
    std::ranges::copy_if(view.selection, std::back_inserter(movers),
                         [&](const Component* c) { return moving.contains(c); });
    return movers;
}

}  // namespace

bool MoveSelection(DiagramView& view, CanvasPoint wanted, Touched& touched) {
    const CanvasPoint by = LimitedMove(view.selection, wanted);
    if (by == CanvasPoint{}) return false;
    const std::vector<Component*> movers = Movers(view, by);
    for (Component* component : movers) {
        const CanvasPoint to = Plus(DrawnAt(*component), by);
        component->x = to.x;
        component->y = to.y;
        touched.AddMoved(*component);
    }
    return !movers.empty();
}

std::vector<CanvasPoint> LandingCells(const Workbench& workbench, const DiagramView& view) {
    std::vector<CanvasPoint> cells;
    if (view.drag.kind != DragKind::Move || !view.current) return cells;
    const CanvasPoint cell = workbench.scale.ToCell(view.drag.last), at = DrawnAt(*view.current);
    const CanvasPoint by = LimitedMove(view.selection, {cell.x - at.x, cell.y - at.y});
    for (const Component* component : Movers(view, by)) {
        cells.push_back(Plus(DrawnAt(*component), by));
    }
    return cells;
}

}  // namespace photrak

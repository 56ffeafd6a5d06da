// Moving a selection by whole cells: blocks whose target is taken stay, and what then stands in the
// way of others makes these stay too.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "workbench/clipboard.h"
#include "workbench/mouse.h"

namespace photrak {
namespace {

/// Components by the coarse cell of their corner, so that those near a point are found at once.
class Neighborhood {
  public:
    explicit Neighborhood(const Workspace& workspace) {
        for (const auto& component : workspace.components) {
            cells_[Key(DrawnAt(*component))].push_back(component.get());
        }
    }
    template <class Test>
    bool Any(CanvasPoint corner, Test test) const {
        for (std::int32_t dx = -1; dx <= 1; ++dx) {
            for (std::int32_t dy = -1; dy <= 1; ++dy) {
                const auto cell =
                    cells_.find(Key({corner.x + dx * gridUnits, corner.y + dy * gridUnits}));
                if (cell != cells_.end() && std::ranges::any_of(cell->second, test)) return true;
            }
        }
        return false;
    }

  private:
    static std::int64_t Key(CanvasPoint at) {
        constexpr std::int32_t off = 4 * gridUnits;  // keeps negative neighbors apart
        return (std::int64_t{(at.x + off) / gridUnits} << 32) + (at.y + off) / gridUnits;
    }
    std::unordered_map<std::int64_t, std::vector<const Component*>> cells_;
};

CanvasPoint Plus(CanvasPoint a, CanvasPoint b) {
    return {a.x + b.x, a.y + b.y};
}

/// The part of the selection that can move by this difference.
std::vector<Component*> Movers(const DiagramView& view, CanvasPoint by) {
    std::vector<Component*> movers = view.selection;
    const Neighborhood near(*view.workspace);
    for (bool changed = true; changed;) {
        const std::unordered_set<const Component*> moving(movers.begin(), movers.end());
        const auto blocked = [&](const Component* component) {
            const CanvasPoint target = Plus(DrawnAt(*component), by);
            return near.Any(target, [&](const Component* other) {
                return !moving.contains(other) && HoldsCell(*other, target);
            });
        };
        changed = std::erase_if(movers, blocked) > 0;
    }
    return movers;
}

}  // namespace

bool MoveSelection(DiagramView& view, CanvasPoint wanted) {
    const CanvasPoint by = LimitedMove(view.selection, wanted);
    if (by == CanvasPoint{}) return false;
    const std::vector<Component*> movers = Movers(view, by);
    for (Component* component : movers) {
        const CanvasPoint to = Plus(DrawnAt(*component), by);
        component->x = to.x;
        component->y = to.y;
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

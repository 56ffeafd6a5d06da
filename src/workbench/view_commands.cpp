// Every change of zoom goes through Scale, which remembers the one before.
#include "workbench/view_commands.h"

#include <algorithm>
#include <numbers>

namespace photrak {
namespace {

/// The view in front, its drag dropped as every command does.
DiagramView* Front(Workbench& workbench) {
    DiagramView* view = workbench.Active();
    if (view) view->DropDrag();
    return view;
}

void SetZoom(Workbench& workbench, double zoom) {
    if (Front(workbench)) workbench.scale.SetZoom(zoom);
}

}  // namespace

void ViewNormal(Workbench& workbench) {
    SetZoom(workbench, 1.0);
}

void ViewFull(Workbench& workbench) {
    const DiagramView* view = Front(workbench);
    if (!view) return;
    const CanvasPoint extent = Extent(*view->workspace, workbench.scale);
    const bool fits = !view->workspace->components.empty() && view->width > 0 && view->height > 0;
    workbench.scale.SetZoom(fits ? std::min(static_cast<double>(view->width) / extent.x,
                                            static_cast<double>(view->height) / extent.y)
                                 : 1.0);
}

void ViewFit(Workbench& workbench) {
    const DiagramView* view = Front(workbench);
    if (!view || view->workspace->components.empty()) return;
    CanvasPoint farthest;
    for (const auto& component : view->workspace->components) {
        const CanvasPoint at = DrawnAt(*component);
        farthest = {std::max(farthest.x, at.x), std::max(farthest.y, at.y)};
    }
    const double width = view->width, height = view->height;
    workbench.scale.SetZoom(
        std::min(width / (farthest.x + gridUnits), height / (farthest.y + gridUnits)));
}

void ViewIn(Workbench& workbench) {
    SetZoom(workbench, workbench.scale.zoom * std::numbers::sqrt2);
}

void ViewOut(Workbench& workbench) {
    SetZoom(workbench, workbench.scale.zoom / std::numbers::sqrt2);
}

void ViewLast(Workbench& workbench) {
    SetZoom(workbench, workbench.scale.previousZoom);
}

void ViewRedraw(Workbench& workbench) {
    if (DiagramView* view = Front(workbench)) view->ghost.shown = false;
}

double PrintZoom(const Workbench& workbench, const DiagramView& view, std::int32_t pageWidth) {
    constexpr double iconShare = 0.0375;
    const double extent = Extent(*view.workspace, workbench.scale).x;
    return std::min(pageWidth / extent, pageWidth * (1.0 / iconUnits) * iconShare);
}

}  // namespace photrak

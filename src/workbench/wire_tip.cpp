// Distances to the segments of all wires: a tip is asked for rarely.
#include "workbench/wire_tip.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "drawing/text_measure.h"
#include "workbench/canvas_picture.h"

namespace photrak {
namespace {

double DistanceToSegment(CanvasPoint p, CanvasPoint a, CanvasPoint b) {
    const double dx = b.x - a.x, dy = b.y - a.y, length = dx * dx + dy * dy;
    const double along = length > 0.0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length : 0.0;
    const double t = std::clamp(along, 0.0, 1.0);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

double DistanceTo(const Wire& wire, CanvasPoint p) {
    double least = HUGE_VAL;
    for (std::int32_t i = 1; i < wire.count; ++i) {
        least = std::min(least, DistanceToSegment(p, wire.points[i - 1], wire.points[i]));
    }
    return least;
}

}  // namespace

std::optional<Wire> WireNear(const Workspace& workspace, CanvasPoint point, const Scale& scale,
                             double tolerance) {
    std::optional<Wire> nearest;
    double least = tolerance;
    for (const Wire& wire : Wires(workspace, scale)) {
        const double distance = DistanceTo(wire, point);
        if (distance > least || (nearest && distance == least)) continue;
        nearest = wire;
        least = distance;
    }
    return nearest;
}

std::string WireTip(const Workbench& workbench, const DiagramView& view, CanvasPoint point) {
    static constexpr std::string_view types[] = {"optical", "electrical", "binary",
                                                 "type not settled"};
    constexpr double tolerance = 3.0;  // pixels
    const auto wire = WireNear(*view.workspace, point, workbench.scale, tolerance);
    if (!wire) return {};
    return Concat(DrawableText(wire->from->name), " output ", wire->output, " to ",
                  DrawableText(wire->to->name), " input ", wire->input, ", ",
                  types[static_cast<std::size_t>(WireRoleOf(wire->node->type))], ", node ",
                  wire->node->number);
}

}  // namespace photrak

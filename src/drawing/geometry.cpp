#include "drawing/geometry.h"

namespace photrak {
namespace {

/// Narrows [from, to], the part of the segment that stays, by one edge: p the speed toward the
/// outside, q the distance to the edge.
bool ClipAtEdge(double p, double q, double& from, double& to) {
    if (p == 0.0) return q >= 0.0;
    const double t = q / p;
    if (p < 0.0) {
        if (t > to) return false;
        from = std::max(from, t);
    } else {
        if (t < from) return false;
        to = std::min(to, t);
    }
    return true;
}

}  // namespace

bool ClipSegment(const Rect& box, Point& a, Point& b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    double from = 0.0, to = 1.0;
    if (!ClipAtEdge(-dx, a.x - box.x, from, to) || !ClipAtEdge(dx, box.Right() - a.x, from, to) ||
        !ClipAtEdge(-dy, a.y - box.y, from, to) || !ClipAtEdge(dy, box.Bottom() - a.y, from, to)) {
        return false;
    }
    // Of far ends the rounded cut may lie beside the edge.
    const Point start = a;
    const auto at = [&](double t) {
        return Point{std::clamp(start.x + t * dx, box.x, box.Right()),
                     std::clamp(start.y + t * dy, box.y, box.Bottom())};
    };
    if (from > 0.0) a = at(from);
    if (to < 1.0) b = at(to);
    return true;
}

}  // namespace photrak

#include "drawing/marks.h"

#include <cmath>

namespace photrak {
namespace {

double Distance(const Rect& area, Point p) {
    const double dx = std::max({area.x - p.x, 0.0, p.x - area.Right()});
    const double dy = std::max({area.y - p.y, 0.0, p.y - area.Bottom()});
    return std::hypot(dx, dy);
}

}  // namespace

const Mark* MarkAt(const Marks& marks, Point p, double tolerance) {
    const Mark* best = nullptr;
    double least = tolerance;
    for (auto mark = marks.rbegin(); mark != marks.rend(); ++mark) {
        const double distance = Distance(mark->area, p);
        if (distance == 0.0) return &*mark;
        if (distance <= least && (!best || distance < least)) {
            best = &*mark;
            least = distance;
        }
    }
    return best;
}

const Mark* FindMark(const Marks& marks, std::string_view id) {
    for (const Mark& mark : marks) {
        if (mark.id == id) return &mark;
    }
    return nullptr;
}

}  // namespace photrak

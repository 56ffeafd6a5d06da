// Points, boxes and the clipping of a segment, in pixels of a page: x to the right, y downward.
#pragma once

#include <algorithm>

namespace photrak {

struct Point {
    double x = 0.0, y = 0.0;
    bool operator==(const Point&) const = default;
};

struct PageSize {
    double width = 0.0, height = 0.0;
};

struct Rect {
    double x = 0.0, y = 0.0, width = 0.0, height = 0.0;

    double Right() const { return x + width; }
    double Bottom() const { return y + height; }
    Point Center() const { return {x + 0.5 * width, y + 0.5 * height}; }
    bool Contains(Point p) const {
        return p.x >= x && p.x <= Right() && p.y >= y && p.y <= Bottom();
    }
    bool Overlaps(const Rect& other) const {
        return x < other.Right() && other.x < Right() && y < other.Bottom() && other.y < Bottom();
    }
    /// The box with `margin` more on each side (less, if negative).
    Rect Grown(double margin) const {
        return {x - margin, y - margin, width + 2.0 * margin, height + 2.0 * margin};
    }
};

/// The smallest box around both.
inline Rect United(const Rect& a, const Rect& b) {
    const double x = std::min(a.x, b.x), y = std::min(a.y, b.y);
    return {x, y, std::max(a.Right(), b.Right()) - x, std::max(a.Bottom(), b.Bottom()) - y};
}

/// Cuts the segment from `a` to `b` to the part inside `box`; false if none is. An end that lies
/// inside stays exactly what it was. Source: parametric clipping after Liang and Barsky.
bool ClipSegment(const Rect& box, Point& a, Point& b);

}  // namespace photrak

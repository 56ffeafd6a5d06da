#include "drawing/dashes.h"

#include <cmath>
#include <numeric>

namespace photrak {
namespace {

/// The pattern where it stands now.
struct DashWalk {
    const std::vector<double>& lengths;
    std::size_t part = 0;  // even ones are drawn
    double left = 0.0;     // of it, pixels

    /// Draws from `a` to `b`.
    void Along(Point a, Point b, std::vector<Point>& segments) {
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        const auto at = [&](double done) {
            return Point{a.x + (b.x - a.x) * done / length, a.y + (b.y - a.y) * done / length};
        };
        for (double done = 0.0; done < length;) {
            const double next = std::fmin(length, done + left);
            if (part % 2 == 0) {
                segments.push_back(at(done));
                segments.push_back(at(next));
            }
            left -= next - done;
            done = next;
            if (left > 1e-9) continue;
            part = (part + 1) % lengths.size();
            left = lengths[part];
        }
    }
};

}  // namespace

std::vector<Point> DashedSegments(const std::vector<Point>& line,
                                  const std::vector<double>& lengths) {
    std::vector<Point> segments;
    segments.reserve(2 * line.size());
    const bool dashed = std::accumulate(lengths.begin(), lengths.end(), 0.0) > 0.1;
    DashWalk walk{lengths};
    if (dashed) walk.left = lengths.front();
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (dashed) {
            walk.Along(line[i - 1], line[i], segments);
        } else {
            segments.push_back(line[i - 1]);
            segments.push_back(line[i]);
        }
    }
    return segments;
}

}  // namespace photrak

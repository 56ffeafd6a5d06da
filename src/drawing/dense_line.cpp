#include "drawing/dense_line.h"

#include <cmath>
#include <optional>

namespace photrak {
namespace {

// A column is a bar when the line turns back in it, or comes from a bar. An edge that only passes
// through is one line, which has its true width.
constexpr std::size_t fewest = 3;   // points
constexpr double turnsBack = 1.05;  // way up and down over the height
constexpr double leastHeight = 3.0;

/// Heights that neighboring bars cover together.
struct Cover {
    double top = 0.0, bottom = 0.0;
    bool Holds(double a, double b) const {
        return std::min(a, b) >= top && std::max(a, b) <= bottom;
    }
};

std::optional<Cover> Joined(const Rect& a, const Rect& b) {
    if (std::fabs(a.x - b.x) > 1.5 * a.width) return std::nullopt;
    if (a.y > b.Bottom() || b.y > a.Bottom()) return std::nullopt;
    return Cover{std::min(a.y, b.y), std::max(a.Bottom(), b.Bottom())};
}

/// The points from `first` on that lie in one column.
struct Crowd {
    std::size_t points = 1;
    double place = 0.0;  // left edge of the column
    double way = 0.0;    // up and down
    Cover cover;
};
Crowd CrowdAt(const std::vector<Point>& line, std::size_t first, double column) {
    const double place = std::floor(line[first].x / column);
    Crowd crowd{1, place * column, 0.0, {line[first].y, line[first].y}};
    for (std::size_t i = first + 1; i < line.size(); ++i, ++crowd.points) {
        if (std::floor(line[i].x / column) != place) break;
        crowd.cover.top = std::min(crowd.cover.top, line[i].y);
        crowd.cover.bottom = std::max(crowd.cover.bottom, line[i].y);
        crowd.way += std::fabs(line[i].y - line[i - 1].y);
    }
    return crowd;
}

/// Segments in their order; what goes straight on is one.
class SegmentList {
  public:
    explicit SegmentList(std::vector<Point>& points) : points_(points) {}

    void Add(Point a, Point b) {
        constexpr std::size_t most = 8;
        const bool meets = !points_.empty() && points_.back() == a && passed_.size() < most;
        if (meets && GoesOn(b)) {
            passed_.push_back(a);
            points_.back() = b;
            return;
        }
        passed_.clear();
        points_.push_back(a);
        points_.push_back(b);
    }

  private:
    /// True when the last segment, drawn on to `b`, passes all it went through.
    bool GoesOn(Point b) const {
        constexpr double near = 0.3;  // pixels
        const Point a = points_[points_.size() - 2];
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        const auto isNear = [&](Point p) {
            const double along = (p.x - a.x) * (b.x - a.x) + (p.y - a.y) * (b.y - a.y);
            const double across = (p.x - a.x) * (b.y - a.y) - (p.y - a.y) * (b.x - a.x);
            return along >= 0.0 && along <= length * length && std::fabs(across) <= near * length;
        };
        return isNear(points_.back()) && std::all_of(passed_.begin(), passed_.end(), isNear);
    }

    std::vector<Point>& points_;
    std::vector<Point> passed_;  // by the last segment
};

}  // namespace

DenseLine SplitDense(const std::vector<Point>& line, double column) {
    DenseLine split;
    SegmentList segments(split.segments);
    std::optional<Rect> before;  // the bar of the column before, if it was one
    for (std::size_t first = 0; first < line.size();) {
        const Crowd crowd = CrowdAt(line, first, column);
        const std::size_t next = first + crowd.points;
        const double height = crowd.cover.bottom - crowd.cover.top;
        const bool crowded = crowd.points >= fewest && height > leastHeight;
        const bool passes = crowded && !before && crowd.way <= turnsBack * height;
        std::optional<Rect> bar;
        if (crowded && !passes) bar = Rect{crowd.place, crowd.cover.top, column, height};
        if (first > 0) {
            const auto cover = bar && before ? Joined(*bar, *before) : std::nullopt;
            if (!cover || !cover->Holds(line[first - 1].y, line[first].y))
                segments.Add(line[first - 1], line[first]);
        }
        if (bar) {
            split.bars.push_back(*bar);
        } else if (passes) {
            segments.Add(line[first], line[next - 1]);
        } else {
            for (std::size_t i = first + 1; i < next; ++i) segments.Add(line[i - 1], line[i]);
        }
        before = bar;
        first = next;
    }
    return split;
}

}  // namespace photrak

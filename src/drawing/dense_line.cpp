#include "drawing/dense_line.h"

#include <cmath>
#include <optional>

namespace photrak {
namespace {

// A column is a bar when the line turns back in it, or comes from a bar. An edge that only passes
// through is one line, which has its true width.
constexpr std::size_t crowd = 3;    // points
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

}  // namespace

DenseLine SplitDense(const std::vector<Point>& line, double column) {
    DenseLine split;
    std::optional<Rect> before;  // the bar of the column before, if it was one
    for (std::size_t first = 0; first < line.size();) {
        const double place = std::floor(line[first].x / column);
        double top = line[first].y, bottom = top, way = 0.0;
        std::size_t next = first + 1;
        for (; next < line.size() && std::floor(line[next].x / column) == place; ++next) {
            top = std::min(top, line[next].y);
            bottom = std::max(bottom, line[next].y);
            way += std::fabs(line[next].y - line[next - 1].y);
        }
        std::optional<Rect> bar;
        const double height = bottom - top;
        const bool crowded = next - first >= crowd && height > leastHeight;
        if (crowded && !before && way <= turnsBack * height) {
            split.segments.push_back(line[first]);
            split.segments.push_back(line[next - 1]);
        } else if (crowded) {
            bar = Rect{place * column, top, column, height};
            split.bars.push_back(*bar);
        } else {
            for (std::size_t i = first + 1; i < next; ++i) {
                split.segments.push_back(line[i - 1]);
                split.segments.push_back(line[i]);
            }
        }
        if (first > 0) {
            const auto cover = bar && before ? Joined(*bar, *before) : std::nullopt;
            if (!cover || !cover->Holds(line[first - 1].y, line[first].y)) {
                split.segments.push_back(line[first - 1]);
                split.segments.push_back(line[first]);
            }
        }
        before = bar;
        first = next;
    }
    return split;
}

}  // namespace photrak

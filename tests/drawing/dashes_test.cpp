// Dashes that run on through the corners of a line.
#include "drawing/dashes.h"

#include <cmath>
#include <gtest/gtest.h>

namespace photrak {
namespace {

double Length(const std::vector<Point>& segments) {
    double sum = 0.0;
    for (std::size_t i = 0; i + 1 < segments.size(); i += 2)
        sum += std::hypot(segments[i + 1].x - segments[i].x, segments[i + 1].y - segments[i].y);
    return sum;
}

TEST(Dashes, RunOnThroughCornersWhateverTheSteps) {
    // A spiral of steps much shorter than a dash: started anew at each step it would be solid.
    std::vector<Point> line;
    double whole = 0.0;
    for (int i = 0; i <= 4000; ++i) {
        const double angle = 0.01 * i;
        line.push_back({50.0 * std::cos(angle), 50.0 * std::sin(angle)});
        if (i > 0) whole += std::hypot(line[i].x - line[i - 1].x, line[i].y - line[i - 1].y);
    }
    const std::vector<Point> dashes = DashedSegments(line, {6.0, 4.0});
    EXPECT_NEAR(Length(dashes), 0.6 * whole, 6.0);
    EXPECT_NEAR(Length(DashedSegments(line, {})), whole, 1e-9);
    // Patterns that would never move on stand for a solid line.
    EXPECT_NEAR(Length(DashedSegments(line, {0.0, 0.0})), whole, 1e-9);
    EXPECT_TRUE(DashedSegments({{1, 1}}, {6.0, 4.0}).empty());
}

}  // namespace
}  // namespace photrak

// Dashes that run on through the corners of a line, and bars where its points crowd.
#include "drawing/dashes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

#include "drawing/dense_line.h"

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

/// True when a point of the line lies on what was split off it.
bool Covers(const DenseLine& split, Point p) {
    for (const Rect& bar : split.bars) {
        if (bar.Grown(1e-9).Contains(p)) return true;
    }
    for (std::size_t i = 0; i + 1 < split.segments.size(); i += 2) {
        Point a = split.segments[i], b = split.segments[i + 1];
        if (ClipSegment(Rect{p.x, p.y, 0, 0}.Grown(0.3), a, b)) return true;
    }
    return false;
}

TEST(DenseLine, KeepsEveryPartOfTheLine) {
    // Crowded in the middle, sparse at both sides, with a jump that no bar covers.
    std::mt19937 random(3);
    std::vector<Point> line;
    for (int i = 0; i < 40; ++i) line.push_back({i * 2.5, 100.0 + i});
    for (int i = 0; i < 800; ++i)
        line.push_back({100.0 + 0.1 * i, (i < 400 ? 100.0 : 400.0) + random() % 100});
    for (int i = 1; i < 40; ++i) line.push_back({180.0 + i * 2.5, 300.0 - i});
    const DenseLine split = SplitDense(line, 1.0);
    EXPECT_GT(split.bars.size(), 70u);
    EXPECT_LT(split.segments.size() / 2, 120u) << "bars stand for most of the 878 segments";
    double beside = 0.0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const Point a = line[i - 1], b = line[i];
        // From one column to the next the height is covered, the place to a column.
        for (const double part : {0.0, 0.3, 1.0}) {
            const Point p{a.x + part * (b.x - a.x), a.y + part * (b.y - a.y)};
            if (Covers(split, p) || Covers(split, {p.x + 1.0, p.y}) ||
                Covers(split, {p.x - 1.0, p.y}))
                continue;
            ADD_FAILURE() << p.x << " " << p.y;
        }
        beside = std::max(beside, a.y);
    }
    for (const Rect& bar : split.bars) EXPECT_LE(bar.Bottom(), beside);
}

}  // namespace
}  // namespace photrak

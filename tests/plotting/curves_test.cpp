// Columns, the grid behind rounded numbers, and curves reduced to pixels.
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <set>

#include "base/text.h"
#include "plotting/reduction.h"

namespace photrak {
namespace {

constexpr double gap = std::numeric_limits<double>::quiet_NaN();

double Rounded(double value) {
    return ReadDouble(FormatDefault(value));
}

/// A spectrum of 65,536 bins over 320 GHz has 257 different wavelengths in its file.
TEST(RestoreGrid, FindsWavelengthsAndTimesBehindSixDigits) {
    constexpr double c = 299792458.0, width = 320e9 / 65536;
    std::vector<double> wavelengths, true_;
    for (int i = 0; i < 65536; ++i) {
        true_.push_back(c / (c / 1550e-9 + (32768 - i) * width));
        wavelengths.push_back(Rounded(true_.back()));
    }
    EXPECT_LT(std::set<double>(wavelengths.begin(), wavelengths.end()).size(), 300u);
    ASSERT_TRUE(RestoreGrid(wavelengths, GridKind::EvenReciprocal));
    for (std::size_t i = 0; i < true_.size(); ++i)
        ASSERT_NEAR(wavelengths[i], true_[i], 0.02e-12) << i;

    std::vector<double> times;
    for (int i = 0; i < 200000; ++i) times.push_back(Rounded(i * 3.125e-13));
    ASSERT_TRUE(RestoreGrid(times, GridKind::Even));
    for (int i = 0; i < 200000; ++i)
        ASSERT_NEAR(times[static_cast<std::size_t>(i)], i * 3.125e-13, 0.05 * 3.125e-13) << i;
}

TEST(RestoreGrid, LeavesOtherColumnsAlone) {
    const std::vector<double> columns[] = {
        {-24, -23, -22, -21, -20, -19, -18, -17, -16},  // even as written
        {1, 2, 4, 8, 16, 32, 64, 128, 256, 512},        // no line
        {0, 1.00001, 2, 2.99, 4, 5, 6, 7, 8, 9, 10},    // a point beside it
        {1, 2, 3, gap, 5, 6, 7, 8, 9, 10.0001},         // a gap
        {5, 5, 5, 5, 5, 5, 5, 5, 5, 5},                 // flat
        {9, 8, 7, 6, 5, 4, 3, 2, 1.00001},              // falling
        {1, 2.00001},                                   // too short
    };
    for (const auto& column : columns) {
        for (const GridKind kind : {GridKind::Even, GridKind::EvenReciprocal}) {
            std::vector<double> values = column;
            EXPECT_FALSE(RestoreGrid(values, kind)) << column[1];
            EXPECT_EQ(FormatDefault(values[1]), FormatDefault(column[1]));
        }
    }
}

TEST(ColumnExtremes, EqualAPlainScan) {
    std::mt19937 random(3);
    std::vector<double> values;
    for (int i = 0; i < 30000; ++i)
        values.push_back(random() % 50 == 0 && i % 4096 < 600
                             ? gap
                             : static_cast<double>(random() % 1000) - 500.0);
    const Column column(values);
    for (int tries = 0; tries < 500; ++tries) {
        std::size_t from = random() % values.size(), to = random() % values.size();
        if (from > to) std::swap(from, to);
        ValueRange expected;
        bool gaps = false;
        for (std::size_t i = from; i < to; ++i) {
            gaps |= std::isnan(values[i]);
            if (!std::isnan(values[i])) expected.Include(values[i]);
        }
        Column::Extremes found;
        ASSERT_EQ(column.FindExtremes(from, to, found), !expected.IsEmpty());
        if (expected.IsEmpty()) continue;
        EXPECT_EQ(values[found.least], expected.least);
        EXPECT_EQ(values[found.greatest], expected.greatest);
        EXPECT_EQ(found.sawGap, gaps);
    }
}

struct PixelRange {
    double least = 1e300, greatest = -1e300;
};

/// What joined points cover in each pixel column.
std::vector<PixelRange> Covered(const std::vector<std::vector<Point>>& parts, const Rect& pane) {
    std::vector<PixelRange> columns(static_cast<std::size_t>(pane.width));
    for (const auto& part : parts) {
        for (std::size_t i = 0; i < part.size(); ++i) {
            const Point a = part[i], b = part[std::min(i + 1, part.size() - 1)];
            for (std::size_t c = 0; c < columns.size(); ++c) {
                Point from = a, to = b;
                if (!ClipSegment({pane.x + static_cast<double>(c), pane.y, 1.0, pane.height}, from,
                                 to))
                    continue;
                columns[c].least = std::min({columns[c].least, from.y, to.y});
                columns[c].greatest = std::max({columns[c].greatest, from.y, to.y});
            }
        }
    }
    return columns;
}

/// Against all points joined, at several zooms; with gaps, log scales and an x that goes back.
TEST(ReduceCurve, CoversThePixelsThatAllPointsCover) {
    std::mt19937 random(5);
    for (int variant = 0; variant < 12; ++variant) {
        SCOPED_TRACE(variant);
        const bool gaps = variant % 3 == 1, back = variant % 4 == 3;
        std::vector<double> xs, ys;
        double x = 0.0;
        for (int i = 0; i < 6000; ++i) {
            x += (random() % 100 < 2 ? 40.0 : 1.0) * static_cast<double>(random() % 1000) / 1000.0;
            xs.push_back(back && i % 1000 == 999 ? x - 100.0 : x);
            const double noise = static_cast<double>(random() % 1000) / 1000.0;
            ys.push_back(gaps && random() % 300 == 0 ? gap : 1.0 + std::sin(i * 0.004) * noise);
        }
        const ScaleKind kind = variant >= 8 ? ScaleKind::Logarithmic : ScaleKind::Linear;
        const ValueRange range = variant % 2 ? ValueRange{0.3 * x, 0.9 * x} : ValueRange{0.0, x};
        const PixelMap map{AxisScale(ScaleKind::Linear, range),
                           AxisScale(kind, {0.1, 2.2}),
                           {50.0, 20.0, 200.0, 100.0}};
        const Column xColumn(xs), yColumn(ys);
        std::vector<std::vector<Point>> full(1);
        for (std::size_t i = 0; i < xs.size(); ++i) {
            if (std::isnan(ys[i])) {
                full.emplace_back();
            } else {
                full.back().push_back(map.At(xs[i], ys[i]));
            }
        }
        const auto reduced = ReduceCurve(xColumn, yColumn, map);
        std::size_t vertices = 0;
        for (const auto& part : reduced) vertices += part.size();
        EXPECT_TRUE(back || vertices < 4u * 202u + 200u) << vertices;
        const auto expected = Covered(full, map.pane), got = Covered(reduced, map.pane);
        for (std::size_t c = 0; c < expected.size(); ++c) {
            // Columns are counted from the data: an extreme may lie a column farther.
            const std::size_t from = c > 0 ? c - 1 : c, to = std::min(c + 1, expected.size() - 1);
            double least = got[from].least, greatest = got[from].greatest;
            for (std::size_t k = from; k <= to; ++k) {
                least = std::min(least, got[k].least);
                greatest = std::max(greatest, got[k].greatest);
            }
            EXPECT_LE(least, expected[c].least + 0.02) << c;
            EXPECT_GE(greatest, expected[c].greatest - 0.02) << c;
        }
    }
}

TEST(ReduceCurve, CutsFarPointsAndKeepsLonePoints) {
    const PixelMap map{AxisScale(ScaleKind::Linear, {0.0, 3.0}),
                       AxisScale(ScaleKind::Linear, {0.0, 1.0}),
                       {0.0, 0.0, 300.0, 100.0}};
    const auto parts = ReduceCurve(Column({0, 1, 2, 3}), Column({0.5, 1e12, -1e12, 0.5}), map);
    for (const auto& part : parts) {
        for (const Point p : part) EXPECT_TRUE((Rect{-300, -100, 900, 300}.Contains(p))) << p.y;
    }
    const auto lone = ReduceCurve(Column({0, 1, 2, 3}), Column({gap, 0.5, gap, gap}), map);
    ASSERT_EQ(lone.size(), 1u);
    EXPECT_EQ(lone[0], (std::vector<Point>{{100.0, 50.0}}));
    EXPECT_TRUE(ReduceCurve(Column(std::vector<double>{}), Column({1.0}), map).empty());
    // Panned by whole pixels, the same points are taken.
    std::vector<double> xs, ys;
    for (int i = 0; i < 20000; ++i)
        xs.push_back(i), ys.push_back(std::sin(i * 0.7) * std::sin(i * 0.001));
    const Column x(xs), y(ys);
    const auto at = [&](double start) {
        PixelMap view{AxisScale(ScaleKind::Linear, {start, start + 10000.0}),
                      AxisScale(ScaleKind::Linear, {-1.0, 1.0}),
                      {0.0, 0.0, 100.0, 80.0}};
        std::set<double> heights;
        const auto reduced = ReduceCurve(x, y, view);
        for (const Point p : reduced.at(0)) {
            if (p.x > 20.0 && p.x < 70.0) heights.insert(std::round(p.y * 1e6));
        }
        return heights;
    };
    const auto one = at(1000.0), other = at(1000.0 + 5 * 100.0);
    std::size_t shared = 0;
    for (const double height : one) shared += other.count(height);
    EXPECT_GT(shared, one.size() * 8 / 10);
}

}  // namespace
}  // namespace photrak

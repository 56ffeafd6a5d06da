// Eyes of known opening: traces made from closed forms, and the density summed by hand.
#include "plotting/eye.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

#include "base/text.h"
#include "support/holds.h"

namespace photrak {
namespace {

class Texts : public PlotSource {
  public:
    std::map<std::string, std::string> files;
    bool ReadData(const std::string& name, std::string& text, std::string& error) override {
        const auto found = files.find(name);
        if (found == files.end()) error = "is not there";
        if (found != files.end()) text = found->second;
        return found != files.end();
    }
};

constexpr int samples = 32;
constexpr double interval = 1e-10;

/// A bit pattern with cosine edges centered on the interval's ends, one interval to a column.
std::string EyeRows(const std::vector<int>& bits, double low, double high, double noise) {
    std::mt19937 random(11);
    std::normal_distribution<double> gauss(0.0, 1.0);
    std::string text;
    for (int k = 0; k < samples; ++k) {
        text += FormatDefault(k * interval / samples);
        for (std::size_t bit = 1; bit + 1 < bits.size(); ++bit) {
            // Half an edge at each end of the interval.
            const double part = (k + 0.5) / samples;
            const int other = part < 0.5 ? bits[bit - 1] : bits[bit + 1];
            const double edge = 0.5 + 0.5 * std::sin(std::numbers::pi * std::min(part, 1.0 - part));
            const double level = other + (bits[bit] - other) * edge;
            text += " " + FormatDefault(low + (high - low) * level +
                                        (noise > 0.0 ? noise * gauss(random) : 0.0));
        }
        text += "\n";
    }
    return text;
}

Plot LoadEye(const std::string& rows, const std::string& xLabel = "Time (s)") {
    Texts source;
    source.files["e.eye"] = rows;
    Plot plot;
    std::string error;
    EXPECT_TRUE(LoadPlotText(
        Concat("/xl\"", xLabel, "\"\n/yl\"Signal (V)\"\n/lc2\n/ls1\ne.eye\n/nx1 /ny40\n"), "e.pce",
        source, plot, error))
        << error;
    EXPECT_EQ(plot.kind, PlotKind::Eye);
    return plot;
}

std::vector<int> RandomBits(int count) {
    std::mt19937 random(4);
    std::vector<int> bits;
    for (int i = 0; i < count; ++i) bits.push_back(static_cast<int>(random() % 2));
    return bits;
}

/// Edges 0.5 + 0.5 sin reach the level at the middle of the interval and cross at its ends.
TEST(EyeMeasures, OfACosineEyeAreThoseOfItsFormula) {
    const Plot plot = LoadEye(EyeRows(RandomBits(202), 0.2e-3, 1.0e-3, 0.0));
    ASSERT_EQ(plot.curves.size(), 199u);  // each but the last continued by the next
    EXPECT_NEAR(*plot.eyePeriod, interval, 1e-15);
    ASSERT_TRUE(plot.eye);
    EXPECT_NEAR(plot.eye->height, 0.8e-3, 0.01e-3);
    EXPECT_NEAR(plot.eye->low, 0.2e-3, 0.01e-3);
    EXPECT_NEAR(plot.eye->decisionLevel, 0.6e-3, 0.01e-3);
    EXPECT_NEAR(*plot.eye->width, interval, 0.05 * interval);
    EXPECT_NEAR(*plot.eye->crossing, 0.5, 0.02);
    EXPECT_EQ(EyeText(*plot.eye, "s", "V").substr(0, 14), "height 799 \xC2\xB5V");
}

/// Gaussian noise of known deviation on two levels: Q is their distance over twice the deviation.
TEST(EyeMeasures, QFollowsTheNoise) {
    for (const double Q : {5.0, 10.0}) {
        const Plot plot = LoadEye(EyeRows(RandomBits(4002), 0.0, 1.0, 1.0 / (2.0 * Q)));
        ASSERT_TRUE(plot.eye && plot.eye->Q);
        // The residue of the edges at the best sample widens the levels a little.
        EXPECT_NEAR(*plot.eye->Q, Q, 0.06 * Q);
    }
}

TEST(EyeMeasures, NothingIsClaimedWhereThereIsNoEye) {
    EXPECT_FALSE(LoadEye("0 1 1\n1 1 1\n2 1 1\n").eye);
    EXPECT_FALSE(LoadEye("0 . .\n1 . .\n").eye);
    EXPECT_FALSE(LoadEye("0\n1\n").eye);
    EXPECT_FALSE(LoadEye("0 1 2\n").eye);
    // One interval alone: edges that do not meet are not joined, and there is no crossing.
    const Plot single = LoadEye("0 0 5 0\n1 1 4 1\n2 0 5 0\n3 1 4 1\n");
    EXPECT_EQ(single.curves.size(), 3u);
    ASSERT_TRUE(single.eye);
    EXPECT_EQ(single.eye->height, 5.0);
    EXPECT_FALSE(single.eye->crossing);
    // Around a decision time there are two intervals already.
    EXPECT_EQ(LoadEye("-1 0 1\n0 1 1\n1 1 1\n2 1 0\n", "Decision Time Offset (s)").curves.size(),
              2u);
}

TEST(EyeDensity, EachTraceGivesOneToEachColumn) {
    const Plot plot = LoadEye("0 0 1 0.5\n1 1 0 0.5\n2 0 1 0.5\n", "Decision Time Offset (s)");
    const PixelMap map{AxisScale(ScaleKind::Linear, {0.0, 2.0}),
                       AxisScale(ScaleKind::Linear, {-1.0, 2.0}),
                       {10, 10, 90, 60}};
    const DensityImage image = MakeDensity(plot, map);
    ASSERT_EQ(image.columns, 90);
    ASSERT_EQ(image.rows, 60);
    // Level back to a count: 254 log(1 + c) / log(1 + peak), the flat trace and both crossings
    // being the peak.
    const auto count = [&](int column, int row) {
        const int level = image.levels[static_cast<std::size_t>(row * image.columns + column)];
        return level == 0 ? 0.0 : std::expm1((level - 0.5) / 254.0 * std::log1p(3.0));
    };
    for (const int column : {3, 20, 44, 70}) {
        double sum = 0.0;
        for (int row = 0; row < image.rows; ++row) sum += count(column, row);
        EXPECT_GT(sum, 0.5) << column;
    }
    // Nothing above 1, below 0, and between the lines where they are far apart.
    for (const auto& [column, row] : {std::pair{20, 15}, {20, 45}, {1, 25}, {44, 24}})
        EXPECT_EQ(count(column, row), 0.0) << column << " " << row;
    // A gap breaks the line: no segment across it.
    const DensityImage broken = MakeDensity(LoadEye("0 0.5\n1 .\n2 0.5\n", "Decision"), map);
    EXPECT_EQ(std::count(broken.levels.begin(), broken.levels.end(), 0), 90 * 60);
    // More saturation, more of what is rare.
    EXPECT_GT(MakeDensity(plot, map, 50.0).levels[30 * 90 + 44] + 1, image.levels[30 * 90 + 44]);
}

TEST(EyeSlice, SharesTheTracesAmongLevels) {
    const Plot plot = LoadEye("0 0 1 1\n1 1 0 1\n2 0 1 1\n", "Decision");
    const auto ends = EyeSlice(plot, 0.0, {0.0, 1.0}, 4),
               middle = EyeSlice(plot, 0.5, {0.0, 1.0}, 4);
    EXPECT_NEAR(ends[0], 1.0 / 3, 1e-12);
    EXPECT_NEAR(ends[3], 2.0 / 3, 1e-12);
    EXPECT_NEAR(middle[2], 2.0 / 3, 1e-12);
    for (const double share : EyeSlice(plot, 5.0, {0.0, 1.0}, 4)) EXPECT_EQ(share, 0.0);
}

}  // namespace
}  // namespace photrak

// Scales, ticks and labels of axes.
#include <cmath>
#include <gtest/gtest.h>
#include <set>

#include "base/text.h"
#include "plotting/axis_drawing.h"
#include "plotting/axis_label.h"

namespace photrak {
namespace {

/// Tables of the normal distribution: Q of 1e-3, 1e-9, 1e-12, 1e-15; beyond erfc's range by the
/// series.
TEST(QOfRate, AgreesWithTablesAndTurnsBack) {
    const std::pair<double, double> table[] = {{0.5, 0.0},
                                               {0.15865525393145705, 1.0},
                                               {1e-3, 3.0902323061678132},
                                               {1e-9, 5.9978070150076874},
                                               {1e-12, 7.0344838253011313},
                                               {1e-15, 7.9413453261709974}};
    for (const auto& [rate, Q] : table) EXPECT_NEAR(QOfRate(rate), Q, 1e-10) << rate;
    for (double decade = -299.5; decade < -0.31; decade += 0.5) {
        const double rate = std::pow(10.0, decade);
        EXPECT_NEAR(RateOfQ(QOfRate(rate)) / rate, 1.0, 1e-9) << rate;
    }
}

struct RangeRow {
    const char* what;
    ScaleKind kind;
    ValueRange range;
};

constexpr double infinity = std::numeric_limits<double>::infinity();
const RangeRow rangeRows[] = {
    {"usual", ScaleKind::Linear, {0.0, 12.8e-9}},
    {"tiny", ScaleKind::Linear, {1e-24, 3e-24}},
    {"huge", ScaleKind::Linear, {-1e300, 1e300}},
    {"beyond", ScaleKind::Linear, {-1.7e308, 1.7e308}},
    {"flat", ScaleKind::Linear, {1.55e-6, 1.55e-6}},
    {"flat at zero", ScaleKind::Linear, {0.0, 0.0}},
    {"subnormal", ScaleKind::Linear, {0.0, 5e-324}},
    {"reversed", ScaleKind::Linear, {2.0, 1.0}},
    {"empty", ScaleKind::Linear, {infinity, -infinity}},
    {"narrow", ScaleKind::Linear, {1.55e-6, 1.55e-6 * (1 + 1e-9)}},
    {"negative", ScaleKind::Linear, {-450.0, -50.0}},
    {"rates", ScaleKind::Logarithmic, {1e-42, 1e-4}},
    {"one decade", ScaleKind::Logarithmic, {1e-10, 1e-9}},
    {"half a decade", ScaleKind::Logarithmic, {2e-3, 8e-3}},
    {"near one", ScaleKind::Logarithmic, {0.999999, 1.0}},
    {"all doubles", ScaleKind::Logarithmic, {1e-300, 1e300}},
    {"nothing positive", ScaleKind::Logarithmic, {-3.0, 0.0}},
    {"from zero", ScaleKind::Logarithmic, {0.0, 1.0}},
    {"flat decade", ScaleKind::Logarithmic, {1e-9, 1e-9}},
    {"paper", ScaleKind::Probability, {1e-15, 0.1}},
    {"deep paper", ScaleKind::Probability, {1e-300, 0.4}},
    {"rates above a half", ScaleKind::Probability, {0.6, 0.9}},
};

TEST(MakeTicks, AnyRangeGetsAFewLabelsThatFit) {
    for (const RangeRow& row : rangeRows) {
        for (const double pixels : {60.0, 400.0, 720.0, 3000.0}) {
            SCOPED_TRACE(std::string(row.what) + " " + std::to_string(pixels));
            const AxisScale scale(row.kind, row.range);
            EXPECT_LT(scale.Range().least, scale.Range().greatest);
            EXPECT_NEAR(scale.Place(scale.Range().least), 0.0, 1e-9);
            EXPECT_NEAR(scale.Place(scale.Value(0.3)), 0.3, 1e-6);
            AxisPicture axis;
            axis.id = AxisId::Y;
            axis.scale = scale;
            MakeAxisTicks(axis, pixels, TableMeasure());
            EXPECT_LT(axis.ticks.size(), 1000u);
            std::set<std::string> labels;
            double before = -infinity;
            for (const Tick& tick : axis.ticks) {
                if (!tick.major) continue;
                const double place = scale.Place(tick.value) * pixels;
                EXPECT_TRUE(place >= -1e-3 && place <= pixels + 1e-3) << tick.label;
                EXPECT_TRUE(row.kind == ScaleKind::Probability || place - before >= 11.0)
                    << tick.label;
                EXPECT_TRUE(labels.insert(tick.label).second) << tick.label;
                before = place;
            }
            EXPECT_GE(labels.size(), pixels >= 400.0 ? 2u : 0u);
            EXPECT_LE(labels.size(), pixels / 18.0);
        }
    }
}

TEST(MakeTicks, DoNotJumpWhileAPlotIsPanned) {
    constexpr double span = 3.7e-9, pixels = 700.0;
    std::set<std::string> steps;
    for (int k = 0; k < 400; ++k) {
        const double start = -5e-9 + k * 2.3e-11;
        const auto ticks =
            MakeTicks(AxisScale(ScaleKind::Linear, {start, start + span}), pixels, 70.0, -9);
        double first = NAN, second = NAN;
        for (const Tick& tick : ticks) {
            if (!tick.major) continue;
            EXPECT_EQ(std::remainder(std::round(tick.value * 1e12), 500.0), 0.0) << tick.label;
            (std::isnan(first) ? first : second) = tick.value;
            if (!std::isnan(second)) break;
        }
        steps.insert(FormatSignificant(second - first, 4));
    }
    EXPECT_EQ(steps.size(), 1u);
    // The label of a tick is its index times the step, without the dirt of adding up.
    const auto ticks = MakeTicks(AxisScale(ScaleKind::Linear, {0.0, 1.0}), 500.0, 50.0, 0);
    EXPECT_EQ(ticks[3 * 5].label, "0.3");
    EXPECT_EQ(ticks[3 * 5].value, 0.3);
}

TEST(AxisLabel, TakesPrefixesLateAndOnlyWhereTheyBelong) {
    struct Row {
        const char* label;
        double largest;
        std::optional<int> inUse;
        const char* text;
    };
    const Row rows[] = {
        {"Time (s)", 12.8e-9, {}, "Time (ns)"},
        {"Time (s)", 1.9e-6, -9, "Time (ns)"},
        {"Time (s)", 2.1e-6, -9, "Time (\xC2\xB5s)"},
        {"Time (s)", 0.79e-9, -9, "Time (ps)"},
        {"Wavelength (m)", 1.551e-6, {}, "Wavelength (nm)"},
        {"Optical Frequency (Hz)", 193.5e12, {}, "Optical Frequency (THz)"},
        {"Power (dBm)", 1e-9, {}, "Power (dBm)"},
        {"Signal (Real)", 0.5, {}, "Signal (Real)"},
        {"Signal (Real)", 2e-6, {}, "Signal (Real) (10\xE2\x81\xBB\xE2\x81\xB6)"},
        {"Noise Power (dBm/Hz)", 150.0, {}, "Noise Power (dBm/Hz)"},
        {"Phase", 0.8, {}, "Phase (rad)"},
        {"Phase", 2e-6, {}, "Phase (10\xE2\x81\xBB\xE2\x81\xB6 rad)"},
        {"Power (W)", 5e-34, {}, "Power (10\xE2\x81\xBB\xC2\xB3\xE2\x81\xB6 W)"},
        {"", 3.0, {}, ""},
        {"Time (s)", 0.0, {}, "Time (s)"},
    };
    for (const Row& row : rows) {
        const AxisLabel label = SplitLabel(row.label);
        EXPECT_EQ(AxisText(label, ChooseExponent(label.unit, row.largest, row.inUse)), row.text)
            << row.label << row.largest;
    }
}

}  // namespace
}  // namespace photrak

// Links of several wavelengths and interferometers through the real program, against the closed
// forms that the notes of the examples name.
#include "link/example_run.h"

namespace photrak::test {
namespace {

class WdmLinks : public ExampleRun {};

/// Two couplers and a phase: sin^2 and cos^2 of half of it. The pulse has its peak in the middle.
TEST_F(WdmLinks, InterferometerShowsItsFringes) {
    Run("scan mach-zehnder.top");
    for (int point = 1; point <= 5; ++point) {
        const auto trace = [&](const std::string& name) {
            return Column("mzi-" + name + "_phase" + std::to_string(point) + "_mag.sig", 1);
        };
        const double half = (point - 1) * M_PI / 8;
        const double sine = std::sin(half), cosine = std::cos(half);
        EXPECT_NEAR(Peak(trace("bar")), 1e-3 * sine * sine, 1e-8);
        EXPECT_NEAR(Peak(trace("cross")), 1e-3 * cosine * cosine, 1e-8);
        // 160 ps are 256 samples; each arm is turned by half of them to the common start.
        const auto delayed = trace("delayed");
        ASSERT_EQ(delayed.size(), 1024u);
        EXPECT_NEAR(delayed[512 - 128], 0.5e-3, 1e-8);
        EXPECT_NEAR(delayed[512 + 128], 0.5e-3, 1e-8);
        EXPECT_LT(delayed[512], 1e-8);
    }
}

/// The outer channels pass an add/drop node untouched, both receivers get the bits that they ask
/// for, and the dropped light has gone from the line.
TEST_F(WdmLinks, AddDropNodeChangesOneChannel) {
    const auto readings = Readings(Run("run add-drop.top"));
    ASSERT_EQ(readings.size(), 2u);
    for (const auto& [rate, Q] : readings) {
        EXPECT_LT(rate, 1e-12);
        EXPECT_GT(Q, 7.0);
    }
    const auto line = Table("add-drop-line_mag.sig"), through = Table("add-drop-through_mag.sig");
    ASSERT_EQ(line.size(), 4096u);
    ASSERT_EQ(through.size(), 4096u);
    const double peak = Peak(Column("add-drop-line_mag.sig", 1));
    double added = 0, left = 0;
    for (std::size_t k = 0; k < line.size(); ++k) {
        ASSERT_EQ(through[k].size(), 5u);  // time, west, added and left of the dropped, west
        EXPECT_NEAR(line[k][1], through[k][1], 0.01 * peak);
        EXPECT_NEAR(line[k][3], through[k][4], 0.01 * peak);
        added = std::max(added, through[k][2]);
        left = std::max(left, through[k][3]);
    }
    EXPECT_NEAR(std::max(added, left), peak, 0.05 * peak);
    EXPECT_LT(std::min(added, left), 0.01 * peak);
}

/// The OSNR of the note is read at each channel: what the filter passed of the launched light
/// against the noise of five amplifiers, which lose a tenth of a decibel to saturation.
TEST_F(WdmLinks, SpectrumAnalyzerShowsTheOsnr) {
    EXPECT_EQ(Run("run osa-wdm8.top"),
              "osa-launched.frq\nosa-launched.pcf\nosa-line.frq\nosa-line.pcf\n");
    const double c = 299792458.0, halfPlanck = 3.313085e-34, nu = c / 1.55e-6;
    const double band = c * 0.1e-9 / (1.55e-6 * 1.55e-6);
    const double noise = 10 * std::log10(5 * (std::pow(10, 1.6) - 1) * std::pow(10, 0.5) *
                                         halfPlanck * nu * band * 1e3);
    const auto launched = Table("osa-launched.frq"), line = Table("osa-line.frq");
    ASSERT_EQ(line.size(), launched.size());
    for (int channel = 0; channel < 8; ++channel) {
        SCOPED_TRACE(channel);
        const double wavelength = c / (193.1e12 + channel * 100e9);
        std::size_t k = 0;
        while (line.at(k).at(0) < wavelength) ++k;
        EXPECT_NEAR(line[k].at(1) - line[k].at(2), launched[k].at(1) - noise, 0.1);
        if (channel == 0) continue;
        const double between = c / (193.1e12 + (channel - 0.5) * 100e9);
        while (line.at(k).at(0) < between) ++k;
        EXPECT_NEAR(line[k].at(1), line[k].at(2), 1.0);
    }
}

/// Noise of the amplifiers sets Q, which then goes with the root of the power; every channel of
/// the flat line has the same.
TEST_F(WdmLinks, EightChannelsHaveARateEach) {
    const auto full = Readings(Run("run --set bits=7 wdm8.top"));
    const auto quarter = Readings(Run("run --set bits=7 --set launch=1.5e-3 wdm8.top"));
    ASSERT_EQ(full.size(), 8u);
    ASSERT_EQ(quarter.size(), 8u);
    for (std::size_t k = 0; k < 8; ++k) {
        EXPECT_GT(full[k][1], 11.0) << k;
        EXPECT_LT(full[k][1], 14.0) << k;
        EXPECT_NEAR(full[k][1] / quarter[k][1], 2.0, 0.4) << k;
    }
}

}  // namespace
}  // namespace photrak::test

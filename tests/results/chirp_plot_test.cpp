#include <cmath>
#include <numbers>

#include "results/plot_fixture.h"
#include "support/holds.h"

namespace photrak {
namespace {

std::vector<double> Chirp(std::vector<Complex> samples, double tStep, std::int32_t start = 1) {
    const auto n = static_cast<std::int32_t>(samples.size());
    samples.insert(samples.begin(), Complex{1e9, 1e9});  // element 0 is never a sample
    std::vector<double> out(samples.size());
    ComputeChirp(n, out.data(), samples.data(), tStep, start);
    return {out.begin() + 1, out.end()};
}

Complex Polar(double amplitude, double phase) {
    return {amplitude * std::cos(phase), amplitude * std::sin(phase)};
}

TEST(ComputeChirp, GivesTheFrequencyOfAFallingPhase) {
    constexpr double tStep = 2e-12;
    for (double f : {10e9, 249e9, -249e9}) {
        std::vector<Complex> samples;
        for (int i = 0; i < 50; ++i) {
            samples.push_back(Polar(0.1 + i, -2.0 * std::numbers::pi * f * i * tStep));
        }
        const std::vector<double> chirp = Chirp(samples, tStep);
        EXPECT_EQ(chirp[0], 0.0);
        for (int i = 1; i < 50; ++i) EXPECT_NEAR(chirp[i], f, 1e-9 * std::abs(f));
    }
}

TEST(ComputeChirp, WalksAllSamplesCyclicallyAndStartsAfreshBehindDarkness) {
    const double turn = 2 * std::numbers::pi;  // per second: 1 Hz
    const std::vector<Complex> samples = {
        Polar(1, 0), Polar(1, -0.1 * turn), {}, Polar(1, -0.6 * turn), Polar(1, -0.4 * turn)};
    const double fromFirst[] = {0, 0.1, 0, 0, -0.2}, fromFourth[] = {0, -0.2, -0.4, 0.1, 0};
    const std::vector<double> first = Chirp(samples, 1), fourth = Chirp(samples, 1, 4);
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(first[i], fromFirst[i], 1e-15) << i;
        EXPECT_NEAR(fourth[i], fromFourth[i], 1e-15) << i;
    }
}

using ChirpPlotWriter = PlotTest;

TEST_F(ChirpPlotWriter, WritesOneColumnForEachChannelOfTheSameLength) {
    const double quarter = std::numbers::pi / 2;  // over 1 ps: 250 GHz
    AddElectrical({{1}, {2}});
    OpSignal& signal = AddOptical();
    AddChannel(signal, {Polar(1, 0), Polar(1, -quarter), Polar(1, -quarter)}).wavelength = 1.3e-6;
    AddChannel(signal, {{1}, {1}});
    AddChannel(signal, {{1}, {1}, {1}}, {Polar(1, 0), Polar(1, quarter), {}}).startTime = 1e-12;
    std::string text;
    EXPECT_EQ(WriteChirpPlot(Job(plotFlag::x | plotFlag::y), text), Status::Success);
    EXPECT_EQ(text, "");
    // The first channel starts a step before the third: its column begins at its second sample.
    EXPECT_EQ(dir.Read("P_xchirp.sig"), "0 0 0\n1e-12 0 0\n2e-12 -2.5e+11 0\n");
    EXPECT_EQ(dir.Read("P_ychirp.sig"), "0 0 0\n1e-12 0 -2.5e+11\n2e-12 0 0\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/yl\"Frequency Chirp (Hz)\"\n/tt"));
    EXPECT_TRUE(Holds(dir.Read("P.pcs"),
                      "/ls1\nP_xchirp.sig\nP_ychirp.sig\n"
                      "/lt\"&l = 1300 nm (x)\"\n/lt\"&l = 1550 nm (x)\"\n"
                      "/lt\"&l = 1300 nm (y)\"\n/lt\"&l = 1550 nm (y)\"\n/nx1\n"));
}

}  // namespace
}  // namespace photrak

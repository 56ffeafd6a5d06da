#include <cmath>
#include <numbers>

#include "results/plot_fixture.h"

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

// A carrier that falls in phase by 2 pi f per second lies f above the reference. Deviations up to
// half the sampling rate survive the wrap of the phase.
TEST(ComputeChirp, GivesTheFrequencyOfAFallingPhase) {
    constexpr double tStep = 2e-12;
    for (double f : {10e9, -80e9, 249e9, -249e9}) {
        SCOPED_TRACE(f);
        std::vector<Complex> samples;
        for (int i = 0; i < 50; ++i) {
            samples.push_back(Polar(0.1 + i, -2.0 * std::numbers::pi * f * i * tStep));
        }
        const std::vector<double> chirp = Chirp(samples, tStep);
        EXPECT_EQ(chirp[0], 0.0);
        for (int i = 1; i < 50; ++i) EXPECT_NEAR(chirp[i], f, 1e-9 * std::abs(f));
    }
}

TEST(ComputeChirp, StartsAfreshBehindDarkness) {
    const double quarter = std::numbers::pi / 2;  // a quarter turn per second is 0.25 Hz
    const std::vector<double> chirp =
        Chirp({Polar(1, 0), Polar(1, -quarter), {}, Polar(1, -2 * quarter), Polar(1, -quarter)}, 1);
    const double expected[] = {0, 0.25, 0, 0, -0.25};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(chirp[i], expected[i], 1e-15) << i;
}

TEST(ComputeChirp, WalksAllSamplesCyclically) {
    const double turn[] = {0.0, -0.1, -0.3, -0.6};  // falls of 0.1, 0.2, 0.3 and, around, -0.6
    std::vector<Complex> samples;
    for (double t : turn) samples.push_back(Polar(1, t));
    const std::vector<double> chirp = Chirp(samples, 1, 3);
    const double falls[] = {0, 0.3, -0.6, 0.1};
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(chirp[i], falls[i] / (2 * std::numbers::pi), 1e-15) << i;
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
    SignalPlotJob job = Job(plotFlag::x | plotFlag::y);
    std::string text;
    EXPECT_EQ(WriteChirpPlot(job, text), Status::Success);
    EXPECT_EQ(text, "");
    // The first channel starts a step before the third: its column begins at its second sample.
    EXPECT_EQ(dir.Read("P_xchirp.sig"), "0 0 0\n1e-12 0 0\n2e-12 -2.5e+11 0\n");
    EXPECT_EQ(dir.Read("P_ychirp.sig"), "0 0 0\n1e-12 0 -2.5e+11\n2e-12 0 0\n");
    EXPECT_EQ(dir.Read("P.pcs"),
              "/xl\"Time (s)\"\n"
              "/yl\"Frequency Chirp (Hz)\"\n"
              "/tt\"my plot Signal Plot\"\n"
              "/lcm2,1,3,4,5,6,7,8,9,10,11,12,13,14\n"
              "/ls1\n"
              "P_xchirp.sig\n"
              "P_ychirp.sig\n"
              "/lt\"&l = 1300 nm (x)\"\n"
              "/lt\"&l = 1550 nm (x)\"\n"
              "/lt\"&l = 1300 nm (y)\"\n"
              "/lt\"&l = 1550 nm (y)\"\n"
              "/nx1\n");
    job.flags = plotFlag::y;
    job.Toffset = 2e-12;
    EXPECT_EQ(WriteChirpPlot(job, text), Status::Success);
    EXPECT_EQ(dir.Read("P_ychirp.sig"), "0 0 0\n");
    EXPECT_NE(dir.Read("P.pcs").find("/tb\"y polarization\"\n/st7\nP_ychirp.sig\n"),
              std::string::npos);
}

}  // namespace
}  // namespace photrak

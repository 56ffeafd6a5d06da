// Signal and chirp plots: columns and command files of small signals, line by line.
#include "results/signal_plot.h"

#include <cmath>
#include <numbers>
#include <sstream>

#include "results/plot_fixture.h"
#include "support/holds.h"

namespace photrak {
namespace {

using SignalPlotWriter = PlotTest;
using Names = std::vector<std::string>;

TEST_F(SignalPlotWriter, DrawsAnElectricalSignalByItsRealPart) {
    AddElectrical({{0.5, 9}, {-1, 9}, {2, 9}, {3, 9}});
    Write(Job(plotFlag::defaultForm));
    EXPECT_EQ(dir.Read("P_real.sig"), "0 0.5\n1e-12 -1\n2e-12 2\n3e-12 0.5\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/ls1\nP_real.sig\n/lt\"\\# 1\"\n/nx1\n"));
    EXPECT_EQ(CurrentRun().written.Names(), (Names{"P_real.sig", "P.pcs"}));
}

// The oddity of the walk: by its kind a column reaches the last sample or returns before it.
TEST_F(SignalPlotWriter, SkipsTheLastSampleUnlessItIsTheStartOrAMagnitude) {
    const struct {
        double startTime;  // of the first signal, in steps; the second's is 0
        const char *real, *magnitude;
    } rows[] = {
        {1, "0 1 2\n1e-12 2 3\n2e-12 3 1\n3e-12 1 2\n", "0 1 2\n1e-12 2 3\n2e-12 3 4\n3e-12 4 1\n"},
        // Behind the axis by two steps, yet turned by one: the half that rounds is added first.
        {-2, "0 1 4\n1e-12 2 1\n2e-12 3 2\n3e-12 1 3\n",
         "0 1 4\n1e-12 2 1\n2e-12 3 2\n3e-12 4 3\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.startTime);
        ClearInputs();
        AddElectrical({{1}, {2}, {3}, {4}}).startTime = row.startTime * 1e-12;
        AddElectrical({{1}, {2}, {3}, {4}});
        Write(Job(plotFlag::real));
        Write(Job(plotFlag::magPhase));
        EXPECT_EQ(dir.Read("P_real.sig"), row.real);
        EXPECT_EQ(dir.Read("P_mag.sig"), row.magnitude);
    }
}

TEST_F(SignalPlotWriter, SumsThePowerOfBothPolarizations) {
    OpSignal& signal = AddOptical();
    AddChannel(signal, {{1, 1}, {0, 2}, {}, {3, 0}}, {{1, 0}, {}, {0, 0.5}, {}}).wavelength =
        1.552524e-6;
    AddChannel(signal, {{}, {}, {}, {1}}).startTime = 1e-12;  // sets the axis; dark in y
    Write(Job(plotFlag::x | plotFlag::y | plotFlag::combined));
    EXPECT_EQ(dir.Read("P_mag.sig"), "0 4 0\n1e-12 0.25 0\n2e-12 9 0\n3e-12 3 1\n");
    EXPECT_EQ(dir.Read("P_xmag.sig"), "0 4 0\n1e-12 0 0\n2e-12 9 0\n3e-12 2 1\n");
    EXPECT_EQ(dir.Read("P_ymag.sig"), "0 0 0\n1e-12 0.25 0\n2e-12 0 0\n3e-12 1 0\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"),
                      "P_mag.sig\nP_xmag.sig\nP_ymag.sig\n"
                      "/lt\"&l = 1552.52 nm (x+y)\"\n/lt\"&l = 1550 nm (x+y)\"\n"
                      "/lt\"&l = 1552.52 nm (x)\"\n"));
}

TEST_F(SignalPlotWriter, ShowsDarknessBelowTheWeakestLightInDecibels) {
    OpSignal& signal = AddOptical();
    AddChannel(signal, {{1}, {}, {0, 0.1}, {0.01, 0}});  // 30 dBm, dark, 10 dBm, -10 dBm
    AddChannel(signal, {{}, {}, {}, {}});
    Write(Job(plotFlag::dBm));
    EXPECT_EQ(dir.Read("P_mag.sig"),
              "0 30 -3070\n1e-12 -110 -3070\n2e-12 10 -3070\n3e-12 -10 -3070\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/yl\"Signal Magnitude (dBm)\"\n"));
}

TEST_F(SignalPlotWriter, RefusesACombinedFieldOtherThanItsPower) {
    AddChannel(AddOptical(), {{1, 2}, {3, 4}, {5, 6}}, {{0, -1}, {}, {}});
    std::string text;
    EXPECT_EQ(WriteSignalPlot(Job(plotFlag::realImag | plotFlag::combined), {"my_plot", text}),
              Status::Warning);
    EXPECT_EQ(text,
              "WARNING in signal plot 'my_plot': selected representation not compatible\n"
              "with combine_x_and_y mode; changed to x_only\n");
    EXPECT_EQ(dir.Files(), (Names{"P.pcs", "P_ximag.sig", "P_xreal.sig"}));
    Write(Job(plotFlag::realImag | plotFlag::x));
    EXPECT_EQ(dir.Read("P_xreal.sig"), "0 1\n1e-12 3\n2e-12 1\n");
    EXPECT_EQ(dir.Read("P_ximag.sig"), "0 2\n1e-12 4\n2e-12 2\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/yl\"Signal (Real)\"\n/altyl\"Signal (Imaginary)\"\n"));

    Write(Job(plotFlag::magPhase | plotFlag::y));
    EXPECT_EQ(dir.Read("P_ymag.sig"), "0 1\n1e-12 0\n2e-12 0\n");
    EXPECT_EQ(dir.Read("P_yphase.sig"), "0 -1.5708\n1e-12 0\n2e-12 -1.5708\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/yl\"Signal Magnitude (W)\"\n/altyl\"Phase\"\n/tt"));
}

TEST_F(SignalPlotWriter, ShowsTheDeviationOfElectricalNoise) {
    ElecSig& wave = AddElectrical({{-3, 4}, {1, 0}, {2, 0}});
    wave.sigmaSamples[1].re = 0.25;
    wave.sigmaSamples[2].re = 0.5;
    Write(Job(plotFlag::magNoise));
    EXPECT_EQ(dir.Read("P_mag.sig"), "0 5\n1e-12 1\n2e-12 2\n");
    EXPECT_EQ(dir.Read("P_noise.sig"), "0 0.25\n1e-12 0.5\n2e-12 0.25\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/yl\"Signal Magnitude (V)\"\n/altyl\"Noise\"\n"));
}

TEST_F(SignalPlotWriter, AddsGaussianNoiseOfEachSamplesDeviation) {
    constexpr int n = 20000;
    ElecSig& wave = AddElectrical(std::vector<Complex>(n, {2.0, 0.0}));
    for (int i = 2; i <= n; i += 2) wave.sigmaSamples[i].re = 0.5;
    SignalPlotJob job = Job(plotFlag::real);
    job.showNoise = true;
    Write(job);
    const std::string first = dir.Read("P_real.sig");
    std::istringstream rows(first);
    double x = 0, value = 0, sum = 0, squares = 0;
    for (int i = 1; rows >> x >> value && i < n; ++i) {
        ASSERT_TRUE(i % 2 == 0 || value == 2.0) << "no deviation, no noise";
        sum += value - 2.0;
        squares += (value - 2.0) * (value - 2.0);
    }
    // Five standard errors of the mean and of the variance of n/2 draws.
    EXPECT_NEAR(sum / (n / 2), 0.0, 5 * 0.5 / std::sqrt(n / 2.0));
    EXPECT_NEAR(squares / (n / 2), 0.25, 5 * 0.25 * std::sqrt(2.0 / (n / 2.0)));
    Write(job);
    EXPECT_NE(dir.Read("P_real.sig"), first) << "the sequence runs on from plot to plot";
}

TEST_F(SignalPlotWriter, StretchesBitsBesideAWaveform) {
    AddBits({0, 1});  // the waveform sets the axis, wherever it stands
    AddElectrical({{1}, {2}, {3}, {4}, {5}, {6}});
    Write(Job(plotFlag::defaultForm));
    const std::string stretched = "0 0\n1e-12 0\n2e-12 0\n3e-12 1\n4e-12 1\n5e-12 0\n";
    EXPECT_EQ(dir.Read("P_bin.sig"), stretched);
    EXPECT_EQ(dir.Read("P.pcs"),
              "/xl\"Time (s)\"\n"
              "/yl\"Signal (Real)\"\n"
              "/altyl\"Binary Value\"\n"
              "/tt\"my plot Signal Plot\"\n"
              "/lcm2,1,3,4,5,6,7,8,9,10,11,12,13,14\n"
              "/ls1\n"
              "/altw,,-0.1,1.1\n"
              "P_real.sig\n"
              "P_bin.sig /alty\n"
              "/lt\"<< \\# 2\"\n"
              "/lt\">> \\# 1\"\n"
              "/nx1\n");
    ClearInputs();
    AddBits({0, 1});
    AddChannel(AddOptical(), std::vector<Complex>(6));
    Write(Job(plotFlag::defaultForm));
    EXPECT_EQ(dir.Read("P_bin.sig"), stretched);
}

TEST_F(SignalPlotWriter, DrawsLoneBitsOnePerRow) {
    AddBits({1, 0, 1, 1});
    AddBits({0, 0, 0, 1}).startTime = 2e-10;
    Write(Job(plotFlag::defaultForm));
    EXPECT_EQ(dir.Read("P_bin.sig"), "0 1 1\n1e-10 0 0\n2e-10 1 0\n3e-10 1 0\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/yl\"Binary Value\"\n/tt"));
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/ls1\n/w,,-0.1,1.1\nP_bin.sig\n/lt\"\\# 1\"\n"));
}

TEST_F(SignalPlotWriter, BeginsTheRowsAtTheOffset) {
    AddElectrical({{1}, {2}, {3}, {4}});
    const std::pair<double, const char*> rows[] = {
        {2.9e-12, "0 3\n1e-12 1\n"},
        {HUGE_VAL, ""},
        {std::nan(""), "0 1\n1e-12 2\n2e-12 3\n3e-12 1\n"},
    };
    SignalPlotJob job = Job(plotFlag::real);
    for (const auto& [Toffset, text] : rows) {
        SCOPED_TRACE(Toffset);
        job.Toffset = Toffset;
        Write(job);
        EXPECT_EQ(dir.Read("P_real.sig"), text);
    }
}

TEST_F(SignalPlotWriter, EndsTheCollectionAtASignalOfAnotherLength) {
    AddEmptyPort();
    AddElectrical({{1}, {2}});
    AddOptical();
    AddChannel(AddOptical(), {{5}, {6}});  // another kind: passed over
    AddElectrical({{3}, {4}});
    AddElectrical({{7}, {8}, {9}});
    AddElectrical({{5}, {6}});
    Write(Job(plotFlag::magPhase));
    EXPECT_EQ(dir.Read("P_mag.sig"), "0 1 3\n1e-12 2 4\n");
    EXPECT_TRUE(Holds(dir.Read("P.pcs"), "/lt\"<< \\# 2\"\n/lt\"<< \\# 5\"\n"));
}

TEST_F(SignalPlotWriter, TellsWhatTheAxisLacks) {
    const auto expectError = [&](const char* reason) {
        std::string text;
        EXPECT_EQ(WriteSignalPlot(Job(plotFlag::defaultForm), {"my_plot", text}), Status::Error);
        EXPECT_EQ(text, std::string("ERROR in signal plot 'my_plot': input signal 1 ") + reason);
        EXPECT_EQ(dir.Files(), Names{});
        ClearInputs();
    };
    AddElectrical({});
    expectError("has no samples.\n");
    for (double tStep : {0.0, std::nan("")}) {
        AddElectrical({{1}, {2}}).tStep = tStep;
        expectError("has no time step.\n");
    }
    AddElectrical({{1}, {2}}).patternLength = 4;
    AddBits({1, 0, 1, 0});
    expectError("has fewer samples than bits.\n");
}

TEST_F(SignalPlotWriter, StaysInsideTheSamplesWhateverTheSignalsSay) {
    for (std::int32_t spareCount : {3, INT32_MAX, INT32_MIN}) {
        for (double startTime : {1e300, -1e300, std::nan("")}) {
            ClearInputs();
            AddElectrical({{1}, {1}, {1}});
            ElecSig& wave = AddElectrical({{1}, {1}, {1}});
            wave.spareCount = spareCount;
            wave.startTime = startTime;
            Write(Job(plotFlag::real));
            EXPECT_EQ(dir.Read("P_real.sig"), "0 1 1\n1e-12 1 1\n2e-12 1 1\n");
        }
    }
}

TEST_F(SignalPlotWriter, StartsTheViewerOnlyOnAFileThatIsThere) {
    AddElectrical({{1}, {2}});
    SignalPlotJob job = Job(plotFlag::magPhase);
    job.mode = PlotMode::Display;
    Write(job);
    ASSERT_EQ(host.commands.size(), 1u);
    EXPECT_EQ(host.commands[0].arguments, (Names{"vistrax", "@P.pcs"}));
    job.name = "no such directory/P";
    Write(job);
    EXPECT_EQ(host.commands.size(), 1u);
}

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
    EXPECT_EQ(WriteChirpPlot(Job(plotFlag::x | plotFlag::y), {"my_plot", text}), Status::Success);
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

// Spectra against transforms known in closed form, powers that must stay, and the filters' shapes.
#include "results/spectrum_plot.h"

#include "base/units.h"
#include "results/osa_filter.h"
#include "results/plot_fixture.h"
#include "results/power_spectrum.h"
#include "results/spectrum_file.h"
#include "support/holds.h"

namespace photrak {
namespace {

constexpr double tStep = 1e-12;
constexpr double sixDigits = 6e-4;  // dB: half a unit of the sixth digit of some hundreds

class SpectrumBlock : public PlotModelTest {
  protected:
    /// Runs with words "NAME=WORD"; a word that is a number sets a number.
    void Write(std::vector<std::pair<const char*, std::string>> words,
               Status expected = Status::Success) {
        ParameterList parameters;
        for (const auto& [name, word] : words) {
            char* end = nullptr;
            const double number = std::strtod(word.c_str(), &end);
            if (*end) {
                parameters.Text(name, word, EnumType);
            } else if (std::string_view(name) == "ResolutionLimit" ||
                       std::string_view(name) == "filterOrder") {
                parameters.Add(name, IntType, "").valactual =
                    NewBlock(static_cast<std::int32_t>(number));
            } else {
                parameters.Double(name, number);
            }
        }
        ASSERT_EQ(Run(RunSignalSpectra, parameters), expected) << text;
        rows = expected == Status::Success ? Rows("phtmpplot.frq")
                                           : std::vector<std::vector<double>>{};
        script = dir.Read("phtmpplot.pcf");
    }
    OpSig& AddWave(OpSignal& signal, int n, double amplitude, double wavelength = 1.55e-6) {
        OpSig& channel =
            AddChannel(signal, std::vector<Complex>(static_cast<std::size_t>(n), {amplitude, 0.0}));
        channel.wavelength = wavelength;
        return channel;
    }
    void AddRecord(OpSignal& signal, double fstart, double fstep,
                   const std::vector<double>& density) {
        Owned<OpSigASE> record;
        ASSERT_EQ(Make(record, CreateOpSigASE, static_cast<std::int32_t>(density.size())), 0);
        record->fstart = fstart;
        record->fstep = fstep;
        std::copy(density.begin(), density.end(), record->powerSamples + 1);
        signal.noise = record.release();
    }
    double Level(double x, std::size_t column = 1) const {
        const auto nearest = std::min_element(
            rows.begin(), rows.end(),
            [&](const auto& a, const auto& b) { return std::abs(a[0] - x) < std::abs(b[0] - x); });
        return (*nearest)[column];
    }
    double TotalPower() const {
        double watts = 0.0;
        for (const auto& row : rows) watts += WattsFromDbm(row[1]);
        return watts;
    }

    std::vector<std::vector<double>> rows;
    std::string script;
};

TEST_F(SpectrumBlock, PutsASineAtItsFrequencyWithItsPower) {
    constexpr int n = 64;
    constexpr double df = 1.0 / (n * tStep);
    std::vector<Complex> sine;
    for (int i = 0; i < n; ++i) sine.push_back({0.5 + 0.2 * std::cos(twoPi * 3 * i / n), 0.0});
    AddElectrical(sine);
    for (Complex& sample : sine) sample.re *= 0.1;
    AddElectrical(sine);
    AddWave(AddOptical(), n, 1.0);  // of another kind
    Write({{"Type", "Frequency"}});
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(n));
    for (int k = 0; k < n; ++k) {
        EXPECT_NEAR(rows[static_cast<std::size_t>(k)][0], (k - n / 2 + 1) * df, 1e-5 * df * n);
    }
    EXPECT_EQ(rows[n / 2 - 1][0], 0.0);
    EXPECT_NEAR(Level(0.0), DbmFromWatts(0.25), sixDigits);
    for (const double f : {3 * df, -3 * df}) {
        EXPECT_NEAR(Level(f), DbmFromWatts(0.01), sixDigits);
        EXPECT_NEAR(Level(f, 2), DbmFromWatts(0.0001), sixDigits);
    }
    EXPECT_TRUE(Holds(script,
                      "/xl\"Baseband Frequency (Hz)\"\n/yl\"Spectral Content (dBm)\"\n"
                      "/tt\"plot Baseband Signal Spectrum\"\n"
                      "/lcm2,1,3,4,5,6,7,8,9,10,11,12,13,14\n/ls1\nphtmpplot.frq\n"
                      "/lt\"\\# 1\"\n/lt\"\\# 2\"\n/nx1\n"));

    Write({{"DCoffset", "Ignore"}, {"Normalize", "Yes"}});
    EXPECT_LT(Level(0.0), -200.0);  // the neighbor's rounding
    EXPECT_EQ(Level(3 * df), 0.0);
    EXPECT_EQ(Level(3 * df, 2), 0.0) << "each column has its own reference";
}

TEST_F(SpectrumBlock, GivesAGaussianPulseItsTransform) {
    constexpr int n = 1024;
    constexpr double T0 = 20e-12, df = 1.0 / (n * tStep);
    std::vector<Complex> pulse;
    for (int i = 0; i < n; ++i) {
        const double t = (i - n / 2) * tStep;
        pulse.push_back({std::exp(-t * t / (2 * T0 * T0)), 0.0});
    }
    AddChannel(AddOptical(), pulse, pulse);
    Write({{"Type", "Baseband"}, {"Polarization", "y_only"}});
    EXPECT_TRUE(Holds(script, "/tb\"y polarization\"\n/ls1\n"));
    for (int m = -40; m <= 40; ++m) {  // down to -115 dB of the peak
        const double f = m * df,
                     field = T0 * std::sqrt(twoPi) * std::exp(-2 * pi * pi * f * f * T0 * T0);
        EXPECT_NEAR(Level(f), DbmFromWatts(field * field * df * df), sixDigits) << m;
    }
    AddChannel(AddOptical(), pulse);
    Write({{"Type", "Baseband"}, {"Polarization", "sep_x_and_y"}});  // no word of a spectrum
    EXPECT_TRUE(Holds(script, "/lt\"&l = 1550 nm (x+y)\""));
    EXPECT_NEAR(Level(0.0) - Level(0.0, 2), 10 * std::log10(2.0), sixDigits);
}

// Three channels on grids that do not meet, one of them with a tone on its edge.
TEST_F(SpectrumBlock, KeepsTheTotalPowerOnEveryAxis) {
    constexpr int n = 256;
    OpSignal& signal = AddOptical();
    AddWave(signal, n, 0.02, 1.5500e-6);
    AddWave(signal, n, 0.05, 1.5513e-6);
    OpSig& edge = AddWave(signal, n, 0.0, 1.5487e-6);
    for (int i = 1; i <= n; ++i) edge.Ex_samples[i] = {i % 2 ? 0.03 : -0.03, 0.0};
    const double total = 0.02 * 0.02 + 0.05 * 0.05 + 0.03 * 0.03;
    for (const char* limit : {"0", "2", "17", "100", "16777216"}) {
        SCOPED_TRACE(limit);
        Write({{"Resolution", limit == std::string("0") ? "Full" : "Limited"},
               {"ResolutionLimit", limit}});
        // Straight lines between bins lose what the step is above their spacing.
        const double points = static_cast<double>(rows.size());
        EXPECT_NEAR(TotalPower(), total, (points > 100 ? 1.0 / points : 1e-5) * total);
    }
    Write({{"Type", "Frequency"}, {"Resolution", "Limited"}, {"ResolutionLimit", "17"}});
    EXPECT_EQ(rows.size(), 17u);
    Write({{"Type", "Frequency"}, {"PowerUnits", "dBm/Hz"}});
    EXPECT_TRUE(Holds(script, "/yl\"Power (dBm/Hz)\"\n"));
    const double points = static_cast<double>(rows.size());
    const double step = (rows.back()[0] - rows.front()[0]) / (points - 1);
    EXPECT_NEAR(TotalPower() * step, total, total / points);
}

TEST_F(SpectrumBlock, RisesWithTheWavelength) {
    constexpr int n = 4096;
    AddWave(AddOptical(), n, 0.1);
    Write({{"filterType", "None"}});
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(n));
    const double df = 1.0 / (n * tStep), carrier = lightSpeed / 1.55e-6;
    for (int k = 0; k < n; ++k) {
        const auto& row = rows[static_cast<std::size_t>(k)];
        EXPECT_NEAR(lightSpeed / row[0] - carrier, (n / 2 - k) * df, 0.5 * df) << k;
        if (k > 0) {
            ASSERT_GT(row[0], rows[static_cast<std::size_t>(k - 1)][0]);
        }
    }
    EXPECT_NEAR(Level(1.55e-6), 10.0, sixDigits);
    EXPECT_TRUE(Holds(script,
                      "/xl\"Wavelength (m)\"\n/yl\"Power (dBm)\"\n"
                      "/tt\"plot Wavelength Spectrum\"\n"));
    EXPECT_EQ(DigitsToTellApart({1.0, 2.0}), 6);
    EXPECT_EQ(DigitsToTellApart({1.93e14, 1.93e14 + 1e6}), 9);
}

// A single line draws the filter's own shape.
TEST_F(SpectrumBlock, FiltersHaveTheirWidths) {
    constexpr int n = 1024;
    constexpr double df = 1.0 / (n * tStep), BW = 40 * df;
    OpSig& channel = AddWave(AddOptical(), n, 0.1);
    const double carrier = lightSpeed / channel.wavelength;
    const struct {
        const char *type, *order;
        double BW0;
        double atEdge, atFullWidth;  // dB at BW/2 and at BW from the middle
    } filters[] = {
        {"Gaussian", "1", 0.0, 10 * std::log10(0.25), 40 * std::log10(0.25)},
        {"Gaussian", "3", 0.0, 10 * std::log10(0.25), -INFINITY},
        {"Trapezoidal", "1", 20 * df, -3.0, -9.0},
        {"Trapezoidal", "1", 40 * df, 0.0, -INFINITY},
        {"Trapezoidal", "1", 90 * df, 0.0, -INFINITY},  // no wider than its 3 dB width
    };
    for (const auto& filter : filters) {
        SCOPED_TRACE(std::string(filter.type) + filter.order);
        Write({{"Type", "Frequency"},
               {"filterType", filter.type},
               {"filterSpecMode", "Frequency"},
               {"filterBW", std::to_string(BW)},
               {"filterBW0dB", std::to_string(filter.BW0)},
               {"filterOrder", filter.order}});
        EXPECT_NEAR(Level(carrier), 10.0, sixDigits);
        for (const double side : {-1.0, 1.0}) {
            EXPECT_NEAR(Level(carrier + side * BW / 2), 10.0 + filter.atEdge, 1e-3);
            if (std::isinf(filter.atFullWidth)) {
                EXPECT_LT(Level(carrier + side * BW), -40.0);
            } else {
                EXPECT_NEAR(Level(carrier + side * BW), 10.0 + filter.atFullWidth, 1e-3);
            }
        }
    }
    OsaFilter filter{OsaShape::Gaussian, BW, 0.0, 1, 0.0};
    EXPECT_EQ(OsaKernel(filter, df, n).size(), 2 * 51 + 1u) << "20 sqrt(40 / 6.02) steps";
    EXPECT_EQ(OsaKernel(filter, df, 40).size(), 39u);
    // 0.4 nm are 49.92 GHz at 1550 nm.
    Write({{"Type", "Frequency"}, {"filterType", "Gaussian"}, {"filterBW", "0.4e-9"}});
    const double inHertz = lightSpeed * 0.4e-9 / (1.55e-6 * 1.55e-6);
    EXPECT_NEAR(Level(carrier + 25 * df), 10 - 10 * std::log10(4.) * std::pow(50 * df / inHertz, 2),
                1e-3);
    Write({{"Type", "Frequency"},
           {"filterType", "Trapezoidal"},
           {"filterBW", "0.4e-9"},
           {"filterBW0dB", "1"}});  // m: no width in Hz, a rectangle all the same
    EXPECT_NEAR(Level(carrier + 25 * df), 10.0, sixDigits);
    EXPECT_LT(Level(carrier + 26 * df), -40.0);
}

TEST_F(SpectrumBlock, AddsTheNoiseRecordAsItStands) {
    constexpr int n = 256;
    constexpr double df = 1.0 / (n * tStep), density = 1e-18;
    OpSignal& signal = AddOptical();
    const double carrier = lightSpeed / AddWave(signal, n, 0.01).wavelength;
    AddRecord(signal, carrier - 100e9, 50e9, {density, density, density, 3 * density});
    const double inBin = DbmFromWatts(density * df), inHertz = DbmFromWatts(density);

    Write({{"Type", "Frequency"}});
    EXPECT_NEAR(Level(carrier), DbmFromWatts(1e-4 + density * df), sixDigits);
    EXPECT_NEAR(Level(carrier - 80e9), inBin, sixDigits);
    EXPECT_LT(Level(carrier + 90e9), inBin - 50.0) << "nothing beyond the record";
    EXPECT_TRUE(Holds(script, "phtmpplot.frq\n/nx1\n"));

    Write({{"Type", "Frequency"}, {"ShowNoise", "Both"}, {"PowerUnits", "dBm/Hz"}});
    EXPECT_NEAR(Level(carrier), DbmFromWatts(1e-4 / df + density), sixDigits);
    EXPECT_NEAR(Level(carrier - 80e9, 1), inHertz, sixDigits);
    EXPECT_NEAR(Level(carrier - 80e9, 2), inHertz, sixDigits);
    const double between = carrier + df * std::round(25e9 / df);  // halfway up to three times
    EXPECT_NEAR(Level(between, 2), DbmFromWatts(density * (1 + 2 * (between - carrier) / 50e9)),
                sixDigits);
    EXPECT_TRUE(Holds(script, "/lt\"Signal + noise\"\n/lt\"Noise\"\n/nx1\n"));

    Write({{"Type", "Frequency"},
           {"ShowNoise", "Separately"},
           {"Normalize", "Yes"},
           {"testASEnoiseMode", "ON"}});
    EXPECT_EQ(Level(carrier, 1), 0.0);
    EXPECT_NEAR(Level(carrier, 2), 10 * std::log10(density * df / 1e-4), sixDigits);
    EXPECT_EQ(Level(carrier - 80e9, 1), -100.0) << "dark: 100 dB below the weakest light";
    EXPECT_TRUE(Holds(script, "/yl\"Power (dB)\"\n"));
    EXPECT_TRUE(Holds(dir.Read("phtmpplot_ASE.pcl"),
                      "/xl\"Frequency (Hz)\"\n/yl\"Noise Power (dBm/Hz)\"\n"
                      "/tt\"ASE Noise Spectra\"\n"));
    const auto record = Rows("phtmpplot_ASE.lic");
    ASSERT_EQ(record.size(), 4u);
    EXPECT_NEAR(record[0][1], inHertz, 1e-3);
    EXPECT_NEAR(record[3][1], inHertz + 10 * std::log10(3.), 1e-3);

    Write({{"OSAsensitivityMode", "Limited"}, {"OSAsensitivity", "-50"}});
    for (const auto& row : rows) EXPECT_GE(row[1], -50.0);
}

TEST_F(SpectrumBlock, DrawsLasersAsPoints) {
    OpSignal& signal = AddOptical();
    AddWave(signal, 1, 0.1, 1.56e-6).tStep = 0.0;
    AddWave(signal, 1, 0.2, 1.55e-6).tStep = 0.0;
    Write({{"filterType", "Gaussian"}});
    EXPECT_EQ(dir.Read("phtmpplot.frq"), "1.55e-06 16.0206\n1.56e-06 10\n");
    EXPECT_TRUE(Holds(script, "/ls1\n/st7\nphtmpplot.frq\n"));
    ClearInputs();
    AddWave(AddOptical(), 1, 0.1).tStep = 0.0;
    Write({});
    EXPECT_TRUE(Holds(script, "/ls1\n/st7\n/w7.75e-07,3.1e-06,5,20\n"));
}

TEST_F(SpectrumBlock, RefusesWhatHasNoSpectrum) {
    EXPECT_EQ(Run(RunSignalSpectra), Status::Error);
    EXPECT_EQ(text, "ERROR plotting signals: no signal data\n");
    AddElectrical({{1}, {2}, {3}, {4}});
    Write({{"filterType", "Gaussian"}}, Status::Error);
    EXPECT_TRUE(Holds(text, "'filterSpecMode' is Wavelength"));
    Write({{"filterType", "Gaussian"}, {"filterSpecMode", "Frequency"}, {"filterBW", "0"}},
          Status::Error);
    EXPECT_TRUE(Holds(text, "'filterBW' is 0"));
    ClearInputs();
    AddWave(AddOptical(), 4, 0.1).tStep = 1e-15;  // 1 PHz about 193 THz
    Write({}, Status::Error);
    EXPECT_TRUE(Holds(text, "choose the Frequency axis"));
    Write({{"Type", "Frequency"}});
    EXPECT_EQ(dir.Files(), (std::vector<std::string>{"phtmpplot.frq", "phtmpplot.pcf"}));
}

}  // namespace
}  // namespace photrak

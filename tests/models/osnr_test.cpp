// The optical signal-to-noise ratio of a chain of amplifiers as an engineer reads it off a
// spectrum.
#include "base/units.h"
#include "models/block_run.h"
#include "models/common/ase_spectra.h"
#include "models/optical/amplifier.h"
#include "models/optical_fixture.h"
#include "results/spectrum_plot.h"
#include "support/catalogue_block.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double halfPlanck = 3.313085e-34;  // J s: one polarization of a noise figure of 0 dB
constexpr double gainDb = 16.0, noiseFigureDb = 5.0, launched = 1e-3;
constexpr double width = 0.1e-9, wavelength = 1.55e-6;  // m

/// Spans that lose what the amplifier behind them makes up for, in one field.
Owned<OpSignal> BehindAmplifiers(int count) {
    EdfaParams params;
    params.type = "defined";
    params.gain = FieldRatio(gainDb);
    params.Psat = 1e6;  // far from saturation
    params.Fn = PowerRatio(noiseFigureDb);
    params.BW = 10e-9;
    params.noiseResolution = width;
    params.noiseCenter = wavelength;
    Owned<OpSignal> light = Carrier(launched, 4096, wavelength);
    for (int k = 0; k < count; ++k) {
        OpSig& channel = *light->channels;
        for (std::int32_t i = 1; i <= channel.noPoints; ++i) {
            channel.Ex_samples[i] = (1.0 / params.gain) * channel.Ex_samples[i];
        }
        ScaleSpectra(light->noise, 1.0 / (params.gain * params.gain));
        std::string text;
        Nodelist input{nullptr, OpSigType, light.get()}, output{nullptr, OpSigType, nullptr};
        EXPECT_EQ(EDFA(&input, params, &output, {"A", text}), Status::Success) << text;
        light.reset(static_cast<OpSignal*>(output.sig));
    }
    return light;
}

/// Levels of a file at the strongest point and `away` m above its wavelength, in dBm.
std::pair<double, double> PeakAndFloor(const TempDir& dir, double away) {
    std::istringstream rows(dir.Read("phtmpbox.frq"));
    std::vector<std::pair<double, double>> points;
    for (double x, level; rows >> x >> level;) points.emplace_back(x, level);
    const auto peak = *std::max_element(points.begin(), points.end(),
                                        [](auto a, auto b) { return a.second < b.second; });
    for (const auto& [x, level] : points) {
        if (x > wavelength + away) return {peak.second, level};
    }
    return {peak.second, NAN};
}

TEST(Osnr, IsReadOffASpectrumBehindAmplifiers) {
    for (const int amplifiers : {1, 5, 10}) {
        SCOPED_TRACE(amplifiers);
        const Owned<OpSignal> light = BehindAmplifiers(amplifiers);
        CatalogueBlock analyzer("SignalSpectra");
        analyzer.Set("filterType", "Trapezoidal").Set("filterBW0dB", "0.1e-9");
        const TempDir dir;
        BlockRun run(RunSignalSpectra, analyzer.Evaluated(), {light});
        ASSERT_EQ(run.status, Status::Success) << run.text;

        const auto [peak, noise] = PeakAndFloor(dir, 1e-9);
        const double read = PowerDecibels(PowerRatio(peak - noise) - 1.0);
        const double band = FrequencyWidth(width, wavelength);
        const double density = amplifiers * (PowerRatio(gainDb) - 1.0) * PowerRatio(noiseFigureDb) *
                               halfPlanck * lightSpeed / wavelength;
        // The band of the filter is a whole number of bins of 244 MHz: 0.02 dB.
        EXPECT_NEAR(read, PowerDecibels(launched / (density * band)), 0.05);
    }
}

}  // namespace
}  // namespace photrak

// Gain and emission of the amplifier against the formulas of the textbook, worked out by hand.
#include "models/optical/amplifier.h"

#include <functional>

#include "base/text.h"
#include "models/common/ase_spectra.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"
#include "support/catalogue_block.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr double c = 299792458.0;
constexpr double halfPlanck = 3.313085e-34;  // J s, half of 6.62617e-34
constexpr double center = 1.55e-6;           // m
constexpr double rounding = 1e-12;           // relative, of a few operations
constexpr double transformRounding = 1e-12;  // absolute, of fields of some 1e-2

double Decibels(double value) {
    return std::pow(10.0, value / 10.0);
}

/// One flat gain of 16 dB, 5 dB noise figure, 40 nm of noise.
EdfaParams FlatAmplifier() {
    EdfaParams params;
    params.type = "defined";
    params.Psat = 0.1;
    params.gain = std::sqrt(Decibels(16));
    params.Fn = Decibels(5);
    params.BW = 40e-9;
    params.noiseResolution = 0.1e-9;
    params.noiseCenter = center;
    return params;
}

SCurves Curves(std::string_view text) {
    SCurves curves;
    std::string errorText;
    EXPECT_EQ(ReadSCurves(text, "curves", "%s", curves, {"A1", errorText}), Status::Success)
        << errorText;
    return curves;
}

EdfaParams CurveAmplifier(std::string_view curves) {
    EdfaParams params = FlatAmplifier();
    params.type = "custom";
    params.gainCurves = Curves(curves);
    return params;
}

struct Amplifier : Outcome {
    Amplifier(const EdfaParams& params, const OpSignal& light) : Outcome(OpSigType) {
        Nodelist input{nullptr, OpSigType, const_cast<OpSignal*>(&light)};
        status = EDFA(&input, params, &output, {"A1", text});
    }
    const OpSignal& Light() const { return Made<OpSignal>(); }
    double Power() const { return AverageOpSigPower(Light().channels); }
    const OpSigASE& Noise() const { return *Light().noise; }
};

/// Density at the point nearest to a frequency.
double DensityAt(const OpSigASE& spectrum, double nu) {
    const auto i =
        static_cast<std::int32_t>(std::lround((nu - spectrum.fstart) / spectrum.fstep) + 1);
    EXPECT_TRUE(i >= 1 && i <= spectrum.noPoints);
    return spectrum.powerSamples[i];
}

// --- One gain ---

// 1/Pout = 1/(G^2 Pin) + 1/Psat
TEST(OpticalAmplifier, BothPolarizationsAllChannelsAndIncomingNoiseSaturateTogether) {
    Owned<OpSignal> light = Carrier(1e-3);
    ASSERT_EQ(AddEySamples(light->channels), 0);
    light->channels->Ey_samples[1] = {0.0, std::sqrt(4e-3)};  // 1 mW on average of four
    AppendChannel(*light, Carrier(2e-3));
    AddNoise(*light, 193e12, 1e9, {1e-13, 2e-13});  // 0.3 mW
    AddNoise(*light, 193e12, 1e9, {7e-13});         // 0.7 mW
    const EdfaParams params = FlatAmplifier();
    const Amplifier amplifier(params, *light);
    const double gain = Decibels(16) / (5e-3 / params.Psat * Decibels(16) + 1.0);
    EXPECT_NEAR(amplifier.Power() / (2e-3 * gain), 1.0, rounding);
    EXPECT_NEAR(amplifier.Light().noise->next->powerSamples[1] / (7e-13 * gain), 1.0, rounding);
    EXPECT_EQ(light->noise->powerSamples[1], 1e-13) << "an input is never changed";
}

TEST(OpticalAmplifier, EmissionFollowsGainNoiseFigureAndPhotonEnergy) {
    const double nu = c / center;
    const double expected = (Decibels(16) - 1.0) * Decibels(5) * nu * halfPlanck;
    const Amplifier flat(FlatAmplifier(), *Carrier(0.0));
    EXPECT_NEAR(DensityAt(flat.Noise(), nu) / expected, 1.0, rounding);
    const double width = c / (center - 20e-9) - c / (center + 20e-9);
    EXPECT_EQ(flat.Noise().noPoints, 801);  // 80 nm in steps of 0.1 nm
    EXPECT_NEAR(flat.Noise().fstart, nu - width, 1.0);
    EXPECT_EQ(DensityAt(flat.Noise(), nu + 0.51 * width), 0.0);
    EXPECT_EQ(DensityAt(flat.Noise(), nu - 0.49 * width), DensityAt(flat.Noise(), nu));

    EdfaParams params = FlatAmplifier();
    params.noiseShape = NoiseShape::Gaussian;
    const Amplifier bell(params, *Carrier(0.0));
    EXPECT_EQ(bell.Noise().noPoints, 1601);
    EXPECT_NEAR(bell.Noise().fstart, nu - 2.0 * width, 1.0);
    EXPECT_NEAR(DensityAt(bell.Noise(), nu) / expected, 1.0, rounding);
    EXPECT_NEAR(DensityAt(bell.Noise(), nu + width / 2.0) / expected, std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(DensityAt(bell.Noise(), nu - width) / expected, 0.25, 1e-9);
}

// --- Gain curves ---

constexpr std::string_view twoCurves =
    "0 -10 the weak input\n1540 30\n1550 30\n1560 30\n"
    "0 10\n1540 10\n1550 10\n1560 10 * -1 0\n";

TEST(OpticalAmplifier, GainCurvesActBinByBin) {
    // 20 dB at the carrier, 10 dB one bin (1 / 16 ps) above it: two tones in one field.
    const std::string above = FormatSignificant(c / (c / center + 1.0 / 16e-12) * 1e9, 15);
    const EdfaParams params =
        CurveAmplifier(Concat("0 -30\n1540 30\n", above, " 10\n1550 20\n-1 0\n"));
    Owned<OpSignal> light = Carrier(1e-6, 16), tone = Tone(16, 1, center);
    OpSig& in = *light->channels;
    ASSERT_EQ(AddEySamples(&in), 0);
    for (std::int32_t i = 1; i <= 16; ++i) {
        in.Ex_samples[i] = in.Ex_samples[i] + 1e-3 * tone->channels->Ex_samples[i];
        in.Ey_samples[i] = -2.0 * in.Ex_samples[i];
    }
    const Amplifier amplifier(params, *light);
    const OpSig& out = *amplifier.Light().channels;
    for (std::int32_t i = 1; i <= 16; ++i) {
        const Field second = Value(tone->channels->Ex_samples[i]);
        const Field expected = 1e-2 + std::sqrt(10.0) * 1e-3 * second;
        ExpectField(out.Ex_samples[i], expected, transformRounding);
        ExpectField(out.Ey_samples[i], -2.0 * expected, transformRounding);
    }
}

// By design: watts are compared with the dBm of the file, so 1 W lies between 0 and 10.
TEST(OpticalAmplifier, ComparesWattsWithTheDecibelsOfTheFile) {
    const auto gainAt = [](std::string_view curves, double power) {
        return Amplifier(CurveAmplifier(curves), *Carrier(power)).Power() / power;
    };
    constexpr std::string_view negative = "0 -30\n1550 30\n0 -10\n1550 10\n-1 0\n";
    EXPECT_NEAR(gainAt(negative, 1e-6), Decibels(10), 1e-9) << "-30 dBm, yet the highest curve";
    // 1 mW lies between -10 and 10 as watts; joined as 0 dBm it is half way.
    EXPECT_NEAR(gainAt(twoCurves, 1e-3), Decibels(20), 1e-9);
}

TEST(SCurves, InterpolateInsideAndKeepTheEndValuesOutside) {
    // A cubic in (x - 1550) is met exactly.
    const SCurves cubic = Curves("0 0\n1548 -8\n1549 -1\n1551 1\n1553 27\n-1 0");
    const auto value = [](const SCurves& curves, double x) {
        return SCurveValue(ChooseSCurves(curves, 1.0), x);
    };
    EXPECT_NEAR(value(cubic, 1552.0), 8.0, 1e-9);
    EXPECT_EQ(value(cubic, 1000.0), -8.0);
    EXPECT_EQ(value(cubic, std::numeric_limits<double>::infinity()), 27.0);
    const SCurves two = Curves(twoCurves);
    EXPECT_EQ(SCurveValue(ChooseSCurves(two, 0.0), 1550.0), 30.0) << "darkness has no dBm";
}

// By design: gain and frequency of the emission are those of the last bin of the last
// channel, and only the first record of incoming noise is amplified.
TEST(OpticalAmplifier, LastChannelSetsTheEmissionOfGainCurves) {
    EdfaParams params =
        CurveAmplifier("0 -30\n1549 20\n1550 20\n1551 20\n1559 10\n1560 10\n1561 10\n-1 0\n");
    params.noiseCenter = 1.555e-6;
    const Owned<OpSignal> light = Level(1e-6, 1560e-9);
    AppendChannel(*light, Level(1e-6, 1550e-9));
    AddNoise(*light, c / 1560e-9 - 1e9, 1e9, {3e-20, 3e-20, 3e-20});
    AddNoise(*light, 193e12, 1e9, {5e-20});
    const Amplifier amplifier(params, *light);
    const double emission = 99.0 * params.Fn * c / 1550e-9 * halfPlanck;
    EXPECT_NEAR(DensityAt(amplifier.Noise(), c / 1555e-9) / emission, 1.0, 1e-9);
    const double passed = DensityAt(amplifier.Noise(), c / 1560e-9) - emission;
    EXPECT_NEAR(passed / 3e-19, 1.0, 1e-3);
    EXPECT_EQ(amplifier.Noise().next->powerSamples[1], 5e-20);
}

TEST(OpticalAmplifier, NoiseCurvesSpanTheirOwnWavelengths) {
    EdfaParams params = FlatAmplifier();
    params.noiseShape = NoiseShape::Custom;
    params.noiseResolution = 1e-9;
    // Half way between the curves at 1 mW, on the grid of the lower one.
    params.noiseCurves =
        Curves("0 10\n1500 -120\n1600 -120\n0 -10\n1540 -140\n1550 -140\n1560 -140\n-1 0\n");
    const Amplifier amplifier(params, *Carrier(1e-3));
    EXPECT_NEAR(amplifier.Noise().fstart, c / 1560e-9, 1.0);
    EXPECT_EQ(amplifier.Noise().noPoints, 21);
    EXPECT_NEAR(LastFrequency(amplifier.Noise()), c / 1540e-9, 0.01 * amplifier.Noise().fstep);
    for (std::int32_t i = 1; i <= 21; ++i) {
        EXPECT_NEAR(amplifier.Noise().powerSamples[i], 1e-16, 1e-26);
    }
}

// --- Bad input ---

TEST(SCurves, RefuseBrokenFilesByFileAndLine) {
    std::string long10001 = "0 0\n";
    for (int i = 1; i <= 10001; ++i) long10001 += Concat(i, " 1\n");
    const struct {
        std::string text;
        std::string_view message;
    } rows[] = {{"", "f% begins wrong"},
                {"0 0\n1550 3\n", "f%:3: the file ends without its closing line"},
                {"0 0\n1550 3\n1550 3\n-1 0\n", "f%:3: wavelength 1550 is not above"},
                {"0 0\n1550 nan\n-1 0\n", "f%:2: two numbers"},
                {"0 0\n0 1\n1550 3\n-1 0\n", "f%:2: the curve before has no points"},
                {long10001, "f%:10002: more than 10000 points in a curve"}};
    for (const auto& row : rows) {
        SCurves curves;
        std::string errorText;
        EXPECT_EQ(ReadSCurves(row.text, "f%", "%s begins wrong", curves, {"A1", errorText}),
                  Status::Error);
        EXPECT_NE(errorText.find(row.message), std::string::npos) << errorText;
        EXPECT_TRUE(curves.empty());
    }
}

TEST(OpticalAmplifier, RefusesWhatItCannotCompute) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    using P = EdfaParams;
    using S = OpSignal;
    const struct {
        std::function<void(P&, S&)> spoil;
        std::string_view text;
    } rows[] = {{[](P& p, S&) { p.type = "ideal %s"; },
                 "Wrong EDFA type in EDFA().\nThe allowed types are 'defined' and 'custom'.\n"},
                {[](P& p, S&) { p.gain = nan; }, "'gain' is nan"},
                {[](P& p, S&) { p.noiseResolution = 1e-30; }, "'noiseResolution' is 1e-30"},
                {[](P& p, S&) { p.type = "custom"; }, "there are no gain curves"},
                {[](P&, S& s) { s.channels->Ex_samples[2].im = nan; }, "the input power"},
                {[](P&, S& s) {
                     AddNoise(s, 1e14, 1e-9, {1e-20, 0});
                 },
                 "ERROR in EDFA combining noise spectra\n"}};
    for (const auto& row : rows) {
        EdfaParams params = FlatAmplifier();
        const Owned<OpSignal> light = Carrier(1e-3);
        row.spoil(params, *light);
        Amplifier(params, *light).ExpectRefusal(row.text);
    }
}

TEST(OpticalAmplifier, ReadsDecibelsAndOnlyTheFilesItNeeds) {
    const TempDir directory;
    const std::string curves = directory.Write("gain.txt", twoCurves);
    EdfaParams params;
    const auto read = [&](std::string_view type, std::string_view shape, std::string_view gain) {
        CatalogueBlock block("OpticalAmplifier");
        block.Set("type", type).Set("noiseShape", shape).Set("spectraFilename", gain);
        block.Set("noiseFilename", "absent").Set("Psat", "13").Set("gain", "20").Set("Fn", "3");
        block.Set("BW", "1e-8").Set("noiseResolution", "0");
        std::string text;
        (void)ReadEdfaParams(block.Evaluated().parameters, params, {"box", text});
        return text;
    };
    EXPECT_EQ(read("custom", "Gaussian", curves), "");
    EXPECT_EQ(params.gainCurves.size(), 2U);
    EXPECT_NEAR(params.Psat, 1e-3 * Decibels(13), 1e-15);
    EXPECT_NEAR(params.gain, 10.0, rounding);
    EXPECT_NEAR(params.Fn, Decibels(3), rounding);
    EXPECT_EQ(params.noiseShape, NoiseShape::Gaussian);
    EXPECT_EQ(read("defined", "none", "absent"), "");
    // A resolution of 0 asks for one point, and the definition lets it through.
    EXPECT_EQ(Amplifier(params, *Carrier(0.0)).Noise().noPoints, 1);
    EXPECT_EQ(read("custom", "Custom", ""),
              "OpticalAmplifier box: Cannot open noise spectra filename 'absent'\n"
              "ERROR: component 'box': file 'absent': No such file or directory\n");
    EXPECT_EQ(read("custom", "Flat", ""),
              "OpticalAmplifier box: Cannot open gain spectra filename ''\n");
    directory.Write("gain.txt", "1550 3\n");
    EXPECT_EQ(read("custom", "Flat", curves),
              "The first line of file " + curves + " must specify the input power, exit!\n");
}

}  // namespace
}  // namespace photrak

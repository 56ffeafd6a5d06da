// Gain and emission of the amplifier against the formulas of the textbook, worked out by hand.
#include "models/optical/amplifier.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <utility>

#include "base/escape.h"
#include "base/text.h"
#include "models/optical/ase_spectra.h"
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
    params.owner = "A1";
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
    EXPECT_EQ(ReadSCurves(text, "curves", "%s", curves, errorText), Status::Success) << errorText;
    return curves;
}

EdfaParams CurveAmplifier(std::string_view curves) {
    EdfaParams params = FlatAmplifier();
    params.type = "custom";
    params.gainCurves = Curves(curves);
    return params;
}

class Amplifier {
  public:
    Amplifier(const EdfaParams& params, const OpSignal& light) {
        Nodelist input{nullptr, OpSigType, const_cast<OpSignal*>(&light)};
        status = EDFA(&input, params, &output, text);
    }
    const OpSignal& Light() const {
        EXPECT_EQ(status, Status::Success) << text;
        return output.As<OpSignal>();
    }
    double Power() const { return AverageOpSigPower(Light().channels); }
    const OpSigASE& Noise() const { return *Light().noise; }

    OutputCell output{OpSigType};
    std::string text;
    Status status;
};

/// Density at the point nearest to a frequency.
double DensityAt(const OpSigASE& spectrum, double nu) {
    const auto i =
        static_cast<std::int32_t>(std::lround((nu - spectrum.fstart) / spectrum.fstep) + 1);
    EXPECT_TRUE(i >= 1 && i <= spectrum.noPoints);
    return spectrum.powerSamples[i];
}

// --- One gain ---

TEST(OpticalAmplifier, GivesItsSmallSignalGainAndSaturatesAtPsat) {
    const EdfaParams params = FlatAmplifier();
    EXPECT_NEAR(Amplifier(params, *Carrier(1e-12)).Power() / (1e-12 * Decibels(16)), 1.0, 1e-9);
    // 1/Pout = 1/(G^2 Pin) + 1/Psat
    for (const double power : {1e-4, 1e-2, 1.0}) {
        const double expected = 1.0 / (1.0 / (power * Decibels(16)) + 1.0 / params.Psat);
        EXPECT_NEAR(Amplifier(params, *Carrier(power)).Power() / expected, 1.0, rounding);
    }
    EXPECT_LT(Amplifier(params, *Carrier(1e3)).Power(), params.Psat);
}

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
    EXPECT_NEAR(AverageOpSigPower(amplifier.Light().channels->next) / (2e-3 * gain), 1.0, rounding);
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
    EXPECT_NEAR(LastFrequency(flat.Noise()), nu + width, 1.0);
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

    params.noiseResolution = 0.0;  // one point stands for the whole range, at its start
    const Amplifier lone(params, *Carrier(0.0));
    ASSERT_EQ(lone.Noise().noPoints, 1);
    EXPECT_NEAR(lone.Noise().fstep, 4.0 * width, 1.0);
    EXPECT_NEAR(lone.Noise().powerSamples[1] / expected, std::exp2(-8), 1e-9);
}

TEST(OpticalAmplifier, WithoutGainItStillMakesASpectrumOfZeros) {
    EdfaParams params = FlatAmplifier();
    params.gain = 1.0;
    const Amplifier amplifier(params, *Carrier(0.0));
    ASSERT_EQ(amplifier.Noise().noPoints, 801);
    EXPECT_EQ(DensityAt(amplifier.Noise(), c / center), 0.0);
}

// Spans that lose what the amplifiers give: the noise of N amplifiers is N times that of one.
TEST(OpticalAmplifier, ChainOfCompensatedSpansAddsUp) {
    EdfaParams params = FlatAmplifier();
    params.Psat = 1e6;
    Owned<OpSignal> light = Carrier(1e-3);
    const double one = (Decibels(16) - 1.0) * params.Fn * c / center * halfPlanck;
    for (int span = 1; span <= 5; ++span) {
        for (std::int32_t i = 1; i <= 4; ++i) {
            light->channels->Ex_samples[i].re *= std::sqrt(Decibels(-16));
        }
        ScaleSpectra(light->noise, Decibels(-16));
        Amplifier amplifier(params, *light);
        ASSERT_EQ(amplifier.status, Status::Success) << amplifier.text;
        light.reset(static_cast<OpSignal*>(std::exchange(amplifier.output.sig, nullptr)));
        EXPECT_NEAR(DensityAt(*light->noise, c / center) / (span * one), 1.0, 1e-6);
        EXPECT_EQ(light->noise->noPoints, 801);
    }
    EXPECT_EQ(light->noise->next, nullptr);
    EXPECT_NEAR(AverageOpSigPower(light->channels), 1e-3, 1e-9);
    // 58 dB + Pch - G - NF - 10 log N, per 0.1 nm and both polarizations, is the usual estimate; it
    // takes G - 1 as G.
    const double inTenthNm = 2.0 * DensityAt(*light->noise, c / center) * 12.48e9;
    const double estimate = 58.0 - 16.0 - 5.0 - 10.0 * std::log10(5 * (1.0 - Decibels(-16)));
    EXPECT_NEAR(10.0 * std::log10(1e-3 / inTenthNm), estimate, 0.1);
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
    Owned<OpSignal> light = Carrier(1e-6, 16);
    Complex* field = light->channels->Ex_samples;
    const auto tone = [](std::int32_t i) {  // the bin above the carrier, exp(-2 pi j t df)
        return std::polar(1e-3, -2.0 * std::numbers::pi * (i - 1) / 16.0);
    };
    for (std::int32_t i = 1; i <= 16; ++i) {
        field[i] = {field[i].re + tone(i).real(), tone(i).imag()};
    }
    ASSERT_EQ(AddEySamples(light->channels), 0);
    for (std::int32_t i = 1; i <= 16; ++i) light->channels->Ey_samples[i] = -2.0 * field[i];
    const Amplifier amplifier(params, *light);
    const OpSig& out = *amplifier.Light().channels;
    for (std::int32_t i = 1; i <= 16; ++i) {
        const std::complex<double> expected = 1e-2 + std::sqrt(10.0) * tone(i);
        EXPECT_NEAR(std::abs(Value(out.Ex_samples[i]) - expected), 0.0, transformRounding);
        EXPECT_NEAR(std::abs(Value(out.Ey_samples[i]) + 2.0 * expected), 0.0, transformRounding);
    }
}

// Kept deliberately: watts are compared with the dBm of the file, so 1 W lies between 0 and 10.
TEST(OpticalAmplifier, ComparesWattsWithTheDecibelsOfTheFile) {
    const auto gainAt = [](std::string_view curves, double power) {
        return Amplifier(CurveAmplifier(curves), *Carrier(power)).Power() / power;
    };
    constexpr std::string_view negative = "0 -30\n1550 30\n0 -10\n1550 10\n-1 0\n";
    EXPECT_NEAR(gainAt(negative, 1e-6), Decibels(10), 1e-9) << "-30 dBm, yet the highest curve";
    // 1 mW lies between -10 and 10 as watts; joined as 0 dBm it is half way.
    EXPECT_NEAR(gainAt(twoCurves, 1e-3), Decibels(20), 1e-9);
    EXPECT_NEAR(gainAt(twoCurves, 1e-2), Decibels(10), 1e-9);
    EXPECT_NEAR(gainAt("0 5\n1550 7\n-1 0\n", 1e-3), Decibels(7), 1e-9) << "all powers above";
}

TEST(SCurves, InterpolateInsideAndKeepTheEndValuesOutside) {
    // A cubic in (x - 1550) is met exactly; three points make a parabola.
    const SCurves cubic = Curves("0 0\n1548 -8\n1549 -1\n1551 1\n1553 27\n-1 0");
    const SCurves parabola = Curves("0 0\n1549 1\n1550 0\n1552 4\n-1");
    const auto value = [](const SCurves& curves, double x) {
        return SCurveValue(ChooseSCurves(curves, 1.0), x);
    };
    EXPECT_NEAR(value(cubic, 1552.0), 8.0, 1e-9);
    EXPECT_NEAR(value(parabola, 1551.0), 1.0, 1e-9);
    EXPECT_EQ(value(cubic, 1000.0), -8.0);
    EXPECT_EQ(value(cubic, std::numeric_limits<double>::infinity()), 27.0);
    const SCurves two = Curves(twoCurves);
    EXPECT_EQ(SCurveValue(ChooseSCurves(two, 0.0), 1550.0), 30.0) << "darkness has no dBm";
}

// Kept deliberately: gain and frequency of the emission are those of the last bin of the last
// channel, and only the first record of incoming noise is amplified.
TEST(OpticalAmplifier, LastChannelSetsTheEmissionOfGainCurves) {
    const EdfaParams params =
        CurveAmplifier("0 -30\n1549 20\n1550 20\n1551 20\n1559 10\n1560 10\n1561 10\n-1 0\n");
    Owned<OpSignal> light = Carrier(1e-6, 1, 1560e-9);
    light->channels->tStep = 0.0;  // one sample without a step is a level
    AppendChannel(*light, Carrier(1e-6, 1, 1550e-9));
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
    params.noiseResolution = 0.0;
    const Amplifier coarse(params, *Carrier(1e-3));
    EXPECT_EQ(coarse.Noise().noPoints, 1);
    EXPECT_NEAR(coarse.Noise().fstep, c / 1540e-9 - c / 1560e-9, 1.0);
}

// --- Sums of spectra ---

TEST(AseSpectra, GridsJoinToTheirUnion) {
    const Owned<OpSignal> a = Carrier(0), b = Carrier(0);
    AddNoise(*a, 100.0, 2.0, {1, 3, 5});    // 100, 102, 104
    AddNoise(*b, 99.0, 1.0, {10, 20, 30});  // 99, 100, 101
    std::string text;
    ASSERT_EQ(AddSpectrum(*a->noise, *b->noise, text), Status::Success) << text;
    const OpSigASE& sum = *a->noise;
    ASSERT_EQ(sum.noPoints, 6);
    EXPECT_EQ(sum.fstart, 99.0);
    EXPECT_EQ(sum.fstep, 1.0);
    const double expected[] = {0, 10, 20 + 1, 30 + 2, 3, 4, 5};
    for (int i = 1; i <= 6; ++i) EXPECT_DOUBLE_EQ(sum.powerSamples[i], expected[i]) << i;

    const OwnedBlock<double>::pointer kept = a->noise->powerSamples;
    ASSERT_EQ(AddSpectrum(*a->noise, *b->noise, text), Status::Success);
    EXPECT_EQ(a->noise->powerSamples, kept) << "the grid held the other one already";
    EXPECT_DOUBLE_EQ(a->noise->powerSamples[1], 20.0);
}

TEST(AseSpectra, RefuseGridsThatCannotBeJoined) {
    const Owned<OpSignal> a = Carrier(0), fine = Carrier(0), stepless = Carrier(0);
    AddNoise(*a, 1e14, 1e9, {1, 2});
    AddNoise(*fine, 2e14, 1e-3, {1, 2});
    AddNoise(*stepless, 1e14, 0.0, {1, 2});
    std::string text;
    EXPECT_EQ(AddSpectrum(*a->noise, *fine->noise, text), Status::Error);
    EXPECT_EQ(AddSpectrum(*a->noise, *stepless->noise, text), Status::Error);
    EXPECT_NE(text.find("at most 4194304 are kept"), std::string::npos) << text;
    EXPECT_NE(text.find("no frequency step above 0"), std::string::npos) << text;
    EXPECT_EQ(a->noise->noPoints, 2);
    EXPECT_EQ(a->noise->powerSamples[2], 2.0);
}

// --- Bad input ---

TEST(SCurves, RefuseBrokenFilesByFileAndLine) {
    std::string long10001 = "0 0\n", many = "0 0\n1 1\n";
    for (int i = 1; i <= 10001; ++i) long10001 += Concat(i, " 1\n");
    for (int i = 1; i <= 1000; ++i) many += "0 0\n1 1\n";
    const struct {
        std::string text;
        std::string_view message;
    } rows[] = {{"", "f% begins wrong"},
                {"1550 3\n", "f% begins wrong"},
                {"-1 0\n", "f% begins wrong"},
                {"0 0\n1550 3\n", "f%:3: the file ends without its closing line"},
                {"0 0\n1550 3", "f%:2: the file ends without its closing line"},
                {"0 0\n1550 3\n1540 3\n-1 0\n", "f%:3: wavelength 1540 is not above"},
                {"0 0\n1550 3\n1550 3\n-1 0\n", "f%:3: wavelength 1550 is not above"},
                {"0 0\n1550 nan\n-1 0\n", "f%:2: two numbers"},
                {"0 0\n\n1550 1e999\n-1 0\n", "f%:3: a number is out of range"},
                {"0 0\n1e999 3\n-1 0\n", "f%:2: a number is out of range"},
                {"0 0\n-1 0\n", "f%:2: the curve before has no points"},
                {"0 0\n0 1\n1550 3\n-1 0\n", "f%:2: the curve before has no points"},
                {long10001, "f%:10002: more than 10000 points in a curve"},
                {many, "f%:2001: more than 1000 curves"}};
    for (const auto& row : rows) {
        SCurves curves;
        std::string errorText;
        EXPECT_EQ(ReadSCurves(row.text, "f%", "%s begins wrong", curves, errorText), Status::Error);
        EXPECT_NE(errorText.find(row.message), std::string::npos) << errorText;
        EXPECT_TRUE(curves.empty());
    }
}

TEST(OpticalAmplifier, RefusesWhatItCannotCompute) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        std::function<void(EdfaParams&, OpSignal&)> spoil;
        std::string_view text;
    } rows[] = {
        {[](EdfaParams& p, OpSignal&) { p.type = "ideal %s"; },
         "Wrong EDFA type in EDFA().\nThe allowed types are 'defined' and 'custom'.\n"},
        {[](EdfaParams& p, OpSignal&) { p.Psat = 0; }, "'Psat' is 0"},
        {[](EdfaParams& p, OpSignal&) { p.gain = nan; }, "'gain' is nan"},
        {[](EdfaParams& p, OpSignal&) { p.BW = 4e-6; }, "'BW' is 4e-06"},
        {[](EdfaParams& p, OpSignal&) { p.noiseResolution = 1e-30; }, "'noiseResolution' is 1e-30"},
        {[](EdfaParams& p, OpSignal&) { p.type = "custom"; }, "there are no gain curves"},
        {[](EdfaParams&, OpSignal& s) { s.channels->Ex_samples[2].im = nan; }, "the input power"},
        {[](EdfaParams& p, OpSignal& s) {
             p = CurveAmplifier(twoCurves);
             s.channels->noPoints = 3;
         },
         "a channel has 3 samples"},
        {[](EdfaParams& p, OpSignal& s) {
             p = CurveAmplifier(twoCurves);
             s.channels->tStep = 0;
         },
         "a channel has the time step 0 s"},
        {[](EdfaParams& p, OpSignal& s) {
             p = CurveAmplifier(twoCurves);
             s.channels->wavelength = nan;
         },
         "a channel has the wavelength nan m"},
        {[](EdfaParams& p, OpSignal&) { p = CurveAmplifier("0 0\n1550 1e300\n-1 0"); },
         "the gain curves are out of range"},
        {[](EdfaParams& p, OpSignal&) {
             p.noiseShape = NoiseShape::Custom;
             p.noiseCurves = Curves("0 0\n1550 1e300\n-1 0");
         },
         "ERROR in EDFA creating noise spectrum\n"},
        {[](EdfaParams&, OpSignal& s) {
             AddNoise(s, 1e14, 1e-9, {1e-20, 0});
         },
         "ERROR in EDFA combining noise spectra\n"}};
    for (const auto& row : rows) {
        EdfaParams params = FlatAmplifier();
        const Owned<OpSignal> light = Carrier(1e-3);
        row.spoil(params, *light);
        const Amplifier amplifier(params, *light);
        EXPECT_EQ(amplifier.status, Status::Error) << row.text;
        EXPECT_NE(amplifier.text.find(row.text), std::string::npos) << amplifier.text;
        EXPECT_EQ(amplifier.output.sig, nullptr);
    }
}

TEST(OpticalAmplifier, ExhaustedMemoryIsReportedAtEveryStage) {
    EdfaParams params = CurveAmplifier(twoCurves);
    const Owned<OpSignal> light = Carrier(1e-3);
    AddNoise(*light, 193e12, 1e9, {1e-20, 2e-20});
    (void)Amplifier(params, *light);  // the tables of the transform are made
    const std::int64_t before = AllocationCount();
    (void)Amplifier(params, *light);
    const std::int64_t needed = AllocationCount() - before;
    ASSERT_GT(needed, 6);
    std::string texts;
    for (std::int64_t n = 1; n <= needed; ++n) {
        RefuseAllocationsFrom(n);
        try {  // the arrays of the transform take the escape
            const Amplifier amplifier(params, *light);
            EXPECT_EQ(amplifier.status, Status::Error) << n;
            EXPECT_NE(amplifier.text, "") << n;
            EXPECT_EQ(amplifier.output.sig, nullptr);
            texts += amplifier.text;
        } catch (const Escape&) {
        }
        RefuseAllocationsFrom(-1);
    }
    for (const std::string_view expected :
         {"Error in copying OpSig in EDFA().\n",
          "Insufficient memory for dynamic allocation to EDFA - gainArray\n",
          "ERROR in EDFA creating ASE noise spectra\n",
          "ERROR in EDFA combining noise spectra\n"}) {
        EXPECT_NE(texts.find(expected), std::string::npos) << expected;
    }
}

// A resolution of 0 asks for one point, and the definition lets it through.
TEST(OpticalAmplifier, RunsWithTheParametersOfTheCatalogue) {
    CatalogueBlock block("OpticalAmplifier");
    EdfaParams params;
    std::string text;
    ASSERT_EQ(ReadEdfaParams(block.Set("noiseResolution", "0").Evaluated(), params, text),
              Status::Success);
    const Amplifier amplifier(params, *Carrier(1e-3));
    ASSERT_EQ(amplifier.status, Status::Success) << amplifier.text;
    EXPECT_EQ(amplifier.Noise().noPoints, 1);
}

TEST(OpticalAmplifier, ReadsDecibelsAndOnlyTheFilesItNeeds) {
    const TempDir directory;
    const std::string curves = directory.Write("gain.txt", twoCurves);
    const auto read = [&](std::string_view type, std::string_view shape, const std::string& gain,
                          EdfaParams& params) {
        ModelBlock block("A%s");
        block.Word("type", type).Word("noiseShape", shape).Word("spectraFilename", gain);
        block.Word("noiseFilename", "absent").Number("Psat", 13).Number("gain", 20);
        block.Number("Fn", 3).Number("BW", 1e-8).Number("noiseResolution", 2e-9);
        block.Number("noiseCenter", 1.3e-6);
        std::string text;
        const Status status = ReadEdfaParams(block.component, params, text);
        EXPECT_EQ(status, text.empty() ? Status::Success : Status::Error);
        return text;
    };
    EdfaParams params;
    EXPECT_EQ(read("custom", "Gaussian", curves, params), "");
    EXPECT_EQ(params.gainCurves.size(), 2U);
    EXPECT_NEAR(params.Psat, 1e-3 * Decibels(13), 1e-15);
    EXPECT_NEAR(params.gain, 10.0, rounding);
    EXPECT_NEAR(params.Fn, Decibels(3), rounding);
    EXPECT_EQ(params.noiseShape, NoiseShape::Gaussian);
    EXPECT_EQ(params.BW, 1e-8);
    EXPECT_EQ(params.noiseResolution, 2e-9);
    EXPECT_EQ(params.noiseCenter, 1.3e-6);
    EXPECT_EQ(read("defined", "none", "absent", params), "");
    EXPECT_EQ(params.noiseShape, NoiseShape::Flat);
    EXPECT_EQ(read("custom", "Custom", "", params),
              "OpticalAmplifier A%s: Cannot open noise spectra filename 'absent'\n");
    EXPECT_EQ(read("custom", "Flat", "", params),
              "OpticalAmplifier A%s: Cannot open gain spectra filename ''\n");
    directory.Write("gain.txt", "1550 3\n");
    EXPECT_EQ(read("custom", "Flat", curves, params),
              "The first line of file " + curves + " must specify the input power, exit!\n");
}

}  // namespace
}  // namespace photrak

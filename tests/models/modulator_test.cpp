// The modulator's stages by hand: transfer curves and responses, chirp, matched ends, noise.
#include "models/sources/modulator.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numbers>
#include <tuple>

#include "models/optical_fixture.h"

namespace photrak {
namespace {

constexpr double rounding = 1e-14;
constexpr double tStep = 1e-12;
constexpr std::int32_t samples = 16;

/// A drive of 16 samples, two for each bit.
Owned<ElecSig> Drive(const std::function<double(std::int32_t)>& volts) {
    Owned<ElecSig> drive = RampWaveform(samples, tStep);
    drive->bitRate = 5e11;
    for (std::int32_t i = 1; i <= samples; ++i) drive->elecSamples[i] = {volts(i), 0.0};
    return drive;
}

Owned<ElecSig> Constant(double volts) {
    return Drive([=](std::int32_t) { return volts; });
}

/// A level in one sample.
Owned<OpSig> Level(Complex field) {
    Owned<OpSig> channel = RampChannel(1, 0.0);
    channel->Ex_samples[1] = field;
    return channel;
}

Owned<OpSignal> Light(Owned<OpSig> first, Owned<OpSig> second = nullptr) {
    Owned<OpSignal> light = Alone(std::move(first));
    if (second) AppendChannel(*light, Alone(std::move(second)));
    return light;
}

/// A flat, lossless, unchirped device that passes v = d as it is.
ModulatorParams Plain(std::string_view type) {
    ModulatorParams params;
    params.modulationType = type;
    params.fittingType = "Coefficients";
    params.levelShift = false;
    params.phaseShift = 180.0;
    return params;
}

struct Modulated : Outcome {
    Modulated(const ModulatorParams& params, ElecSig* drive, OpSignal* light) : Outcome(OpSigType) {
        Nodelist second{nullptr, ElecSigType, drive}, first{&second, OpSigType, light};
        status = Modulator(params, &first, &output, {"mod", text});
    }
    /// On a level of 1 sqrt(W).
    Modulated(const ModulatorParams& params, const Owned<ElecSig>& drive)
        : Modulated(params, drive.get(), Light(Level({1.0, 0.0})).get()) {}
    const OpSignal& Signal() const { return Made<OpSignal>(); }
    Field operator[](std::int32_t i) const { return Value(Signal().channels->Ex_samples[i]); }
};

void ExpectField(Field actual, Field expected, double tolerance = rounding) {
    EXPECT_NEAR(actual.real(), expected.real(), tolerance);
    EXPECT_NEAR(actual.imag(), expected.imag(), tolerance);
}

TEST(Modulator, TransferCurvesByHand) {
    struct Row {
        std::string_view type;
        double volts, vBias, vOffset, vPi;
        Field field;
        double extinction = 0.0, transmission = 1.0;
    };
    const Row rows[] = {{"MachZehnder", 1.0, 0.5, 0.1, 4.2, 0.5},  // v = 1/3: 30 degrees
                        {"MachZehnder", 0.0, 0.0, 0.0, 1.0, 0.05, 0.1, 0.5},
                        {"Ideal", -5.0, 0.0, 1.0, 2.0, 3.0},
                        {"Amplitude", 0.5, 0.5, 0.0, 4.0, 0.5},
                        {"Amplitude", -0.1, 0.0, 0.0, 1.0, 0.05, 0.1, 0.5},
                        {"Phase", 1.0, 0.0, 0.0, 2.0, Field(0.0, 1.0)},  // 90 degrees
                        {"Phase", 0.0, -1.0, 1.0, 4.0, Field(0.0, -0.5), 0.1, 0.5},
                        {"Nothing", 5.0, 1.0, 0.0, 2.0, 1.0, 0.1, 0.5}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " at " << row.volts << " V");
        ModulatorParams params = Plain(row.type);
        params.vBias = row.vBias;
        params.vOffset = row.vOffset;
        params.vPi = row.vPi;
        params.extinction = row.extinction;
        params.transmission = row.transmission;
        const Modulated out(params, Constant(row.volts));
        for (std::int32_t i = 1; i <= samples; ++i) ExpectField(out[i], row.field);
    }
}

TEST(Modulator, ExtinctionOfZeroDecibelsSwitchesTheFloorOff) {
    ModelBlock block;
    block.Number("onOffRatio", 0).Number("insertionLoss", -20).Number("ChirpFactor", 0);
    block.Word("fittingType", "Coefficients").Number("coef2", 0).Number("vBias", 0);
    block.Word("MatchEnds", "Yes").Word("LevelShift", "No");
    const ModulatorParams params = ReadModulatorParams(block.component.parameters);
    EXPECT_TRUE(params.matchEnds && !params.levelShift);
    EXPECT_NEAR(params.transmission, 0.1, rounding);
    ExpectField(Modulated(params, Constant(0.0))[1], 0.0);
}

/// Bins of 62.5 GHz; the drive has a mean, bin 1 and the Nyquist bin.
TEST(Modulator, ResponseScalesEachFrequencyOfTheDriveAndItsMean) {
    ModulatorParams params = Plain("Ideal");
    params.fOffset = 20.0;
    params.power = -0.5;
    params.coef1 = 2.0;
    params.coef2 = 0.016;
    params.a0 = 1.0;
    params.a1 = -0.01;
    params.a2 = 2e-5;
    params.a3 = 1e-8;
    params.a4 = -1e-10;
    params.vBias = 100.0;  // keeps v positive
    const std::pair<std::string_view, std::function<double(double f)>> rows[] = {
        {"fOffset", [](double f) { return std::sqrt(1 / (20.0 + f)); }},
        {"Coefficients", [](double f) { return 2.0 / std::hypot(1.0, f / 62.5); }},
        {"Polynomial",
         [](double f) {
             return std::pow(
                 10.0, 0.1 - 0.001 * f + 2e-6 * f * f + 1e-9 * f * f * f - 1e-11 * f * f * f * f);
         }},
        {"Unknown", [](double) { return 0.0; }}};
    const auto wave = [](std::int32_t i, int k) {
        return std::cos(2 * std::numbers::pi * k * (i - 1) / samples + (k == 1 ? 0.7 : 0.0));
    };
    for (const auto& [type, H] : rows) {
        SCOPED_TRACE(type);
        params.fittingType = type;
        const Modulated out(params, Drive([&](std::int32_t i) {
                                return 5.0 + 3.0 * wave(i, 1) + 2.0 * wave(i, 8);
                            }));
        for (std::int32_t i = 1; i <= samples; ++i) {
            const double d = 5.0 * H(0) + 3.0 * H(62.5) * wave(i, 1) + 2.0 * H(500.0) * wave(i, 8);
            ExpectField(out[i], 100.0 + d, 1e-12);
        }
    }
}

TEST(Modulator, LevelShiftMakesAConstantOffsetOfTheDriveInvisible) {
    ModulatorParams params = Plain("MachZehnder");
    params.levelShift = true;
    params.vBias = 0.4;
    const Modulated out(params, Drive([](std::int32_t i) { return 3.0 + i / 16.0; }));
    for (std::int32_t i = 1; i <= samples; ++i) {
        const double v = i / 16.0 - 17.0 / 32.0 + 0.4;  // the middle of 1/16 and 1
        ExpectField(out[i], std::fabs(std::sin(v * std::numbers::pi / 2)));
    }
}

TEST(Modulator, ChirpReplacesThePhaseByThatOfThePowerButNotInTheLastSample) {
    const Field carrier = std::polar(1.0, 0.5);
    const auto drive = Drive([](std::int32_t i) { return i < 3 ? 0.0 : i == 7 ? 0.0 : 0.1 * i; });
    const Owned<OpSignal> light = Light(Level({carrier.real(), carrier.imag()}));
    ModulatorParams params = Plain("Ideal");
    params.ChirpFactor = -0.8;
    const Modulated out(params, drive.get(), light.get());
    for (std::int32_t i = 1; i < samples; ++i) {
        const double amplitude = i < 3 || i == 7 ? 0.0 : 0.1 * i;
        // The first lit sample, the third, has phase 0.
        ExpectField(out[i], amplitude == 0.0
                                ? 0.0
                                : std::polar(amplitude, -0.8 * std::log(amplitude / 0.3)));
    }
    ExpectField(out[samples], 1.6 * carrier);

    params.ChirpFactor = 2.0;
    const Modulated dark(params, drive.get(), Light(Level({0.0, 0.0})).get());
    for (std::int32_t i = 1; i <= samples; ++i) ExpectField(dark[i], 0.0);
}

TEST(Modulator, MatchedEndsBlendTheLastTwoBitsTowardTheFirstSample) {
    // Sample 1 is 2 at 0.4 rad, the rest 1 at -0.6 rad; the blend covers samples 13 to 16.
    const Owned<OpSignal> light = Light(RampChannel(samples, tStep));
    for (std::int32_t i = 1; i <= samples; ++i) {
        light->channels->Ex_samples[i] = i == 1 ? 2.0 * Exp({0.0, 0.4}) : Exp({0.0, -0.6});
    }
    ModulatorParams params = Plain("Ideal");
    params.matchEnds = true;
    const Owned<ElecSig> drive = Constant(1.0);
    const Modulated out(params, drive.get(), light.get());
    for (std::int32_t i = 0; i < 4; ++i) {
        const double g = 1.0 - std::exp(-std::pow(1.25 + 0.25 * i, 8) / 2.0);
        ExpectField(out[13 + i], std::polar(1.0 + g, -0.6 + g));
    }
    ExpectField(out[12], std::polar(1.0, -0.6));
    for (const std::int32_t bits : {7, 1000}) {  // too few, or shorter than a sample
        drive->patternLength = bits;
        ExpectField(Modulated(params, drive.get(), light.get())[samples], std::polar(1.0, -0.6));
    }
}

TEST(Modulator, NoisePassesWithTheSquareOfTheStaticTransmission) {
    const Owned<OpSignal> light = Alone(nullptr);
    light->noise = RampSpectrum(4).release();
    light->noise->next = RampSpectrum(6).release();
    ModulatorParams params = Plain("MachZehnder");
    params.vOffset = 1.0;
    params.vPi = 2.0;
    params.transmission = 0.5;
    params.vBias = 2.0;  // where the curve passes half of the power
    const Modulated out(params, Constant(0.0).get(), light.get());
    EXPECT_NEAR(out.Signal().noise->powerSamples[4], 4 * 0.125, rounding);
    EXPECT_NEAR(out.Signal().noise->next->powerSamples[6], 6 * 0.125, rounding);
}

TEST(Modulator, LevelTakesItsGridFromTheDriveAndSampledChannelsKeepTheirs) {
    Owned<OpSig> level = Level({0.0, 2.0});
    ASSERT_EQ(AddEySamples(level.get()), 0);
    level->Ey_samples[1] = {3.0, 0.0};
    const Owned<OpSignal> light =
        Light(std::move(level), RampChannel(samples, tStep, Polarized::Yes));
    const Modulated out(Plain("Ideal"), Constant(0.5).get(), light.get());
    const OpSig& expanded = *out.Signal().channels;
    EXPECT_EQ(std::tuple(expanded.noPoints, expanded.tStep, expanded.startTime, expanded.bitRate,
                         expanded.patternLength, expanded.RIN, expanded.wavelength),
              std::tuple(samples, tStep, 4e-12, 5e11, 8, 1e-15, 1.55e-6));
    EXPECT_EQ(Value(expanded.Ex_samples[samples]), Field(0.0, 1.0));
    EXPECT_EQ(Value(expanded.Ey_samples[samples]), Field(1.5, 0.0));
    EXPECT_EQ(Value(expanded.next->Ey_samples[3]), Field(51.5, -51.5));
}

// --- Bad input ---

TEST(Modulator, RefusesWhatGivesNoField) {
    const std::string own = "ERROR: component 'mod': ";
    const std::string grid =
        "ERROR: The number of points and time step must be the same for the optical and the "
        "electrical signal";
    const struct {
        std::function<void(ModulatorParams&, ElecSig&, OpSig&)> spoil;
        std::string text;
    } rows[] = {
        {[](auto&, auto&, OpSig& c) { c.noPoints = 8; }, grid},
        {[](auto& p, auto&, auto&) { p.ChirpFactor = NAN; },
         own + "parameter 'ChirpFactor' is nan"},
        {[](auto& p, auto&, auto&) { p.fOffset = -1.0; },
         own + "the drive behind the frequency response is not a finite number"},
        {[](auto&, ElecSig& d, OpSig& c) { d.noPoints = c.noPoints = 12; },
         own + "the electrical signal has 12 samples"},
        {[](auto&, auto&, auto&) { RefuseAllocationsFrom(3); }, "ERROR copying optical signal\n"}};
    for (const auto& row : rows) {
        ModulatorParams params = Plain("MachZehnder");
        params.fittingType = "fOffset";
        params.fOffset = 16.0;
        params.power = -0.1;
        const Owned<ElecSig> drive = Constant(1.0);
        const Owned<OpSignal> light = Light(Level({1.0, 0.0}), RampChannel(samples, tStep));
        row.spoil(params, *drive, *light->channels->next);
        Modulated(params, drive.get(), light.get()).ExpectRefusal(row.text);
    }
}

}  // namespace
}  // namespace photrak

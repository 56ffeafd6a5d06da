// The modulator's stages by hand: transfer curves and responses, chirp, matched ends, noise.
#include "models/sources/modulator.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

#include "base/memory.h"
#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {
namespace {

using Field = std::complex<double>;

constexpr double rounding = 1e-14;
constexpr double tStep = 1e-12;
constexpr std::int32_t samples = 16;

/// A drive of 16 samples, two for each bit.
Owned<ElecSig> Drive(const std::function<double(std::int32_t)>& volts, std::int32_t n = samples) {
    Owned<ElecSig> drive;
    EXPECT_EQ(Make(drive, CreateElecSig, n), 0);
    drive->tStep = tStep;
    drive->startTime = 7e-12;
    drive->bitRate = 5e11;
    drive->patternLength = n / 2;
    for (std::int32_t i = 1; i <= n; ++i) drive->elecSamples[i] = {volts(i), 0.0};
    return drive;
}

Owned<ElecSig> Constant(double volts) {
    return Drive([=](std::int32_t) { return volts; });
}

/// A level in one sample.
Owned<OpSig> Level(Complex field) {
    Owned<OpSig> channel;
    EXPECT_EQ(Make(channel, CreateOpSig, 1), 0);
    channel->wavelength = 1.55e-6;
    channel->RIN = 1e-15;
    channel->spareCount = 9;
    channel->Ex_samples[1] = field;
    return channel;
}

Owned<OpSignal> Light(Owned<OpSig> first, Owned<OpSig> second = nullptr) {
    Owned<OpSignal> light;
    EXPECT_EQ(Make(light, CreateOpSignal), 0);
    if (second) second->prev = first.get();
    first->next = second.release();
    light->channels = first.release();
    return light;
}

/// A flat, lossless, unchirped device that passes v = d as it is.
ModulatorParams Plain(std::string_view type) {
    ModulatorParams params;
    params.owner = "mod";
    params.modulationType = type;
    params.fittingType = "Coefficients";
    params.levelShift = false;
    params.phaseShift = 180.0;
    return params;
}

struct Modulated {
    Modulated(const ModulatorParams& params, const ElecSig* drive, const OpSignal* light) {
        Nodelist second{nullptr, ElecSigType, const_cast<ElecSig*>(drive)};
        Nodelist first{&second, OpSigType, const_cast<OpSignal*>(light)};
        status = Modulator(params, &first, &output, text);
    }
    /// On a level of 1 sqrt(W).
    Modulated(const ModulatorParams& params, const Owned<ElecSig>& drive)
        : Modulated(params, drive.get(), Light(Level({1.0, 0.0})).get()) {
        EXPECT_EQ(status, Status::Success) << text;
    }
    const OpSignal& Signal() const { return output.As<OpSignal>(); }
    Field operator[](std::int32_t i) const { return Value(Signal().channels->Ex_samples[i]); }

    OutputCell output{OpSigType};
    std::string text;
    Status status = Status::Error;
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
    };
    const Row rows[] = {{"MachZehnder", 0.0, 2.0, 0.0, 2.0, 1.0},
                        {"MachZehnder", 1.0, 0.5, 0.1, 4.2, 0.5},  // v = 1/3: 30 degrees
                        {"MachZehnder", -3.0, 1.0, 0.0, 2.0, 1.0},
                        {"Ideal", 0.5, 0.5, 0.0, 4.0, 0.25},
                        {"Ideal", -5.0, 0.0, 1.0, 2.0, 3.0},
                        {"Amplitude", 0.5, 0.5, 0.0, 4.0, 0.5},
                        {"Amplitude", -0.1, 0.0, 0.0, 1.0, 0.0},
                        {"Phase", 1.0, 0.0, 0.0, 2.0, Field(0.0, 1.0)},  // 90 degrees
                        {"Phase", 0.0, -1.0, 1.0, 4.0, Field(0.0, -1.0)},
                        {"Nothing", 5.0, 1.0, 0.0, 2.0, 1.0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.type << " at " << row.volts << " V");
        ModulatorParams params = Plain(row.type);
        params.vBias = row.vBias;
        params.vOffset = row.vOffset;
        params.vPi = row.vPi;
        const Modulated out(params, Constant(row.volts));
        for (std::int32_t i = 1; i <= samples; ++i) ExpectField(out[i], row.field);
    }
}

TEST(Modulator, InsertionLossScalesAllCurvesAndExtinctionAllButThePhase) {
    struct Row {
        std::string_view type;
        double dark, bright;  // at v = 0 and v = 1
    };
    const Row rows[] = {{"MachZehnder", 0.05, 0.5},
                        {"Amplitude", 0.05, 0.5},
                        {"Phase", 0.5, -0.5},
                        {"Nothing", 1.0, 1.0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        ModulatorParams params = Plain(row.type);
        params.extinction = 0.1;
        params.transmission = 0.5;
        const Modulated out(params, Drive([](std::int32_t i) { return i % 2; }));
        ExpectField(out[2], row.dark);
        ExpectField(out[3], row.bright);
    }
}

TEST(Modulator, ExtinctionOfZeroDecibelsSwitchesTheFloorOff) {
    ModelBlock block;
    block.Number("onOffRatio", 0).Number("insertionLoss", -20).Number("ChirpFactor", 0);
    block.Word("fittingType", "Coefficients").Number("coef2", 0).Number("vBias", 0);
    block.Number("frequency", 7e9);  // without effect: coef1 stays
    const ModulatorParams params = ReadModulatorParams(block.component.parameters);
    EXPECT_EQ(params.coef1, 1.0);
    EXPECT_EQ(params.extinction, 1.0);
    EXPECT_NEAR(params.transmission, 0.1, rounding);
    const Modulated out(params, Constant(0.0));
    ExpectField(out[1], 0.0);
}

/// Bins of 62.5 GHz; the drive has a mean, bin 3 and the Nyquist bin.
TEST(Modulator, ResponseScalesEachFrequencyOfTheDriveAndItsMean) {
    constexpr double bin = 1.0 / (samples * tStep) / 1e9;  // 62.5 GHz
    struct Row {
        std::string_view type;
        double atDc, atBin3, atNyquist;
    };
    ModulatorParams params = Plain("Ideal");
    params.fOffset = 20.0;
    params.power = -0.5;
    params.coef1 = 2.0;
    params.coef2 = 0.016;
    params.a = {1.0, -0.01, 2e-5, 1e-8, -1e-10};
    params.vBias = 100.0;  // keeps v positive
    const auto polynomial = [&](double f) {
        return std::pow(10.0,
                        0.1 - 0.001 * f + 2e-6 * f * f + 1e-9 * f * f * f - 1e-11 * f * f * f * f);
    };
    const Row rows[] = {
        {"fOffset", std::sqrt(1 / 20.0), std::sqrt(1 / 207.5), std::sqrt(1 / 520.0)},
        {"Coefficients", 2.0, 2.0 / std::sqrt(10.0), 2.0 / std::sqrt(65.0)},
        {"Polynomial", polynomial(0), polynomial(3 * bin), polynomial(8 * bin)},
        {"Unknown", 0.0, 0.0, 0.0}};
    const auto wave = [](std::int32_t i, int k) {
        return std::cos(2 * std::numbers::pi * k * (i - 1) / samples + (k == 3 ? 0.7 : 0.0));
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        params.fittingType = row.type;
        const Modulated out(params, Drive([&](std::int32_t i) {
                                return 5.0 + 3.0 * wave(i, 3) + 2.0 * wave(i, 8);
                            }));
        for (std::int32_t i = 1; i <= samples; ++i) {
            const double d =
                5.0 * row.atDc + 3.0 * row.atBin3 * wave(i, 3) + 2.0 * row.atNyquist * wave(i, 8);
            ExpectField(out[i], 100.0 + d, 1e-12);
        }
    }
}

TEST(Modulator, LevelShiftMakesAConstantOffsetOfTheDriveInvisible) {
    ModulatorParams params = Plain("MachZehnder");
    params.levelShift = true;
    params.vBias = 0.4;
    const auto ramp = [](double offset) {
        return Drive([=](std::int32_t i) { return offset + i / 16.0; });
    };
    const Modulated low(params, ramp(0.0)), high(params, ramp(3.0));
    for (std::int32_t i = 1; i <= samples; ++i) {
        const double v = i / 16.0 - 17.0 / 32.0 + 0.4;  // the middle of 1/16 and 1
        ExpectField(low[i], std::fabs(std::sin(v * std::numbers::pi / 2)));
        ExpectField(high[i], low[i]);
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

    params.modulationType = "Phase";
    const Modulated turned(params, drive.get(), light.get());
    ExpectField(turned[4], 1.0);  // constant power: no phase is left
    ExpectField(turned[samples], std::polar(1.0, 0.5 + 1.6 * std::numbers::pi));
    params.ChirpFactor = 0.0;
    const Modulated unchirped(params, drive.get(), light.get());
    ExpectField(unchirped[4], std::polar(1.0, 0.5 + 0.4 * std::numbers::pi));

    params.ChirpFactor = 2.0;
    const Modulated dark(params, drive.get(), Light(Level({0.0, 0.0})).get());
    for (std::int32_t i = 1; i <= samples; ++i) ExpectField(dark[i], 0.0);
}

TEST(Modulator, MatchedEndsBlendTheLastTwoBitsTowardTheFirstSample) {
    // Sample 1 is 2 at 0.4 rad, the rest 1 at -0.6 rad; the blend covers samples 13 to 16.
    Owned<OpSig> channel;
    ASSERT_EQ(Make(channel, CreateOpSig, samples), 0);
    channel->tStep = tStep;
    const auto set = [&](std::int32_t i, Field field) {
        channel->Ex_samples[i] = {field.real(), field.imag()};
    };
    set(1, std::polar(2.0, 0.4));
    for (std::int32_t i = 2; i <= samples; ++i) set(i, std::polar(1.0, -0.6));
    const Owned<OpSignal> light = Light(std::move(channel));
    ModulatorParams params = Plain("Ideal");
    params.matchEnds = true;
    const Owned<ElecSig> drive = Constant(1.0);
    const Modulated out(params, drive.get(), light.get());
    const double ratios[] = {1.25, 1.5, 1.75, 2.0};
    ExpectField(out[12], std::polar(1.0, -0.6));
    for (std::int32_t i = 0; i < 4; ++i) {
        const double x2 = ratios[i] * ratios[i], x8 = x2 * x2 * x2 * x2;
        const double g = 1.0 - std::exp(-x8 / 2.0);
        ExpectField(out[13 + i], std::polar(1.0 + g, -0.6 + g));
    }
    drive->patternLength = 7;
    const Modulated unmatched(params, drive.get(), light.get());
    ExpectField(unmatched[samples], std::polar(1.0, -0.6));
    drive->patternLength = 1000;  // a bit shorter than a sample: nothing to blend
    const Modulated shortBits(params, drive.get(), light.get());
    ExpectField(shortBits[samples], std::polar(1.0, -0.6));
}

TEST(Modulator, NoisePassesWithTheSquareOfTheStaticTransmission) {
    struct Row {
        std::string_view type;
        double vBias, factor;
    };
    const Row rows[] = {{"MachZehnder", 3.0, 0.25},   // bias at the top of the curve
                        {"MachZehnder", 2.0, 0.125},  // half of the power
                        {"Phase", 2.0, 0.25}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        ModulatorParams params = Plain(row.type);
        params.vBias = row.vBias;
        params.vOffset = 1.0;
        params.vPi = 2.0;
        params.transmission = 0.5;
        Owned<OpSignal> light;
        ASSERT_EQ(Make(light, CreateOpSignal), 0);
        light->noise = RampSpectrum(4).release();
        light->noise->next = RampSpectrum(6).release();
        const Owned<ElecSig> drive = Constant(0.0);
        const Modulated out(params, drive.get(), light.get());
        ASSERT_EQ(out.status, Status::Success);
        EXPECT_EQ(out.Signal().channels, nullptr);
        EXPECT_NEAR(out.Signal().noise->powerSamples[4], 4 * row.factor, rounding);
        EXPECT_NEAR(out.Signal().noise->next->powerSamples[6], 6 * row.factor, rounding);
    }
}

TEST(Modulator, LevelTakesItsGridFromTheDriveAndSampledChannelsKeepTheirs) {
    Owned<OpSig> level = Level({0.0, 2.0});
    ASSERT_EQ(AddEySamples(level.get()), 0);
    level->Ey_samples[1] = {3.0, 0.0};
    const Owned<OpSignal> light =
        Light(std::move(level), RampChannel(samples, tStep, Polarized::Yes));
    const Owned<ElecSig> drive = Constant(0.5);
    const Modulated out(Plain("Ideal"), drive.get(), light.get());
    ASSERT_EQ(out.status, Status::Success) << out.text;
    const OpSig& expanded = *out.Signal().channels;
    EXPECT_EQ(expanded.noPoints, samples);
    EXPECT_EQ(expanded.tStep, tStep);
    EXPECT_EQ(expanded.startTime, 7e-12);
    EXPECT_EQ(expanded.bitRate, 5e11);
    EXPECT_EQ(expanded.patternLength, 8);
    EXPECT_EQ(expanded.RIN, 1e-15);
    EXPECT_EQ(expanded.spareCount, 9);
    EXPECT_EQ(Value(expanded.Ex_samples[samples]), Field(0.0, 1.0));
    EXPECT_EQ(Value(expanded.Ey_samples[samples]), Field(1.5, 0.0));
    const OpSig& copied = *expanded.next;
    EXPECT_EQ(copied.prev, &expanded);
    EXPECT_EQ(copied.startTime, 3e-12);
    EXPECT_EQ(copied.patternLength, 8);
    EXPECT_EQ(Value(copied.Ey_samples[3]), Field(51.5, -51.5));
    EXPECT_EQ(Value(light->channels->next->Ex_samples[3]), Field(3.0, -3.0));
}

// --- Bad input ---

TEST(Modulator, ReportsPortsInOrder) {
    Nodelist binary{nullptr, BinSigType, nullptr}, electrical{nullptr, ElecSigType, nullptr};
    Nodelist optical{&binary, OpSigType, nullptr}, wrong{&binary, ElecSigType, nullptr};
    Nodelist lone{nullptr, BinSigType, nullptr}, pair{&electrical, OpSigType, nullptr};
    const std::pair<const Nodelist*, std::string_view> rows[] = {
        {nullptr, "ERROR: Missing first input port\n"},
        {&lone, "ERROR: Missing second input port\n"},
        {&wrong, "ERROR: Incorrect signal type on first input port\n"},
        {&optical, "ERROR: Incorrect signal type on second input port\n"},
        {&pair, ""}};  // no data: nothing happens
    for (const auto& [inputs, expected] : rows) {
        OutputCell output(OpSigType);
        std::string text;
        const Status status = Modulator(Plain("Ideal"), inputs, &output, text);
        EXPECT_EQ(text, expected);
        EXPECT_EQ(status, expected.empty() ? Status::Success : Status::Error);
        EXPECT_EQ(output.sig, nullptr);
    }
}

TEST(Modulator, RefusesChannelsOffTheGridOfTheDrive) {
    const Owned<ElecSig> drive = Constant(1.0);
    const std::pair<std::int32_t, double> grids[] = {
        {8, tStep}, {samples, 1.1 * tStep}, {1, tStep}};
    for (const auto& [n, step] : grids) {
        const Owned<OpSignal> light = Light(Level({1.0, 0.0}), RampChannel(n, step));
        const Modulated out(Plain("Ideal"), drive.get(), light.get());
        EXPECT_EQ(out.status, Status::Error);
        EXPECT_EQ(out.text,
                  "ERROR: The number of points and time step must be the same for the optical and "
                  "the electrical signal");
        EXPECT_EQ(out.output.sig, nullptr);
    }
}

TEST(Modulator, RefusesValuesAndDrivesThatGiveNoField) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        std::function<void(ModulatorParams&, ElecSig&)> spoil;
        std::string_view text;
    };
    const Row rows[] = {
        {[](ModulatorParams& p, ElecSig&) { p.vPi = 0.0; }, "parameter 'vPi' is 0"},
        {[=](ModulatorParams& p, ElecSig&) { p.ChirpFactor = nan; }, "'ChirpFactor' is nan"},
        {[](ModulatorParams& p, ElecSig&) { p.fOffset = -1.0; }, "is not a finite number"},
        {[](ModulatorParams&, ElecSig& d) { d.tStep = 0.0; }, "the time step 0 s"},
        {[](ModulatorParams&, ElecSig& d) { d.noPoints = 12; }, "12 samples"},
        {[](ModulatorParams&, ElecSig& d) { d.noPoints = 0; }, "no samples"}};
    for (const Row& row : rows) {
        ModulatorParams params = Plain("MachZehnder");
        params.fittingType = "fOffset";
        params.fOffset = 16.0;
        params.power = -0.1;
        const Owned<ElecSig> drive = Constant(1.0);
        row.spoil(params, *drive);
        const Modulated out(params, drive.get(), Light(Level({1.0, 0.0})).get());
        EXPECT_EQ(out.status, Status::Error);
        EXPECT_EQ(out.text.rfind("ERROR: component 'mod': ", 0), 0u) << out.text;
        EXPECT_NE(out.text.find(row.text), std::string::npos) << out.text;
        EXPECT_EQ(out.output.sig, nullptr);
    }
    // Without a response there is no transform, and any length does.
    const Modulated flat(Plain("Ideal"), Drive([](std::int32_t) { return 1.0; }, 12));
    ExpectField(flat[12], 1.0);
}

TEST(Modulator, ExhaustedMemoryLeavesThePortEmpty) {
    const Owned<OpSignal> light = Light(Level({1.0, 0.0}), RampChannel(samples, tStep));
    light->noise = RampSpectrum(4).release();
    const Owned<ElecSig> drive = Constant(1.0);
    const ModulatorParams params = Plain("Ideal");
    // Record and samples of the expanded channel, then those of the copied one.
    const std::string_view texts[] = {"ERROR creating optical signal\n",
                                      "ERROR creating optical signal\n",
                                      "ERROR copying optical signal\n"};
    for (std::int64_t refused = 1; refused <= 8; ++refused) {
        RefuseAllocationsFrom(refused);
        const Modulated out(params, drive.get(), light.get());
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(out.status, Status::Error);
        if (refused <= 3) {
            EXPECT_EQ(out.text, texts[refused - 1]);
        }
        EXPECT_EQ(out.output.sig, nullptr);
    }
    EXPECT_EQ(Modulated(params, drive.get(), light.get()).status, Status::Success);
}

}  // namespace
}  // namespace photrak

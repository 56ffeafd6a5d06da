// Attenuator, normalizer, phase shift, delay, frequency converter and polarization transformer
// against closed forms, with the habits that are kept.
#include "models/optical/passive_blocks.h"

#include <numbers>

#include "models/block_run.h"
#include "models/optical/polarization_transformer.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

constexpr double tolerance = 1e-12;
constexpr double lightSpeed = 299792458.0;

/// A channel of equal power in both polarizations, with noise.
Owned<OpSignal> Polarized(double powerEach) {
    Owned<OpSignal> signal = Carrier(powerEach);
    EXPECT_EQ(AddEySamples(signal->channels), 0);
    std::copy_n(signal->channels->Ex_samples + 1, 4, signal->channels->Ey_samples + 1);
    AddNoise(*signal, 193e12, 1e9, {2.0, 4.0});
    return signal;
}

void ExpectNear(Complex value, std::complex<double> expected) {
    EXPECT_NEAR(std::abs(Value(value) - expected), 0.0, tolerance);
}

double Power(const OpSig& channel) {
    return AverageOpSigPower(&channel);
}

TEST(OpticalAttenuator, TakesItsValueAsAGain) {  // Kept deliberately
    const Owned<OpSignal> light = Polarized(8.0);
    ModelBlock block;
    block.Number("attenuation", -10.0).Number("xy_differential", 10.0 * std::log10(2.0));
    const BlockRun run(RunOpticalAttenuator, block, {light});
    ASSERT_EQ(run.status, Status::Success) << run.text;
    EXPECT_NEAR(SquaredMagnitude(run.Channel().Ex_samples[3]), 0.8, tolerance);
    EXPECT_NEAR(SquaredMagnitude(run.Channel().Ey_samples[3]), 0.4, tolerance);
    EXPECT_NEAR(run.Light().noise->powerSamples[2], 4.0 * 0.075, tolerance);
    EXPECT_NEAR(Power(*light->channels), 16.0, tolerance) << "the input is not the model's";
}

TEST(OpticalNormalizer, BringsTheStrongestOrEveryChannelToTheTarget) {
    for (const bool uniform : {true, false}) {
        SCOPED_TRACE(uniform);
        const Owned<OpSignal> weak = Carrier(1e-3), strong = Carrier(4e-3);
        AppendChannel(*weak, Carrier(0.0, 4, 1.56e-6));
        AddNoise(*weak, 193e12, 1e9, {2.0});
        ModelBlock block;
        block.Number("AvePowerOut", 0.0).Word("AttenuationType", uniform ? "Uniform" : "Each");
        const BlockRun run(RunOpticalNormalizer, block, {weak, strong}, 2);
        ASSERT_EQ(run.status, Status::Success) << run.text;
        EXPECT_NEAR(Power(run.Channel(0)), uniform ? 0.25e-3 : 1e-3, 1e-15);
        EXPECT_EQ(Power(*run.Channel(0).next), 0.0);
        EXPECT_NEAR(Power(run.Channel(1)), 1e-3, 1e-15);
        EXPECT_NEAR(run.Light(0).noise->powerSamples[1], 0.5, tolerance);
    }
}

TEST(OpticalNormalizer, WarnsOfGainAndLeavesDarkness) {
    const Owned<OpSignal> light = Carrier(1e-3), dark = Carrier(0.0);
    ModelBlock block("norm %s");
    block.Number("AvePowerOut", 10.0);
    const BlockRun amplified(RunOpticalNormalizer, block, {light});
    EXPECT_EQ(amplified.status, Status::Warning);
    EXPECT_EQ(amplified.text, "WARNING: Optical Normalizer 'norm %s' applied a gain of 10 dB\n");
    EXPECT_NEAR(Power(amplified.Channel()), 1e-2, 1e-15);
    AddNoise(*dark, 193e12, 1e9, {2.0});
    const BlockRun left(RunOpticalNormalizer, block, {dark});
    EXPECT_EQ(left.status, Status::Success);
    EXPECT_EQ(left.Light().noise->powerSamples[1], 2.0);
    light->channels->Ex_samples[1].re = INFINITY;
    EXPECT_EQ(BlockRun(RunOpticalNormalizer, block, {light}).text,
              "ERROR: component 'norm %s': a channel has a mean power of inf W\n");
}

TEST(PhaseShift, TurnsBothPolarizations) {
    const Owned<OpSignal> light = Polarized(4.0);
    ModelBlock block;
    block.Number("phaseShift", 90.0);
    const BlockRun run(RunPhaseShift, block, {light});
    EXPECT_NEAR(run.Channel().Ex_samples[1].im, 2.0, tolerance);
    EXPECT_NEAR(run.Channel().Ey_samples[4].im, 2.0, tolerance);
}

TEST(FiberDelay, MovesTheStartOnly) {
    ModelBlock block;
    block.Number("delay", 5e-12);
    const BlockRun run(RunFiberDelay, block, {Multiplex(8, 1e-12)});
    for (const OpSig& channel : Items(run.Light().channels)) {
        EXPECT_NEAR(channel.startTime, 8e-12, 1e-24);
        EXPECT_EQ(Value(channel.Ex_samples[5]), Value({5.0, -5.0}));
    }
}

TEST(IdealFrequencyConverter, MovesTheCarrierByHertzOrMeters) {
    const Owned<OpSignal> light = Carrier(1.0);
    for (const bool inFrequency : {true, false}) {
        ModelBlock block;
        block.Number("shift", inFrequency ? 100e9 : 1e-9)
            .Word("specMode", inFrequency ? "Frequency" : "Wavelength");
        const BlockRun run(RunIdealFrequencyConverter, block, {light});
        const double expected =
            inFrequency ? lightSpeed / (lightSpeed / 1.55e-6 + 100e9) : 1.551e-6;
        EXPECT_NEAR(run.Channel().wavelength, expected, 1e-20);
    }
    ModelBlock beyond;
    beyond.Number("shift", -1.0).Word("specMode", "Wavelength");
    const BlockRun run(RunIdealFrequencyConverter, beyond, {light});
    EXPECT_EQ(run.status, Status::Error);
}

// Kept deliberately: what a channel moved is the shift of the next, across ports.
TEST(IdealFrequencyConverter, FeedsEachShiftIntoTheNext) {
    const Owned<OpSignal> first = Carrier(1.0), second = Carrier(1.0, 4, 1.3e-6);
    AppendChannel(*first, Carrier(1.0, 4, 1.56e-6));
    ModelBlock block;
    block.Number("shift", 1e14).Word("specMode", "Frequency");
    const BlockRun run(RunIdealFrequencyConverter, block, {first, second}, 2);
    EXPECT_LT(run.Channel(0).wavelength, 1.1e-6);
    // Some -5e-7 read as Hz: no shift that a double can hold.
    EXPECT_NEAR(run.Channel(0).next->wavelength, 1.56e-6, 1e-18);
    EXPECT_NEAR(run.Channel(1).wavelength, 1.3e-6, 1e-18);
}

TEST(PolarizationTransformer, MultipliesByTheMatrixOfItsMode) {
    using Element = std::complex<double>;
    const Owned<OpSignal> light = Carrier(4.0), both = Carrier(4.0);
    AddNoise(*light, 193e12, 1e9, {2.0});
    ASSERT_EQ(AddEySamples(both->channels), 0);
    both->channels->Ey_samples[4] = {3.0, 1.0};
    struct Case {
        std::string_view mode;
        Element m11, m12, m21, m22;
    };
    const double s = std::numbers::sqrt3 / 2.0;
    const Element j(0.0, 1.0);
    const Case cases[] = {{"Rotation", 0.5, s, -s, 0.5},
                          {"LinearPolarizer", 0.25, 0.5 * s, 0.5 * s, 0.75},
                          {"CircularLeft", 0.5, 0.5 * j, -0.5 * j, 0.0},
                          {"CircularRight", 0.5, -0.5 * j, 0.5 * j, 0.0},
                          {"Custom", 3.0, 7.0 * j, 4.0 * j, {1.0, 5.0}}};
    for (const Case& row : cases) {
        SCOPED_TRACE(row.mode);
        ModelBlock block;
        block.Word("mode", row.mode).Number("angle", 60.0).Number("loss", 20.0);
        block.Number("coef11r", 3.0).Number("coef21i", 4.0);
        block.Number("coef12i", 7.0).Number("coef22i", 5.0);
        const BlockRun run(RunPolarizationTransformer, block, {light});
        ASSERT_EQ(run.status, Status::Success) << run.text;
        ASSERT_NE(run.Channel().Ey_samples, nullptr);
        ExpectNear(run.Channel().Ex_samples[4], 0.1 * 2.0 * row.m11);
        ExpectNear(run.Channel().Ey_samples[4], 0.1 * 2.0 * row.m21);
        EXPECT_NEAR(run.Light().noise->powerSamples[1], 0.02, tolerance);
        const BlockRun mixed(RunPolarizationTransformer, block, {both});
        const Element y(3.0, 1.0);
        ExpectNear(mixed.Channel().Ex_samples[4], 0.1 * (2.0 * row.m11 + y * row.m12));
        ExpectNear(mixed.Channel().Ey_samples[4], 0.1 * (2.0 * row.m21 + y * row.m22));
    }
    ModelBlock block;
    block.Word("mode", "100%n");
    EXPECT_EQ(BlockRun(RunPolarizationTransformer, block, {light}).text,
              "ERROR: component 'block': mode '100%n' is not known\n");
}

TEST(PolarizationTransformer, CircularModesDropYIntoX) {  // Kept deliberately: m22 is 0
    const Owned<OpSignal> light = Polarized(4.0);
    std::fill_n(light->channels->Ex_samples + 1, 4, Complex{});
    ModelBlock block;
    block.Word("mode", "CircularLeft");
    const BlockRun run(RunPolarizationTransformer, block, {light});
    EXPECT_EQ(Value(run.Channel().Ex_samples[2]), Value({0.0, 1.0}));
    EXPECT_EQ(Value(run.Channel().Ey_samples[2]), Value({}));
}

TEST(PassiveBlocks, StopAtABadPortOrWithoutMemory) {
    struct Case {
        Status (*model)(const ModelCall&);
        std::string_view badInput, copyFailed;
    };
    const Case blocks[] = {
        {RunOpticalAttenuator, "ERROR in OpticalAttenuator: invalid input signals\n",
         "Error in copying OpSig in OpticalAttenuator.\n"},
        // Kept deliberately: a port of another type is told in the attenuator's words.
        {RunOpticalNormalizer, "ERROR in OpticalAttenuator: invalid input signals\n",
         "Error in copying OpSig in OpticalNormalizer.\n"},
        {RunPhaseShift, "ERROR in PhaseShift: invalid input signals\n",
         "Error in copying OpSig in PhaseShift.\n"},
        {RunFiberDelay, "ERROR in FiberDelay: invalid input signals\n",
         "Error in copying OpSig in FiberDelay.\n"},
        {RunIdealFrequencyConverter, "ERROR in IdealFrequencyConverter: invalid input signals\n",
         "Error in copying OpSig in IdealFrequencyConverter.\n"},
        {RunPolarizationTransformer, "ERROR in Polarization Transformer: invalid input signals\n",
         "Error in copying OpSig in Polarizarion Transformer.\n"}};
    const Owned<OpSignal> light = Carrier(2e-3), none;
    for (const auto& [model, badInput, copyFailed] : blocks) {
        SCOPED_TRACE(badInput);
        ModelBlock block;
        EXPECT_EQ(BlockRun(model, block, {Owned<ElecSig>()}).text, badInput);
        EXPECT_EQ(BlockRun(model, block, {none}).status, Status::Success);
        RefuseAllocationsFrom(1);
        const BlockRun starved(model, block, {light});
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(starved.status, Status::Error);
        EXPECT_EQ(starved.text, copyFailed);
        EXPECT_TRUE(starved.IsEmpty());
    }
    ModelBlock block;
    EXPECT_EQ(BlockRun(RunOpticalNormalizer, block, {RampWaveform(4, 1e-12)}).text,
              "Incorrect input signal types in OpticalNormalizer.\n");
    std::string last;  // the second polarization is the last that needs memory
    for (int n = 1; n < 20; ++n) {
        RefuseAllocationsFrom(n);
        const BlockRun starved(RunPolarizationTransformer, block, {light});
        RefuseAllocationsFrom(-1);
        if (starved.status == Status::Success) break;
        last = starved.text;
    }
    EXPECT_EQ(last, "insufficient memory in Polarization Transformer\n");
}

}  // namespace
}  // namespace photrak

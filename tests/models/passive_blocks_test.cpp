// Attenuator, normalizer, phase shift, delay, frequency converter and polarization transformer
// against closed forms, with the habits that are kept.
#include "models/optical/passive_blocks.h"

#include "base/text.h"
#include "models/block_run.h"
#include "models/optical/polarization_transformer.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"
#include "support/refused_memory.h"

namespace photrak {
namespace {

constexpr double tolerance = 1e-12;

/// A channel of equal power in both polarizations, with noise.
Owned<OpSignal> Polarized(double powerEach) {
    Owned<OpSignal> signal = Carrier(powerEach);
    EXPECT_EQ(AddEySamples(signal->channels), 0);
    std::copy_n(signal->channels->Ex_samples + 1, 4, signal->channels->Ey_samples + 1);
    AddNoise(*signal, 193e12, 1e9, {2.0, 4.0});
    return signal;
}

double Power(const OpSig& channel) {
    return AverageOpSigPower(&channel);
}

TEST(OpticalAttenuator, TakesItsValueAsAGain) {  // By design
    const Owned<OpSignal> light = Polarized(8.0);
    ModelBlock block;
    block.Number("attenuation", -10.0).Number("xy_differential", 10.0 * std::log10(2.0));
    const BlockRun run(RunOpticalAttenuator, block, {light});
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
    EXPECT_EQ(amplified.text, "WARNING: Optical Normalizer 'norm %s' applied a gain of 10 dB\n");
    EXPECT_NEAR(Power(amplified.Channel()), 1e-2, 1e-15);
    AddNoise(*dark, 193e12, 1e9, {2.0});
    const BlockRun left(RunOpticalNormalizer, block, {dark});
    EXPECT_EQ(left.Light().noise->powerSamples[1], 2.0);
}

TEST(PassiveBlocks, TurnBothPolarizationsOrMoveTheStart) {
    ModelBlock block;
    block.Number("phaseShift", 90.0).Number("delay", 5e-12);
    const BlockRun turned(RunPhaseShift, block, {Polarized(4.0)});
    EXPECT_NEAR(turned.Channel().Ex_samples[1].im, 2.0, tolerance);
    EXPECT_NEAR(turned.Channel().Ey_samples[4].im, 2.0, tolerance);
    const BlockRun delayed(RunFiberDelay, block, {Polarized(4.0)});
    EXPECT_NEAR(delayed.Channel().startTime, 5e-12, 1e-24);
}

TEST(IdealFrequencyConverter, MovesTheCarrierByHertzOrMeters) {
    const Owned<OpSignal> light = Carrier(1.0);
    const auto moved = [&](std::string_view mode, double shift) {
        ModelBlock block;
        block.Number("shift", shift).Word("specMode", mode);
        const BlockRun run(RunIdealFrequencyConverter, block, {light});
        return run.IsEmpty() ? 0.0 : run.Channel().wavelength;
    };
    EXPECT_NEAR(moved("Frequency", 100e9), lightSpeed / (lightSpeed / 1.55e-6 + 100e9), 1e-20);
    EXPECT_NEAR(moved("Wavelength", 1e-9), 1.551e-6, 1e-20);
    EXPECT_EQ(moved("Wavelength", -1.0), 0.0) << "no wavelength is left";
}

// By design: what a channel moved is the shift of the next, across ports.
TEST(IdealFrequencyConverter, FeedsEachShiftIntoTheNext) {
    ModelBlock block;
    block.Number("shift", 1e14);
    const BlockRun run(RunIdealFrequencyConverter, block, {Carrier(1.0), Carrier(1.0, 4, 1.3e-6)},
                       2);
    EXPECT_LT(run.Channel(0).wavelength, 1.1e-6);
    EXPECT_NEAR(run.Channel(1).wavelength, 1.3e-6, 1e-18) << "some -5e-7, read as Hz";
}

TEST(PolarizationTransformer, MultipliesByTheMatrixOfItsMode) {
    const Owned<OpSignal> light = Carrier(4.0), both = Carrier(4.0);
    AddNoise(*light, 193e12, 1e9, {2.0});
    ASSERT_EQ(AddEySamples(both->channels), 0);
    both->channels->Ey_samples[4] = {3.0, 1.0};
    const double s = std::numbers::sqrt3 / 2.0;
    const Field j(0.0, 1.0), y(3.0, 1.0);
    const struct {
        std::string_view mode;
        Field m11, m12, m21, m22;
    } rows[] = {{"Rotation", 0.5, s, -s, 0.5},
                {"LinearPolarizer", 0.25, 0.5 * s, 0.5 * s, 0.75},
                {"CircularLeft", 0.5, 0.5 * j, -0.5 * j, 0.0},  // By design: m22 is 0
                {"Custom", 3.0, 7.0 * j, 4.0 * j, {1.0, 5.0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mode);
        ModelBlock block;
        block.Word("mode", row.mode).Number("angle", 60.0).Number("loss", 20.0);
        block.Number("coef11r", 3.0).Number("coef21i", 4.0);
        block.Number("coef12i", 7.0).Number("coef22i", 5.0);
        const BlockRun run(RunPolarizationTransformer, block, {light});
        ASSERT_NE(run.Channel().Ey_samples, nullptr);
        ExpectField(run.Channel().Ey_samples[4], 0.1 * 2.0 * row.m21, tolerance);
        EXPECT_NEAR(run.Light().noise->powerSamples[1], 0.02, tolerance);
        const BlockRun mixed(RunPolarizationTransformer, block, {both});
        ExpectField(mixed.Channel().Ex_samples[4], 0.1 * (2.0 * row.m11 + y * row.m12), tolerance);
        ExpectField(mixed.Channel().Ey_samples[4], 0.1 * (2.0 * row.m21 + y * row.m22), tolerance);
    }
    ModelBlock block;
    block.Word("mode", "100%n");
    EXPECT_EQ(BlockRun(RunPolarizationTransformer, block, {light}).text,
              "ERROR: component 'block': mode '100%n' is not known\n");
}

TEST(PassiveBlocks, StopAtABadPortOrWithoutMemory) {
    const struct {
        Status (*model)(const ModelCall&);
        std::string_view badInput, copyFailed;
    } rows[] = {
        {RunOpticalAttenuator, "OpticalAttenuator", "OpticalAttenuator"},
        // By design: a port of another type is told in the attenuator's words.
        {RunOpticalNormalizer, "OpticalAttenuator", "OpticalNormalizer"},
        {RunPhaseShift, "PhaseShift", "PhaseShift"},
        {RunFiberDelay, "FiberDelay", "FiberDelay"},
        {RunIdealFrequencyConverter, "IdealFrequencyConverter", "IdealFrequencyConverter"},
        {RunPolarizationTransformer, "Polarization Transformer", "Polarizarion Transformer"}};
    const Owned<OpSignal> light = Carrier(2e-3);
    ModelBlock block;
    for (const auto& [model, badInput, copyFailed] : rows) {
        SCOPED_TRACE(copyFailed);
        EXPECT_EQ(BlockRun(model, block, {Owned<ElecSig>()}).text,
                  Concat("ERROR in ", badInput, ": invalid input signals\n"));
        const std::string texts = RefuseMemoryInTurn([&](std::string& text) {
            const BlockRun starved(model, block, {light});
            text = starved.text;
            EXPECT_EQ(starved.IsEmpty(), starved.status != Status::Success);
            return starved.status;
        });
        EXPECT_TRUE(StartsWith(texts, Concat("Error in copying OpSig in ", copyFailed, ".\n")));
    }
    EXPECT_EQ(BlockRun(RunOpticalNormalizer, block, {RampWaveform(4, 1e-12)}).text,
              "Incorrect input signal types in OpticalNormalizer.\n");
}

}  // namespace
}  // namespace photrak

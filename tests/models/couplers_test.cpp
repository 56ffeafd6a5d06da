// Couplers by conservation of power and by a Mach-Zehnder interferometer.
#include "models/optical/couplers.h"

#include "models/block_run.h"
#include "models/optical/multiport.h"
#include "models/optical/passive_blocks.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

constexpr double tolerance = 1e-12;

struct Couplers : testing::Test {
    ~Couplers() override { ResetTransferTable(); }
};

double Power(const OpSig& channel) {
    return AverageOpSigPower(&channel);
}

TEST_F(Couplers, ConserveWhatTheyDivideInQuadrature) {
    const Owned<OpSignal> light = Carrier(4.0), none;
    AddNoise(*light, 193e12, 1e9, {2.0});
    ModelBlock block;
    block.Number("alpha", 0.3);
    const BlockRun split(RunOpticalCoupler, block, {light, none}, 2);
    EXPECT_NEAR(Power(split.Channel(0)), 2.8, tolerance);
    EXPECT_NEAR(split.Channel(1).Ex_samples[1].im, std::sqrt(1.2), tolerance);
    EXPECT_NEAR(split.Light(1).noise->powerSamples[1], 0.6, tolerance);
}

TEST_F(Couplers, CustomElementsAndLoss) {
    const Owned<OpSignal> light = Carrier(4.0), other = Carrier(1.0);
    ModelBlock block;
    block.Word("mode", "Custom").Number("loss", 20.0).Number("coef12i", 3.0);
    block.Number("coef21r", 5.0).Number("alpha", 7.0);  // alpha is not looked at
    const BlockRun run(RunOpticalCoupler, block, {light, other}, 2);
    EXPECT_NEAR(run.Channel(0).Ex_samples[1].re, 0.1 * (2.0 + 5.0), tolerance);
    EXPECT_NEAR(run.Channel(1).Ex_samples[1].re, 0.1, tolerance);
    EXPECT_NEAR(run.Channel(1).Ex_samples[1].im, 0.6, tolerance);
}

// Two even couplers with a phase phi in one arm: cos^2(phi / 2) crosses.
TEST_F(Couplers, MachZehnderFringe) {
    const Owned<OpSignal> light = Carrier(1.0), none;
    for (const double degrees : {0.0, 60.0, 180.0}) {
        ModelBlock even, arm;
        arm.Number("phaseShift", degrees);
        const BlockRun split(RunOpticalCoupler, even, {light, none}, 2);
        const BlockRun turned(RunPhaseShift, arm, {split.Light(0)});
        const BlockRun joined(RunOpticalCoupler, even, {turned.Light(), split.Light(1)}, 2);
        const double half = std::cos(degrees * std::numbers::pi / 360.0);
        EXPECT_NEAR(Power(joined.Channel(1)), half * half, tolerance);
        EXPECT_NEAR(Power(joined.Channel(0)), 1.0 - half * half, tolerance);
    }
}

TEST_F(Couplers, ControlSelectsTheRatioByItsFirstSample) {
    const Owned<OpSignal> light = Carrier(1.0), none;
    const Owned<ElecSig> control = RampWaveform(4, 1e-12);
    ModelBlock block;
    block.Number("alpha_on", 0.75).Number("alpha_off", 0.25);
    const std::pair<double, double> rows[] = {{0.9, 0.25}, {1.0, 0.75}, {-3.0, 0.75}};
    for (const auto& [first, crossing] : rows) {
        control->elecSamples[1] = {first, 5.0};
        const BlockRun run(RunControlledOpticalCoupler, block, {light, none, control}, 2);
        EXPECT_NEAR(Power(run.Channel(1)), crossing, tolerance) << first;
    }
}

TEST_F(Couplers, RefuseWhatTheyCannotCouple) {
    const Owned<OpSignal> light = Carrier(1.0), longer = Carrier(1.0, 8), none;
    ModelBlock block, wrong;
    wrong.Number("alpha", 1.5);
    const auto refusal = [](auto model, ModelBlock& component,
                            const std::vector<BlockRun::Input>& inputs) {
        const BlockRun run(model, component, inputs, 2);
        EXPECT_TRUE(run.IsEmpty());
        return run.text;
    };
    EXPECT_EQ(refusal(RunOpticalCoupler, block, {light}),
              "Improper number of input ports to OpticalCoupler\n");
    EXPECT_EQ(refusal(RunOpticalCoupler, block, {light, longer}),
              "OpticalCoupler error: incompatible input signals\n");
    EXPECT_EQ(refusal(RunOpticalCoupler, wrong, {light, none}),
              "ERROR: component 'block': parameter 'alpha' is 1.5; it must be between 0 and 1\n");
    EXPECT_EQ(refusal(RunControlledOpticalCoupler, block, {light, none, light}),
              "ControlledOpticalCoupler error: incorrect control input signal type\n");
}

}  // namespace
}  // namespace photrak

#include "models/sources/analog_sine.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <tuple>

#include "support/model_parameters.h"

namespace photrak {
namespace {

struct Sine : Outcome {
    explicit Sine(const AnalogSineParams& params) : Outcome(ElecSigType) {
        status = AnalogSine(params, &output, {"tone", text});
    }
    const ElecSig& Wave() const { return Made<ElecSig>(); }
};

/// Expects Voffset + Vpp/2 sin(2 pi f t + phase) at t = 0, tStep, ...
void ExpectSine(const ElecSig& wave, const AnalogSineParams& params) {
    const long double turn = 2.0L * std::numbers::pi_v<long double>;
    for (std::int32_t i = 0; i < wave.noPoints; ++i) {
        const long double angle =
            turn * static_cast<long double>(params.frequency) * wave.tStep * i + params.phase;
        const long double expected = params.Voffset + params.Vpp / 2.0L * std::sin(angle);
        ASSERT_NEAR(wave.elecSamples[i + 1].re, static_cast<double>(expected), 1e-12) << i;
    }
}

TEST(AnalogSine, FitsWholePeriodsUnlessAperiodic) {
    AnalogSineParams params = ReadAnalogSineParams(nullptr);
    const Sine periodic(params);
    const ElecSig& wave = periodic.Wave();
    EXPECT_EQ(wave.noPoints, 128);
    EXPECT_DOUBLE_EQ(wave.tStep * 128, 4e-9);
    EXPECT_EQ(std::pair(wave.bitRate, wave.patternLength), std::pair(2e9, 8));
    ExpectSine(wave, params);

    params.mode = "Aperiodic";
    params.frequency = 0.77e9;
    params.phase = 0.6;
    const Sine aperiodic(params);
    const ElecSig& other = aperiodic.Wave();
    EXPECT_EQ(std::tuple(other.noPoints, other.tStep, other.bitRate, other.patternLength),
              std::tuple(4096, 3.125e-12, 0.0, 0));
    ExpectSine(other, params);
}

TEST(AnalogSine, RefusesGridsThatAreNone) {
    AnalogSineParams params = ReadAnalogSineParams(nullptr);
    params.noPeriods = INT32_MAX;
    Sine(params).ExpectRefusal("component 'tone': parameter 'noPeriods' is 2.14748e+09");
    params.mode = "Aperiodic";
    params.timeStep = NAN;
    Sine(params).ExpectRefusal("component 'tone': parameter 'timeStep' is nan");
}

}  // namespace
}  // namespace photrak

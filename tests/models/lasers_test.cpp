// Fields of the two lasers against the closed forms of their shapes.
#include "models/sources/lasers.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <tuple>

#include "base/units.h"
#include "support/failure.h"
#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double ps = 1e-12;
constexpr double rounding = 1e-12;  // of a time added up over some hundred samples

CwLaserParams SomeLevel() {
    CwLaserParams params;
    params.peakPower = 4e-3;
    params.wavelength = 1.55e-6;
    params.RIN = 1e-15;
    params.signalType = "TimeSequence";
    params.noSamples = 3;
    params.timeStep = 2 * ps;
    params.phase = 30.0 * radiansPerDegree;
    return params;
}

/// One pulse of 1 W in the middle of 256 samples, 1 ps apart.
ModeLockedLaserParams OnePulse(std::string_view type, double width) {
    ModeLockedLaserParams params;
    params.type = type;
    params.pattern = "Single";
    params.patternLength = 2;
    params.pointsPerBit = 6;
    params.repRate = 1.0 / (64 * ps);
    params.peakPower = 1.0;
    params.wavelength = 1.55e-6;
    params.width = width;
    params.riseTime = params.fallTime = 5 * ps;
    return params;
}

struct Laser : Outcome {
    explicit Laser(const ModeLockedLaserParams& params) : Outcome(OpSigType) {
        status = LaserModeLocked(params, &output, {"laser", text});
    }
    explicit Laser(const CwLaserParams& params) : Outcome(OpSigType) {
        status = LaserCW(params, &output, {"laser", text});
    }
    const OpSig& Channel() const { return *Made<OpSignal>().channels; }
    std::complex<double> Field(std::int32_t i) const { return Value(Channel().Ex_samples[i]); }
    /// At k samples from the middle one.
    std::complex<double> AtOffset(std::int32_t k) const {
        return Field(Channel().noPoints / 2 + 1 + k);
    }
};

TEST(CwLaser, IsAConstantFieldOfThePowerAndPhase) {
    for (const auto& [signalType, exponent, noPoints] :
         {std::tuple{"TimeSequence", 3, 8}, {"TimeSequence", 0, 1}, {"CW", 99, 1}}) {
        CwLaserParams params = SomeLevel();
        params.signalType = signalType;
        params.noSamples = exponent;
        const Laser laser(params);
        const OpSig& channel = laser.Channel();
        ASSERT_EQ(channel.noPoints, noPoints);
        for (std::int32_t i = 1; i <= noPoints; ++i) {
            const auto expected = std::polar(std::sqrt(4e-3), std::numbers::pi / 6);
            EXPECT_NEAR(std::abs(laser.Field(i) - expected), 0.0, 1e-15);
        }
        EXPECT_EQ(channel.tStep, noPoints > 1 ? 2 * ps : 0.0);
    }
}

// Fields in time scales; the widths are the full ones at half the height of the field for
// "gaussian", of the power for the cosines. "raisedCosPow" ends one width from its center.
TEST(ModeLockedLaser, EachShapeMeetsItsClosedFormAndTurnsWithTheSquareOfTime) {
    const double width = 20.5;          // ps
    const auto cosine = [](double x) {  // squared, up to one time scale
        return x < 1.0 ? std::pow(std::cos(std::numbers::pi * x / 2), 2) : 0.0;
    };
    const struct {
        std::string_view type;
        double T;                             // ps
        std::function<double(double)> field;  // at x = |t| / T
    } rows[] = {
        {"gaussian", width / 2 / std::sqrt(2 * std::numbers::ln2),
         [](double x) { return std::exp(-x * x / 2); }},
        {"sech", width / 3.3468106480569846, [](double x) { return 1 / std::cosh(x); }},
        {"raisedCosAmp", width * std::numbers::pi / 2 / std::acos(std::numbers::sqrt2 - 1), cosine},
        {"raisedCosPow", width, [&](double x) { return std::sqrt(cosine(x)); }}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        ModeLockedLaserParams params = OnePulse(row.type, width * ps);
        params.ChirpFactor = -1.5;
        params.phaseShift = 1.0;  // a single pulse ignores it
        const Laser laser(params);
        for (int k = -60; k <= 60; ++k) {
            const double x = std::abs(k) / row.T;
            const auto expected = std::polar(row.field(x), 0.75 * x * x);
            EXPECT_NEAR(std::abs(laser.AtOffset(k) - expected), 0.0, rounding) << k;
        }
    }
}

// P = exp(-ln 2 |t / 10 ps|^m) falls to any level at a time that m tells.
TEST(ModeLockedLaser, SuperGaussianRisesFromTenToNinetyPercentInItsRiseTime) {
    for (const double riseTime : {2.0, 12.0}) {
        ModeLockedLaserParams params = OnePulse("supGaussian", 20 * ps);
        params.riseTime = riseTime * ps;
        const Laser laser(params);
        const double ln2 = std::numbers::ln2, ln10 = std::numbers::ln10;
        const double m = std::log(-std::log(std::norm(laser.AtOffset(12))) / ln2) / std::log(1.2);
        EXPECT_NEAR(std::norm(laser.AtOffset(-7)), std::exp(-ln2 * std::pow(0.7, m)), rounding);
        const double start = std::pow(ln10 / ln2, 1 / m),
                     end = std::pow(std::log(10.0 / 9) / ln2, 1 / m);
        EXPECT_NEAR(10 * (start - end), riseTime, 1e-9);
    }
}

TEST(ModeLockedLaser, OnOffPulseHasTwoRamps) {
    ModeLockedLaserParams params = OnePulse("on_off", 20 * ps);
    params.riseTime = 4 * ps;
    params.fallTime = 8 * ps;  // from -12 to 14 ps, flat from -8 to 6 ps
    const Laser laser(params);
    for (const auto& [k, power] :
         {std::pair{-13, 0.0}, {-11, 0.25}, {-8, 1.0}, {6, 1.0}, {12, 0.25}, {15, 0.0}}) {
        EXPECT_NEAR(std::norm(laser.AtOffset(k)), power, rounding) << k;
    }
}

// A pulse reigns up to and with the end of its slot; the last slot only sees the tail of the pulse
// before it.
TEST(ModeLockedLaser, NeighboringPulsesOfATrainDifferByThePhaseShift) {
    for (const std::int32_t exponent : {0, 1, 3}) {
        // A period of 2^-33 s, so that all times are exact.
        ModeLockedLaserParams params = OnePulse("gaussian", std::exp2(-35));
        params.pattern = "Periodic";
        params.patternLength = exponent;
        params.pointsPerBit = 4;
        params.repRate = std::exp2(33);
        params.phaseShift = std::numbers::pi;
        const Laser laser(params);
        const OpSig& channel = laser.Channel();
        const std::int32_t slots = 1 << exponent;
        ASSERT_EQ(channel.noPoints, 16 * slots);
        EXPECT_EQ(std::tuple(channel.tStep, channel.bitRate, channel.patternLength),
                  std::tuple(std::exp2(-37), std::exp2(33), slots));
        for (std::int32_t t = 0; t < channel.noPoints; ++t) {
            const int slot = std::clamp((t - 1) / 16, 0, std::max(slots - 2, 0));
            const double fromCenter = (t - (slot + 0.5) * 16) / 2;  // in half widths
            const std::complex<double> expected(
                0.0, (slot % 2 ? -1.0 : 1.0) * std::exp2(-fromCenter * fromCenter));
            EXPECT_NEAR(std::abs(laser.Field(t + 1) - expected), 0.0, rounding) << t;
        }
    }
}

// --- Bad input ---

TEST(Lasers, RefuseBadValuesByName) {
    CwLaserParams level = SomeLevel();
    level.peakPower = nan;
    Laser(level).ExpectRefusal("'peakPower' is nan");
    level = SomeLevel();
    level.noSamples = 27;
    Laser(level).ExpectRefusal("'noSamples' is 27");
    Laser(OnePulse("square %s", 20 * ps))
        .ExpectRefusal(
            "Incorrect mode-locked laser pulse type: square %s.\n\nAllowed types are: \n"
            "gaussian, supGaussian, sech, raisedCosAmp, raisedCosPow and on_off.\n");
    ModeLockedLaserParams pulses = OnePulse("sech", 20 * ps);
    pulses.patternLength = 21;
    Laser(pulses).ExpectRefusal("parameter 'pointsPerBit' is 6");
}

TEST(ModeLockedLaser, OnOffPulseShorterThanItsRampsLeavesTheDarkSignalInThePort) {
    ModeLockedLaserParams params = OnePulse("on_off", 20 * ps);
    params.riseTime = 30 * ps;
    params.fallTime = 15 * ps;
    const Laser laser(params);
    EXPECT_EQ(laser.text,
              "Error: on_off type mode-locked laser pulseWidth<(riseTime+fallTime)/2.\n"
              "Pulse width=20 ps, rise time=30 ps, fall time=15 ps\n");
    EXPECT_NE(laser.output.sig, nullptr);
}

TEST(ModeLockedLaser, RiseTimeThatNoSuperGaussianHasEndsTheRun) {
    ModeLockedLaserParams params = OnePulse("supGaussian", 20 * ps);
    params.riseTime = 60 * ps;
    EXPECT_EQ(FailureOf([&] { Laser{params}; }), "Root must be bracketed in SuperGaussian");
}

TEST(Lasers, ReadNoiseInDecibels) {
    ModelBlock block;
    block.Number("RIN", -140);
    EXPECT_NEAR(ReadModeLockedLaserParams(block.component.parameters).RIN, 1e-14, 1e-26);
    EXPECT_NEAR(ReadCwLaserParams(block.component.parameters).RIN, 1e-14, 1e-26);
}

}  // namespace
}  // namespace photrak

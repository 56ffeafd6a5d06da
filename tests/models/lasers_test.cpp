// Fields of the two lasers against the closed forms of their shapes.
#include "models/sources/lasers.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

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
    params.owner = "laser";
    params.peakPower = 4e-3;
    params.wavelength = 1.55e-6;
    params.RIN = 1e-15;
    params.signalType = "TimeSequence";
    params.noSamples = 3;
    params.timeStep = 2 * ps;
    return params;
}

/// One pulse of 1 W in the middle of 256 samples, 1 ps apart.
ModeLockedLaserParams OnePulse(std::string_view type, double width) {
    ModeLockedLaserParams params;
    params.owner = "laser";
    params.type = type;
    params.pattern = "Single";
    params.patternLength = 2;
    params.pointsPerBit = 6;
    params.repRate = 1.0 / (64 * ps);
    params.peakPower = 1.0;
    params.wavelength = 1.55e-6;
    params.width = width;
    params.riseTime = params.fallTime = 4 * ps;
    return params;
}

class Laser {
  public:
    explicit Laser(const ModeLockedLaserParams& params) {
        EXPECT_EQ(LaserModeLocked(params, &output, text), Status::Success) << text;
    }
    explicit Laser(const CwLaserParams& params) {
        EXPECT_EQ(LaserCW(params, &output, text), Status::Success) << text;
    }
    const OpSig& Channel() const { return *output.As<OpSignal>().channels; }
    std::complex<double> Field(std::int32_t i) const { return Value(Channel().Ex_samples[i]); }
    /// At k samples from the middle one.
    std::complex<double> AtOffset(std::int32_t k) const {
        return Field(Channel().noPoints / 2 + 1 + k);
    }

    OutputCell output{OpSigType};
    std::string text;
};

TEST(CwLaser, SampledSignalIsAConstantFieldOfThePowerAndPhase) {
    CwLaserParams params = SomeLevel();
    params.phase = 30.0;
    const Laser laser(params);
    const OpSig& channel = laser.Channel();
    ASSERT_EQ(channel.noPoints, 8);
    for (std::int32_t i = 1; i <= 8; ++i) {
        EXPECT_NEAR(std::norm(laser.Field(i)), 4e-3, 1e-17);
        EXPECT_NEAR(std::arg(laser.Field(i)), std::numbers::pi / 6, rounding);
    }
    EXPECT_EQ(channel.tStep, 2 * ps);
    EXPECT_EQ(channel.RIN, 1e-15);
    EXPECT_EQ(channel.bitRate, 0.0);
    EXPECT_EQ(channel.Ey_samples, nullptr);
}

TEST(CwLaser, OneSampleHasNoTimeStep) {
    CwLaserParams level = SomeLevel(), shortest = SomeLevel();
    level.signalType = "CW";
    level.noSamples = 99;  // not looked at
    shortest.noSamples = 0;
    for (const CwLaserParams& params : {level, shortest}) {
        const Laser laser(params);
        EXPECT_EQ(laser.Channel().noPoints, 1);
        EXPECT_EQ(laser.Channel().tStep, 0.0);
        EXPECT_NEAR(std::norm(laser.Field(1)), 4e-3, 1e-17);
    }
}

TEST(ModeLockedLaser, WidthOfEachShapeIsThatOfItsDefinition) {
    const double sechWidth = 3.3468106480569846;  // time scales
    struct Row {
        std::string_view type;
        double width;     // s
        double fraction;  // of the peak power, 10 ps from the center
    };
    const Row rows[] = {{"gaussian", 20 * ps, 0.25},  // half of the field
                        {"sech", 10 * ps * sechWidth / std::acosh(std::numbers::sqrt2), 0.5},
                        {"supGaussian", 20 * ps, 0.5},
                        {"raisedCosAmp", 20 * ps, 0.5},
                        {"raisedCosPow", 20 * ps, 0.5},
                        {"on_off", 20 * ps, 0.5}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        const Laser laser(OnePulse(row.type, row.width));
        EXPECT_NEAR(std::norm(laser.AtOffset(0)), 1.0, rounding);
        EXPECT_NEAR(std::norm(laser.AtOffset(10)), row.fraction, rounding);
        EXPECT_NEAR(std::norm(laser.AtOffset(-10)), row.fraction, rounding);
        for (std::int32_t i = 1; i <= 256; ++i) ASSERT_EQ(laser.Field(i).imag(), 0.0);
    }
}

TEST(ModeLockedLaser, ShapesMeetTheirClosedFormsAwayFromTheHalfWidth) {
    const double T = 20 * ps;  // "raisedCosPow" ends one width from the center
    const Laser cosine(OnePulse("raisedCosPow", T));
    EXPECT_NEAR(std::norm(cosine.AtOffset(5)), std::pow(std::cos(std::numbers::pi / 8), 2),
                rounding);
    EXPECT_EQ(cosine.AtOffset(21), 0.0);
    const Laser amplitude(OnePulse("raisedCosAmp", 20 * ps));  // field: a squared cosine
    const double scale = std::numbers::pi * 10 / std::acos(std::numbers::sqrt2 - 1);  // ps
    EXPECT_NEAR(std::abs(amplitude.AtOffset(17)),
                std::pow(std::cos(std::numbers::pi * 17 / scale / 2), 2), rounding);
    EXPECT_EQ(amplitude.AtOffset(static_cast<std::int32_t>(scale) + 1), 0.0);
    const Laser gaussian(OnePulse("gaussian", 20 * ps));
    EXPECT_NEAR(std::abs(gaussian.AtOffset(20)), 1.0 / 16.0, rounding);  // twice the half width
}

/// Where the power crosses `level` before the pulse, in samples from its center.
double RisingCrossing(const Laser& laser, double level) {
    std::int32_t k = -laser.Channel().noPoints / 2;
    while (std::norm(laser.AtOffset(k + 1)) < level) ++k;
    const double below = std::norm(laser.AtOffset(k)), above = std::norm(laser.AtOffset(k + 1));
    return k + (level - below) / (above - below);
}

TEST(ModeLockedLaser, SuperGaussianRisesFromTenToNinetyPercentInItsRiseTime) {
    for (const double riseTime : {2.0, 5.0, 12.0}) {
        ModeLockedLaserParams params = OnePulse("supGaussian", 20 * ps);
        params.riseTime = riseTime * ps;
        params.pointsPerBit =
            14;  // 1/256 ps apart: straight lines between samples are good to 1e-4
        const Laser laser(params);
        const double samples = RisingCrossing(laser, 0.9) - RisingCrossing(laser, 0.1);
        EXPECT_NEAR(samples / 256.0, riseTime, 1e-4);
        EXPECT_NEAR(RisingCrossing(laser, 0.5) / 256.0, -10.0, 1e-4);
    }
}

TEST(ModeLockedLaser, ChirpTurnsThePhaseWithTheSquareOfTime) {
    struct Row {
        std::string_view type;
        double T;  // ps, of a width of 20 ps
    };
    const Row rows[] = {
        {"gaussian", 10 / std::sqrt(2 * std::numbers::ln2)},
        {"sech", 20 / 3.3468106480569846},
        {"raisedCosAmp", 10 * std::numbers::pi / std::acos(std::numbers::sqrt2 - 1)},
        {"raisedCosPow", 20},
        {"on_off", 20}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        ModeLockedLaserParams params = OnePulse(row.type, 20 * ps);
        const Laser plain(params);
        params.ChirpFactor = -1.5;
        const Laser chirped(params);
        for (const int k : {-7, -2, 0, 3, 8}) {
            EXPECT_NEAR(std::arg(chirped.AtOffset(k)), 0.75 * k * k / (row.T * row.T), rounding);
            EXPECT_NEAR(std::abs(chirped.AtOffset(k)), std::abs(plain.AtOffset(k)), rounding);
        }
    }
}

TEST(ModeLockedLaser, OnOffPulseHasRampsLinearInPowerOrSharpEdges) {
    ModeLockedLaserParams params = OnePulse("on_off", 20 * ps);
    params.fallTime = 8 * ps;  // from -12 to 14 ps, flat from -8 to 6 ps
    const Laser laser(params);
    const std::pair<int, double> powers[] = {{-13, 0.0}, {-11, 0.25}, {-9, 0.75},
                                             {-8, 1.0},  {0, 1.0},    {6, 1.0},
                                             {8, 0.75},  {12, 0.25},  {15, 0.0}};
    for (const auto& [k, power] : powers) {
        EXPECT_NEAR(std::norm(laser.AtOffset(k)), power, rounding) << k;
    }
    params = OnePulse("on_off", 19 * ps);
    params.riseTime = params.fallTime = 0.0;
    const Laser sharp(params);
    for (int k = -20; k <= 20; ++k) {
        EXPECT_EQ(sharp.AtOffset(k), std::abs(k) <= 9 ? 1.0 : 0.0) << k;
    }
}

/// A period of 2^-33 s, so that all times are exact.
ModeLockedLaserParams Train(std::int32_t patternLength) {
    ModeLockedLaserParams params = OnePulse("gaussian", std::exp2(-35));
    params.pattern = "Periodic";
    params.patternLength = patternLength;
    params.pointsPerBit = 4;
    params.repRate = std::exp2(33);
    params.phaseShift = std::numbers::pi;
    return params;
}

TEST(ModeLockedLaser, NeighboringPulsesOfATrainDifferByThePhaseShift) {
    const Laser laser(Train(2));
    const OpSig& channel = laser.Channel();
    ASSERT_EQ(channel.noPoints, 64);
    EXPECT_EQ(channel.tStep, std::exp2(-37));
    EXPECT_EQ(channel.bitRate, std::exp2(33));
    EXPECT_EQ(channel.patternLength, 4);
    EXPECT_EQ(channel.startTime, 0.0);
    for (std::int32_t i = 1; i <= 64; ++i) {
        const int t = i - 1;  // in samples; a pulse reigns up to and with the end of its slot
        const int slot = t <= 16 ? 1 : t <= 32 ? 2 : 3;
        const double fromCenter = (t - (slot - 0.5) * 16) / 2;  // in half widths
        const std::complex<double> expected(
            0.0, (slot == 2 ? -1.0 : 1.0) * std::exp2(-fromCenter * fromCenter));
        EXPECT_NEAR(std::abs(laser.Field(i) - expected), 0.0, rounding) << i;
    }
}

TEST(ModeLockedLaser, TrainNeverMovesOnIntoItsLastSlot) {
    for (const std::int32_t exponent : {0, 1, 3}) {
        const Laser laser(Train(exponent));
        const std::int32_t slots = 1 << exponent, pulses = std::max(1, slots - 1);
        for (std::int32_t slot = 1; slot <= slots; ++slot) {
            const double peak = std::norm(laser.Field(16 * slot - 7));
            EXPECT_NEAR(peak, slot <= pulses ? 1.0 : 0.0, 1e-9) << slot << " of " << slots;
        }
    }
}

TEST(ModeLockedLaser, SinglePulseIgnoresThePhaseShiftAndStandsInMidWindow) {
    ModeLockedLaserParams params = Train(3);
    params.pattern = "Single";
    params.repRate = 1.23456789e10;
    params.width = 10 * ps;
    const Laser laser(params);
    EXPECT_NEAR(std::abs(laser.Field(65) - 1.0), 0.0, rounding);
    EXPECT_NEAR(std::norm(laser.Field(64)), std::norm(laser.Field(66)), rounding);
}

// --- Bad input ---

template <class Params>
struct BadRow {
    std::function<void(Params&)> spoil;
    std::string_view text;
};

TEST(Lasers, RefuseBadValuesByName) {
    const BadRow<CwLaserParams> levels[] = {
        {[](CwLaserParams& p) { p.noSamples = 27; }, "'noSamples' is 27"},
        {[](CwLaserParams& p) { p.timeStep = 0.0; }, "'timeStep' is 0"},
        {[](CwLaserParams& p) { p.peakPower = nan; }, "'peakPower' is nan"}};
    using Params = ModeLockedLaserParams;
    const BadRow<Params> pulses[] = {
        {[](Params& p) { p.patternLength = 20; }, "parameter 'pointsPerBit' is 7"},
        {[](Params& p) { p.patternLength = -3; }, "parameter 'patternLength' is -3"},
        {[](Params& p) { p.repRate = 1e308; }, "parameter 'repRate' is 1e+308"},
        {[](Params& p) { p.width = 0.0; }, "parameter 'width' is 0"},
        {[](Params& p) { p.fallTime = -ps; }, "parameter 'fallTime' is -1e-12"},
        {[](Params& p) { p.type = "square %s"; },
         "Incorrect mode-locked laser pulse type: square %s.\n\nAllowed types are: \n"
         "gaussian, supGaussian, sech, raisedCosAmp, raisedCosPow and on_off.\n"}};
    const auto expectRefusal = [](const auto& rows, auto good, auto run) {
        for (const auto& row : rows) {
            auto params = good;
            row.spoil(params);
            OutputCell output(OpSigType);
            std::string text;
            EXPECT_EQ(run(params, &output, text), Status::Error);
            EXPECT_NE(text.find(row.text), std::string::npos) << text;
            EXPECT_EQ(output.sig, nullptr);
        }
    };
    expectRefusal(levels, SomeLevel(), LaserCW);
    Params pulse = OnePulse("on_off", 20 * ps);
    pulse.pointsPerBit = 7;
    expectRefusal(pulses, pulse, LaserModeLocked);
}

TEST(ModeLockedLaser, OnOffPulseShorterThanItsRampsLeavesTheDarkSignalInThePort) {
    ModeLockedLaserParams params = OnePulse("on_off", 20 * ps);
    params.riseTime = 30 * ps;
    params.fallTime = 15 * ps;
    OutputCell output(OpSigType);
    std::string text;
    EXPECT_EQ(LaserModeLocked(params, &output, text), Status::Error);
    EXPECT_EQ(text,
              "Error: on_off type mode-locked laser pulseWidth<(riseTime+fallTime)/2.\n"
              "Pulse width=20 ps, rise time=30 ps, fall time=15 ps\n");
    ASSERT_NE(output.sig, nullptr);
    EXPECT_EQ(output.As<OpSignal>().channels->noPoints, 256);
    EXPECT_EQ(Value(output.As<OpSignal>().channels->Ex_samples[129]), 0.0);
}

TEST(ModeLockedLaser, RiseTimeThatNoSuperGaussianHasEndsTheRun) {
    for (const double riseTime : {0.1 * ps, 60 * ps, nan}) {
        ModeLockedLaserParams params = OnePulse("supGaussian", 20 * ps);
        params.riseTime = riseTime;
        OutputCell output(OpSigType);
        std::string text;
        EXPECT_EQ(FailureOf([&] { (void)LaserModeLocked(params, &output, text); }),
                  "Root must be bracketed in SuperGaussian");
        EXPECT_EQ(output.sig, nullptr);
    }
}

TEST(ModeLockedLaser, ExhaustedMemoryIsReportedUnderTheCommonName) {
    for (const std::int64_t refused : {1, 2, 3}) {
        OutputCell pulses(OpSigType);
        std::string text;
        RefuseAllocationsFrom(refused);
        const Status status = LaserModeLocked(OnePulse("sech", 20 * ps), &pulses, text);
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(status, Status::Error);
        EXPECT_EQ(text, "Error in creating OpSig in LaserCW().\n");
        EXPECT_EQ(pulses.sig, nullptr);
    }
}

TEST(Lasers, ReadDecibelsOfNoiseAndAcceptSettingsWithoutEffect) {
    ModelBlock block("L1");
    block.Number("RIN", -140).Number("k", 5).Number("delta", 5);
    EXPECT_NEAR(ReadModeLockedLaserParams(block.component).RIN, 1e-14, 1e-26);
    EXPECT_NEAR(ReadCwLaserParams(block.component).RIN, 1e-14, 1e-26);
}

}  // namespace
}  // namespace photrak

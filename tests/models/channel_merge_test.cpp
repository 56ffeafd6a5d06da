// Joining, merging and splitting of optical signals against sums worked out by hand.
#include "models/optical/channel_merge.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

#include "models/optical/signal_join.h"
#include "models/optical/splitter.h"
#include "models/optical_fixture.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

constexpr double c = 299792458.0;
constexpr double ps = 1e-12;
constexpr std::int32_t n = 64;
constexpr double binWidth = 1.0 / (n * ps);  // Hz
constexpr double f0 = 193.1e12;
constexpr double rounding = 1e-12;  // of fields of about 1

/// Two levels of 1 W and 4 W, to the nearest bin four above and four below their mean.
Owned<OpSignal> TwoLevels() {
    Owned<OpSignal> signal = Carrier(1.0, n, c / (f0 + 3.7 * binWidth));
    AppendChannel(*signal, Carrier(4.0, n, c / (f0 - 3.7 * binWidth)));
    return signal;
}

Owned<OpSig> Merged(const OpSignal& signal) {
    Owned<OpSig> merged;
    std::string text;
    EXPECT_EQ(MergeChannels(signal.channels, merged, text), Status::Success) << text;
    return merged;
}

TEST(ChannelMerge, FieldsBeatAroundTheMeanCarrier) {
    const Owned<OpSig> merged = Merged(*TwoLevels());
    EXPECT_NEAR(c / merged->wavelength, f0, 1.0);
    EXPECT_EQ(merged->Ey_samples, nullptr);
    for (std::int32_t i = 1; i <= n; ++i) {
        // A higher frequency turns clockwise: exp(-2 pi j f t).
        const double angle = 2.0 * std::numbers::pi * 4.0 * (i - 1) / n;
        const std::complex<double> expected = std::polar(1.0, -angle) + std::polar(2.0, angle);
        EXPECT_NEAR(std::abs(Value(merged->Ex_samples[i]) - expected), 0.0, rounding) << i;
    }
    EXPECT_NEAR(AverageOpSigPower(merged.get()), 5.0, rounding);
}

TEST(ChannelMerge, PulsesKeepTheirTimeAndPolarization) {
    Owned<OpSignal> signal = Carrier(0.0, n, c / f0);
    OpSig& second = AppendChannel(*signal, Carrier(0.0, n, c / f0));
    ASSERT_EQ(AddEySamples(&second), 0);
    signal->channels->startTime = 0.0;
    second.startTime = 4 * ps;
    signal->channels->Ex_samples[11].re = 1.0;  // both at 10 ps
    second.Ey_samples[7].re = 3.0;
    signal->channels->bitRate = 1e10;
    signal->channels->patternLength = 16;
    signal->channels->RIN = 1e-15;
    const Owned<OpSig> merged = Merged(*signal);
    EXPECT_DOUBLE_EQ(merged->startTime, 2 * ps);
    for (std::int32_t i = 1; i <= n; ++i) {
        EXPECT_NEAR(merged->Ex_samples[i].re, i == 9 ? 1.0 : 0.0, rounding) << i;
        EXPECT_NEAR(merged->Ey_samples[i].re, i == 9 ? 3.0 : 0.0, rounding) << i;
    }
    EXPECT_EQ(merged->tStep, ps);
    EXPECT_EQ(merged->bitRate, 1e10);
    EXPECT_EQ(merged->patternLength, 16);
    EXPECT_EQ(merged->RIN, 1e-15);
    EXPECT_EQ(signal->channels->Ex_samples[11].re, 1.0) << "the channels stay as they are";
}

TEST(ChannelMerge, OneChannelOrLevelStaysAndNoneGivesNone) {
    const Owned<OpSignal> ramp = Carrier(1.0, n, c / f0);
    FillRamp(ramp->channels->Ex_samples, n, 0.0);
    const Owned<OpSig> one = Merged(*ramp);
    for (std::int32_t i = 1; i <= n; ++i) {
        EXPECT_NEAR(one->Ex_samples[i].re, i, n * rounding);
    }
    const Owned<OpSignal> level = Carrier(4.0, 1, c / f0);
    level->channels->tStep = 0.0;
    EXPECT_EQ(Value(Merged(*level)->Ex_samples[1]), 2.0);
    level->channels->next = nullptr;
    FreeOpSigList(&level->channels);
    EXPECT_EQ(Merged(*level), nullptr);
}

TEST(ChannelMerge, RefusesChannelsThatShareNoGrid) {
    const struct {
        std::function<void(OpSig& first, OpSig& second)> spoil;
        std::string_view text;
    } rows[] = {
        {[](OpSig&, OpSig& b) { b.tStep = 2 * ps; },
         "ERROR merging input signals: time steps do not match\n"},
        {[](OpSig&, OpSig& b) { b.noPoints = n / 2; },
         "ERROR merging input signals: number of data points do not match\n"},
        {[](OpSig&, OpSig& b) { b.wavelength = c / (f0 - 60 * binWidth); },
         "ERROR merging optical signals: signal sampling rate too low\n"},
        {[](OpSig&, OpSig& b) { b.wavelength = std::numeric_limits<double>::quiet_NaN(); },
         "out of range\n"},
        {[](OpSig&, OpSig& b) { b.startTime = std::numeric_limits<double>::infinity(); },
         "out of range\n"},
        {[](OpSig& a, OpSig& b) { a.noPoints = b.noPoints = n - 1; }, "no power of two\n"},
        {[](OpSig& a, OpSig& b) { a.tStep = b.tStep = 0.0; }, "the time step is not above 0\n"}};
    for (const auto& row : rows) {
        const Owned<OpSignal> signal = TwoLevels();
        row.spoil(*signal->channels, *signal->channels->next);
        Owned<OpSig> merged;
        std::string text;
        EXPECT_EQ(MergeChannels(signal->channels, merged, text), Status::Error);
        EXPECT_NE(text.find(row.text), std::string::npos) << text;
        EXPECT_EQ(merged, nullptr);
    }
    // The farthest that the window holds: n - 1 bins.
    const Owned<OpSignal> wide = TwoLevels();
    wide->channels->next->wavelength = c / (f0 - 58.9 * binWidth);
    EXPECT_NE(Merged(*wide), nullptr);
}

TEST(SignalJoin, SortsChannelsAndSumsNoiseOnOneGrid) {
    OpSignals parts;
    parts.push_back(Carrier(1.0, 2, 1.552e-6));
    AppendChannel(*parts[0], Carrier(1.0, 2, 1.550e-6));
    AddNoise(*parts[0], 100.0, 2.0, {1, 3, 5});  // 100, 102, 104
    AddNoise(*parts[0], 100.0, 4.0, {10, 20});   // 100, 104
    parts.emplace_back();                        // a port without a signal
    parts.push_back(Carrier(1.0, 2, 1.551e-6));
    AddNoise(*parts[2], 103.0, 1.0, {7, 7, 7.5});  // 103, 104, 105
    Owned<OpSignal> joined;
    std::string text;
    ASSERT_EQ(JoinSignals("MUX", parts, joined, text), Status::Success) << text;
    double wavelength = 1.550e-6;
    const OpSig* before = nullptr;
    for (const OpSig& channel : Items(joined->channels)) {
        EXPECT_NEAR(channel.wavelength, wavelength, 1e-15);
        EXPECT_EQ(channel.prev, before);
        before = &channel;
        wavelength += 1e-9;
    }
    EXPECT_NEAR(wavelength, 1.553e-6, 1e-15);
    const OpSigASE& noise = *joined->noise;
    ASSERT_EQ(noise.noPoints, 6);
    EXPECT_EQ(noise.fstart, 100.0);
    EXPECT_EQ(noise.fstep, 1.0);
    const double expected[] = {0, 1 + 10, 2 + 12.5, 3 + 15, 4 + 17.5 + 7, 5 + 20 + 7, 7.5};
    for (int i = 1; i <= 6; ++i) EXPECT_DOUBLE_EQ(noise.powerSamples[i], expected[i]) << i;
    EXPECT_EQ(noise.next, nullptr);
}

TEST(SignalJoin, WithoutNoiseThereIsNoneAndAbsurdGridsAreRefused) {
    OpSignals parts;
    parts.push_back(Carrier(1.0));
    Owned<OpSignal> joined;
    std::string text;
    ASSERT_EQ(JoinSignals("MUX", parts, joined, text), Status::Success);
    EXPECT_EQ(joined->noise, nullptr);
    for (const double step : {1e-3, 0.0, std::numeric_limits<double>::quiet_NaN()}) {
        OpSignals absurd;
        absurd.push_back(Carrier(1.0));
        AddNoise(*absurd[0], 1e14, step, {1, 2});
        AddNoise(*absurd[0], 1e13, 1e12, {1, 2});
        text.clear();
        EXPECT_EQ(JoinSignals("AddMux", absurd, joined, text), Status::Error);
        EXPECT_NE(text.find("ERROR in AddMux: could not sum ASE noise spectra\n"),
                  std::string::npos);
    }
}

TEST(OpticalSplitter, SharesPowerAndNoiseEvenly) {
    const Owned<OpSignal> light = Carrier(3.0);
    ASSERT_EQ(AddEySamples(light->channels), 0);
    light->channels->Ey_samples[1].re = 6.0;
    AddNoise(*light, 1e14, 1e9, {6, 12});
    Nodelist input{nullptr, OpSigType, light.get()};
    OutputCell third(UnknownSigType), second(UnknownSigType), first(UnknownSigType);
    first.next = &second;
    second.next = &third;
    std::string text;
    ASSERT_EQ(SplitSignal("S", 0.5, &input, &first, text), Status::Success) << text;
    for (const OutputCell* output : {&first, &second, &third}) {
        EXPECT_EQ(output->sigType, OpSigType);
        const auto& copy = output->As<OpSignal>();
        EXPECT_NEAR(AverageOpSigPower(copy.channels), 12.0 * 0.5 / 3.0, rounding);
        EXPECT_NEAR(copy.noise->powerSamples[2], 2.0, rounding);
    }
    OutputCell dark(OpSigType);
    EXPECT_EQ(SplitSignal("S", -0.5, &input, &dark, text), Status::Error);
    EXPECT_NE(text.find("parameter 'transmission' is -0.5"), std::string::npos);
    input.sigType = ElecSigType;
    text.clear();
    EXPECT_EQ(SplitSignal("S", 0.5, &input, &dark, text), Status::Error);
    EXPECT_EQ(text, "Invalid signal in user model.");
    EXPECT_EQ(dark.sig, nullptr);
}

}  // namespace
}  // namespace photrak

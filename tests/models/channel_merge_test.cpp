// Joining, merging and splitting of optical signals against sums worked out by hand.
#include "models/optical/channel_merge.h"

#include <functional>

#include "models/block_run.h"
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
    EXPECT_EQ(MergeChannels(signal.channels, merged, {"mux", text}), Status::Success) << text;
    return merged;
}

TEST(ChannelMerge, FieldsBeatAroundTheMeanCarrier) {
    const Owned<OpSig> merged = Merged(*TwoLevels());
    EXPECT_NEAR(c / merged->wavelength, f0, 1.0);
    EXPECT_EQ(merged->Ey_samples, nullptr);
    const Owned<OpSignal> upper = Tone(n, 4, 1.0), lower = Tone(n, -4, 1.0);
    for (std::int32_t i = 1; i <= n; ++i) {
        const Field above = Value(upper->channels->Ex_samples[i]),
                    below = Value(lower->channels->Ex_samples[i]);
        ExpectField(merged->Ex_samples[i], above + 2.0 * below, rounding);
    }
    EXPECT_NEAR(AverageOpSigPower(merged.get()), 5.0, rounding);
}

TEST(ChannelMerge, PulsesKeepTheirTimeAndPolarization) {
    Owned<OpSignal> signal = Carrier(0.0, n, c / f0);
    OpSig &first = *signal->channels, &second = AppendChannel(*signal, Carrier(0.0, n, c / f0));
    ASSERT_EQ(AddEySamples(&second), 0);
    first.startTime = 2 * ps;
    second.startTime = 6 * ps;
    first.Ex_samples[9].re = 1.0;  // both at 10 ps
    second.Ey_samples[5].re = 3.0;
    const Owned<OpSig> merged = Merged(*signal);
    for (std::int32_t i = 1; i <= n; ++i) {
        ExpectField(merged->Ex_samples[i], i == 7 ? 1.0 : 0.0, rounding);
        ExpectField(merged->Ey_samples[i], i == 7 ? 3.0 : 0.0, rounding);
    }
    EXPECT_DOUBLE_EQ(merged->startTime, 4 * ps);
    EXPECT_EQ(first.Ex_samples[9].re, 1.0) << "the channels stay as they are";
}

TEST(ChannelMerge, RefusesChannelsThatShareNoGrid) {
    using S = OpSig;
    const struct {
        std::function<void(S& first, S& second)> spoil;
        std::string_view text;
    } rows[] = {{[](S&, S& b) { b.tStep = 2 * ps; }, "time steps do not match\n"},
                {[](S&, S& b) { b.noPoints = n / 2; }, "number of data points do not match\n"},
                {[](S&, S& b) { b.wavelength = c / (f0 - 60 * binWidth); },
                 "ERROR merging optical signals: signal sampling rate too low\n"},
                {[](S&, S& b) { b.wavelength = NAN; }, "out of range\n"},
                {[](S& a, S& b) { a.noPoints = b.noPoints = n - 1; }, "no power of two\n"}};
    for (const auto& row : rows) {
        const Owned<OpSignal> signal = TwoLevels();
        row.spoil(*signal->channels, *signal->channels->next);
        Owned<OpSig> merged;
        std::string text;
        EXPECT_EQ(MergeChannels(signal->channels, merged, {"mux", text}), Status::Error);
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
    AddNoise(*parts[0], 100.0, 2.0, {1, 3, 5});    // 100, 102, 104
    AddNoise(*parts[0], 103.0, 1.0, {7, 7, 7.5});  // 103, 104, 105
    parts.emplace_back();                          // a port without a signal
    parts.push_back(Carrier(1.0, 2, 1.551e-6));
    AddNoise(*parts[2], 100.0, 4.0, {10, 20});  // 100, 104
    Owned<OpSignal> joined;
    std::string text;
    ASSERT_EQ(JoinSignals("MUX", parts, joined, {"mux", text}), Status::Success) << text;
    double nanometers = 1550.0;
    for (const OpSig& channel : Items(joined->channels)) {
        EXPECT_NEAR(channel.wavelength * 1e9, nanometers++, 1e-6);
    }
    EXPECT_EQ(nanometers, 1553.0);
    const OpSigASE& noise = *joined->noise;
    ASSERT_EQ(noise.noPoints, 6);
    EXPECT_EQ(noise.fstart, 100.0);
    EXPECT_EQ(noise.fstep, 1.0);
    const double expected[] = {0, 1 + 10, 2 + 12.5, 3 + 15, 4 + 17.5 + 7, 5 + 20 + 7, 7.5};
    for (int i = 1; i <= 6; ++i) EXPECT_DOUBLE_EQ(noise.powerSamples[i], expected[i]) << i;
}

TEST(SignalJoin, RefusesAbsurdGrids) {
    for (const double step : {1e-3, 0.0, double{NAN}}) {
        OpSignals absurd;
        absurd.push_back(Carrier(1.0));
        AddNoise(*absurd[0], 1e14, step, {1, 2});
        AddNoise(*absurd[0], 1e13, 1e12, {1, 2});
        Owned<OpSignal> joined;
        std::string text;
        EXPECT_EQ(JoinSignals("AddMux", absurd, joined, {"mux", text}), Status::Error);
        EXPECT_TRUE(text.ends_with("ERROR in AddMux: could not sum ASE noise spectra\n")) << text;
    }
}

TEST(OpticalSplitter, SharesPowerAndNoiseEvenly) {
    const Owned<OpSignal> light = Carrier(3.0);
    ASSERT_EQ(AddEySamples(light->channels), 0);
    light->channels->Ey_samples[1].re = 6.0;
    AddNoise(*light, 1e14, 1e9, {6, 12});
    ModelBlock block("S");
    block.Number("transmission", 0.5);
    const BlockRun run(RunOpticalSplitter, block, {light}, 3);
    for (const std::size_t port : {0, 1, 2}) {
        EXPECT_NEAR(AverageOpSigPower(&run.Channel(port)), 12.0 * 0.5 / 3.0, rounding);
        EXPECT_NEAR(run.Light(port).noise->powerSamples[2], 2.0, rounding);
    }
    EXPECT_EQ(BlockRun(RunOpticalSplitter, block, {Owned<ElecSig>()}).text,
              "Invalid signal in user model.");
}

}  // namespace
}  // namespace photrak

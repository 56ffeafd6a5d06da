// The common time grid of plotted signals, against straight lines whose values are known anywhere.
#include "kernel/align.h"

#include <limits>
#include <vector>

#include "support/signals.h"

namespace photrak {
namespace {

const ElecSig& Waveform(const Nodelist& cell) {
    return *static_cast<const ElecSig*>(cell.sig);
}
const OpSig& Channel(const Nodelist& cell) {
    return *static_cast<const OpSignal*>(cell.sig)->channels;
}

std::int32_t Align(const Owned<Nodelist>& list, std::int32_t flag, Owned<Nodelist>& clones) {
    return Make(clones, [&](Nodelist** place) { return AlignSignals(list.get(), flag, place); });
}

TEST(ResampleLinear, FollowsAStraightLineAndIsZeroBeyondIt) {
    Complex source[6];
    FillRamp(source, 5, 0.0);
    Complex target[13];
    ResampleLinear(source, 5, 1.0, target, 12, 0.5);
    for (int i = 0; i < 12; ++i) {
        SCOPED_TRACE(i);
        const double t = 0.5 * i;
        // From the time of the last sample on there is no pair to interpolate between.
        const double value = t < 4.0 ? 1.0 + t : 0.0;
        EXPECT_EQ(Value(target[i + 1]), std::complex(value, -value));
    }
}

TEST(AlignSignals, PadsOneSignalToAPowerOfTwo) {
    const double d = 1e-12;
    Owned<Nodelist> list, clones;
    PushCell(list, RampWaveform(1000, d), ElecSigType);
    static_cast<ElecSig*>(list->sig)->bitRate = 10.4e9;
    ASSERT_EQ(Align(list, 1, clones), 2);
    const ElecSig& sig = Waveform(*clones);
    ASSERT_EQ(sig.noPoints, 1024);
    EXPECT_EQ(sig.patternLength, 11);  // 10.64 bits in 1.023 ns
    EXPECT_NEAR(sig.elecSamples[999].re, 999, 1e-9);
    for (int i = 1001; i <= 1024; ++i) EXPECT_EQ(Value(sig.elecSamples[i]), 0.0);
    EXPECT_EQ(Waveform(*list).noPoints, 1000);  // the input itself is untouched
}

TEST(AlignSignals, TakesTheLongestDurationAndTheFinestStep) {
    Owned<Nodelist> list, clones;
    PushCell(list, Alone(RampChannel(1, 0.0)), OpSigType);  // continuous light
    PushCell(list, AlternatingBits(3), BinSigType);
    PushCell(list, RampWaveform(9, 2.0), ElecSigType);  // 16 s
    PushCell(list, RampWaveform(6, 1.0), ElecSigType);  // 5 s
    ASSERT_EQ(Align(list, 1, clones), 2);
    const Nodelist& coarse = *clones->next;
    const Nodelist& light = *coarse.next->next;
    EXPECT_EQ(Waveform(*clones).noPoints, 32);
    ASSERT_EQ(Waveform(coarse).noPoints, 32);
    EXPECT_EQ(Waveform(coarse).tStep, 1.0);
    EXPECT_EQ(Waveform(coarse).elecSamples[4].re, 2.5);
    ASSERT_EQ(Channel(light).noPoints, 32);
    EXPECT_EQ(Channel(light).fftView[63], 1.0);
    EXPECT_EQ(static_cast<const BinSig*>(coarse.next->sig)->noPoints, 3);
}

// Three steps of 2.4 s are eight of 0.9 s, although their quotient is below 8 in doubles.
TEST(AlignSignals, CountsWholeStepsInSpiteOfRounding) {
    ASSERT_LT(3 * 2.4 / 0.9, 8.0);
    Owned<Nodelist> list, clones;
    PushCell(list, RampWaveform(4, 2.4), ElecSigType);
    PushCell(list, RampWaveform(2, 0.9), ElecSigType);
    ASSERT_EQ(Align(list, 1, clones), 2);
    EXPECT_EQ(Waveform(*clones).noPoints, 16) << "nine samples, and the next power of two";
}

// By design: a plot of several grids with polarized light is refused.
TEST(AlignSignals, PolarizedChannelsAreNotResampled) {
    Owned<Nodelist> list;
    PushCell(list, RampWaveform(7, 1.0), ElecSigType);
    PushCell(list, Alone(RampChannel(8, 1.0, Polarized::Yes)), OpSigType);
    PushCell(list, RampWaveform(16, 1.0), ElecSigType);
    Nodelist* clones = list.get();
    EXPECT_EQ(AlignSignals(list.get(), 1, &clones), 1);
    EXPECT_EQ(clones, nullptr);
}

TEST(AlignSignals, RefusesTimesThatNoGridCanHold) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* name;
        double longStep, shortStep, bitRate;
        std::int32_t result;
    } rows[] = {
        {"above 2^26 samples", 1.0, 0x1p-26, 1.0, 1},
        {"step that is no number", nan, 1.0, 1.0, 1},
        {"bit rate beyond every count", 1.0, 0.5, 1e300, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Owned<Nodelist> list, clones;
        PushCell(list, RampWaveform(3, row.longStep), ElecSigType);
        PushCell(list, RampWaveform(3, row.shortStep), ElecSigType);
        static_cast<ElecSig*>(list->sig)->bitRate = row.bitRate;
        EXPECT_EQ(Align(list, 1, clones), row.result);
        EXPECT_EQ(clones == nullptr, row.result == 1);
    }
}

}  // namespace
}  // namespace photrak

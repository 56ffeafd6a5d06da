// Records of signals: sizes at the edges, what is taken over and what is not, who owns what, and
// what a refused allocation leaves.
#include "kernel/signals.h"

#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "base/memory.h"
#include "kernel/align.h"
#include "support/signals.h"

namespace photrak {
namespace {

TEST(Signals, SizesAtTheEdges) {
    for (std::int32_t n : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        SCOPED_TRACE(n);
        Owned<OpSig> channel, copy;
        ASSERT_EQ(Make(channel, CreateOpSig, n), 0);
        EXPECT_EQ(channel->noPoints, n);
        EXPECT_EQ(channel->fftView, nullptr);
        EXPECT_EQ(AddEySamples(channel.get()), 0);
        EXPECT_EQ(Make(copy, CopyOpSig, channel.get()), 0);
        Owned<ElecSig> waveform;
        EXPECT_EQ(Make(waveform, CreateElecSig, n), n < 0 ? 1 : 0);
        Owned<BinSig> bits;
        EXPECT_EQ(Make(bits, CreateBinSig, n), n < 0 ? 1 : 0);
    }
    BinSig manyBits{};
    manyBits.noPoints = 70000;
    Owned<OpSig> channel;
    EXPECT_EQ(Make(channel, CreateOpSigFromBin, &manyBits, 70000), 1);
}

TEST(Signals, ResizeGivesZerosAndNewViewsOnlyIfTheSizeChanges) {
    const Owned<OpSig> channel = RampChannel(3, 1.0, Polarized::Yes);
    ASSERT_EQ(ResizeOpSig(channel.get(), 3), 0);
    EXPECT_EQ(channel->fftView[6], -3.0);
    EXPECT_EQ(channel->Ey_samples[3].re, 103.0);
    ASSERT_EQ(ResizeOpSig(channel.get(), 5), 0);
    channel->fftView[9] = 7.0;
    EXPECT_EQ(Value(channel->Ex_samples[5]), std::complex(7.0));
    EXPECT_EQ(Value(channel->Ex_samples[1]), 0.0);
    EXPECT_EQ(Value(channel->Ey_samples[5]), 0.0);
}

/// What a waveform says of time, comparable.
template <class Waveform>
auto TimeAxis(const Waveform& sig) {
    return std::tuple(sig.noPoints, sig.tStep, sig.startTime, sig.bitRate, sig.patternLength,
                      sig.spareCount, sig.domain);
}

TEST(Signals, SignalsMadeFromOthersTakeTheTimeAxis) {
    const Owned<BinSig> bits = AlternatingBits(8);
    Owned<OpSig> channel;
    ASSERT_EQ(Make(channel, CreateOpSigFromBin, bits.get(), 16), 0);
    EXPECT_EQ(channel->noPoints, 128);
    EXPECT_EQ(channel->patternLength, 8);
    EXPECT_DOUBLE_EQ(channel->tStep, 6.25e-12);  // a bit of 100 ps in 16 samples

    channel->spareCount = 4;
    channel->domain = FreqDomain;
    Owned<ElecSig> waveform;
    ASSERT_EQ(Make(waveform, CreateElecSigFromOp, channel.get()), 0);
    EXPECT_EQ(TimeAxis(*waveform), TimeAxis(*channel));
    Owned<BinSig> received;
    ASSERT_EQ(Make(received, CreateBinSigFromElec, waveform.get()), 0);
    EXPECT_EQ(received->noPoints, 8);
}

TEST(Signals, CopiesAreDeepAndLeaveLinksAndWorkArraysBehind) {
    const Owned<OpSignal> source = Multiplex(4, 2.0);
    int fiberRecord = 0;
    OpSig& first = *source->channels;
    first.fos = &fiberRecord;
    first.auxSamples = static_cast<Complex*>(AllocateZeroed(5, sizeof(Complex)));
    Owned<OpSignal> copy;
    ASSERT_EQ(Make(copy, CopyOpSignal, source.get()), 0);
    first.fos = nullptr;

    const OpSig& channel = *copy->channels;
    EXPECT_EQ(channel.fos, nullptr);
    EXPECT_EQ(channel.auxSamples, nullptr);
    EXPECT_EQ(channel.Ey_samples, nullptr);
    first.Ex_samples[4] = {};
    EXPECT_EQ(Value(channel.Ex_samples[4]), std::complex(4.0, -4.0));
    EXPECT_EQ(TimeAxis(channel), TimeAxis(first));
    EXPECT_EQ(std::pair(channel.RIN, channel.wavelength), std::pair(1e-15, 1.55e-6));
    ASSERT_NE(channel.next, nullptr);
    EXPECT_EQ(channel.next->prev, &channel);
    EXPECT_EQ(channel.next->Ey_samples[4].re, 104.0);
    ASSERT_NE(copy->noise->next, nullptr);
    EXPECT_EQ(copy->noise->next->powerSamples[5], 5.0);

    const Owned<ElecSig> waveform = RampWaveform(4, 2.0);
    Owned<ElecSig> waveformCopy;
    ASSERT_EQ(Make(waveformCopy, CopyElecSig, waveform.get()), 0);
    EXPECT_EQ(TimeAxis(*waveformCopy), TimeAxis(*waveform));
    EXPECT_EQ(waveformCopy->sigmaFftView[8], -1004.0);
}

TEST(Signals, ChannelInPropagationRefusesToBeFreed) {
    Owned<OpSignal> pair = Multiplex(4, 1.0);
    int fiberRecord = 0;
    OpSig* head = pair->channels;
    OpSig* second = head->next;
    second->fos = &fiberRecord;
    EXPECT_EQ(FreeOpSig(&second), 1);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(FreeOpSigList(&pair->channels), 1);
    EXPECT_EQ(pair->channels, head);
    EXPECT_EQ(head->next, second);  // the head still owns a whole list

    // A node that drops the signal leaves pair and channels to the fiber.
    auto* record = new SigRecord;
    record->sigType = OpSigType;
    record->sig = pair.get();
    FreeSigRecord(&record);
    EXPECT_EQ(record, nullptr);
    EXPECT_EQ(pair->channels, head);
    EXPECT_NE(pair->noise, nullptr);

    second->fos = nullptr;
    OpSignal* reference = pair.get();
    EXPECT_EQ(FreeOpSignal(&reference), 0);
    EXPECT_EQ(reference, pair.get());  // the pair stays, emptied
    EXPECT_EQ(pair->channels, nullptr);
    EXPECT_EQ(pair->noise, nullptr);
}

/// Runs with the allocation number k and all after it refused.
using Operation = std::function<std::int32_t(std::int64_t k)>;

std::int64_t asked = 0;  // allocations asked for by the last call under test

/// A creating operation; its place, full of rubbish before, must be empty after a failure.
template <class T, class Create, class... Arguments>
Operation Creating(Create create, Arguments... arguments) {
    return [=](std::int64_t k) {
        T rubbish{};
        T* made = &rubbish;
        const std::int64_t before = AllocationCount();
        RefuseAllocationsFrom(k);
        const std::int32_t result = create(&made, arguments...);
        RefuseAllocationsFrom(-1);
        asked = AllocationCount() - before;
        EXPECT_EQ(made == nullptr, result == 1);
        Owned<T> owner(made);
        return result;
    };
}

TEST(SignalMemory, OperationsSurviveTheRefusalOfEachAllocation) {
    const Owned<BinSig> bitsOwner = AlternatingBits(5);
    const Owned<ElecSig> waveformOwner = RampWaveform(5, 1.0);
    const Owned<OpSignal> pairOwner = Multiplex(5, 1.0);
    const BinSig* bits = bitsOwner.get();
    const ElecSig* waveform = waveformOwner.get();
    const OpSignal* pair = pairOwner.get();
    Owned<Nodelist> listOwner;
    PushCell(listOwner, RampWaveform(6, 0.5), ElecSigType);
    PushCell(listOwner, Alone(RampChannel(3, 1.0)), OpSigType);
    PushCell(listOwner, AlternatingBits(3), BinSigType);
    const Nodelist* list = listOwner.get();
    const auto align = [list](Nodelist** place) { return AlignSignals(list, 1, place); };

    // Those that others call are tested within these.
    const std::pair<const char*, Operation> cases[] = {
        {"CreateOpSignalFromBin", Creating<OpSignal>(CreateOpSignalFromBin, bits, 4)},
        {"CopyOpSignal", Creating<OpSignal>(CopyOpSignal, pair)},
        {"CreateElecSigFromBin", Creating<ElecSig>(CreateElecSigFromBin, bits, 4)},
        {"CreateBinSigFromElec", Creating<BinSig>(CreateBinSigFromElec, waveform)},
        {"CopyNodelistShape", Creating<Nodelist>(CopyNodelistShape, list)},
        {"AlignSignals", Creating<Nodelist>(align)},
    };
    testing::internal::CaptureStderr();
    for (const auto& [name, run] : cases) {
        SCOPED_TRACE(name);
        std::int64_t refused = 0;
        while (refused < 100 && run(refused + 1) == 1) ++refused;
        EXPECT_GE(refused, 1);
        EXPECT_EQ(refused, asked);  // no refusal was swallowed
    }
    EXPECT_NE(
        testing::internal::GetCapturedStderr().find("Out of memory in allocating Nodelist.\n"),
        std::string::npos);
}

}  // namespace
}  // namespace photrak

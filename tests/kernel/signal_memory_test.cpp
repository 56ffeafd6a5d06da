// Every operation that asks for memory, with its first, second, ... allocation refused. Under the
// address sanitizer this also proves that a failure leaks nothing.
#include <functional>
#include <string>
#include <vector>

#include "base/memory.h"
#include "kernel/align.h"
#include "kernel/signals.h"
#include "support/signals.h"

namespace photrak {
namespace {

/// Runs with the allocation number k and all after it refused.
using Operation = std::function<std::int32_t(std::int64_t k)>;

std::int64_t asked = 0;  // allocations asked for by the last call under test

template <class Call>
std::int32_t Refusing(std::int64_t k, Call call) {
    const std::int64_t before = AllocationCount();
    RefuseAllocationsFrom(k);
    const std::int32_t result = call();
    RefuseAllocationsFrom(-1);
    asked = AllocationCount() - before;
    return result;
}

/// A creating operation; its place, full of rubbish before, must be empty after a failure.
template <class T, class Create, class... Arguments>
Operation Creating(Create create, Arguments... arguments) {
    return [=](std::int64_t k) {
        T rubbish{};
        T* made = &rubbish;
        const std::int32_t result = Refusing(k, [&] { return create(&made, arguments...); });
        EXPECT_EQ(made == nullptr, result == 1);
        Owned<T> owner(made);
        return result;
    };
}

struct Case {
    const char* name;
    Operation run;
};

std::int32_t ResizedChannel(std::int64_t k) {
    const Owned<OpSig> sig = RampChannel(4, 1.0, Polarized::Yes);
    const std::int32_t result = Refusing(k, [&] { return ResizeOpSig(sig.get(), 9); });
    EXPECT_EQ(sig->noPoints, result ? 0 : 9);
    EXPECT_EQ(sig->Ex_samples == nullptr, result == 1);
    EXPECT_EQ(sig->Ey_samples == nullptr, result == 1);
    EXPECT_EQ(sig->fftView == nullptr, result == 1);
    Owned<OpSig> copy;  // a record left without samples is still one that can be copied
    EXPECT_EQ(Make(copy, CopyOpSig, sig.get()), 0);
    return result;
}

std::int32_t ResizedWaveform(std::int64_t k) {
    const Owned<ElecSig> sig = RampWaveform(4, 1.0);
    const std::int32_t result = Refusing(k, [&] { return ResizeElecSig(sig.get(), 9); });
    EXPECT_EQ(sig->noPoints, result ? 0 : 9);
    EXPECT_EQ(sig->elecSamples == nullptr, result == 1);
    EXPECT_EQ(sig->sigmaSamples == nullptr, result == 1);
    return result;
}

std::int32_t PolarizedChannel(std::int64_t k) {
    const Owned<OpSig> sig = RampChannel(4, 1.0);
    const std::int32_t result = Refusing(k, [&] { return AddEySamples(sig.get()); });
    EXPECT_EQ(sig->Ey_samples == nullptr, result == 1);
    EXPECT_NE(sig->Ex_samples, nullptr);
    return result;
}

TEST(SignalMemory, EveryOperationSurvivesTheRefusalOfEachAllocation) {
    const Owned<BinSig> bitsOwner = AlternatingBits(5);
    const Owned<ElecSig> waveformOwner = RampWaveform(5, 1.0);
    const Owned<OpSignal> pairOwner = Multiplex(5, 1.0);
    const BinSig* bits = bitsOwner.get();
    const ElecSig* waveform = waveformOwner.get();
    const OpSignal* pair = pairOwner.get();
    const OpSig* channels = pair->channels;
    Owned<Nodelist> listOwner;
    PushCell(listOwner, RampWaveform(6, 0.5), ElecSigType);
    Owned<OpSignal> single;
    ASSERT_EQ(Make(single, CreateOpSignal), 0);
    single->channels = RampChannel(3, 1.0).release();
    PushCell(listOwner, std::move(single), OpSigType);
    PushCell(listOwner, AlternatingBits(3), BinSigType);
    const Nodelist* list = listOwner.get();
    const auto align = [list](Nodelist** place) { return AlignSignals(list, 1, place); };

    const std::vector<Case> cases = {
        {"CreateOpSig", Creating<OpSig>(CreateOpSig, 3)},
        {"CreateOpSigFromElec", Creating<OpSig>(CreateOpSigFromElec, waveform)},
        {"CreateOpSigFromBin", Creating<OpSig>(CreateOpSigFromBin, bits, 4)},
        {"CopyOpSig", Creating<OpSig>(CopyOpSig, channels->next)},
        {"CopyOpSigList", Creating<OpSig>(CopyOpSigList, channels)},
        {"AddEySamples", PolarizedChannel},
        {"ResizeOpSig", ResizedChannel},
        {"CreateOpSigASE", Creating<OpSigASE>(CreateOpSigASE, 3)},
        {"CopyOpSigASE", Creating<OpSigASE>(CopyOpSigASE, pair->noise)},
        {"CopyOpSigASEList", Creating<OpSigASE>(CopyOpSigASEList, pair->noise)},
        {"CreateOpSignal", Creating<OpSignal>(CreateOpSignal)},
        {"CreateOpSignalWithSig", Creating<OpSignal>(CreateOpSignalWithSig, 3)},
        {"CreateOpSignalFromBin", Creating<OpSignal>(CreateOpSignalFromBin, bits, 4)},
        {"CreateOpSignalFromElec", Creating<OpSignal>(CreateOpSignalFromElec, waveform)},
        {"CopyOpSignal", Creating<OpSignal>(CopyOpSignal, pair)},
        {"CreateElecSig", Creating<ElecSig>(CreateElecSig, 3)},
        {"CreateElecSigFromBin", Creating<ElecSig>(CreateElecSigFromBin, bits, 4)},
        {"CreateElecSigFromOp", Creating<ElecSig>(CreateElecSigFromOp, channels)},
        {"CopyElecSig", Creating<ElecSig>(CopyElecSig, waveform)},
        {"ResizeElecSig", ResizedWaveform},
        {"CreateBinSig", Creating<BinSig>(CreateBinSig, 3)},
        {"CreateBinSigFromElec", Creating<BinSig>(CreateBinSigFromElec, waveform)},
        {"CreateBinSigFromOp", Creating<BinSig>(CreateBinSigFromOp, channels)},
        {"CopyBinSig", Creating<BinSig>(CopyBinSig, bits)},
        {"CreateNodelist", Creating<Nodelist>(CreateNodelist, BinSigType)},
        {"CopyNodelistShape", Creating<Nodelist>(CopyNodelistShape, list)},
        {"AlignSignals", Creating<Nodelist>(align)},
    };
    testing::internal::CaptureStderr();
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        std::int64_t refused = 0;
        while (refused < 100 && row.run(refused + 1) == 1) ++refused;
        EXPECT_GE(refused, 1);
        EXPECT_EQ(refused, asked);  // no refusal was swallowed
    }
    EXPECT_NE(
        testing::internal::GetCapturedStderr().find("Out of memory in allocating Nodelist.\n"),
        std::string::npos);
}

}  // namespace
}  // namespace photrak

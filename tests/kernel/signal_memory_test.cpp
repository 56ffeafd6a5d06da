// Operations that ask for memory, with their first, second, ... allocation refused. Under the
// address sanitizer this also proves that a failure leaks nothing.
#include <functional>
#include <string>
#include <utility>

#include "base/memory.h"
#include "kernel/align.h"
#include "kernel/signals.h"
#include "support/signals.h"

namespace photrak {
namespace {

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

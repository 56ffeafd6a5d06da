// What an optical port carries (OpSignal): the pair of a list of channels and a list of noise
// spectra.
#include "kernel/optical_pairs.h"

#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {
namespace {

/// A pair that takes over the one channel `create` makes.
template <class Create, class... Arguments>
std::int32_t CreatePairAround(OpSignal** place, Create create, Arguments... arguments) {
    if (!place) return 1;
    *place = nullptr;
    Owned<OpSignal> pair(NewRecord<OpSignal>());
    if (!pair || create(&pair->channels, arguments...)) return 1;
    *place = pair.release();
    return 0;
}

}  // namespace

std::int32_t CreateOpSignal(OpSignal** place) {
    if (!place) return 1;
    *place = NewRecord<OpSignal>();
    return *place ? 0 : 1;
}

std::int32_t CreateOpSignalWithSig(OpSignal** place, std::int32_t n) {
    return CreatePairAround(place, CreateOpSig, n);
}

std::int32_t CreateOpSignalFromBin(OpSignal** place, const BinSig* source,
                                   std::int32_t samplesPerBit) {
    return CreatePairAround(place, CreateOpSigFromBin, source, samplesPerBit);
}

std::int32_t CreateOpSignalFromElec(OpSignal** place, const ElecSig* source) {
    return CreatePairAround(place, CreateOpSigFromElec, source);
}

std::int32_t FreeOpSignal(OpSignal** place) {
    if (!place) return 1;
    if (!*place) return 0;
    if (FreeOpSigList(&(*place)->channels)) return 1;
    return FreeOpSigASEList(&(*place)->noise);
}

std::int32_t CopyOpSignal(OpSignal** place, const OpSignal* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source) return 0;
    Owned<OpSignal> copy(NewRecord<OpSignal>());
    if (!copy || CopyOpSigList(&copy->channels, source->channels) ||
        CopyOpSigASEList(&copy->noise, source->noise)) {
        return 1;
    }
    *place = copy.release();
    return 0;
}

}  // namespace photrak

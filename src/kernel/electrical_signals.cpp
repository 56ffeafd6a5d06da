// Electrical waveforms (ElecSig): the samples and, beside each, the standard deviation of its
// noise.
#include "kernel/electrical_signals.h"

#include "base/arrays.h"
#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {
namespace {

/// Gives a record without arrays its two arrays of n + 1 zeros, or none and false.
bool SetZeroArrays(ElecSig& sig, std::int32_t n) {
    OwnedBlock<Complex> samples(NewSamples<Complex>(n));
    OwnedBlock<Complex> sigma(samples ? NewSamples<Complex>(n) : nullptr);
    if (!sigma) return false;
    sig.elecSamples = samples.release();
    sig.sigmaSamples = sigma.release();
    sig.fftView = DoubleView(sig.elecSamples);
    sig.sigmaFftView = DoubleView(sig.sigmaSamples);
    sig.noPoints = n;
    return true;
}

}  // namespace

std::int32_t CreateElecSig(ElecSig** place, std::int32_t n) {
    if (!place) return 1;
    *place = nullptr;
    Owned<ElecSig> sig(NewRecord<ElecSig>());
    if (!sig || !SetZeroArrays(*sig, n)) return 1;
    sig->UnitType = VoltageUnit;
    sig->domain = TimeDomain;
    sig->spareCount = 1;
    *place = sig.release();
    return 0;
}

// As with optical channels: the present arrays go first, and a failure leaves no samples at all.
std::int32_t ResizeElecSig(ElecSig* sig, std::int32_t n) {
    if (!sig) return 1;
    if (n == sig->noPoints) return 0;
    Release(sig->elecSamples);
    Release(sig->sigmaSamples);
    sig->elecSamples = sig->sigmaSamples = nullptr;
    sig->fftView = sig->sigmaFftView = nullptr;
    sig->noPoints = 0;
    return SetZeroArrays(*sig, n) ? 0 : 1;
}

std::int32_t CreateElecSigFromBin(ElecSig** place, const BinSig* source,
                                  std::int32_t samplesPerBit) {
    if (!place) return 1;
    *place = nullptr;
    std::int32_t n = 0;
    if (!source || !SampleCount(source->noPoints, samplesPerBit, n)) return 1;
    if (CreateElecSig(place, n)) return 1;
    SetTiming(**place, *source, samplesPerBit);
    return 0;
}

std::int32_t CreateElecSigFromOp(ElecSig** place, const OpSig* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source || CreateElecSig(place, source->noPoints)) return 1;
    SetTiming(**place, *source);
    return 0;
}

std::int32_t FreeElecSig(ElecSig** place) {
    if (!place) return 1;
    ElecSig* sig = *place;
    if (!sig) return 0;
    Release(sig->elecSamples);
    Release(sig->sigmaSamples);
    Release(sig);
    *place = nullptr;
    return 0;
}

std::int32_t CopyElecSig(ElecSig** place, const ElecSig* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source) return 1;
    Owned<ElecSig> copy(NewRecord<ElecSig>());
    if (!copy) return 1;
    if (!CopySamples(copy->elecSamples, source->elecSamples, source->noPoints) ||
        !CopySamples(copy->sigmaSamples, source->sigmaSamples, source->noPoints)) {
        return 1;
    }
    copy->fftView = DoubleView(copy->elecSamples);
    copy->sigmaFftView = DoubleView(copy->sigmaSamples);
    copy->noPoints = source->noPoints;
    SetTiming(*copy, *source);
    copy->UnitType = source->UnitType;
    *place = copy.release();
    return 0;
}

}  // namespace photrak

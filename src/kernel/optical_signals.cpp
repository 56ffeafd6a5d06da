// Optical channels (OpSig) and their lists.
#include "kernel/optical_signals.h"

#include "base/arrays.h"
#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {

std::int32_t CreateOpSig(OpSig** place, std::int32_t n) {
    if (!place) return 1;
    *place = nullptr;
    Owned<OpSig> sig(NewRecord<OpSig>());
    if (!sig) return 1;
    if (n >= 1) {
        sig->Ex_samples = NewSamples<Complex>(n);
        if (!sig->Ex_samples) return 1;
        sig->fftView = DoubleView(sig->Ex_samples);
    }
    sig->noPoints = n;
    sig->domain = TimeDomain;
    sig->spareCount = 1;
    *place = sig.release();
    return 0;
}

std::int32_t AddEySamples(OpSig* sig) {
    if (!sig) return 1;
    // Without samples there is nothing to add: both polarizations are absent together.
    if (sig->Ey_samples || sig->noPoints < 1) return 0;
    sig->Ey_samples = NewSamples<Complex>(sig->noPoints);
    return sig->Ey_samples ? 0 : 1;
}

// The present arrays go first, so that a long signal never stands in memory twice. When the new
// ones cannot be had the record is left without samples.
std::int32_t ResizeOpSig(OpSig* sig, std::int32_t n) {
    if (!sig) return 1;
    if (n == sig->noPoints) return 0;
    const bool polarized = sig->Ey_samples != nullptr;
    Release(sig->Ex_samples);
    Release(sig->Ey_samples);
    sig->Ex_samples = sig->Ey_samples = nullptr;
    sig->fftView = nullptr;
    sig->noPoints = 0;
    if (n >= 1) {
        OwnedBlock<Complex> ex(NewSamples<Complex>(n));
        OwnedBlock<Complex> ey(polarized && ex ? NewSamples<Complex>(n) : nullptr);
        if (!ex || (polarized && !ey)) return 1;
        sig->Ex_samples = ex.release();
        sig->Ey_samples = ey.release();
        sig->fftView = DoubleView(sig->Ex_samples);
    }
    sig->noPoints = n;
    return 0;
}

std::int32_t CreateOpSigFromElec(OpSig** place, const ElecSig* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source || CreateOpSig(place, source->noPoints)) return 1;
    SetTiming(**place, *source);
    return 0;
}

std::int32_t CreateOpSigFromBin(OpSig** place, const BinSig* source, std::int32_t samplesPerBit) {
    if (!place) return 1;
    *place = nullptr;
    std::int32_t n = 0;
    if (!source || !SampleCount(source->noPoints, samplesPerBit, n)) return 1;
    if (CreateOpSig(place, n)) return 1;
    SetTiming(**place, *source, samplesPerBit);
    return 0;
}

std::int32_t FreeOpSig(OpSig** place) {
    if (!place) return 1;
    OpSig* sig = *place;
    if (!sig) return 0;
    if (sig->fos) return 1;
    Release(sig->Ex_samples);
    Release(sig->Ey_samples);
    Release(sig->auxSamples);
    Release(sig);
    *place = nullptr;
    return 0;
}

namespace {

/// An array like the source's, or none where it has none.
bool FrameSamples(Complex*& target, const Complex* source, std::int32_t n) {
    target = nullptr;
    if (!source || n < 0) return true;
    target = NewUnclearedSamples<Complex>(n);
    if (target) target[0] = {};
    return target != nullptr;
}

/// `copy` gives an array from one of the source.
template <class Copy>
std::int32_t CopyChannel(OpSig** place, const OpSig* source, Copy copy) {
    if (!place) return 1;
    *place = nullptr;
    if (!source) return 1;
    Owned<OpSig> made(NewRecord<OpSig>());
    if (!made) return 1;
    if (!copy(made->Ex_samples, source->Ex_samples, source->noPoints) ||
        !copy(made->Ey_samples, source->Ey_samples, source->noPoints)) {
        return 1;
    }
    made->fftView = DoubleView(made->Ex_samples);
    made->noPoints = source->noPoints;
    SetTiming(*made, *source);
    made->wavelength = source->wavelength;
    made->RIN = source->RIN;
    *place = made.release();
    return 0;
}

}  // namespace

std::int32_t CopyOpSig(OpSig** place, const OpSig* source) {
    return CopyChannel(place, source, CopySamples<Complex>);
}

std::int32_t CopyOpSigFrame(OpSig** place, const OpSig* source) {
    return CopyChannel(place, source, FrameSamples);
}

// One channel in propagation refuses for its whole list, so that the head stays a valid reference
// and the list can be freed later.
std::int32_t FreeOpSigList(OpSig** place) {
    if (!place) return 1;
    for (const OpSig& channel : Items(*place)) {
        if (channel.fos) return 1;
    }
    for (OpSig& channel : Items(*place)) {
        OpSig* freed = &channel;
        FreeOpSig(&freed);
    }
    *place = nullptr;
    return 0;
}

std::int32_t CopyOpSigList(OpSig** place, const OpSig* source) {
    return CopyList(place, source, CopyOpSig);
}

}  // namespace photrak

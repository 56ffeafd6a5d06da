// Bit sequences (BinSig), and the passing on of bit rate and pattern length between signals.
#include "kernel/binary_signals.h"

#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {
namespace {

/// One bit for each of the waveform's pattern, on its time axis.
template <class Waveform>
std::int32_t CreateFromPattern(BinSig** place, const Waveform* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source || CreateBinSig(place, source->patternLength)) return 1;
    (*place)->bitRate = source->bitRate;
    (*place)->startTime = source->startTime;
    return 0;
}

template <class Source, class Target>
std::int32_t CopyBitInfo(const Source* source, Target* target, std::int32_t Source::*bits) {
    if (!source || !target) return 1;
    target->bitRate = source->bitRate;
    target->patternLength = source->*bits;
    return 0;
}

}  // namespace

std::int32_t CreateBinSig(BinSig** place, std::int32_t n) {
    if (!place) return 1;
    *place = nullptr;
    Owned<BinSig> sig(NewRecord<BinSig>());
    if (!sig) return 1;
    sig->bitSequence = NewUnclearedSamples<std::int16_t>(n);
    if (!sig->bitSequence) return 1;
    sig->noPoints = n;
    *place = sig.release();
    return 0;
}

std::int32_t CreateBinSigFromElec(BinSig** place, const ElecSig* source) {
    return CreateFromPattern(place, source);
}

std::int32_t CreateBinSigFromOp(BinSig** place, const OpSig* source) {
    return CreateFromPattern(place, source);
}

std::int32_t FreeBinSig(BinSig** place) {
    if (!place) return 1;
    if (!*place) return 0;
    Release((*place)->bitSequence);
    Release(*place);
    return 0;
}

std::int32_t CopyBinSig(BinSig** place, const BinSig* source) {
    if (!place) return 1;
    *place = nullptr;
    if (!source) return 1;
    Owned<BinSig> copy(NewRecord<BinSig>());
    if (!copy || !CopySamples(copy->bitSequence, source->bitSequence, source->noPoints)) return 1;
    copy->noPoints = source->noPoints;
    copy->bitRate = source->bitRate;
    copy->startTime = source->startTime;
    *place = copy.release();
    return 0;
}

std::int32_t CopyBitInfoBinToOp(const BinSig* source, OpSig* target) {
    return CopyBitInfo(source, target, &BinSig::noPoints);
}
std::int32_t CopyBitInfoElecToOp(const ElecSig* source, OpSig* target) {
    return CopyBitInfo(source, target, &ElecSig::patternLength);
}
std::int32_t CopyBitInfoBinToElec(const BinSig* source, ElecSig* target) {
    return CopyBitInfo(source, target, &BinSig::noPoints);
}
std::int32_t CopyBitInfoOpToElec(const OpSig* source, ElecSig* target) {
    return CopyBitInfo(source, target, &OpSig::patternLength);
}

}  // namespace photrak

// Bit sequences, and the bit rate and pattern length that other signals take from them. Results and
// failures as in kernel/signals.h.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

[[nodiscard]] std::int32_t CreateBinSig(BinSig** place, std::int32_t n);
[[nodiscard]] std::int32_t CreateBinSigFromElec(BinSig** place, const ElecSig* source);
[[nodiscard]] std::int32_t CreateBinSigFromOp(BinSig** place, const OpSig* source);
/// Leaves the caller's reference as it was; the caller clears it.
std::int32_t FreeBinSig(BinSig** place);
[[nodiscard]] std::int32_t CopyBinSig(BinSig** place, const BinSig* source);
/// bitRate and patternLength only; from bits the pattern length is their number.
std::int32_t CopyBitInfoBinToOp(const BinSig* source, OpSig* target);
std::int32_t CopyBitInfoElecToOp(const ElecSig* source, OpSig* target);
std::int32_t CopyBitInfoBinToElec(const BinSig* source, ElecSig* target);
std::int32_t CopyBitInfoOpToElec(const OpSig* source, ElecSig* target);

}  // namespace photrak

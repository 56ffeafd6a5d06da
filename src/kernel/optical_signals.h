// Channels: records of one wavelength. Results and failures as in kernel/signals.h.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

[[nodiscard]] std::int32_t CreateOpSig(OpSig** place, std::int32_t n);
[[nodiscard]] std::int32_t AddEySamples(OpSig* sig);
/// The contents are lost unless n is the present size. A failure leaves a record of 0 samples
/// without arrays.
[[nodiscard]] std::int32_t ResizeOpSig(OpSig* sig, std::int32_t n);
[[nodiscard]] std::int32_t CreateOpSigFromElec(OpSig** place, const ElecSig* source);
[[nodiscard]] std::int32_t CreateOpSigFromBin(OpSig** place, const BinSig* source,
                                              std::int32_t samplesPerBit);
/// Refuses with 1 while the fiber's record (fos) is set. The reference is emptied.
std::int32_t FreeOpSig(OpSig** place);
[[nodiscard]] std::int32_t CopyOpSig(OpSig** place, const OpSig* source);
/// A copy whose arrays wait to be filled: their values are not those of the source.
[[nodiscard]] std::int32_t CopyOpSigFrame(OpSig** place, const OpSig* source);
/// One channel that refuses does so for the whole list: 1, nothing is freed, the head stays valid.
std::int32_t FreeOpSigList(OpSig** place);
[[nodiscard]] std::int32_t CopyOpSigList(OpSig** place, const OpSig* source);

}  // namespace photrak

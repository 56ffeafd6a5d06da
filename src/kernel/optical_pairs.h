// What an optical port carries: channels and noise spectra. Results and failures as in
// kernel/signals.h.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

[[nodiscard]] std::int32_t CreateOpSignal(OpSignal** place);
[[nodiscard]] std::int32_t CreateOpSignalWithSig(OpSignal** place, std::int32_t n);
[[nodiscard]] std::int32_t CreateOpSignalFromBin(OpSignal** place, const BinSig* source,
                                                 std::int32_t samplesPerBit);
[[nodiscard]] std::int32_t CreateOpSignalFromElec(OpSignal** place, const ElecSig* source);
/// Frees the channels, then the noise spectra; the pair itself stays with its owner.
std::int32_t FreeOpSignal(OpSignal** place);
[[nodiscard]] std::int32_t CopyOpSignal(OpSignal** place, const OpSignal* source);

}  // namespace photrak

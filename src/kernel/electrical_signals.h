// Waveforms with the deviation of their noise. Results and failures as in kernel/signals.h.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

/// Below 0 samples gives 1, as does a BinSig of fewer than 0 bits.
[[nodiscard]] std::int32_t CreateElecSig(ElecSig** place, std::int32_t n);
[[nodiscard]] std::int32_t ResizeElecSig(ElecSig* sig, std::int32_t n);
[[nodiscard]] std::int32_t CreateElecSigFromBin(ElecSig** place, const BinSig* source,
                                                std::int32_t samplesPerBit);
[[nodiscard]] std::int32_t CreateElecSigFromOp(ElecSig** place, const OpSig* source);
std::int32_t FreeElecSig(ElecSig** place);
[[nodiscard]] std::int32_t CopyElecSig(ElecSig** place, const ElecSig* source);

}  // namespace photrak

// Spectra of amplified spontaneous emission. Results and failures as in kernel/signals.h.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

[[nodiscard]] std::int32_t CreateOpSigASE(OpSigASE** place, std::int32_t n);
/// Frees the head record; the reference moves to its next.
std::int32_t FreeOpSigASE(OpSigASE** place);
[[nodiscard]] std::int32_t CopyOpSigASE(OpSigASE** place, const OpSigASE* source);
std::int32_t FreeOpSigASEList(OpSigASE** place);
[[nodiscard]] std::int32_t CopyOpSigASEList(OpSigASE** place, const OpSigASE* source);

/// Density of the record at `nu` Hz, W/Hz, by straight lines between its points; 0 outside of them.
/// An end point that rounding moved out by a millionth of a step still counts.
double NoiseDensity(const OpSigASE& spectrum, double nu);

}  // namespace photrak

// Bringing the inputs of a plot to a common time grid.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

/// Linear resampling of a one-based array of nOld samples (spacing dOld) to nNew samples (spacing
/// dNew). Sample 1 is copied; times beyond the source give exact zero.
void ResampleLinear(const Complex* source, std::int32_t nOld, double dOld, Complex* target,
                    std::int32_t nNew, double dNew);

/// Clones the signals of a list into `clones` (freed by the caller with FreeNodelistSignals) and,
/// with align 1, resamples the waveforms to the longest duration and the finest step, on a power of
/// two of samples. 0, 1 (no memory, a polarized channel that would need resampling, a common length
/// above 2^26) or 2 (something was resampled).
[[nodiscard]] std::int32_t AlignSignals(const Nodelist* head, std::int32_t align,
                                        Nodelist** clones);

}  // namespace photrak

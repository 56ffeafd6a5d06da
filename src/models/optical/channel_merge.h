// Folds the channels of a multiplex into one field on a common carrier.
#pragma once

#include <string>

#include "kernel/model_report.h"
#include "kernel/signals.h"

namespace photrak {

/// The sum of the channels' fields, each shifted in frequency by its distance from the mean carrier
/// and rotated to the mean start time. All must share time step and number of samples, and the
/// carriers of first and last may lie at most one sampling rate apart. No channel gives none.
[[nodiscard]] Status MergeChannels(const OpSig* channels, Owned<OpSig>& merged,
                                   const ModelReport& report);

}  // namespace photrak

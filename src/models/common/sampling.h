// Whether samples can be transformed.
#pragma once

#include <cstdint>

#include "kernel/model_report.h"

namespace photrak {

/// Refuses electrical samples that cannot be transformed: a length that is no power of two or below
/// `least`, and a time step that is not positive and finite.
Status CheckSampling(std::int32_t noPoints, double tStep, std::int32_t least,
                     const ModelReport& report);

}  // namespace photrak

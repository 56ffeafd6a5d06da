// A single sample has no spacing, and none is needed: it is DC alone.
#include "models/common/sampling.h"

#include <cmath>

#include "numeric/fft.h"

namespace photrak {

Status CheckSampling(std::int32_t noPoints, double tStep, std::int32_t least,
                     const ModelReport& report) {
    if (noPoints < least || !IsPowerOfTwo(noPoints)) {
        return report.Refuse("a signal of ", noPoints,
                             " samples; their number must be a power of two, at least ", least);
    }
    if (noPoints > 1 && !(tStep > 0.0 && std::isfinite(1.0 / tStep) && std::isfinite(tStep))) {
        return report.Refuse("a signal with the time step ", tStep, " s, which must be above 0");
    }
    return Status::Success;
}

}  // namespace photrak

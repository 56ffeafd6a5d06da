// The transform back and the checks that stand before every transform of electrical samples.
#include "models/detection/electrical_spectrum.h"

#include <cmath>

#include "base/text.h"
#include "numeric/fft.h"

namespace photrak {

void ReturnToTime(double* view, long n) {
    DoFFT(view, n, +1);
    const auto count = static_cast<double>(n);
    for (long i = 1; i <= 2 * n; ++i) view[i] /= count;
}

Status CheckSampling(std::int32_t noPoints, double tStep, std::int32_t least,
                     std::string_view owner, std::string& message) {
    if (noPoints < least || !IsPowerOfTwo(noPoints)) {
        return RefuseComponent(
            owner,
            Concat("a signal of ", noPoints,
                   " samples; their number must be a power of two, at least ", least),
            message);
    }
    // A single sample has no spacing, and none is needed: it is DC alone.
    if (noPoints > 1 && !(tStep > 0.0 && std::isfinite(1.0 / tStep) && std::isfinite(tStep))) {
        return RefuseComponent(
            owner, Concat("a signal with the time step ", tStep, " s, which must be above 0"),
            message);
    }
    return Status::Success;
}

Status RefuseComponent(std::string_view owner, std::string_view reason, std::string& message) {
    message += Concat("ERROR: component '", owner, "': ", reason, "\n");
    return Status::Error;
}

}  // namespace photrak

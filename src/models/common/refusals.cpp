// The messages of refused components.
#include "models/common/refusals.h"

#include <cmath>

#include "base/text.h"
#include "numeric/fft.h"

namespace photrak {

Status RefuseComponent(std::string_view owner, std::string_view reason, std::string& errorText) {
    errorText += Concat("ERROR: component '", owner, "': ", reason, "\n");
    return Status::Error;
}

Status RefuseParameter(std::string_view owner, std::string_view name, double value,
                       std::string_view rule, std::string& errorText) {
    return RefuseComponent(
        owner, Concat("parameter '", name, "' is ", value, "; it must be ", rule), errorText);
}

Status CheckSampling(std::int32_t noPoints, double tStep, std::int32_t least,
                     std::string_view owner, std::string& errorText) {
    if (noPoints < least || !IsPowerOfTwo(noPoints)) {
        return RefuseComponent(
            owner,
            Concat("a signal of ", noPoints,
                   " samples; their number must be a power of two, at least ", least),
            errorText);
    }
    // A single sample has no spacing, and none is needed: it is DC alone.
    if (noPoints > 1 && !(tStep > 0.0 && std::isfinite(1.0 / tStep) && std::isfinite(tStep))) {
        return RefuseComponent(
            owner, Concat("a signal with the time step ", tStep, " s, which must be above 0"),
            errorText);
    }
    return Status::Success;
}

}  // namespace photrak

// How a model turns down what it cannot work with: one form of message for all, which names the
// component.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/status.h"

namespace photrak {

/// Appends "ERROR: component 'OWNER': REASON\n".
Status RefuseComponent(std::string_view owner, std::string_view reason, std::string& errorText);

/// The same, the reason being "parameter 'NAME' is VALUE; it must be RULE".
Status RefuseParameter(std::string_view owner, std::string_view name, double value,
                       std::string_view rule, std::string& errorText);

/// Refuses electrical samples that cannot be transformed: a length that is no power of two or below
/// `least`, and a time step that is not positive and finite.
Status CheckSampling(std::int32_t noPoints, double tStep, std::int32_t least,
                     std::string_view owner, std::string& errorText);

}  // namespace photrak

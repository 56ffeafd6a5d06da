// The limits of a parameter.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Limits valactual to min and max.
Status ClampParam(Parameter& parameter, std::string& errorText);

}  // namespace photrak

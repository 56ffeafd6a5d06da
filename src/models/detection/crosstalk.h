// Crosstalk between the electrical signals of parallel receivers.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// The rows of its table.
std::vector<ParamSpec> CrosstalkParamSpecs();

/// Output i is the sum over inputs k of element (k, i) of a matrix times input k.
Status RunCrosstalkBlock(const ModelCall& call);

}  // namespace photrak

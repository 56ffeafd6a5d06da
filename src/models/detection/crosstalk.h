// Crosstalk between the electrical signals of parallel receivers.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// Output i is the sum over inputs k of element (k, i) of a matrix times input k.
Status RunCrosstalkBlock(const ModelCall& call);

}  // namespace photrak

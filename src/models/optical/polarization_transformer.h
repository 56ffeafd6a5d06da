// A device that mixes the two polarizations of every channel by one matrix: rotator, polarizer or
// any other. Light of one polarization gets the second.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// The rows of its table.
std::vector<ParamSpec> PolarizationTransformerParamSpecs();
Status RunPolarizationTransformer(const ModelCall& call);

}  // namespace photrak

// Couplers of two optical paths: a transfer matrix that holds for every wavelength, given to the
// routine of the multiport device. It stays the table in use afterwards.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// The ratio is a parameter, or the whole matrix is.
/// The rows of their tables.
std::vector<ParamSpec> OpticalCouplerParamSpecs();
std::vector<ParamSpec> ControlledOpticalCouplerParamSpecs();

Status RunOpticalCoupler(const ModelCall& call);
/// A third, electrical input selects one of two ratios for the whole pattern.
Status RunControlledOpticalCoupler(const ModelCall& call);

}  // namespace photrak

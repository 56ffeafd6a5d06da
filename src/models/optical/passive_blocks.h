// Blocks that change light in one simple way each: what goes in at a port leaves, changed, at the
// output port of the same place. An input without data leaves its output empty.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// The rows of their tables.
std::vector<ParamSpec> OpticalAttenuatorParamSpecs();
std::vector<ParamSpec> OpticalNormalizerParamSpecs();
std::vector<ParamSpec> PhaseShiftParamSpecs();
std::vector<ParamSpec> FiberDelayParamSpecs();
std::vector<ParamSpec> IdealFrequencyConverterParamSpecs();

Status RunOpticalAttenuator(const ModelCall& call);
/// A warning when it had to amplify.
Status RunOpticalNormalizer(const ModelCall& call);
Status RunPhaseShift(const ModelCall& call);
Status RunFiberDelay(const ModelCall& call);
Status RunIdealFrequencyConverter(const ModelCall& call);

}  // namespace photrak

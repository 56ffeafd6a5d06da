// The SignalSpectra block: the spectrum of its input signals, as an optical spectrum analyzer shows
// that of light, with the noise that travels beside the channels.
#pragma once

#include <vector>

#include "kernel/driver.h"

namespace photrak {

/// The rows of its table.
std::vector<ParamSpec> SignalSpectraParamSpecs();

/// The model: writes ".frq" and ".pcf", and the noise records by themselves on request. Success
/// without a file when the plot is switched off, an error without a signal.
Status RunSignalSpectra(const ModelCall& call);

}  // namespace photrak

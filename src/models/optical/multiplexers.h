// Devices that join and separate wavelength channels: multiplexer, demultiplexer, and those that
// add or drop channels on a line. One optical filter stands in each path; joined channels stay
// apart as a list ascending by wavelength, or become one field on a common carrier.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// The rows of their tables.
std::vector<ParamSpec> IdealOpticalMuxParamSpecs();
std::vector<ParamSpec> OpticalDemuxParamSpecs();
std::vector<ParamSpec> OpticalAddMuxParamSpecs();
std::vector<ParamSpec> OpticalDropMuxParamSpecs();
std::vector<ParamSpec> OpticalAddDropMuxParamSpecs();

/// n inputs to one output; the filter's center moves on by a spacing from port to port.
Status RunIdealOpticalMux(const ModelCall& call);
/// One input to n outputs, with the same filters.
Status RunOpticalDemux(const ModelCall& call);
/// Inputs: line, added. The line passes the notch that complements the filter of the added.
Status RunOpticalAddMux(const ModelCall& call);
/// Outputs: through (the notch), dropped (the filter).
Status RunOpticalDropMux(const ModelCall& call);
/// Both at once: inputs line and added, outputs through and dropped.
Status RunOpticalAddDropMux(const ModelCall& call);

}  // namespace photrak

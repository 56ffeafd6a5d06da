// The receiver: photodetector, front-end amplifier and optional filter in a chain, from all
// channels of an optical signal to one voltage waveform with the standard deviation of its noise at
// each sample.
#pragma once

#include "kernel/driver.h"
#include "models/detection/electrical_filter.h"
#include "models/detection/front_end.h"
#include "models/detection/photodetector.h"
#include "models/detection/receiver_noise.h"

namespace photrak {

struct ReceiverParams {
    PhotoDetectorParams detector;
    FrontEndParams frontEnd;
    ElectricalFilterParams filter;
    NoisePolynomial noise;
};

/// The rows of its tables.
std::vector<ParamSpec> ReceiverParamSpecs();

/// Detects the signal of the input cell and stores a new ElecSig in the output cell.
/// Warning: there is no channel to detect. Error: the output cell stays empty.
Status Receiver(const Nodelist* input, const ReceiverParams& params, Nodelist* output,
                const ModelReport& report);

/// The model: reads parameters and table, then Receiver.
Status ReceiverModel(const ModelCall& call);

}  // namespace photrak

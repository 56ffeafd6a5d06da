// The receiver: photodetector, front-end amplifier and optional filter in a chain, from all
// channels of an optical signal to one voltage waveform with the standard deviation of its noise at
// each sample.
#pragma once

#include <string>

#include "kernel/driver.h"
#include "models/detection/electrical_filter.h"
#include "models/detection/front_end.h"
#include "models/detection/photodetector.h"
#include "models/detection/receiver_noise.h"

namespace photrak {

struct ReceiverParams {
    std::string owner;  // the component's name, for messages
    PhotoDetectorParams detector;
    FrontEndParams frontEnd;
    ElectricalFilterParams filter;
    NoisePolynomial noise;
};

/// All parameters by name. The table of a custom front end is not read yet.
ReceiverParams ReadReceiverParams(const Component& component);

/// Detects the signal of the input cell and stores a new ElecSig in the output cell.
/// Warning: there is no channel to detect. Error: the output cell stays empty.
Status Receiver(const Nodelist* input, const ReceiverParams& params, Nodelist* output,
                std::string& message);

/// The model: reads parameters and table, then Receiver.
Status ReceiverModel(const ModelCall& call);

}  // namespace photrak

// The source CustomSignalGenerator: an electrical or optical waveform from a text file, resampled
// to the time step of the link, and the bits that it carries.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

struct CustomSignalParams {
    std::string signalType;  // "VOLTAGE", "OPTICALWATT", ...: models/sources/custom_table.h
    std::string filename;
    double bitRate = 0.0;  // bit/s
    // Plain counts, where other sources have exponents. Their product is the number of samples.
    std::int32_t pointsPerBit = 0, patternLength = 0;
    double wavelength = 0.0;  // of an optical signal, m
};

/// The rows of its table, and the record read from them.
std::vector<ParamSpec> CustomSignalParamSpecs();
CustomSignalParams ReadCustomSignalParams(Parameter* parameters);

/// Stores the waveform in the first output cell and its bits in the second. A warning tells of
/// samples whose interpolation is uncertain, an error leaves the cells empty.
Status Signal_Gen_Custom(const CustomSignalParams& params, Nodelist* outputs,
                         const ModelReport& report);

/// The model.
Status RunCustomSignal(const ModelCall& call);

}  // namespace photrak

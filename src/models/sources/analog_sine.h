// The source AnalogSineGenerator: a sine voltage, sampled over whole periods or freely.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

struct AnalogSineParams {
    double Vpp = 0.0, Voffset = 0.0;
    double frequency = 0.0;         // Hz
    double phase = 0.0;             // rad, at the first sample
    std::int32_t ptsPerPeriod = 0;  // exponent: 2^ptsPerPeriod samples in a period
    std::int32_t noPeriods = 0;     // exponent: 2^noPeriods periods
    std::int32_t noSamples = 0;     // exponent, "Aperiodic" only
    double timeStep = 0.0;          // s, "Aperiodic" only
    std::string mode;               // "Aperiodic"; anything else: periodic
};

/// The rows of its table, and the record read from them.
std::vector<ParamSpec> AnalogSineParamSpecs();
AnalogSineParams ReadAnalogSineParams(Parameter* parameters);

/// Stores the waveform in the output cell. A periodic one counts two bits to a period; the other
/// has neither bit rate nor pattern length.
Status AnalogSine(const AnalogSineParams& params, Nodelist* output, const ModelReport& report);

/// The model.
Status RunAnalogSine(const ModelCall& call);

}  // namespace photrak

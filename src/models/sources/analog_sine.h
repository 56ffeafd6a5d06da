// The source AnalogSineGenerator: a sine voltage, sampled over whole periods or freely.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

struct AnalogSineParams {
    std::string owner;  // the component's name, for messages
    double Vpp = 1.0, Voffset = 0.5;
    double frequency = 1e9;         // Hz
    double phase = -90.0;           // degrees, at the first sample
    std::int32_t ptsPerPeriod = 5;  // exponent: 2^ptsPerPeriod samples in a period
    std::int32_t noPeriods = 2;     // exponent: 2^noPeriods periods
    std::int32_t noSamples = 12;    // exponent, "Aperiodic" only
    double timeStep = 3.125e-12;    // s, "Aperiodic" only
    std::string mode;               // "Aperiodic"; anything else: periodic
};

AnalogSineParams ReadAnalogSineParams(const Component& component);

/// Stores the waveform in the output cell. A periodic one counts two bits to a period; the other
/// has neither bit rate nor pattern length.
Status AnalogSine(const AnalogSineParams& params, Nodelist* output, std::string& errorText);

/// The model.
Status RunAnalogSine(const ModelCall& call);

}  // namespace photrak

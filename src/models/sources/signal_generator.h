// The source ElectricalSignalGenerator: drive signals of digital links. Bits become pulses, NRZ or
// RZ, with the edges, the jitter and the bandwidth of real drive electronics.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

struct SignalGeneratorParams {
    std::string driveType;          // "on_off_ramp", "on_off_exp" or "raisedCosine"
    std::int32_t pointsPerBit = 0;  // exponent: 2^pointsPerBit samples for each bit
    double Vmax = 0.0, Vmin = 0.0;  // levels of 1 and 0, V
    double tr = 0.0, tf = 0.0;      // rise and fall time, s
    double timeJitter = 0.0;        // standard deviation of the edges, s
    std::string filterType;         // "RingFilter", "RCFilter", "None" or "none"
    std::string modulationType;     // "RZ": return to zero; anything else: NRZ
    double f0 = 0.0, gamma = 0.0;   // of the ring filter, Hz
    double bitWidth = 0.0;          // W, s: 1 / bitRate of the input
    std::int32_t seed = 127;        // reserved: the jitter has a sequence of its own
};

/// The rows of its table, and the record read from them; the bit width comes from the input.
std::vector<ParamSpec> SignalGeneratorParamSpecs();
SignalGeneratorParams ReadSignalGeneratorParams(Parameter* parameters, const Nodelist* input);

/// Stores the waveform of the input's bits in the output cell. Success, or an error with a text
/// appended and an empty cell. A waveform that is to be filtered must have 2^n samples.
Status Signal_Generator(const SignalGeneratorParams& params, const Nodelist* input,
                        Nodelist* output, const ModelReport& report);

/// The model.
Status RunSignalGenerator(const ModelCall& call);

}  // namespace photrak

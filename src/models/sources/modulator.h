// External modulator: prints an electrical drive on every channel of an optical carrier. The drive
// passes a frequency response, a transfer curve and an amplitude-to-phase chirp; noise spectra pass
// with the static transmission at the bias point.
#pragma once

#include <array>
#include <string>

#include "kernel/driver.h"

namespace photrak {

struct ModulatorParams {
    std::string owner;           // the component's name, for messages
    std::string modulationType;  // "MachZehnder", "Ideal", "Amplitude", "Phase"
    std::string fittingType;     // "fOffset", "Coefficients", "Polynomial"
    double fOffset = 0.0;        // GHz
    double power = 0.0;          // exponent of the power law
    double coef1 = 1.0;          // numerator
    double coef2 = 0.0;          // 1/GHz
    std::array<double, 5> a{};   // polynomial in GHz, dB
    double vBias = 0.0;          // V
    double vOffset = 0.0;        // V
    double vPi = 1.0;            // V
    double extinction = 0.0;    // least field transmission, relative to the insertion loss; 1: none
    double transmission = 1.0;  // field factor of the insertion loss
    double ChirpFactor = 0.0;
    bool levelShift = true;   // the drive is centered on its own mean level
    bool matchEnds = false;   // the last two bits blend toward the first sample
    double phaseShift = 0.0;  // degrees over a drive of vPi, "Phase"
};

ModulatorParams ReadModulatorParams(Parameter* parameters);

/// Inputs: optical, electrical. Stores the modulated OpSignal in the output cell; nothing, with
/// success, while an input holds no data. An error appends a text and leaves the cell empty.
Status Modulator(const ModulatorParams& params, const Nodelist* inputs, Nodelist* output,
                 std::string& errorText);

/// The model.
Status RunModulator(const ModelCall& call);

}  // namespace photrak

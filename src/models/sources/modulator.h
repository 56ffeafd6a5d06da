// External modulator: prints an electrical drive on every channel of an optical carrier. The drive
// passes a frequency response, a transfer curve and an amplitude-to-phase chirp; noise spectra pass
// with the static transmission at the bias point.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

struct ModulatorParams {
    std::string modulationType;  // "MachZehnder", "Ideal", "Amplitude", "Phase"
    std::string fittingType;     // "fOffset", "Coefficients", "Polynomial"
    double fOffset = 0.0;        // GHz
    double power = 0.0;          // exponent of the power law
    double coef1 = 1.0;          // numerator
    double coef2 = 0.0;          // 1/GHz
    double a0 = 0.0, a1 = 0.0, a2 = 0.0, a3 = 0.0, a4 = 0.0;  // polynomial in GHz, dB
    double vBias = 0.0;                                       // V
    double vOffset = 0.0;                                     // V
    double vPi = 1.0;                                         // V
    double onOffRatio = 0.0;                                  // dB, whatever its sign
    double insertionLoss = 0.0;                               // dB, whatever its sign
    double extinction =
        0.0;  // derived: least field transmission, relative to the insertion loss; 1: none
    double transmission = 1.0;  // derived: field factor of the insertion loss
    double ChirpFactor = 0.0;
    bool levelShift = true;   // the drive is centered on its own mean level
    bool matchEnds = false;   // the last two bits blend toward the first sample
    double phaseShift = 0.0;  // degrees over a drive of vPi, "Phase"
};

/// The rows of its table, and the record read from them.
std::vector<ParamSpec> ModulatorParamSpecs();
ModulatorParams ReadModulatorParams(Parameter* parameters);

/// Inputs: optical, electrical. Stores the modulated OpSignal in the output cell; nothing, with
/// success, while an input holds no data. An error appends a text and leaves the cell empty.
Status Modulator(const ModulatorParams& params, const Nodelist* inputs, Nodelist* output,
                 const ModelReport& report);

/// The model.
Status RunModulator(const ModelCall& call);

}  // namespace photrak

// Erbium-doped fiber amplifier: scales all fields by a gain that the total input power saturates,
// either one for all wavelengths or read from curves over the wavelength, and adds amplified
// spontaneous emission. The emission is a density on a frequency grid that travels beside the
// channels; it is never mixed into the samples, and nothing here is random.
#pragma once

#include <string>
#include <vector>

#include "kernel/driver.h"
#include "models/optical/s_curves.h"

namespace photrak {

/// The codes that blocks and files have for the shape of the emission.
enum class NoiseShape { Flat = 0, Gaussian = 1, Custom = 2 };

struct EdfaParams {
    std::string type;              // "defined": one gain, "custom": gain curves
    std::string spectraFilename;   // gain curves
    double Psat = 0.0;             // W, at the output
    double gain = 1.0;             // factor of the field, unsaturated
    double Fn = 1.0;               // noise figure, linear
    double BW = 0.0;               // width of the noise spectrum, m
    double noiseResolution = 0.0;  // step of the noise spectrum, m
    double noiseCenter = 0.0;      // center of the noise spectrum, m
    NoiseShape noiseShape = NoiseShape::Flat;
    std::string noiseFilename;  // noise curves

    // Read from the files.
    SCurves gainCurves;
    SCurves noiseCurves;  // without any, Custom is Flat
};

/// The rows of its table.
std::vector<ParamSpec> EdfaParamSpecs();
/// Reads the table and loads the curve files that type and noiseShape ask for.
Status ReadEdfaParams(Parameter* parameters, EdfaParams& params, const ModelReport& report);

/// Stores the amplified copy of the input in the output cell; nothing, with success, while the
/// input holds no data. An error appends a text and leaves the cell empty.
Status EDFA(const Nodelist* input, const EdfaParams& params, Nodelist* output,
            const ModelReport& report);

/// The model.
Status RunOpticalAmplifier(const ModelCall& call);

}  // namespace photrak

// Parameters of the SignalSpectra block.
#pragma once

#include <string>

#include "kernel/param_table.h"
#include "results/power_spectrum.h"
#include "results/spectrum_file.h"

namespace photrak {

struct SpectrumParams {
    SpectrumAxis Type = SpectrumAxis::Wavelength;
    DcBin DCoffset = DcBin::Kept;
    int Polarization = 0;  // plotFlag
    std::string ShowNoise, Resolution, Normalize, PowerUnits;
    std::int32_t ResolutionLimit = 0;  // points
    std::string filterSpecMode, filterType;
    double filterBW = 0.0, filterBW0dB = 0.0;  // Hz or m by filterSpecMode
    std::int32_t filterOrder = 1;
    double filterThreshold = 0.0;  // dB
    std::string OSAsensitivityMode;
    double OSAsensitivity = 0.0;  // in the unit of the levels
    std::string testASEnoiseMode;
    std::string FilenameRoot;
    PlotMode plot = PlotMode::Display;  // the block's own
};

void ReadSpectrumParams(Parameter* parameters, SpectrumParams& params);
/// Refuses numbers that are none.
Status CheckSpectrumParams(const SpectrumParams& params, const ModelReport& report);

}  // namespace photrak

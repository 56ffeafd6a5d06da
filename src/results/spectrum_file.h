// Rows and command file of a spectrum.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "results/plot_files.h"

namespace photrak {

/// What the horizontal axis counts, with the code of the block's type.
enum class SpectrumAxis { Baseband = 0, Wavelength = 1, Frequency = 2 };

struct SpectrumFile {
    std::string name;       // file stem
    std::string blockName;  // for the title
    SpectrumAxis axis = SpectrumAxis::Baseband;
    std::string_view unit;  // of the levels
    std::string_view box;   // names the one polarization that is drawn, or empty
    PlotMode mode = PlotMode::Files;
    bool arePoints = false;                   // each row a level by itself, of no width
    std::vector<double> x;                    // ascending, Hz or m
    std::vector<std::vector<double>> curves;  // each as long as x
    std::vector<std::string> legends;         // none, or one for each curve
};
/// Writes ".frq" and ".pcf"; with Display the viewer starts. A disk that fails is no error.
Status WriteSpectrum(const SpectrumFile& file, std::string& errorText);

/// Significant digits, 6 to 15, that tell each value of a rising column from its neighbors.
int DigitsToTellApart(const std::vector<double>& ascending);

}  // namespace photrak

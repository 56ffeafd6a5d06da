// The table of the block's parameters.
#include "results/spectrum_params.h"

#include "results/signal_plot.h"
#include "results/spectrum_plot.h"
#include "results/trace_plot.h"

namespace photrak {
namespace {

void StoreType(SpectrumParams& params, std::string_view word) {
    params.Type = word == "Baseband"    ? SpectrumAxis::Baseband
                  : word == "Frequency" ? SpectrumAxis::Frequency
                                        : SpectrumAxis::Wavelength;
}

void StoreDc(SpectrumParams& params, std::string_view word) {
    params.DCoffset = word == "Ignore" ? DcBin::Hidden : DcBin::Kept;
}

void StorePolarization(SpectrumParams& params, std::string_view word) {
    params.Polarization = OnePolarizationOf(word);
}

constexpr ParamRow<SpectrumParams> rows[] = {
    {"Type", StoreType, "Wavelength", Words{"Wavelength Frequency Baseband"}},
    {"ShowNoise", &SpectrumParams::ShowNoise, "Combined", Words{"Combined Separately Both"}},
    {"PowerUnits", &SpectrumParams::PowerUnits, "dBm", Words{"dBm dBm/Hz"}},
    {"Polarization", StorePolarization, "comb_x_and_y", Words{"x_only y_only comb_x_and_y"}},
    {"Normalize", &SpectrumParams::Normalize, "No", Words{"No Yes"}},
    {"DCoffset", StoreDc, "Show", Words{"Show Ignore"}},
    {"Resolution", &SpectrumParams::Resolution, "Full", Words{"Full Limited"}},
    {"ResolutionLimit", &SpectrumParams::ResolutionLimit, 1024},
    {"filterType", &SpectrumParams::filterType, "None", Words{"None Gaussian Trapezoidal"}},
    {"filterSpecMode", &SpectrumParams::filterSpecMode, "Wavelength",
     Words{"Wavelength Frequency"}},
    {"filterBW", &SpectrumParams::filterBW, 0.1e-9},
    {"filterBW0dB", &SpectrumParams::filterBW0dB, 0.05e-9},
    {"filterOrder", &SpectrumParams::filterOrder, 1},
    {"filterThreshold", &SpectrumParams::filterThreshold, 40.0},
    {"OSAsensitivityMode", &SpectrumParams::OSAsensitivityMode, "Unlimited",
     Words{"Unlimited Limited"}},
    {"OSAsensitivity", &SpectrumParams::OSAsensitivity, -80.0},
    {"testASEnoiseMode", &SpectrumParams::testASEnoiseMode, "FALSE", Words{"FALSE TRUE"}},
    {"FilenameRoot", &SpectrumParams::FilenameRoot, ""},
    {"Plot", [](SpectrumParams& params, std::string_view word) { params.plot = PlotModeOf(word); },
     "Save", Words{"Save No Display", "Display"}}};

}  // namespace

std::vector<ParamSpec> SignalSpectraParamSpecs() {
    return SpecsOf(rows);
}

void ReadSpectrumParams(Parameter* parameters, SpectrumParams& params) {
    ReadParams(rows, parameters, params);
}

Status CheckSpectrumParams(const SpectrumParams& params, const ModelReport& report) {
    return CheckParams(rows, params, report);
}

}  // namespace photrak

// The SignalPlot and ChirpPlot blocks and their writers: time traces of signals.
#pragma once

#include <string>
#include <vector>

#include "kernel/driver.h"
#include "results/plot_files.h"

namespace photrak {

/// Flag word of WriteSignalPlot.
namespace plotFlag {
inline constexpr int magPhase = 0x4, realImag = 0x8, magNoise = 0x10, real = 0x20, dBm = 0x40;
inline constexpr int x = 0x80, y = 0x100, combined = 0x200, defaultForm = 0x400;
}  // namespace plotFlag

/// The blocks: read parameters, name the files, align the inputs, write.
Status SignalPlot(const ModelCall& call);
/// The rows of their tables.
std::vector<ParamSpec> SignalPlotParamSpecs();

struct SignalPlotJob {
    const Nodelist* signals;
    bool showNoise;
    double Toffset;  // s
    int flags;       // plotFlag
    PlotMode mode;
    std::string name;  // file stem
};
/// Write the data files and the command file of a plot, titled by the report's owner. Inputs
/// without a signal are passed over; without any signal nothing is written.
Status WriteSignalPlot(const SignalPlotJob& job, const ModelReport& report);

}  // namespace photrak

// What the signal plot and the chirp plot share: the course of the block, the choice of
// polarizations, and the writing of data files and command file from a description of the plot.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/arrays.h"
#include "results/signal_plot.h"
#include "results/traces.h"

namespace photrak {

/// One way to look at an optical field; its word stands in file names, legends and text boxes.
struct PolarizationView {
    int flag;                // plotFlag
    std::string_view word;   // "", "x", "y"
    std::string_view field;  // "x+y", "x", "y"
};
/// Those that the flags ask for, in the order combined, x, y.
std::vector<PolarizationView> PolarizationViews(int flags);
/// Takes the combined view out of the flags, with x instead if nothing is left, and warns.
Status RefuseCombined(int& flags, std::string_view blockName, std::string& errorText);

enum class PlotAxis { First, Second };

/// One data file: a time column and one column for each trace.
struct ColumnFile {
    std::string suffix;               // behind the file stem
    PlotAxis axis = PlotAxis::First;  // of the viewer
    std::string_view field;           // polarization told in the legends of channels
    const std::vector<Trace>* traces = nullptr;
    /// Fills out[1..noPoints] from the trace's start on.
    std::function<void(const Trace& trace, Doubles& out)> fill;
};

struct TracePlot {
    std::string yLabel, altyLabel;  // of the two axes; the second only with a file on it
    std::string window, altWindow;  // option lines of fixed limits, or empty
    std::string_view polarization;  // "x" or "y" when it alone is drawn, else empty
    std::vector<ColumnFile> files;  // in the order of the command file
};

/// Data files first, then the command file over those that came to be, then the viewer.
Status WriteTracePlot(const SignalPlotJob& job, const TraceSet& traces, const TracePlot& plot,
                      std::string& errorText);

/// The block around a writer: skip rule, mode, parameters, name, aligned copies of the inputs.
/// `usualPolarization` (plotFlag) serves when the parameter is absent or has no known word.
Status RunTraceBlock(const SimOptions& options, Component& component, const Nodelist* inputs,
                     int usualPolarization,
                     Status (*write)(const SignalPlotJob& job, std::string& errorText),
                     std::string& errorText);

/// out[k] = value(i) for all k, with i walking from `start` by ones and back to sample 1 when it
/// reaches `wrap`.
template <class Value>
void WalkCyclically(std::int32_t start, std::int32_t wrap, Doubles& out, Value value) {
    std::int32_t i = start;
    for (long k = 1; k <= out.Size(); ++k) {
        out[k] = value(i);
        if (++i >= wrap) i = 1;
    }
}

}  // namespace photrak

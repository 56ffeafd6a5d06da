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
/// Power of sample i (from 1) of one polarization or, for any other flag than x and y, of both.
double PowerOf(const OpSig& channel, int polarization, std::int32_t i);
/// The text of a box that names the one polarization that is drawn; empty for combined.
std::string_view PolarizationBox(int polarization);
/// Takes the combined view out of the flags, with x instead if nothing is left, and warns.
Status RefuseCombined(int& flags, const ModelReport& report);

enum class PlotAxis { First, Second };

/// One data file: a time column and one column for each trace.
struct ColumnFile {
    std::string suffix;               // after the file stem
    PlotAxis axis = PlotAxis::First;  // of the viewer
    std::string_view field;           // polarization named in the legends of channels
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
                      const ModelReport& report);

/// What the parameters of a trace block ask for.
struct TraceBlockParams {
    std::string FilenameRoot;
    PlotMode plot = PlotMode::Display;  // the block's own
    bool showNoise = false;
    double Toffset = 0.0;  // s
    int flags = 0;         // plotFlag
};
/// The rows that both blocks have.
inline constexpr ParamRow<TraceBlockParams> traceRows[] = {
    {"Toffset", &TraceBlockParams::Toffset, 0.0, Range::Any},
    {"Tstart", NoEffect{}, 0.0},
    {"Tstop", NoEffect{}, 0.0},
    {"plotPoints", NoEffect{}, 1024.0, ParamKind::Whole},
    {"Range", NoEffect{}, "All", Words{"All Specified"}},
    {"DataPoints", NoEffect{}, "All", Words{"All Specified"}},
    {"FilenameRoot", &TraceBlockParams::FilenameRoot, ""},
    {"Plot",
     [](TraceBlockParams& params, std::string_view word) { params.plot = PlotModeOf(word); },
     "Save", Words{"Save No Display", "Display"}}};

struct FlagWord {
    std::string_view word;
    int flags;
};
inline constexpr FlagWord polarizationWords[] = {
    {"x_only", plotFlag::x},
    {"y_only", plotFlag::y},
    {"sep_x_and_y", plotFlag::x | plotFlag::y},
    {"comb_x_and_y", plotFlag::combined},
    {"all", plotFlag::x | plotFlag::y | plotFlag::combined}};
/// The flags of a word, or those that serve for an unknown one.
int FlagsOf(std::string_view word, std::span<const FlagWord> words, int usual);
/// The one view of a plot of powers: x or y alone, both together for any other word.
int OnePolarizationOf(std::string_view word);

/// The block around a writer: reads the common rows into params, which has its own ones already;
/// skip rule, mode, name, aligned copies of the inputs.
Status RunTraceBlock(const ModelCall& call, TraceBlockParams& params,
                     Status (*write)(const SignalPlotJob& job, const ModelReport& report));

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

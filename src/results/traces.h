// The signals of one plot as traces on a common time axis: which inputs take part, and at which
// sample each of them begins. Files and options of a plot are in trace_plot.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kernel/model_report.h"
#include "kernel/workspace.h"

namespace photrak {

/// One curve's source, borrowed: exactly one of the three signals is set.
struct Trace {
    const OpSig* channel = nullptr;
    const ElecSig* wave = nullptr;
    const BinSig* bits = nullptr;
    std::int32_t input = 0;  // number of its input port, from 1
    std::int32_t start = 1;  // sample at which the plot's time axis begins, from 1
};

enum class TraceKind { Optical, Electrical, Binary };

struct TraceSet {
    TraceKind kind = TraceKind::Optical;
    std::int32_t noPoints = 0;       // points of every trace
    double tStep = 0.0;              // s; 0 only with one point, a continuous level
    std::int32_t samplesPerBit = 1;  // of the bits: 1 when they stand alone
    std::vector<Trace> main;         // of the plot's kind; empty when there is nothing to draw
    std::vector<Trace> bits;         // binary signals beside a waveform
};

enum class TraceChoice {
    AllKinds,     // a signal of another length ends the collection
    OpticalOnly,  // a channel of another length is left out
    Waveforms,    // bits never take part; what has no samples or another length is left out
};

/// The first waveform sets kind, length and time step of the plot; bits do when they stand alone.
/// Waveforms of another kind are passed over. Bits beside a waveform must be as many as its pattern
/// length. `plot` is the kind of plot in the messages ("signal plot"). An error with a text when
/// the signal that sets the axis has no samples or no time step, or no pattern length that its bits
/// could follow.
Status CollectTraces(const Nodelist* signals, TraceChoice choice, std::string_view plot,
                     TraceSet& traces, const ModelReport& report);
/// Bits of the pattern of a waveform, as the signal says.
std::int32_t PatternLengthOf(const Trace& trace);
/// How a legend names the trace: a channel by its wavelength and the `field` that is drawn ("x+y"),
/// any other signal by the number of its port.
std::string TraceLegend(const Trace& trace, std::string_view field);

/// Points of the time axis that lie before the offset (s), at most all of them. No offset below 0.
std::int32_t PointsBefore(double Toffset, const TraceSet& traces);

}  // namespace photrak

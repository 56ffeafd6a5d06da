// Collection of the traces and their alignment in time. Signals are periodic: a later start is a
// rotation.
#include "results/traces.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "base/units.h"

namespace photrak {
namespace {

TraceKind KindOf(const Trace& trace) {
    if (trace.channel) return TraceKind::Optical;
    return trace.wave ? TraceKind::Electrical : TraceKind::Binary;
}

std::int32_t PointsOf(const Trace& trace) {
    if (trace.channel) return trace.channel->noPoints;
    return trace.wave ? trace.wave->noPoints : trace.bits->noPoints;
}

double StartTimeOf(const Trace& trace) {
    if (trace.channel) return trace.channel->startTime;
    return trace.wave ? trace.wave->startTime : trace.bits->startTime;
}

double TimeStepOf(const Trace& trace) {
    if (trace.channel) return trace.channel->tStep;
    return trace.wave ? trace.wave->tStep : 1.0 / trace.bits->bitRate;
}

/// What is added to the rotation to make it a one-based sample number: 1 for normal signals.
std::int32_t FirstSampleOf(const Trace& trace) {
    if (trace.channel) return trace.channel->spareCount;
    return trace.wave ? trace.wave->spareCount : 1;
}

/// Every signal of the list in the order of the ports; a multiplex gives one trace per channel.
std::vector<Trace> Candidates(const Nodelist* signals) {
    std::vector<Trace> found;
    std::int32_t input = 0;
    for (const Nodelist& cell : Items(signals)) {
        ++input;
        if (!cell.sig) continue;
        Trace trace;
        trace.input = input;
        if (cell.sigType == OpSigType) {
            for (const OpSig& channel : Items(static_cast<const OpSignal*>(cell.sig)->channels)) {
                trace.channel = &channel;
                found.push_back(trace);
            }
        } else if (cell.sigType == ElecSigType) {
            trace.wave = static_cast<const ElecSig*>(cell.sig);
            found.push_back(trace);
        } else if (cell.sigType == BinSigType) {
            trace.bits = static_cast<const BinSig*>(cell.sig);
            found.push_back(trace);
        }
    }
    return found;
}

/// The trace that sets the axis: the first waveform, else the first bits, else none.
const Trace* AxisOf(const std::vector<Trace>& candidates) {
    for (const Trace& trace : candidates) {
        if (!trace.bits) return &trace;
    }
    return candidates.empty() ? nullptr : &candidates.front();
}

/// Where a message says that it comes from.
struct Origin {
    std::string_view plot;
    const ModelReport& report;
};

Status Refuse(const Trace& trace, std::string_view reason, const Origin& origin) {
    const ModelReport& report = origin.report;
    return report.Fail("ERROR in ", origin.plot, " '", report.owner, "': input signal ",
                       trace.input, " ", reason, ".\n");
}

Status SetAxis(const Trace& axis, TraceSet& traces, const Origin& origin) {
    traces.kind = KindOf(axis);
    traces.noPoints = PointsOf(axis);
    traces.tStep = TimeStepOf(axis);
    if (traces.noPoints < 1) return Refuse(axis, "has no samples", origin);
    const bool hasStep = std::isfinite(traces.tStep) && traces.tStep > 0.0;
    if (hasStep) return Status::Success;
    if (traces.noPoints > 1) return Refuse(axis, "has no time step", origin);
    traces.tStep = 0.0;
    return Status::Success;
}

Status SetBitAxis(const Trace& axis, TraceSet& traces, const Origin& origin) {
    const std::int32_t patternLength = PatternLengthOf(axis);
    if (patternLength < 1) {
        return Refuse(axis, "has no pattern length for the binary signal beside it", origin);
    }
    traces.samplesPerBit = traces.noPoints / patternLength;
    if (traces.samplesPerBit < 1) {
        return Refuse(axis, "has fewer samples than bits", origin);
    }
    return Status::Success;
}

/// Adds the trace where it belongs; false if its length does not fit.
bool Place(const Trace& trace, std::int32_t bitsWanted, TraceSet& traces) {
    const TraceKind kind = KindOf(trace);
    if (kind == traces.kind) {
        if (PointsOf(trace) != traces.noPoints) return false;
        traces.main.push_back(trace);
    } else if (kind == TraceKind::Binary) {
        if (trace.bits->noPoints != bitsWanted) return false;
        traces.bits.push_back(trace);
    }
    return true;
}

/// The axis' start less the trace's own in samples, brought into one period.
/// By design: a half is added before the cut toward zero, so that a trace that begins
/// after the axis is turned one sample less than its delay.
std::int32_t StartSample(double tStart, const Trace& trace, const TraceSet& traces) {
    const double n = traces.noPoints;
    double rotation = 0.0;
    if (traces.tStep > 0.0) {
        rotation = std::fmod(std::trunc((tStart - StartTimeOf(trace)) / traces.tStep + 0.5), n);
    }
    if (!std::isfinite(rotation)) rotation = 0.0;
    if (rotation < 0.0) rotation += n;
    const std::int64_t index = static_cast<std::int64_t>(rotation) + FirstSampleOf(trace) - 1;
    const std::int64_t period = traces.noPoints;
    return static_cast<std::int32_t>((index % period + period) % period) + 1;
}

void AlignStarts(TraceSet& traces) {
    double tStart = StartTimeOf(traces.main.front());
    if (traces.kind == TraceKind::Optical) {
        for (const Trace& trace : traces.main) tStart = std::max(tStart, StartTimeOf(trace));
    }
    for (Trace& trace : traces.main) trace.start = StartSample(tStart, trace, traces);
    for (Trace& trace : traces.bits) trace.start = StartSample(tStart, trace, traces);
}

}  // namespace

std::int32_t PatternLengthOf(const Trace& trace) {
    return trace.channel ? trace.channel->patternLength : trace.wave->patternLength;
}

std::string TraceLegend(const Trace& trace, std::string_view field) {
    if (!trace.channel) return Concat("\\# ", trace.input);
    const double wavelengthNm = trace.channel->wavelength * nanometersPerMeter;
    return Concat("&l = ", wavelengthNm, " nm (", field, ")");
}

Status CollectTraces(const Nodelist* signals, TraceChoice choice, std::string_view plot,
                     TraceSet& traces, const ModelReport& report) {
    const Origin origin{plot, report};
    std::vector<Trace> candidates = Candidates(signals);
    if (choice == TraceChoice::OpticalOnly) {
        std::erase_if(candidates, [](const Trace& trace) { return !trace.channel; });
    } else if (choice == TraceChoice::Waveforms) {
        std::erase_if(candidates,
                      [](const Trace& trace) { return trace.bits || PointsOf(trace) < 1; });
    }
    const Trace* axis = AxisOf(candidates);
    if (!axis) return Status::Success;
    if (SetAxis(*axis, traces, origin) != Status::Success) return Status::Error;

    std::int32_t bitsWanted = 0;
    const bool anyBits = std::any_of(candidates.begin(), candidates.end(),
                                     [](const Trace& trace) { return trace.bits != nullptr; });
    if (anyBits && traces.kind != TraceKind::Binary) {
        if (SetBitAxis(*axis, traces, origin) != Status::Success) {
            return Status::Error;
        }
        bitsWanted = PatternLengthOf(*axis);
    }
    const bool misfitEnds = choice == TraceChoice::AllKinds;
    for (const Trace& trace : candidates) {
        if (!Place(trace, bitsWanted, traces) && misfitEnds && !traces.main.empty()) break;
    }
    if (!traces.main.empty()) AlignStarts(traces);
    return Status::Success;
}

std::int32_t PointsBefore(double Toffset, const TraceSet& traces) {
    if (!(Toffset > 0.0) || !(traces.tStep > 0.0)) return 0;
    const double points = std::floor(Toffset / traces.tStep);
    return points < traces.noPoints ? static_cast<std::int32_t>(points) : traces.noPoints;
}

}  // namespace photrak

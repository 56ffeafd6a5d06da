// Frequency deviation of optical channels over time.
#include "results/chirp_plot.h"

#include <cmath>

#include "base/text.h"
#include "base/units.h"
#include "results/signal_plot.h"
#include "results/trace_plot.h"

namespace photrak {
namespace {

constexpr std::string_view chirpUnit = "Hz";

constexpr ParamRow<TraceBlockParams> rows[] = {
    {"Polarization",
     [](TraceBlockParams& params, std::string_view word) {
         params.flags |= FlagsOf(word, polarizationWords, plotFlag::x);
     },
     "x_only", Words{"x_only y_only sep_x_and_y"}}};

ColumnFile ChirpFile(const TraceSet& traces, const PolarizationView& view) {
    ColumnFile file;
    file.suffix = Concat("_", view.word, "chirp.sig");
    file.field = view.field;
    file.traces = &traces.main;
    const bool isY = view.flag == plotFlag::y;
    const double tStep = traces.tStep;
    file.fill = [=](const Trace& trace, Doubles& out) {
        const OpSig& channel = *trace.channel;
        const Complex* samples = isY ? channel.Ey_samples : channel.Ex_samples;
        ComputeChirp(channel.noPoints, out.Data(), samples, tStep, trace.start);
    };
    return file;
}

}  // namespace

void ComputeChirp(std::int32_t n, double* out, const Complex* samples, double tStep,
                  std::int32_t start) {
    constexpr double cyclesPerRadian = 0.15915494309189535;
    double formerPhase = 0.0, formerPower = 0.0;
    std::int32_t i = start;
    for (std::int32_t k = 1; k <= n; ++k) {
        out[k] = 0.0;
        const double power = samples ? SquaredMagnitude(samples[i]) : 0.0;
        if (power > 0.0) {
            const double phase = std::atan2(samples[i].im, samples[i].re);
            double fall = formerPhase - phase;
            if (fall < -pi) fall += twoPi;
            if (fall > pi) fall -= twoPi;
            if (formerPower != 0.0) out[k] = fall / tStep * cyclesPerRadian;
            formerPhase = phase;
            formerPower = power;
        } else {
            formerPhase = formerPower = 0.0;
        }
        if (++i > n) i = 1;
    }
}

std::vector<ParamSpec> ChirpPlotParamSpecs() {
    return SpecsOf(traceRows, rows);
}

Status ChirpPlot(const ModelCall& call) {
    TraceBlockParams params;
    ReadParams(rows, call.component.parameters, params);
    return RunTraceBlock(call, params, WriteChirpPlot);
}

Status WriteChirpPlot(const SignalPlotJob& job, const ModelReport& report) {
    TraceSet traces;
    Status status =
        CollectTraces(job.signals, TraceChoice::OpticalOnly, "signal plot", traces, report);
    if (status == Status::Error || traces.main.empty()) return status;
    int flags = job.flags;
    // A sum of powers has no phase, hence no chirp.
    if (flags & plotFlag::combined) MergeStatus(status, RefuseCombined(flags, report));
    if (!(flags & (plotFlag::x | plotFlag::y))) flags |= plotFlag::x;

    TracePlot plot;
    plot.yLabel = Concat("Frequency Chirp (", chirpUnit, ")");
    const std::vector<PolarizationView> views = PolarizationViews(flags);
    if (views.size() == 1) plot.polarization = views.front().word;
    for (const PolarizationView& view : views) plot.files.push_back(ChirpFile(traces, view));
    MergeStatus(status, WriteTracePlot(job, traces, plot, report));
    return status;
}

}  // namespace photrak

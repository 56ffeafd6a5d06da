// Frequency deviation of optical channels over time.
#include <cmath>
#include <numbers>

#include "base/text.h"
#include "results/signal_plot.h"
#include "results/trace_plot.h"

namespace photrak {
namespace {

constexpr std::string_view chirpUnit = "Hz";

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
            if (fall < -std::numbers::pi) fall += 2.0 * std::numbers::pi;
            if (fall > std::numbers::pi) fall -= 2.0 * std::numbers::pi;
            if (formerPower != 0.0) out[k] = fall / tStep * cyclesPerRadian;
            formerPhase = phase;
            formerPower = power;
        } else {
            formerPhase = formerPower = 0.0;
        }
        if (++i > n) i = 1;
    }
}

Status ChirpPlot(const SimOptions& options, Component& component, const Nodelist* inputs,
                 std::string& errorText) {
    return RunTraceBlock(options, component, inputs, plotFlag::x, WriteChirpPlot, errorText);
}

Status WriteChirpPlot(const SignalPlotJob& job, std::string& errorText) {
    TraceSet traces;
    Status status =
        CollectTraces(job.signals, TraceChoice::OpticalOnly, job.componentName, traces, errorText);
    if (status == Status::Error || traces.main.empty()) return status;
    int flags = job.flags;
    // A sum of powers has no phase, hence no chirp.
    if (flags & plotFlag::combined) {
        MergeStatus(status, RefuseCombined(flags, job.componentName, errorText));
    }
    if (!(flags & (plotFlag::x | plotFlag::y))) flags |= plotFlag::x;

    TracePlot plot;
    plot.yLabel = Concat("Frequency Chirp (", chirpUnit, ")");
    const std::vector<PolarizationView> views = PolarizationViews(flags);
    if (views.size() == 1) plot.polarization = views.front().word;
    for (const PolarizationView& view : views) plot.files.push_back(ChirpFile(traces, view));
    MergeStatus(status, WriteTracePlot(job, traces, plot, errorText));
    return status;
}

}  // namespace photrak

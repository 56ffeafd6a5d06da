// Time traces of optical, electrical and binary signals: which quantities a representation shows,
// and how a sample becomes a plotted value.
#include "results/signal_plot.h"

#include <cmath>

#include "base/text.h"
#include "numeric/random.h"
#include "results/levels.h"
#include "results/trace_plot.h"

namespace photrak {
namespace {

enum class Quantity { None, Real, Magnitude, Phase, Noise, Imaginary };

/// What the two axes show, and the words for it.
struct Form {
    int flag;
    Quantity first, second;
    std::string_view firstWord, secondWord;    // in file names
    std::string_view firstLabel, secondLabel;  // of the axes
};
constexpr Form forms[] = {
    {plotFlag::magPhase, Quantity::Magnitude, Quantity::Phase, "mag", "phase", "Signal Magnitude",
     "Phase"},
    {plotFlag::realImag, Quantity::Real, Quantity::Imaginary, "real", "imag", "Signal (Real)",
     "Signal (Imaginary)"},
    {plotFlag::magNoise, Quantity::Magnitude, Quantity::Noise, "mag", "noise", "Signal Magnitude",
     "Noise"},
    {plotFlag::real, Quantity::Real, Quantity::None, "real", "", "Signal (Real)", ""},
    {plotFlag::defaultForm, Quantity::Magnitude, Quantity::None, "mag", "", "Signal Magnitude", ""},
};

constexpr FlagWord representations[] = {{"Mag/Phase", plotFlag::magPhase},
                                        {"Real/Imag", plotFlag::realImag},
                                        {"Mag/Noise", plotFlag::magNoise},
                                        {"Real", plotFlag::real}};

void StoreRepresentation(TraceBlockParams& params, std::string_view word) {
    params.flags |= FlagsOf(word, representations, plotFlag::defaultForm);
}
void StoreUnits(TraceBlockParams& params, std::string_view word) {
    if (word == "dBm") params.flags |= plotFlag::dBm;
}
void StorePolarization(TraceBlockParams& params, std::string_view word) {
    params.flags |= FlagsOf(word, polarizationWords, plotFlag::combined);
}

constexpr ParamRow<TraceBlockParams> rows[] = {
    {"ShowNoise",
     [](TraceBlockParams& params, std::string_view word) { params.showNoise = word != "FALSE"; },
     "TRUE", Words{"TRUE FALSE"}},
    {"Representation", StoreRepresentation, "Default",
     Words{"Default Real Real/Imag Mag/Phase Mag/Noise"}},
    {"PowerUnits", StoreUnits, "W", Words{"W dBm"}},
    {"Polarization", StorePolarization, "comb_x_and_y",
     Words{"x_only y_only sep_x_and_y comb_x_and_y all"}}};

constexpr std::string_view binaryLabel = "Binary Value";
constexpr std::string_view binaryLimits = ",,-0.1,1.1\n";  // no limit in x, a margin in y

/// By design: values of plain magnitude or power come from all samples in turn, while every
/// other walk returns to sample 1 where it should have reached the last one.
std::int32_t WrapOf(Quantity quantity, std::int32_t noPoints) {
    return quantity == Quantity::Magnitude ? noPoints + 1 : noPoints;
}

/// The quantities that a single complex sample has by itself.
double FieldValue(Quantity quantity, Complex sample) {
    switch (quantity) {
        case Quantity::Real:
            return sample.re;
        case Quantity::Imaginary:
            return sample.im;
        case Quantity::Phase:
            return Phase(sample);
        case Quantity::Magnitude:
            return Magnitude(sample);
        default:
            return 0.0;
    }
}

void FillOptical(const OpSig& channel, std::int32_t start, Quantity quantity, int flags,
                 int polarization, Doubles& out) {
    const std::int32_t wrap = WrapOf(quantity, channel.noPoints);
    if (quantity == Quantity::Magnitude) {
        WalkCyclically(start, wrap, out,
                       [&](std::int32_t i) { return PowerOf(channel, polarization, i); });
        if (flags & plotFlag::dBm) ToDbm({out.Data() + 1, static_cast<std::size_t>(out.Size())});
        return;
    }
    const Complex* field = polarization == plotFlag::y ? channel.Ey_samples : channel.Ex_samples;
    WalkCyclically(start, wrap, out, [&](std::int32_t i) {
        return FieldValue(quantity, field ? field[i] : Complex());
    });
}

/// With `noisy` a draw of each sample's noise is added to the value that carries the voltage.
void FillElectrical(const ElecSig& wave, std::int32_t start, Quantity quantity, bool noisy,
                    Doubles& out) {
    const std::int32_t wrap = WrapOf(quantity, wave.noPoints);
    if (quantity == Quantity::Noise) {
        WalkCyclically(start, wrap, out, [&](std::int32_t i) { return wave.sigmaSamples[i].re; });
        return;
    }
    const bool carriesNoise = quantity == Quantity::Real || quantity == Quantity::Magnitude;
    WalkCyclically(start, wrap, out, [&](std::int32_t i) {
        const double value = FieldValue(quantity, wave.elecSamples[i]);
        if (!noisy || !carriesNoise) return value;
        NoteNoise(wave.sigmaSamples[i].re);
        return value + GaussianRandom(&ProcessSeeds().signalPlot) * wave.sigmaSamples[i].re;
    });
}

/// Each bit lasts `samplesPerBit` samples; the pattern starts again after its last bit.
void FillBits(const Trace& trace, const TraceSet& traces, Doubles& out) {
    const BinSig& bits = *trace.bits;
    WalkCyclically(trace.start, traces.noPoints, out, [&](std::int32_t i) {
        const std::int32_t bit = (i - 1) / traces.samplesPerBit % bits.noPoints + 1;
        return static_cast<double>(bits.bitSequence[bit]);
    });
}

const Form& FormOf(int flags, TraceKind kind) {
    for (const Form& form : forms) {
        const bool plain = form.flag == plotFlag::defaultForm;
        if ((flags & form.flag) && !(plain && kind == TraceKind::Electrical)) return form;
    }
    const int usual = kind == TraceKind::Electrical ? plotFlag::real : plotFlag::defaultForm;
    return FormOf(usual, kind);
}

std::string_view UnitOf(TraceKind kind, int flags) {
    if (kind == TraceKind::Electrical) return "V";
    return flags & plotFlag::dBm ? "dBm" : "W";
}

/// Everything about the plot that the files below are made from.
struct Settings {
    const SignalPlotJob& job;
    const TraceSet& traces;
    int flags;
};

ColumnFile QuantityFile(const Settings& settings, Quantity quantity, std::string_view word,
                        PlotAxis axis, const PolarizationView& view) {
    ColumnFile file;
    file.suffix = Concat("_", view.word, word, ".sig");
    file.axis = axis;
    file.field = view.field;
    file.traces = &settings.traces.main;
    const bool noisy = settings.job.showNoise;
    const int flags = settings.flags, polarization = view.flag;
    file.fill = [=](const Trace& trace, Doubles& out) {
        if (trace.wave) return FillElectrical(*trace.wave, trace.start, quantity, noisy, out);
        FillOptical(*trace.channel, trace.start, quantity, flags, polarization, out);
    };
    return file;
}

ColumnFile BitFile(const TraceSet& traces, const std::vector<Trace>& bits, PlotAxis axis,
                   std::string_view word) {
    ColumnFile file;
    file.suffix = Concat("_", word, "bin.sig");
    file.axis = axis;
    file.traces = &bits;
    file.fill = [&traces](const Trace& trace, Doubles& out) { FillBits(trace, traces, out); };
    return file;
}

TracePlot PlanBinary(const TraceSet& traces) {
    TracePlot plot;
    plot.yLabel = binaryLabel;
    plot.window = Concat("/w", binaryLimits);
    plot.files.push_back(BitFile(traces, traces.main, PlotAxis::First, ""));
    return plot;
}

TracePlot PlanWaveforms(const Settings& settings) {
    const TraceSet& traces = settings.traces;
    const Form& form = FormOf(settings.flags, traces.kind);
    TracePlot plot;
    plot.yLabel = form.firstLabel;
    if (form.first == Quantity::Magnitude) {
        plot.yLabel += Concat(" (", UnitOf(traces.kind, settings.flags), ")");
    }
    const bool onlyBitsSecond = form.second == Quantity::None;
    plot.altyLabel = onlyBitsSecond ? binaryLabel : form.secondLabel;
    // The limits of bits would cut another quantity that shares their axis.
    if (onlyBitsSecond) plot.altWindow = Concat("/altw", binaryLimits);

    const int viewFlags =
        traces.kind == TraceKind::Electrical ? plotFlag::combined : settings.flags;
    const std::vector<PolarizationView> views = PolarizationViews(viewFlags);
    if (views.size() == 1) plot.polarization = views.front().word;
    for (const PolarizationView& view : views) {
        plot.files.push_back(
            QuantityFile(settings, form.first, form.firstWord, PlotAxis::First, view));
        if (!traces.bits.empty()) {
            plot.files.push_back(BitFile(traces, traces.bits, PlotAxis::Second, view.word));
        }
        if (form.second != Quantity::None) {
            plot.files.push_back(
                QuantityFile(settings, form.second, form.secondWord, PlotAxis::Second, view));
        }
    }
    return plot;
}

/// Only power can be summed over the polarizations, and light carries no noise beside its samples.
Status ResolveOpticalFlags(int& flags, const ModelReport& report) {
    flags &= ~plotFlag::magNoise;
    if (!(flags & (plotFlag::x | plotFlag::y | plotFlag::combined))) flags |= plotFlag::combined;
    const bool needsOneField =
        (flags & (plotFlag::magPhase | plotFlag::realImag | plotFlag::real)) != 0;
    if (!needsOneField || !(flags & plotFlag::combined)) return Status::Success;
    return RefuseCombined(flags, report);
}

}  // namespace

std::vector<ParamSpec> SignalPlotParamSpecs() {
    return SpecsOf(traceRows, rows);
}

Status SignalPlot(const ModelCall& call) {
    TraceBlockParams params;
    ReadParams(rows, call.component.parameters, params);
    return RunTraceBlock(call, params, WriteSignalPlot);
}

Status WriteSignalPlot(const SignalPlotJob& job, const ModelReport& report) {
    TraceSet traces;
    Status status =
        CollectTraces(job.signals, TraceChoice::AllKinds, "signal plot", traces, report);
    if (status == Status::Error || traces.main.empty()) return status;
    int flags = job.flags;
    if (traces.kind == TraceKind::Optical) {
        MergeStatus(status, ResolveOpticalFlags(flags, report));
    }
    const TracePlot plot =
        traces.kind == TraceKind::Binary ? PlanBinary(traces) : PlanWaveforms({job, traces, flags});
    MergeStatus(status, WriteTracePlot(job, traces, plot, report));
    return status;
}

}  // namespace photrak

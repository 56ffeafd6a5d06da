// Which samples a trace of the eye holds, the noise on them, the rows and the command file.
#include "results/eye_plot.h"

#include <algorithm>
#include <deque>

#include "base/arrays.h"
#include "base/text.h"
#include "numeric/random.h"
#include "platform/stop_point.h"
#include "results/curve_file.h"
#include "results/levels.h"
#include "results/plot_files.h"
#include "results/trace_plot.h"

namespace photrak {
namespace {

// --- Parameters ---

struct EyeParams {
    double Toffset = 0.0;  // s
    std::int32_t bitsPerTrace = 1;
    bool magnitude = false, showNoise = false;  // of electrical signals
    bool dBm = false;                           // of optical power
    int polarization = plotFlag::combined;
    std::string FilenameRoot;
    PlotMode plot = PlotMode::Display;  // the block's own
};

void StorePolarization(EyeParams& params, std::string_view word) {
    params.polarization = OnePolarizationOf(word);
}

constexpr ParamRow<EyeParams> rows[] = {
    {"Toffset", &EyeParams::Toffset, 0.0},
    {"ManchesterEncoded",
     [](EyeParams& params, std::string_view word) { params.bitsPerTrace = word == "TRUE" ? 2 : 1; },
     "FALSE", Words{"TRUE FALSE"}},
    {"Representation",
     [](EyeParams& params, std::string_view word) { params.magnitude = word == "Magnitude"; },
     "Real", Words{"Real Magnitude"}},
    {"RecNoiseBW", NoEffect{}, 0.0},
    {"ShowNoise",
     [](EyeParams& params, std::string_view word) { params.showNoise = word == "TRUE"; }, "TRUE",
     Words{"TRUE FALSE"}},
    {"PowerUnits", [](EyeParams& params, std::string_view word) { params.dBm = word == "dBm"; },
     "W", Words{"W dBm"}},
    {"Polarization", StorePolarization, "comb_x_and_y", Words{"x_only y_only comb_x_and_y"}},
    {"FilenameRoot", &EyeParams::FilenameRoot, ""},
    {"Plot", [](EyeParams& params, std::string_view word) { params.plot = PlotModeOf(word); },
     "Save", Words{"Save No Display", "Display"}}};

// --- Folding ---

/// The first and the last bits of a pattern stay out of the eye: a pattern has at least
/// `leastBits` for one trace.
constexpr std::int32_t firstBit = 2, bitsAtEnd = 3, leastBits = firstBit + bitsAtEnd + 1;

struct Folding {
    std::int32_t bits = 1;           // of the pattern
    std::int32_t samplesPerBit = 1;  // whole ones
    std::int32_t bitsPerTrace = 1;   // 2 for a code of two half bits
    std::int32_t offset = 0;         // samples
    std::int64_t Rows() const { return std::int64_t{bitsPerTrace} * samplesPerBit; }
    std::int64_t Traces() const {
        return (bits - bitsAtEnd - firstBit + bitsPerTrace - 1) / bitsPerTrace;
    }
    /// Samples from the start of the walk to the first of trace j = 0, 1, ...
    std::int64_t Start(std::int64_t j) const {
        return (firstBit + j * bitsPerTrace) * samplesPerBit + offset;
    }
};

std::string Heading(std::string_view kind, std::string_view name) {
    return Concat(kind, " in eye diagram '", name, "': ");
}

/// A warning when the eye is shorter than the pattern's samples, and when there is none: then
/// `folding.bits` is 0.
Status Fold(const TraceSet& traces, const EyeParams& params, const ModelReport& report,
            Folding& folding) {
    const std::int32_t bits = std::max(PatternLengthOf(traces.main.front()), 1);
    folding.bits = 0;
    if (bits < leastBits) {
        return report.Warn(Heading("WARNING", report.owner), "the pattern has ", bits,
                           bits == 1 ? " bit" : " bits", "; an eye needs at least ", leastBits,
                           ". No eye is written.\n");
    }
    folding.samplesPerBit = traces.noPoints / bits;
    if (folding.samplesPerBit < 1) {
        return report.Warn(Heading("WARNING", report.owner), "the pattern has ", bits, " bits in ",
                           traces.noPoints, " samples. No eye is written.\n");
    }
    folding.bits = bits;
    folding.bitsPerTrace = params.bitsPerTrace;
    folding.offset = PointsBefore(params.Toffset, traces);
    if (traces.noPoints % bits == 0) return Status::Success;
    return report.Warn(Heading("WARNING", report.owner), traces.noPoints,
                       " samples are no whole number per bit for ", bits,
                       " bits; the eye is folded at ", folding.samplesPerBit,
                       " samples per bit.\n");
}

// --- Values ---

double Voltage(Complex sample, bool magnitude) {
    return magnitude ? Magnitude(sample) : sample.re;
}

/// All samples of the signal in the order of the walk.
void FillValues(const Trace& trace, const EyeParams& params, Doubles& out) {
    const auto n = static_cast<std::int32_t>(out.Size());
    if (trace.channel) {
        WalkCyclically(trace.start, n + 1, out, [&](std::int32_t i) {
            LookForStop(i);
            return PowerOf(*trace.channel, params.polarization, i);
        });
        if (params.dBm) ToDbm({out.Data() + 1, static_cast<std::size_t>(n)});
        return;
    }
    const ElecSig& wave = *trace.wave;
    WalkCyclically(trace.start, n + 1, out, [&](std::int32_t i) {
        LookForStop(i);
        const double value = Voltage(wave.elecSamples[i], params.magnitude);
        if (!params.showNoise) return value;
        NoteNoise(wave.sigmaSamples[i].re);
        return value + GaussianRandom(&ProcessSeeds().eyePlot) * wave.sigmaSamples[i].re;
    });
}

// --- Files ---

struct EyeText {
    std::string rows;
    bool drawn = false;  // some y has a value
    AxisRange y;
    void Note(double value) {
        if (!drawn) y = {value, value};
        y = {std::min(y.least, value), std::max(y.greatest, value)};
        drawn = true;
    }
};

constexpr std::string_view beyondTheEnd = ". ";  // which the viewer skips

/// One row per sample of a trace: its time, then signal after signal and trace after trace.
EyeText RowsText(const std::deque<Doubles>& signals, const Folding& folding, double tStep) {
    EyeText text;
    constexpr std::int64_t usualNumberLength = 13;  // with its blank
    const auto columns = folding.Traces() * static_cast<std::int64_t>(signals.size()) + 1;
    text.rows.reserve(static_cast<std::size_t>(folding.Rows() * columns * usualNumberLength));
    for (std::int64_t k = 0; k < folding.Rows(); ++k) {
        AppendDefault(text.rows, static_cast<double>(k) * tStep);
        for (const Doubles& samples : signals) {
            for (std::int64_t j = 0; j < folding.Traces(); ++j) {
                LookForStop(j);
                const std::int64_t position = folding.Start(j) + k;
                text.rows += ' ';
                if (position >= samples.Size()) {
                    text.rows += beyondTheEnd;
                    continue;
                }
                text.Note(samples[position + 1]);
                AppendDefault(text.rows, samples[position + 1]);
            }
        }
        text.rows += '\n';
    }
    return text;
}

std::string_view UnitOf(const TraceSet& traces, const EyeParams& params) {
    if (traces.kind == TraceKind::Electrical) return "V";
    return params.dBm ? "dBm" : "W";
}

std::string ScriptText(const PlotStart& plot, std::string_view owner, const EyeParams& params,
                       const TraceSet& traces, const Folding& folding, const EyeText& eye) {
    std::string script;
    AppendTextLine(script, "/xl", "Time (s)");
    AppendTextLine(script, "/yl", Concat("Signal (", UnitOf(traces, params), ")"));
    AppendTextLine(script, "/tt", LabelText(owner) + " Eye Diagram");
    script += "/lc2\n/ls1\n";
    const std::string_view box = PolarizationBox(params.polarization);
    if (traces.kind == TraceKind::Optical && !box.empty()) AppendTextLine(script, "/tb", box);
    if (folding.Rows() == 1) script += "/st7\n";
    if (eye.drawn && eye.y.IsFlat()) {
        const double last = static_cast<double>(folding.Rows() - 1) * traces.tStep;
        script += WindowLine({0.0, last}, eye.y);
    }
    const auto signals = static_cast<std::int64_t>(traces.main.size());
    return script += Concat(plot.name, ".eye\n/nx1 /ny", signals * folding.Traces(), '\n');
}

Status WriteEye(const PlotStart& plot, const EyeParams& params, const TraceSet& traces,
                const Folding& folding, const ModelReport& report) {
    std::deque<Doubles> signals;
    for (const Trace& trace : traces.main) {
        FillValues(trace, params, signals.emplace_back(traces.noPoints));
    }
    const EyeText eye = RowsText(signals, folding, traces.tStep);
    const FileResult data = WritePlotFile(plot.name + ".eye", eye.rows, report.errorText);
    if (data == FileResult::Refused) return Status::Error;
    if (data == FileResult::Failed) return Status::Success;
    return WriteCommandFile(plot.name + ".pce",
                            ScriptText(plot, report.owner, params, traces, folding, eye), plot.mode,
                            report.errorText);
}

}  // namespace

std::vector<ParamSpec> EyeDiagramParamSpecs() {
    return SpecsOf(rows);
}

Status RunEyeDiagram(const ModelCall& call) {
    EyeParams params;
    ReadParams(rows, call.component.parameters, params);
    PlotStart plot;
    Status status = StartPlot(call, "eye diagram", params.FilenameRoot, params.plot, plot);
    if (status == Status::Error || plot.mode == PlotMode::None) return status;
    if (CheckParams(rows, params, call) != Status::Success) return Status::Error;

    TraceSet traces;
    if (CollectTraces(plot.signals.get(), TraceChoice::Waveforms, "eye diagram", traces, call) !=
        Status::Success) {
        return Status::Error;
    }
    if (traces.main.empty()) return call.Fail("ERROR plotting eye diagram: no input signals\n");
    Folding folding;
    MergeStatus(status, Fold(traces, params, call, folding));
    if (folding.bits == 0) return status;
    MergeStatus(status, WriteEye(plot, params, traces, folding, call));
    return status;
}

}  // namespace photrak

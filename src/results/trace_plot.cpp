// Parameters of the trace blocks as flags, rows of the data files, lines of the command file.
#include "results/trace_plot.h"

#include <algorithm>
#include <deque>
#include <new>
#include <stdexcept>

#include "base/text.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr std::string_view timeUnit = "s";

constexpr PolarizationView polarizationViews[] = {
    {plotFlag::combined, "", "x+y"}, {plotFlag::x, "x", "x"}, {plotFlag::y, "y", "y"}};

struct FlagWord {
    std::string_view word;
    int flags;
};
constexpr FlagWord representationWords[] = {{"Mag/Phase", plotFlag::magPhase},
                                            {"Real/Imag", plotFlag::realImag},
                                            {"Mag/Noise", plotFlag::magNoise},
                                            {"Real", plotFlag::real},
                                            {"Default", plotFlag::defaultForm}};
constexpr FlagWord polarizationWords[] = {{"x_only", plotFlag::x},
                                          {"y_only", plotFlag::y},
                                          {"sep_x_and_y", plotFlag::x | plotFlag::y},
                                          {"comb_x_and_y", plotFlag::combined},
                                          {"all", plotFlag::x | plotFlag::y | plotFlag::combined}};
constexpr FlagWord specifiedRange[] = {{"Specified", plotFlag::rangeSpecified}};
constexpr FlagWord specifiedPoints[] = {{"Specified", plotFlag::pointsSpecified}};
constexpr FlagWord decibels[] = {{"dBm", plotFlag::dBm}};

struct FlagParameter {
    const char* name;
    std::span<const FlagWord> words;
    int usual;  // for an absent parameter or an unknown word
};

int ReadFlags(Parameter* parameters, int usualPolarization) {
    const FlagParameter table[] = {{"Range", specifiedRange, 0},
                                   {"DataPoints", specifiedPoints, 0},
                                   {"Representation", representationWords, plotFlag::defaultForm},
                                   {"PowerUnits", decibels, 0},
                                   {"Polarization", polarizationWords, usualPolarization}};
    int flags = 0;
    for (const FlagParameter& row : table) {
        const std::string_view word = GetParamText(parameters, row.name, "");
        const auto found = std::find_if(row.words.begin(), row.words.end(),
                                        [&](const FlagWord& w) { return w.word == word; });
        flags |= found == row.words.end() ? row.usual : found->flags;
    }
    return flags;
}

/// The part of the job that the block's parameters set.
SignalPlotJob ReadJob(Parameter* parameters, int usualPolarization) {
    SignalPlotJob job{};
    job.showNoise = GetParamText(parameters, "ShowNoise", "TRUE") != "FALSE";
    job.Toffset = GetParamDouble(parameters, "Toffset", 0.0);
    job.Tstart = GetParamDouble(parameters, "Tstart", 0.0);
    job.Tstop = GetParamDouble(parameters, "Tstop", 0.0);
    job.flags = ReadFlags(parameters, usualPolarization);
    return job;
}

/// Rows from `first` on (points before it are left out); the time starts at 0 with the first row.
std::string RowsText(const std::deque<Doubles>& columns, std::int32_t noPoints, std::int32_t first,
                     double tStep) {
    constexpr std::size_t usualNumberLength = 13;  // with its blank
    std::string text;
    text.reserve(static_cast<std::size_t>(noPoints - first) * (columns.size() + 1) *
                 usualNumberLength);
    for (std::int32_t row = first; row < noPoints; ++row) {
        text.append(FormatDefault((row - first) * tStep));
        for (const Doubles& column : columns) {
            text.push_back(' ');
            text.append(FormatDefault(column[row + 1]));
        }
        text.push_back('\n');
    }
    return text;
}

FileResult WriteColumnFile(const SignalPlotJob& job, const TraceSet& traces, const ColumnFile& file,
                           std::string& errorText) {
    std::deque<Doubles> columns;
    for (const Trace& trace : *file.traces) {
        columns.emplace_back(traces.noPoints);
        file.fill(trace, columns.back());
    }
    const std::int32_t first = PointsBefore(job.Toffset, traces);
    const std::string name = job.name + file.suffix;
    try {
        return WritePlotFile(name, RowsText(columns, traces.noPoints, first, traces.tStep),
                             errorText);
    } catch (const std::bad_alloc&) {  // a text too large for memory: like a full disk
    } catch (const std::length_error&) {
    }
    return FileResult::Failed;
}

/// Wavelength of a channel, number of any other signal; the arrows point at the curve's axis when
/// the plot has two.
std::string LegendText(const Trace& trace, const ColumnFile& file, bool twoAxes) {
    std::string legend;
    if (twoAxes) legend = file.axis == PlotAxis::First ? "<< " : ">> ";
    if (trace.channel) {
        constexpr double nanometersPerMeter = 1e9;
        const double wavelengthNm = trace.channel->wavelength * nanometersPerMeter;
        return legend + Concat("&l = ", wavelengthNm, " nm (", file.field, ")");
    }
    return legend + Concat("\\# ", trace.input);
}

std::string ScriptText(const SignalPlotJob& job, const TraceSet& traces, const TracePlot& plot,
                       const std::vector<const ColumnFile*>& written) {
    const bool twoAxes = std::any_of(written.begin(), written.end(), [](const ColumnFile* file) {
        return file->axis == PlotAxis::Second;
    });
    std::string script;
    AppendTextLine(script, "/xl", Concat("Time (", timeUnit, ")"));
    AppendTextLine(script, "/yl", LabelText(plot.yLabel));
    if (twoAxes) AppendTextLine(script, "/altyl", LabelText(plot.altyLabel));
    AppendTextLine(script, "/tt", LabelText(job.componentName) + " Signal Plot");
    script.append(curveColors).append("\n/ls1\n");
    if (!plot.polarization.empty()) {
        AppendTextLine(script, "/tb", Concat(plot.polarization, " polarization"));
    }
    if (traces.noPoints - PointsBefore(job.Toffset, traces) == 1) script.append("/st7\n");
    script.append(plot.window);
    if (twoAxes) script.append(plot.altWindow);
    for (const ColumnFile* file : written) {
        script.append(job.name).append(file->suffix);
        script.append(file->axis == PlotAxis::Second ? " /alty\n" : "\n");
    }
    for (const ColumnFile* file : written) {
        for (const Trace& trace : *file->traces) {
            AppendTextLine(script, "/lt", LegendText(trace, *file, twoAxes));
        }
    }
    return script.append("/nx1\n");
}

}  // namespace

std::vector<PolarizationView> PolarizationViews(int flags) {
    std::vector<PolarizationView> views;
    for (const PolarizationView& view : polarizationViews) {
        if (flags & view.flag) views.push_back(view);
    }
    return views;
}

Status RefuseCombined(int& flags, std::string_view blockName, std::string& errorText) {
    flags &= ~plotFlag::combined;
    if (!(flags & (plotFlag::x | plotFlag::y))) flags |= plotFlag::x;
    errorText.append(Concat("WARNING in signal plot '", blockName,
                            "': selected representation not compatible\n"
                            "with combine_x_and_y mode; changed to x_only\n"));
    return Status::Warning;
}

Status WriteTracePlot(const SignalPlotJob& job, const TraceSet& traces, const TracePlot& plot,
                      std::string& errorText) {
    std::vector<const ColumnFile*> written;
    for (const ColumnFile& file : plot.files) {
        const FileResult result = WriteColumnFile(job, traces, file, errorText);
        if (result == FileResult::Refused) return Status::Error;
        if (result == FileResult::Written) written.push_back(&file);
    }
    if (written.empty()) return Status::Success;
    return WriteCommandFile(job.name + ".pcs", ScriptText(job, traces, plot, written), job.mode,
                            errorText);
}

Status RunTraceBlock(const SimOptions& options, Component& component, const Nodelist* inputs,
                     int usualPolarization,
                     Status (*write)(const SignalPlotJob& job, std::string& errorText),
                     std::string& errorText) {
    Parameter* parameters = component.parameters;
    const auto root =
        PlotFileRoot(options, component.name, GetParamText(parameters, "FilenameRoot", ""));
    const PlotMode mode = BlockPlotMode(options, parameters);
    if (!root || mode == PlotMode::None) return Status::Success;

    Owned<Nodelist> clones;
    Status status = AlignPlotInputs(inputs, "signal plot", component.name, clones, errorText);
    if (status == Status::Error) return status;
    SignalPlotJob job = ReadJob(parameters, usualPolarization);
    job.signals = clones.get();
    job.mode = mode;
    job.name = *root;
    job.componentName = component.name;
    MergeStatus(status, write(job, errorText));
    return status;
}

}  // namespace photrak

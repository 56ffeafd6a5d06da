// The common parameters of the trace blocks, rows of the data files, lines of the command file.
#include "results/trace_plot.h"

#include <algorithm>
#include <deque>
#include <new>
#include <stdexcept>

#include "base/text.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

constexpr std::string_view timeUnit = "s";

constexpr PolarizationView polarizationViews[] = {
    {plotFlag::combined, "", "x+y"}, {plotFlag::x, "x", "x"}, {plotFlag::y, "y", "y"}};

/// Rows from `first` on (points before it are left out); the time starts at 0 with the first row.
std::string RowsText(const std::deque<Doubles>& columns, std::int32_t noPoints, std::int32_t first,
                     double tStep) {
    constexpr std::size_t usualNumberLength = 13;  // with its blank
    std::string text;
    text.reserve(static_cast<std::size_t>(noPoints - first) * (columns.size() + 1) *
                 usualNumberLength);
    for (std::int32_t row = first; row < noPoints; ++row) {
        LookForStop(row);
        AppendDefault(text, (row - first) * tStep);
        for (const Doubles& column : columns) {
            text.push_back(' ');
            AppendDefault(text, column[row + 1]);
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
    return legend + TraceLegend(trace, file.field);
}

std::string ScriptText(const SignalPlotJob& job, std::string_view title, const TraceSet& traces,
                       const TracePlot& plot, const std::vector<const ColumnFile*>& written) {
    const bool twoAxes = std::any_of(written.begin(), written.end(), [](const ColumnFile* file) {
        return file->axis == PlotAxis::Second;
    });
    std::string script;
    AppendTextLine(script, "/xl", Concat("Time (", timeUnit, ")"));
    AppendTextLine(script, "/yl", LabelText(plot.yLabel));
    if (twoAxes) AppendTextLine(script, "/altyl", LabelText(plot.altyLabel));
    AppendTextLine(script, "/tt", LabelText(title) + " Signal Plot");
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

double PowerOf(const OpSig& channel, int polarization, std::int32_t i) {
    double power = 0.0;
    if (polarization != plotFlag::y && channel.Ex_samples) {
        power += SquaredMagnitude(channel.Ex_samples[i]);
    }
    if (polarization != plotFlag::x && channel.Ey_samples) {
        power += SquaredMagnitude(channel.Ey_samples[i]);
    }
    return power;
}

std::string_view PolarizationBox(int polarization) {
    if (polarization == plotFlag::x) return "x polarization";
    return polarization == plotFlag::y ? "y polarization" : "";
}

Status RefuseCombined(int& flags, const ModelReport& report) {
    flags &= ~plotFlag::combined;
    if (!(flags & (plotFlag::x | plotFlag::y))) flags |= plotFlag::x;
    return report.Warn("WARNING in signal plot '", report.owner,
                       "': selected representation not compatible\n"
                       "with combine_x_and_y mode; changed to x_only\n");
}

Status WriteTracePlot(const SignalPlotJob& job, const TraceSet& traces, const TracePlot& plot,
                      const ModelReport& report) {
    std::vector<const ColumnFile*> written;
    for (const ColumnFile& file : plot.files) {
        const FileResult result = WriteColumnFile(job, traces, file, report.errorText);
        if (result == FileResult::Refused) return Status::Error;
        if (result == FileResult::Written) written.push_back(&file);
    }
    if (written.empty()) return Status::Success;
    return WriteCommandFile(job.name + ".pcs", ScriptText(job, report.owner, traces, plot, written),
                            job.mode, report.errorText);
}

int FlagsOf(std::string_view word, std::span<const FlagWord> words, int usual) {
    const auto found = std::ranges::find(words, word, &FlagWord::word);
    return found == words.end() ? usual : found->flags;
}

int OnePolarizationOf(std::string_view word) {
    const int flags = FlagsOf(word, polarizationWords, plotFlag::combined);
    return flags == plotFlag::x || flags == plotFlag::y ? flags : plotFlag::combined;
}

Status RunTraceBlock(const ModelCall& call, TraceBlockParams& params,
                     Status (*write)(const SignalPlotJob& job, const ModelReport& report)) {
    ReadParams(traceRows, call.component.parameters, params);
    PlotStart start;
    Status status = StartPlot(call, "signal plot", params.FilenameRoot, params.plot, start);
    if (status == Status::Error || start.mode == PlotMode::None) return status;
    MergeStatus(status, write({start.signals.get(), params.showNoise, params.Toffset, params.flags,
                               start.mode, start.name},
                              call));
    return status;
}

}  // namespace photrak

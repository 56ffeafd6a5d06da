// Names and modes of plot blocks, texts of command files, the start of the viewer.
#include "results/plot_files.h"

#include "base/text.h"
#include "kernel/align.h"
#include "kernel/driver.h"
#include "kernel/external_commands.h"
#include "kernel/result_names.h"

namespace photrak {
namespace {

constexpr std::string_view defaultPrefix = "phtmp";

struct PlotWord {
    std::string_view word;
    PlotMode mode;
};
constexpr PlotWord plotWords[] = {
    {"Save", PlotMode::Files}, {"No", PlotMode::None}, {"Display", PlotMode::Display}};

}  // namespace

PlotMode BlockPlotMode(const SimOptions& options, PlotMode own) {
    switch (options.PLOTTING) {
        case DoNotPlot:
            return PlotMode::None;
        case PlotToFilesOnly:
            return PlotMode::Files;
        case DisplayAllPlots:
            return PlotMode::Display;
        default:
            return own;
    }
}

PlotMode PlotModeOf(std::string_view word) {
    for (const PlotWord& candidate : plotWords) {
        if (candidate.word == word) return candidate.mode;
    }
    return PlotMode::Display;
}

std::optional<std::string> PlotFileRoot(const SimOptions& options, std::string_view componentName,
                                        std::string_view filenameRoot) {
    if (SomeLoopLacksItsTag(options)) return std::nullopt;
    const std::string& prefix = PrefixInUse(options);
    return Concat(prefix.empty() ? defaultPrefix : std::string_view(prefix),
                  filenameRoot.empty() ? componentName : filenameRoot, ResultTags(options));
}

Status AlignPlotInputs(const Nodelist* inputs, std::string_view plot, Owned<Nodelist>& clones,
                       const ModelReport& report) {
    Nodelist* made = nullptr;
    const std::int32_t result = AlignSignals(inputs, /*align=*/1, &made);
    clones.reset(made);
    if (result == 1) {
        return report.Fail("ERROR in ", plot, " '", report.owner,
                           "': Could not copy input signals.\n");
    }
    if (result == 0) return Status::Success;
    return report.Warn("WARNING in ", plot, " '", report.owner,
                       "': input signals have varying time steps and/or time durations.\n"
                       "Resampling of the signals was performed.\n");
}

Status StartPlot(const ModelCall& call, std::string_view plot, std::string_view filenameRoot,
                 PlotMode own, PlotStart& start) {
    const auto root = PlotFileRoot(call.options, call.owner, filenameRoot);
    if (!root) return Status::Success;
    start.name = *root;
    start.mode = BlockPlotMode(call.options, own);
    if (start.mode == PlotMode::None) return Status::Success;
    return AlignPlotInputs(call.inputs, plot, start.signals, call);
}

std::string LabelText(std::string_view text) {
    std::string label(text);
    for (char& c : label) {
        if (c == '_' || static_cast<unsigned char>(c) < ' ') c = ' ';
        if (c == '"') c = '\'';
    }
    return label;
}

void AppendTextLine(std::string& script, std::string_view option, std::string_view text) {
    script.append(option).append("\"").append(text).append("\"\n");
}

FileResult WritePlotFile(const std::string& name, std::string_view content,
                         std::string& errorText) {
    if (WriteResultFile(name, content, errorText)) return FileResult::Written;
    return IsAllowedResultName(name) ? FileResult::Failed : FileResult::Refused;
}

Status WriteCommandFile(const std::string& name, std::string_view script, PlotMode mode,
                        std::string& errorText) {
    const FileResult result = WritePlotFile(name, script, errorText);
    if (result == FileResult::Refused) return Status::Error;
    if (result == FileResult::Written && mode == PlotMode::Display) LaunchPlot(name, Wait::No);
    return Status::Success;
}

}  // namespace photrak

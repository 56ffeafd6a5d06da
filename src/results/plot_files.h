// What all plot writers share: file names, when to plot, command files, the start of the viewer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kernel/model_report.h"
#include "kernel/workspace.h"

namespace photrak {

struct ModelCall;

enum class PlotMode { None = 0, Files = 1, Display = 2 };

/// The mode of a plot block: PLOTTING, or the block's own mode where PLOTTING leaves it to that.
PlotMode BlockPlotMode(const SimOptions& options, PlotMode own);
/// The block's own mode from the word of its parameter Plot; any unknown word is Display.
PlotMode PlotModeOf(std::string_view word);

/// Stem of a plot block's files: prefix ("phtmp" if empty), root (the component's name if empty),
/// tags. Nothing when a loop that runs more than once has an empty tag: the block then writes no
/// files.
std::optional<std::string> PlotFileRoot(const SimOptions& options, std::string_view componentName,
                                        std::string_view filenameRoot);

/// Copies a plot block's inputs onto a common time grid. `plot` is the kind of plot in the messages
/// ("signal plot"). A warning when signals were resampled, an error when they cannot be copied.
Status AlignPlotInputs(const Nodelist* inputs, std::string_view plot, Owned<Nodelist>& clones,
                       const ModelReport& report);

/// What every plot block does first.
struct PlotStart {
    std::string name;                // file stem
    PlotMode mode = PlotMode::None;  // None: the block writes nothing
    Owned<Nodelist> signals;         // the inputs on a common time grid
};
/// Skip rule, mode and name from the block's `FilenameRoot` and own mode, and the aligned inputs.
Status StartPlot(const ModelCall& call, std::string_view plot, std::string_view filenameRoot,
                 PlotMode own, PlotStart& start);

/// A caller's text as it may stand in a command file: underscores become blanks. So do control
/// characters, and double quotes become single ones, since they would end the text.
std::string LabelText(std::string_view text);
/// Appends one option line: the option, the text in double quotes, a newline.
void AppendTextLine(std::string& script, std::string_view option, std::string_view text);

enum class FileResult { Written, Failed, Refused };
/// Writes a result file. Failed (the disk's doing) has no text; Refused has appended one.
FileResult WritePlotFile(const std::string& name, std::string_view content, std::string& errorText);
/// Writes the command file and then, in mode Display and if the file came to be, starts the viewer.
Status WriteCommandFile(const std::string& name, std::string_view script, PlotMode mode,
                        std::string& errorText);

/// The literal color sequence of every multi-curve plot.
inline constexpr std::string_view curveColors = "/lcm2,1,3,4,5,6,7,8,9,10,11,12,13,14";

}  // namespace photrak

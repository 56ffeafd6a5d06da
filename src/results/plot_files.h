// What all plot writers share: file names, when to plot, command files, the start of the viewer.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

enum class PlotMode { None = 0, Files = 1, Display = 2 };

/// The mode of a plot block: PLOTTING, or the block's `Plot` parameter when PLOTTING is 3.
PlotMode BlockPlotMode(const SimOptions& options, Parameter* parameters);

/// Stem of a plot block's files: prefix ("phtmp" if empty), root (the component's name if empty),
/// tags. Nothing when a loop that runs more than once has an empty tag: the block then writes no
/// files.
std::optional<std::string> PlotFileRoot(const SimOptions& options, std::string_view componentName,
                                        std::string_view filenameRoot);

/// Underscores become blanks in texts of a command file.
std::string LabelText(std::string_view text);

/// The literal color sequence of every multi-curve plot.
inline constexpr std::string_view curveColors = "/lcm2,1,3,4,5,6,7,8,9,10,11,12,13,14";

}  // namespace photrak

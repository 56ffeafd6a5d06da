// The viewer program beside this one: it shows plots in a window, and makes the pictures that want
// a toolkit. Started by argument vector, never through a shell.
#pragma once

#include <string>
#include <vector>

namespace photrak {

struct PlotCommandOptions;

/// Starts the viewer on the files and returns at once. False with a reason.
[[nodiscard]] bool ShowInViewer(const std::vector<std::string>& files, std::string& error);
/// Lets the viewer write a .png or .pdf of the files on one pair of axes. It reports its own
/// troubles; `error` says when it could not be started.
[[nodiscard]] bool ExportByViewer(const std::vector<std::string>& files, const std::string& output,
                                  const PlotCommandOptions& options, std::string& error);

}  // namespace photrak

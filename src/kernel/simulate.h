// The run of a whole workspace.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"

namespace photrak {

struct ModelTable;
struct Workspace;

/// Clears the stop request, runs the workspace with an empty error text and returns its status. The
/// whole error text of the run is left in workspace->errorText.
Status RunSimulation(Workspace* workspace, const ModelTable& models);
/// The same within a run of which this is a block: no box is shown and nothing of the text is
/// logged; it is for the caller. The stop word of the outer run does not reach it.
Status SimulateNested(Workspace& workspace, const ModelTable& models, std::string& errorText);
/// The whole run. Error: the box has been shown. Nothing is thrown past it. What an escape leaves
/// behind (signals, symbols) stays until the next run.
Status Simulate(Workspace* workspace, const ModelTable& models, std::string& errorText);

/// Closes the log of a run: its completion line, whatever became of it, and for one that did not
/// reach its end a last line that says so.
void LogRunEnd(std::string_view completion, Status status, bool stopped);

}  // namespace photrak

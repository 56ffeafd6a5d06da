// The run of a whole workspace.
#pragma once

#include <string>

#include "base/status.h"

namespace photrak {

struct ModelTable;
struct Workspace;

/// Clears the stop request, runs the workspace with an empty error text and returns its status. The
/// whole error text of the run is left in workspace->errorText.
Status RunSimulation(Workspace* workspace, const ModelTable& models);
/// The whole run. Error: the box has been shown. Nothing is thrown past it. What an escape leaves
/// behind (signals, symbols) stays until the next run.
Status Simulate(Workspace* workspace, const ModelTable& models, std::string& errorText);

}  // namespace photrak

// Sweeps, statistical runs and repetition loops around the per-component step.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// Walks the run order in the passes that the options ask for.
Status RunPasses(const RunOrder& order, Workspace& workspace, const ModelTable& models,
                 std::string& errorText);

}  // namespace photrak

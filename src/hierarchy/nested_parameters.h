// What a SuperBlock's parameters become inside: variables in front of those that the inner file
// declares, so that they win.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

/// Hands the evaluated parameters of the block down to the inner workspace, with their exact
/// values. One that still has the default of the definition, and no number, is left out: there the
/// inner expression stands and follows the others. `file` is the inner topology's.
Status PassParameters(const ModelCall& call, const std::string& file, Workspace& inner);

/// Deviations of inner parameters do not draw in a statistical run of the outer topology: a warning
/// names the first of them by path.
Status WarnOfDeviations(const ModelCall& call, const Workspace& inner);

}  // namespace photrak

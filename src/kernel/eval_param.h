// From the text of a parameter to the value that models read.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// valactual and stddev from the texts; messages name the parameter.
Status EvalParam(Parameter* parameter, Workspace* workspace, std::string& errorText);
/// All parameters of the types that evaluate, then their draws.
Status EvalComponentParams(Component& component, Workspace* workspace, std::string& errorText);

}  // namespace photrak

// From the text of a parameter to the value that models read.
#pragma once

#include <string>

#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// valactual and stddev from the texts; messages name the parameter.
Status EvalParam(Parameter* parameter, Workspace* workspace, std::string& errorText);
/// True for a parameter of a SuperBlock that still has the default of its definition, where that is
/// no number, and does not draw: it has its value inside, among the variables that it names.
bool IsEvaluatedInside(const Component& component, const Parameter& parameter);
/// All parameters of the types that evaluate, then their draws.
Status EvalComponentParams(Component& component, Workspace* workspace, std::string& errorText);

}  // namespace photrak

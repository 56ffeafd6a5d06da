// PARAM blocks inside a topology or parameter file: values for the parameters of an existing
// component.
#pragma once

#include <string>

#include "base/line_reader.h"
#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Reads up to a line containing "ENDCOMPONENT", or to the end of the text (an error that names the
/// component). Unknown parameters are dropped silently.
Status ReadParamValues(Component& component, LineReader& reader, std::string& errorText);

}  // namespace photrak

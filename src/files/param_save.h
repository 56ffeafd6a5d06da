// Writing the PARAM blocks of a topology or parameter file: values only, since limits, units'
// meaning and descriptions come from the model definition.
#pragma once

#include <string>

#include "kernel/workspace.h"

namespace photrak {

/// Appends "PARAM name type" through "ENDPARAM". A parameter whose type no file knows, or an array
/// without its record, adds nothing.
void WriteParamBlock(const Parameter& parameter, std::string& out);

}  // namespace photrak

// PARAM blocks inside a topology or parameter file: values for the parameters of an existing
// component.
#pragma once

#include <string>
#include <string_view>

#include "base/line_reader.h"
#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Reads up to a line containing "ENDCOMPONENT", or to the end of the text (an error that names the
/// component). Unknown parameters are dropped silently.
Status ReadParamValues(Component& component, LineReader& reader, std::string& errorText);

/// The parameter of that name, or the one that the name stands for as a second one; null if none.
Parameter* FindByNameOrAlias(std::string_view name, Parameter* list);

}  // namespace photrak

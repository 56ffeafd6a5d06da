// Array parameters in a text: ROWS, COLS, their titles and units, and DATA. Used only by the two
// readers of PARAM blocks.
#pragma once

#include "files/parameter_body.h"

namespace photrak {

/// Gives the parameter, which owns it, an array without elements and with empty texts; false when
/// memory is exhausted. The kind follows from the type code, as in a copy of the parameter.
bool GiveArray(Parameter& parameter);

/// The body of an array in a model definition, up to "ENDPARAM"; the reader stands on its first
/// line. Succeeds only with exactly rows * cols elements, so whoever uses the record may trust it.
Status ReadArrayDefinition(ArrayRecord& array, ElementForm form, std::string_view name,
                           LineReader& reader, std::string& faults);

}  // namespace photrak

// Array parameters in a text: ROWS, COLS, their titles and units, and DATA. Used only by the
// readers and the writer of PARAM blocks.
#pragma once

#include "files/parameter_body.h"

namespace photrak {

/// Gives the parameter, which owns it, an array without elements and with empty texts; false when
/// memory is exhausted. The kind follows from the type code, as in a copy of the parameter.
bool GiveArray(Parameter& parameter);

/// The body of an array in a model definition, up to "ENDPARAM"; the reader stands on its first
/// line. Succeeds only with exactly rows * cols elements, so whoever uses the record may trust it.
Status ReadArrayDefinition(ArrayRecord& array, ValueForm form, std::string_view name,
                           LineReader& reader, std::string& faults);

/// The body of a saved array, up to "ENDPARAM"; the reader stands on the PARAM line. The record
/// decides the number of elements: ROWS and COLS that differ from it are an error, except that a
/// square record also takes `ports` rows and columns.
Status ReadArrayValues(ArrayRecord& array, std::string_view name, std::int32_t ports,
                       LineReader& reader, std::string& faults);
/// Appends the lines of a saved array between "PARAM" and "ENDPARAM".
void WriteArrayBody(const ArrayRecord& array, std::string& out);

}  // namespace photrak

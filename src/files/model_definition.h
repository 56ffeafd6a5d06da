// Model definition files: the grammar of COMPONENT and PARAM blocks, read into a prototype.
#pragma once

#include <string>

#include "base/line_reader.h"
#include "base/status.h"
#include "kernel/workspace.h"

namespace photrak {

/// Fills a prototype (its type already set) from a definition file. Error for a file that cannot be
/// read or a parameter of an unknown type, Warning for a file without an end line, each with a text
/// naming file and line.
Status ReadModelDefinition(Component& prototype, const std::string& path, std::string& errorText);
/// The same from a text in memory, which may end anywhere between two blocks.
Status ReadModelDefinition(Component& prototype, LineReader& reader, std::string& errorText);

/// Splits the words in an EnumType's UNITS and finds the value among them: limits 0..count,
/// valactual the position from 1, or 0. Always succeeds.
Status ResolveEnumFields(Parameter& parameter);

}  // namespace photrak

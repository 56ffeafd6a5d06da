// Lookup of parameters by name, and of their values.
#pragma once

#include <string_view>

#include "kernel/workspace.h"

namespace photrak {

/// Search that starts after the last match in the same list; process-wide memory.
Parameter* FindParamCursor(Parameter* list, std::string_view name);
/// Forgets the remembered list; called whenever parameters are freed.
void ForgetParamCursor();
/// The evaluated value of a number or the index of an enumeration, converted to the type asked for;
/// the default if the name is absent, was never evaluated or is of another type.
double GetParamDouble(Parameter* list, std::string_view name, double fallback);
std::int32_t GetParamInt(Parameter* list, std::string_view name, std::int32_t fallback);
/// The value text, or the default if the name is absent.
std::string_view GetParamText(Parameter* list, std::string_view name, std::string_view fallback);

}  // namespace photrak

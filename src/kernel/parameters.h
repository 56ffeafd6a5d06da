// Parameter records: making, copying, freeing, evaluation, limits, and lookup by name.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "kernel/parameter_types.h"
#include "kernel/workspace.h"

namespace photrak {

/// A parameter with empty texts ("" not null) and null pointers; null when memory is exhausted.
Parameter* CreateParameter(std::string_view name, std::int32_t type);
/// Frees one record with all it owns.
void FreeParameter(Parameter* parameter);
void FreeParameterList(Parameter** list);
/// Deep copy in order, without draws; an array record's kind is set from the type code. 1 and an
/// empty list when memory is exhausted.
[[nodiscard]] std::int32_t CopyParameterList(Parameter** place, const Parameter* source);
/// Inserts into a list ascending by name; one of the same name is replaced (and freed).
void InsertParameterSorted(Parameter** list, Parameter* parameter);
/// Replaces an owned text; false when memory is exhausted (the text stays as it is).
bool SetText(char** place, std::string_view text);
void FreeParameterDraws(Parameter& parameter);

/// valactual and stddev from the texts; messages name the parameter.
Status EvalParam(Parameter* parameter, Workspace* workspace, std::string& errorText);
/// All parameters of the types that evaluate, then their draws.
Status EvalComponentParams(Component& component, Workspace* workspace, std::string& errorText);
/// Limits valactual to min and max.
Status ClampParam(Parameter& parameter, std::string& errorText);

/// Search that starts behind the last match in the same list; process-wide memory.
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

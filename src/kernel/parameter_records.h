// Parameter records: making, copying, freeing, and their lists.
#pragma once

#include <string_view>

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

}  // namespace photrak

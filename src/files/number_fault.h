// Why a text is no number and no expression, in the words of whoever typed it.
#pragma once

#include <string>
#include <string_view>

#include "kernel/workspace.h"

namespace photrak {

struct NumberFault {
    const char* code = "";  // files/diagnostics.h
    std::string why;        // "'ps' is a unit; numbers take none: write 7e-12 (in s)"
    std::string nearest;    // a known name, or empty
};

/// Of a text that does not evaluate over `table`. `unit`: of the parameter, or empty.
NumberFault ExplainNumber(std::string_view text, std::string_view unit, const SymbolTable& table);

/// True if both are units that are known, and not the same one.
bool AreOtherUnits(std::string_view typed, std::string_view own);

}  // namespace photrak

// What a typed text means: a number, an expression, or a fault; and the form in which numbers are
// kept so that they read back equal.
#pragma once

#include <string>
#include <string_view>

#include "kernel/workspace.h"

namespace photrak {

inline constexpr const char* quoteInValueText = "a double quote ends the value in files";

struct ValueCheck {
    std::string fault;  // empty: the text will do
    std::string shown;  // "= 1.55e-06 m" for an expression, else empty
};

/// Evaluates a text over the symbols of the workspace: unknown names are told with the nearest
/// known one.
ValueCheck CheckExpression(Workspace& workspace, std::string_view text);
/// The same for the value of a parameter, with its limits and unit.
ValueCheck CheckValue(Workspace& workspace, const Parameter& parameter, std::string_view text);

/// `digits` significant digits if that reads back equal, else the fewest that do.
std::string ExactNumber(double value, int digits);
/// Line ends become blanks.
std::string OneLine(std::string text);

/// The words of the distributions in their dialogs: "None", "Uniform", "Gaussian", "TwoSigma".
std::string DistributionWord(std::int32_t code);
std::int32_t DistributionCode(std::string_view word);

}  // namespace photrak

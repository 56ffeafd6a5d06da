// What a SuperBlock's parameters become inside: variables in front of those that the inner file
// declares, so that they win.
#pragma once

#include <string>

#include "kernel/workspace.h"

namespace photrak {

/// Hands the evaluated parameters of the block down to the inner workspace, with their exact
/// values. What is evaluated inside is left out: there the inner expression stands and follows the
/// others.
void PassParameters(const Component& block, Workspace& inner);

/// The first parameter of the inner workspace with a deviation, by its path, as words for a
/// message; empty if there is none.
std::string DeviationInside(const Workspace& inner);

}  // namespace photrak

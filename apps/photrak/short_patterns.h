// A topology with shorter patterns: it takes less memory and time, in proportion.
#pragma once

#include "kernel/workspace.h"

namespace photrak {

/// The greatest number of halvings that leaves a pattern to every source that can be shortened; 0
/// if there is none, as where all signals come from files. Evaluates their parameters.
int MostHalvings(Workspace& workspace);
/// Halves the patterns of all sources so many times.
void HalvePatterns(Workspace& workspace, int times);

}  // namespace photrak

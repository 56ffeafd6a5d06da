// Draws of randomised parameters, made once per run before the passes begin.
#pragma once

#include "kernel/order.h"

namespace photrak {

/// Fills the draws of every parameter with a deviation. The seed is set again at each call, so the
/// sequence of a run repeats.
void DrawStatistics(const RunOrder& order, Workspace& workspace);
/// Evaluates what draws in a pass over the list as often as the pass itself would: a pass that is
/// not run here leaves every ring of draws where it would stand after it.
void EvaluateDraws(const RunOrder& list, Workspace& workspace);
/// Empties draws and cursor everywhere.
void FreeDraws(const RunOrder& order);

}  // namespace photrak

// Repetition loops: the two blocks that open and close them, which the driver handles itself. At
// the end of the body the signals move back to its start until the repetitions are done.
#pragma once

#include "kernel/component_step.h"

namespace photrak {

/// Evaluates the repetition counts ahead of the passes and logs those outside their limits.
void PrepareLoopCounts(const RunOrder& order, Workspace& workspace);

/// A LoopBeginBlock is reached: opens a frame and copies its inputs to its outputs.
Status BeginLoop(RunState& run, Step& step);
/// A LoopEndBlock is reached: closes the innermost frame and copies its inputs to its outputs, or
/// goes round; then the step becomes the begin block's, and run.place is its place.
Status EndLoop(RunState& run, Step& step);

/// True if an open loop that will go round again holds a reader of the node.
bool IsReadAgain(const Node& node, const RunState& run);

}  // namespace photrak

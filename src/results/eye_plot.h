// The EyeDiagram block: folds its input signals bit by bit over one another, as an oscilloscope
// triggered by the clock shows them. The eye of the decision belongs to the BER tester.
#pragma once

#include <vector>

#include "kernel/driver.h"

namespace photrak {

/// The rows of its table.
std::vector<ParamSpec> EyeDiagramParamSpecs();

/// The model. The noise of all eyes comes from one sequence that runs on. Writes ".eye" and ".pce".
/// Success without a file when the plot is switched off, a warning without one when the pattern is
/// too short for a trace, an error without a signal.
Status RunEyeDiagram(const ModelCall& call);

}  // namespace photrak

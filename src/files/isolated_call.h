// A call of a user library in a child process: what goes wrong there is an error of the block, and
// nothing else is lost.
#pragma once

#include <functional>

#include "kernel/driver.h"

namespace photrak {

/// Makes the call in a child that is a copy of this process, and takes status, text and outputs
/// over from there. What else the call changes, parameters and what the library keeps from call to
/// call, ends with the child. An end of the child within the call, and one that takes longer than
/// `seconds` or that the run's stop word asks for, is an error that tells how.
Status CallIsolated(const ModelCall& call, double seconds,
                    const std::function<Status(const ModelCall&)>& run);

}  // namespace photrak

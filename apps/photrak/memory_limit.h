// --max-memory: how much memory a run will take, before it starts.
#pragma once

#include <optional>

#include "photrak/options.h"
#include "photrak/simulation.h"

namespace photrak {

/// Nothing if the run may start: no limit is asked for, or the run stays within it, of which it is
/// made sure: beyond the limit allocations fail. Else the exit status, after a report of the need
/// and the remedy.
///
/// The need is found by trying: the run with shortened patterns, in processes of their own, twice
/// or more until the straight line through them says enough. That takes a few percent of the time
/// of a run with long patterns, and of a short one as much as the run.
std::optional<int> RefuseByMemory(const CommandOptions& options, const SimulationKind& kind);

}  // namespace photrak

// The way along the fiber: which step comes next, what is said about it, where the run ends.
#pragma once

#include <atomic>

#include "models/optical/fiber_channels.h"

namespace photrak {

/// 1/(gamma P) in m.
double NonlinearLength(double gamma0, double peakPower);
/// Length of the next step at z with the momentary peak power (W). An adaptive step is a fraction
/// of the shortest characteristic length; none goes beyond the end of the fiber. Sets params.LNL
/// in that case.
double NextStep(FiberParams& params, double gamma0, double z, double peakPower);

/// Takes all channels from 0 to params.distance (not at all when that is not above 0). `peakPower`
/// is that of the input. An error when a step no longer moves z, or when memory runs out.
Status PropagateSteps(FiberChannels& channels, FiberParams& params, double peakPower,
                      const std::atomic<std::int16_t>& stop, const ModelReport& report);

}  // namespace photrak

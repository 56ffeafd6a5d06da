// The bias point of a laser diode: the current that gives a power, or the power that a current
// gives, each as the state into which the equations settle.
#pragma once

#include <atomic>
#include <string>

#include "models/sources/laser_rates.h"

namespace photrak {

/// Finds the bias and stores Io, Po and the carrier lifetime in the parameters, the densities in
/// `state`. A given Io is used as it is; with Io 0 the current is searched by widening a bracket
/// from 0.1 mA and 100 mA on and by bisection to 0.1 mA. Each trial settles for 3 To from the dark.
/// A set stop word ends the search with Status::Warning. `lifted` tells of carriers that
/// Integrate lifted.
Status FindBias(LaserParams& params, const std::atomic<std::int16_t>& stop, LaserState& state,
                bool& lifted, const ModelReport& report);

/// The state into which a current settles.
Status Settle(const LaserParams& params, double current, LaserState& state, bool& lifted,
              std::string& errorText);

}  // namespace photrak

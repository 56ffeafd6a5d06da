// Powers as levels in decibels. What is dark has no logarithm: it stands 100 dB below the weakest
// light of its curve.
#pragma once

#include <span>

namespace photrak {

/// W to dBm, in place.
void ToDbm(std::span<double> powers);
/// W to dB below `reference` W (above 0), in place.
void ToDecibelsOf(std::span<double> powers, double reference);

}  // namespace photrak

// Where curves of error rates cross a rate, and the penalty between two curves there.
#pragma once

#include <optional>
#include <vector>

#include "plotting/plot.h"

namespace photrak {

/// Rates at which receivers are compared: the classic one, that of data networks, and the limit of
/// a forward error correction with 7 % overhead.
inline constexpr double usualRates[] = {1e-9, 1e-12, 3.8e-3};

/// x at which the curve first falls through (or rises through) `rate`, by a straight line between
/// neighbors over the logarithm of the rate. Rates of 0 and gaps have no logarithm: no line leads
/// to them. Nothing if there is no crossing.
std::optional<double> CrossingOf(const Curve& curve, double rate);

struct RateCrossing {
    std::size_t curve = 0;
    std::optional<double> x;
    std::optional<double> penalty;  // x minus that of the first curve that crosses
};
std::vector<RateCrossing> CrossingsAt(const Plot& plot, double rate);

}  // namespace photrak

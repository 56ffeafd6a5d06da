// Dashed lines as separate segments, for painters whose own dashes start anew at each segment or
// are slow on long curves.
#pragma once

#include <vector>

#include "drawing/geometry.h"

namespace photrak {

/// The joined points as separate segments (0-1, 2-3, ...), the pattern running on through the
/// corners. `lengths` are those of dashes and gaps in turn, pixels; empty gives the whole line.
std::vector<Point> DashedSegments(const std::vector<Point>& line,
                                  const std::vector<double>& lengths);

}  // namespace photrak

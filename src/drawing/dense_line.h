// A joined line whose points crowd several to a pixel column, as noise does: there it is a row of
// upright bars, which painters fill many times faster than they draw steep lines.
#pragma once

#include <vector>

#include "drawing/geometry.h"

namespace photrak {

struct DenseLine {
    std::vector<Rect> bars;       // one column wide, from the least to the greatest y in it
    std::vector<Point> segments;  // 0-1, 2-3, ...: what no bar covers
};

/// \param column width of a column, pixels
/// Every part of the line lies on a segment or a bar, or beside one at less than a column's
/// distance.
DenseLine SplitDense(const std::vector<Point>& line, double column);

}  // namespace photrak

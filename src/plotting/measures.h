// What can be read off a plot without cursors, in lines of text: the opening of an eye, where error
// rates cross the usual limits, the peaks of a spectrum.
#pragma once

#include <string>
#include <vector>

#include "plotting/view.h"

namespace photrak {

/// Of the visible curves and the visible range of x; at most `most` lines.
std::vector<std::string> MeasureLines(const Plot& plot, const PlotView& view,
                                      std::size_t most = 24);

}  // namespace photrak

// Eye diagrams: traces continued to two intervals, summed into a density image, and measured.
#pragma once

#include <optional>
#include <string>

#include "drawing/display_list.h"
#include "plotting/plot.h"
#include "plotting/reduction.h"

namespace photrak {

/// Continues each trace of one interval with the next column, so that a whole eye and its crossings
/// are seen. Left alone: eyes around a decision time, which have two intervals already, and columns
/// whose ends do not meet. A pair that does not meet (the end of one signal and the start of the
/// next) makes no trace. Sets `plot.eyePeriod`.
void ContinueEye(Plot& plot);

/// Counts of line segments in cells of about a pixel: each trace adds one to each pixel column,
/// shared by the rows it passes. Levels grow with the logarithm of the count; a `saturation` above
/// 1 lifts rare traces.
DensityImage MakeDensity(const Plot& plot, const PixelMap& map, double saturation = 1.0);

/// Nothing for an eye without two levels (no traces, flat, a single level). Takes the two levels
/// that part the values best (Otsu 1979); a signal of more levels is measured at its largest
/// opening between these two groups.
std::optional<EyeMeasures> MeasureEye(const Plot& plot);

/// "height 0.8 mV, width 61 ps, crossing 50 %, Q 7.2, 125 traces"
std::string EyeText(const EyeMeasures& measures, std::string_view timeUnit,
                    std::string_view levelUnit);

/// Shares of the traces in `bins` equal steps of level over `range`, at a time: the slice of an
/// eye.
std::vector<double> EyeSlice(const Plot& plot, double time, const ValueRange& range,
                             std::size_t bins);

}  // namespace photrak

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

/// What is measured of an eye, in the units of its axes.
struct EyeMeasures {
    std::size_t traces = 0;
    double decisionTime = 0.0, decisionLevel = 0.0;  // middle of the opening where it is highest
    double height = 0.0;                             // there, between the lids
    double low = 0.0, high = 0.0;                    // mean levels there
    std::optional<double> Q;         // (high - low) / (sum of the standard deviations)
    std::optional<double> width;     // between the nearest crossings of the decision level
    std::optional<double> crossing;  // where mean rising and falling traces meet: 0 low, 1 high
};
/// Nothing for an eye without two levels (no traces, flat, a single level). Takes the two levels
/// that part the values best (Otsu 1979); a signal of more levels is measured at its largest
/// opening between these two groups.
std::optional<EyeMeasures> MeasureEye(const Plot& plot);

/// "height 0.8 mV, width 61 ps, crossing 50 %, Q 7.2, 125 traces"
std::string EyeText(const EyeMeasures& measures, std::string_view timeUnit,
                    std::string_view levelUnit);

/// Shares of the traces in `bins` equal steps of level over `range`, at a time: the slice of an
/// eye.
std::vector<double> EyeSlice(const Plot& plot, double time, const Extent& range, std::size_t bins);

}  // namespace photrak

// A single curve as a plot: data file ".lic", command file ".pcl".
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/status.h"
#include "results/plot_files.h"

namespace photrak {

/// Ends of a plot's axis, ascending.
struct AxisRange {
    double least = 0.0, greatest = 0.0;
    bool IsFlat() const { return least == greatest; }
};
/// From half the value to twice, -1 to 1 around 0: an axis for values that are all the same.
AxisRange WidenedRange(double value);
/// The option line of both axes' limits, with a flat one widened; nothing when neither is flat.
std::string WindowLine(AxisRange x, AxisRange y);
/// Ends of values of which there is at least one.
AxisRange RangeOf(std::span<const double> values);

struct CurvePlot {
    std::string name;  // file stem
    std::string_view title, xLabel, yLabel;
    std::span<const double> x, y;  // of equal length
    PlotMode mode = PlotMode::Files;
};
/// Writes both files; nothing without points. With Display the viewer starts. A disk that fails is
/// no error.
Status WriteCurve(const CurvePlot& plot, std::string& errorText);
/// The same for a plot that was asked for by itself: tells when the data file could not be written.
FileResult WriteCurveFiles(const CurvePlot& plot, std::string& errorText);

}  // namespace photrak

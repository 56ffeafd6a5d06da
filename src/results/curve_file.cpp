// Rows and options of a single curve.
#include "results/curve_file.h"

#include <algorithm>

#include "base/text.h"

namespace photrak {
namespace {

std::string ScriptText(const CurvePlot& plot) {
    std::string script;
    AppendTextLine(script, "/xl", LabelText(plot.xLabel));
    AppendTextLine(script, "/yl", LabelText(plot.yLabel));
    AppendTextLine(script, "/tt", LabelText(plot.title));
    script.append(curveColors).append("\n/ls1\n");
    if (plot.x.size() == 1) script += "/st7\n";
    return script +=
           Concat(WindowLine(RangeOf(plot.x), RangeOf(plot.y)), plot.name, ".lic\n/nx1\n");
}

}  // namespace

AxisRange WidenedRange(double value) {
    if (value == 0.0) return {-1.0, 1.0};
    return {std::min(0.5 * value, 2.0 * value), std::max(0.5 * value, 2.0 * value)};
}

AxisRange RangeOf(std::span<const double> values) {
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    return {*least, *greatest};
}

std::string WindowLine(AxisRange x, AxisRange y) {
    if (!x.IsFlat() && !y.IsFlat()) return {};
    if (x.IsFlat()) x = WidenedRange(x.least);
    if (y.IsFlat()) y = WidenedRange(y.least);
    return Concat("/w", x.least, ',', x.greatest, ',', y.least, ',', y.greatest, '\n');
}

Status WriteCurve(const CurvePlot& plot, std::string& errorText) {
    return WriteCurveFiles(plot, errorText) == FileResult::Refused ? Status::Error
                                                                   : Status::Success;
}

FileResult WriteCurveFiles(const CurvePlot& plot, std::string& errorText) {
    if (plot.x.empty()) return FileResult::Written;
    std::string rows;
    for (std::size_t i = 0; i < plot.x.size(); ++i) rows += Concat(plot.x[i], ' ', plot.y[i], '\n');
    const FileResult data = WritePlotFile(plot.name + ".lic", rows, errorText);
    if (data != FileResult::Written) return data;
    const Status script =
        WriteCommandFile(plot.name + ".pcl", ScriptText(plot), plot.mode, errorText);
    return script == Status::Success ? FileResult::Written : FileResult::Refused;
}

}  // namespace photrak

// Opening, width, crossing and Q of an eye.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/text.h"
#include "drawing/number_text.h"
#include "plotting/eye.h"

namespace photrak {
namespace {

/// The level that parts the values into two groups of the largest variance between them. Source: N.
/// Otsu, IEEE Trans. SMC 9 (1979) 62.
double PartingLevel(const Plot& plot, const ValueRange& range) {
    constexpr std::size_t bins = 256;
    std::array<double, bins> counts{};
    double total = 0.0, sum = 0.0;
    for (const Curve& curve : plot.curves) {
        for (const double value : curve.y->Values()) {
            if (std::isnan(value)) continue;
            const auto bin = static_cast<std::size_t>((value - range.least) / range.Span() * bins);
            counts[std::min(bin, bins - 1)] += 1.0;
        }
    }
    for (std::size_t b = 0; b < bins; ++b) {
        total += counts[b];
        sum += counts[b] * static_cast<double>(b);
    }
    double below = 0.0, sumBelow = 0.0, best = -1.0;
    std::size_t first = 0, last = 0;
    for (std::size_t b = 0; b + 1 < bins; ++b) {
        below += counts[b];
        sumBelow += counts[b] * static_cast<double>(b);
        if (below == 0.0 || below == total) continue;
        const double apart = sumBelow / below - (sum - sumBelow) / (total - below);
        const double variance = below * (total - below) * apart * apart;
        if (variance > best * (1.0 + 1e-12)) first = b;
        if (variance >= best * (1.0 - 1e-12)) last = b;
        best = std::max(best, variance);
    }
    // Any level within an empty stretch parts as well: its middle.
    return range.least + (0.5 * static_cast<double>(first + last) + 1.0) / bins * range.Span();
}

/// The samples of all traces at one row, on either side of a level.
struct Sides {
    std::size_t countLow = 0, countHigh = 0;
    double upperLid = std::numeric_limits<double>::infinity(), lowerLid = -upperLid;
    double sumLow = 0.0, sumHigh = 0.0, squareLow = 0.0, squareHigh = 0.0;

    double Height() const { return countLow > 0 && countHigh > 0 ? upperLid - lowerLid : -1.0; }
    double Low() const { return sumLow / static_cast<double>(countLow); }
    double High() const { return sumHigh / static_cast<double>(countHigh); }
};

Sides SidesAt(const Plot& plot, std::size_t row, double level) {
    Sides sides;
    for (const Curve& curve : plot.curves) {
        const double value = curve.y->Values()[row];
        if (std::isnan(value)) continue;
        const double offset = value - level;
        if (value < level) {
            ++sides.countLow;
            sides.lowerLid = std::max(sides.lowerLid, value);
            sides.sumLow += value;
            sides.squareLow += offset * offset;
        } else {
            ++sides.countHigh;
            sides.upperLid = std::min(sides.upperLid, value);
            sides.sumHigh += value;
            sides.squareHigh += offset * offset;
        }
    }
    return sides;
}

double Deviation(double sum, double square, std::size_t count, double level) {
    const double n = static_cast<double>(count);
    const double mean = sum / n - level;
    return std::sqrt(std::max(0.0, square / n - mean * mean));
}

/// The row of the largest opening; of several as high within a thousandth, the middle one. Where
/// two intervals are shown only the middle half counts, so that a crossing stands on either side.
std::size_t HighestRow(const Plot& plot, std::size_t rows, double level) {
    const bool two = plot.eyePeriod.has_value();
    const std::size_t first = two ? rows / 4 : 0, last = two ? rows - rows / 4 : rows;
    std::vector<double> heights(rows, -1.0);
    double best = -1.0;
    for (std::size_t row = first; row < last; ++row) {
        heights[row] = SidesAt(plot, row, level).Height();
        best = std::max(best, heights[row]);
    }
    const double enough = best - 1e-3 * std::fabs(best);
    std::size_t from = first;
    while (from < last && heights[from] < enough) ++from;
    std::size_t to = from;
    while (to + 1 < last && heights[to + 1] >= enough) ++to;
    return std::min((from + to) / 2, rows - 1);
}

/// From the nearest crossing of the level on the left of `row` to the nearest on the right, by any
/// trace. Where the interval is known a crossing counts for all intervals, since the edges of the
/// eye may lie at the ends of the traces.
std::optional<double> WidthAt(const Plot& plot, std::size_t row, double level) {
    const auto& x = plot.curves[0].x->Values();
    constexpr double none = std::numeric_limits<double>::infinity();
    double left = none, right = none;  // distances
    for (const Curve& curve : plot.curves) {
        const auto& y = curve.y->Values();
        for (std::size_t k = 1; k < y.size(); ++k) {
            if (std::isnan(y[k]) || std::isnan(y[k - 1]) || (y[k] < level) == (y[k - 1] < level))
                continue;
            double distance =
                x[k - 1] + (level - y[k - 1]) / (y[k] - y[k - 1]) * (x[k] - x[k - 1]) - x[row];
            if (plot.eyePeriod) {
                distance -= *plot.eyePeriod * std::floor(distance / *plot.eyePeriod);
                left = std::min(left, *plot.eyePeriod - distance);
                right = std::min(right, distance);
            } else {
                (distance <= 0.0 ? left : right) =
                    std::min(distance <= 0.0 ? left : right, std::fabs(distance));
            }
        }
    }
    if (!std::isfinite(left) || !std::isfinite(right)) return {};
    return right + left;
}

struct MeanTraces {
    std::vector<double> rising, falling;  // between two decisions
};

/// Means of the traces that change between the decisions at two rows; empty unless both kinds are
/// there.
MeanTraces MeansBetween(const Plot& plot, std::size_t from, std::size_t to, double level) {
    MeanTraces means{std::vector<double>(to - from + 1), std::vector<double>(to - from + 1)};
    std::size_t rising = 0, falling = 0;
    for (const Curve& curve : plot.curves) {
        const auto& y = curve.y->Values();
        if (std::any_of(y.begin() + static_cast<std::ptrdiff_t>(from),
                        y.begin() + static_cast<std::ptrdiff_t>(to) + 1,
                        [](double v) { return std::isnan(v); }) ||
            (y[from] < level) == (y[to] < level)) {
            continue;
        }
        const bool up = y[to] >= level;
        std::vector<double>& sum = up ? means.rising : means.falling;
        (up ? rising : falling) += 1;
        for (std::size_t k = from; k <= to; ++k) sum[k - from] += y[k];
    }
    if (rising == 0 || falling == 0) return {};
    for (double& value : means.rising) value /= static_cast<double>(rising);
    for (double& value : means.falling) value /= static_cast<double>(falling);
    return means;
}

/// Where the mean rising and the mean falling trace meet, in the units of the level.
std::optional<double> CrossingLevel(const Plot& plot, std::size_t row, std::size_t rows,
                                    double level) {
    if (!plot.eyePeriod) return {};
    const std::size_t half = rows / 2;
    const std::size_t from = row >= half ? row - half : row, to = from + half;
    if (to >= rows) return {};
    const MeanTraces means = MeansBetween(plot, from, to, level);
    for (std::size_t k = 1; k < means.rising.size(); ++k) {
        const double before = means.rising[k - 1] - means.falling[k - 1];
        const double after = means.rising[k] - means.falling[k];
        if (before > 0.0 || after < 0.0 || after == before) continue;
        const double part = before / (before - after);
        return means.rising[k - 1] + part * (means.rising[k] - means.rising[k - 1]);
    }
    return {};
}

bool IsMeasurable(const Plot& plot, std::size_t rows) {
    return rows >= 2 &&
           std::all_of(plot.curves.begin(), plot.curves.end(), [&](const Curve& curve) {
               return curve.y->Size() == rows && curve.x->Size() == rows;
           });
}

}  // namespace

std::optional<EyeMeasures> MeasureEye(const Plot& plot) {
    if (plot.curves.empty()) return {};
    const std::size_t rows = plot.curves[0].x->Size();
    ValueRange range;
    for (const Curve& curve : plot.curves) range.Include(curve.y->Limits());
    if (range.IsEmpty() || !(range.Span() > 0.0) || !std::isfinite(range.Span()) ||
        !IsMeasurable(plot, rows))
        return {};
    double level = PartingLevel(plot, range);
    std::size_t row = HighestRow(plot, rows, level);
    Sides sides = SidesAt(plot, row, level);
    if (sides.Height() < 0.0) return {};
    // Once more from the middle of the opening, which the parting level may miss.
    level = 0.5 * (sides.upperLid + sides.lowerLid);
    row = HighestRow(plot, rows, level);
    sides = SidesAt(plot, row, level);
    if (sides.Height() < 0.0) return {};

    EyeMeasures measures;
    measures.traces = plot.curves.size();
    measures.decisionTime = plot.curves[0].x->Values()[row];
    measures.decisionLevel = 0.5 * (sides.upperLid + sides.lowerLid);
    measures.height = sides.Height();
    measures.low = sides.Low();
    measures.high = sides.High();
    const double spread = Deviation(sides.sumLow, sides.squareLow, sides.countLow, level) +
                          Deviation(sides.sumHigh, sides.squareHigh, sides.countHigh, level);
    if (spread > 1e-9 * (measures.high - measures.low))
        measures.Q = (measures.high - measures.low) / spread;
    measures.width = WidthAt(plot, row, measures.decisionLevel);
    if (const auto crossing = CrossingLevel(plot, row, rows, measures.decisionLevel)) {
        measures.crossing = (*crossing - measures.low) / (measures.high - measures.low);
    }
    return measures;
}

std::string EyeText(const EyeMeasures& measures, std::string_view timeUnit,
                    std::string_view levelUnit) {
    constexpr int digits = 3;
    std::string text = Concat("height ", EngineeringText(measures.height, levelUnit, digits));
    if (measures.width)
        text += Concat(", width ", EngineeringText(*measures.width, timeUnit, digits));
    if (measures.crossing)
        text += Concat(", crossing ", ReadableText(100.0 * *measures.crossing, digits), " %");
    if (measures.Q) text += Concat(", Q ", ReadableText(*measures.Q, digits));
    return text + Concat(", ", measures.traces, measures.traces == 1 ? " trace" : " traces");
}

}  // namespace photrak

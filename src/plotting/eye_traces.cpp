// Traces of two intervals, and where a trace stands at a time.
#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "plotting/eye.h"

namespace photrak {
namespace {

/// Largest step from one sample of a trace to the next.
double LargestStep(const Plot& plot) {
    double largest = 0.0;
    for (const Curve& curve : plot.curves) {
        const auto& y = curve.y->Values();
        for (std::size_t k = 1; k < y.size(); ++k) {
            const double step = std::fabs(y[k] - y[k - 1]);
            if (step > largest) largest = step;
        }
    }
    return largest;
}

bool Meets(const Curve& curve, const Curve& next, double largestStep) {
    constexpr double tolerance = 1.05;
    const double jump = std::fabs(next.y->Values().front() - curve.y->Values().back());
    return jump <= tolerance * largestStep;
}

bool MostMeet(const Plot& plot, double largestStep) {
    std::size_t meeting = 0;
    for (std::size_t i = 0; i + 1 < plot.curves.size(); ++i) {
        if (Meets(plot.curves[i], plot.curves[i + 1], largestStep)) ++meeting;
    }
    return 10 * meeting >= 9 * (plot.curves.size() - 1);
}

/// x of one interval followed by that of the next.
std::vector<double> TwoIntervals(const std::vector<double>& x, double period) {
    std::vector<double> both = x;
    for (const double value : x) both.push_back(value + period);
    return both;
}

}  // namespace

void ContinueEye(Plot& plot) {
    if (plot.kind != PlotKind::Eye || plot.curves.empty()) return;
    const std::vector<double>& x = plot.curves[0].x->Values();
    if (x.size() < 2 || !plot.curves[0].x->IsAscending()) return;
    const double step = (x.back() - x.front()) / static_cast<double>(x.size() - 1);
    const double period = step * static_cast<double>(x.size());
    if (!(step > 0.0)) return;
    if (plot.spec.xLabel.starts_with("Decision")) {
        plot.eyePeriod = 0.5 * period;
        return;
    }
    const double largestStep = LargestStep(plot);
    if (plot.curves.size() < 2 || !MostMeet(plot, largestStep)) return;
    const auto both = std::make_shared<const Column>(TwoIntervals(x, period));
    std::vector<Curve> continued;
    for (std::size_t i = 0; i + 1 < plot.curves.size(); ++i) {
        if (!Meets(plot.curves[i], plot.curves[i + 1], largestStep)) continue;
        std::vector<double> y = plot.curves[i].y->Values();
        const auto& next = plot.curves[i + 1].y->Values();
        y.insert(y.end(), next.begin(), next.end());
        Curve curve = plot.curves[i];
        curve.x = both;
        curve.y = std::make_shared<const Column>(std::move(y));
        continued.push_back(std::move(curve));
    }
    plot.curves = std::move(continued);
    plot.eyePeriod = period;
}

std::vector<double> EyeSlice(const Plot& plot, double time, const ValueRange& range,
                             std::size_t bins) {
    std::vector<double> shares(bins, 0.0);
    if (bins == 0 || !(range.Span() > 0.0) || plot.curves.empty()) return shares;
    for (const Curve& curve : plot.curves) {
        const auto& x = curve.x->Values();
        const auto after = std::lower_bound(x.begin(), x.end(), time);
        if (after == x.end() || (after == x.begin() && *after > time)) continue;
        const auto k = static_cast<std::size_t>(after - x.begin());
        const double part = k == 0 ? 0.0 : (x[k] - time) / (x[k] - x[k - 1]);
        const double value =
            k == 0 ? (*curve.y)[0] : (*curve.y)[k] + part * ((*curve.y)[k - 1] - (*curve.y)[k]);
        if (!range.Contains(value)) continue;
        const auto bin = static_cast<std::size_t>((value - range.least) / range.Span() *
                                                  static_cast<double>(bins));
        shares[std::min(bin, bins - 1)] += 1.0 / static_cast<double>(plot.curves.size());
    }
    return shares;
}

}  // namespace photrak

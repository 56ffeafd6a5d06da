// Shapes and widths of the filters.
#include "results/osa_filter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/units.h"

namespace photrak {
namespace {

constexpr double lnFour = 2.0 * std::numbers::ln2;
constexpr double usualThreshold = 40.0;  // dB
constexpr double edgeDecibels = 3.0;     // of the trapezoid at BW/2

double Threshold(const OsaFilter& filter) {
    return filter.threshold > 0.0 ? filter.threshold : usualThreshold;
}

double FlatHalf(const OsaFilter& filter) {
    return 0.5 * std::clamp(filter.BW0, 0.0, filter.BW);
}

/// Offset at which the weight has fallen to the threshold, Hz.
double HalfSpan(const OsaFilter& filter) {
    const double half = 0.5 * filter.BW, threshold = Threshold(filter);
    if (filter.shape == OsaShape::Gaussian) {
        const double exponent = threshold * 0.1 * std::numbers::ln10 / lnFour;
        return half * std::pow(exponent, 0.5 / std::max(filter.order, 1));
    }
    const double flat = FlatHalf(filter);
    return flat + (half - flat) * threshold / edgeDecibels;
}

}  // namespace

double OsaWeight(const OsaFilter& filter, double offset) {
    const double x = std::abs(offset), half = 0.5 * filter.BW;
    if (filter.shape == OsaShape::Gaussian) {
        return std::exp(-lnFour * std::pow(x / half, 2.0 * std::max(filter.order, 1)));
    }
    const double flat = FlatHalf(filter);
    if (x <= flat || flat >= half) return 1.0;
    return PowerRatio(-edgeDecibels * (x - flat) / (half - flat));
}

std::vector<double> OsaKernel(const OsaFilter& filter, double step, std::int64_t length) {
    constexpr double slack = 1e-9;  // steps
    const double widest = static_cast<double>((length - 1) / 2);
    const double asked = std::floor(HalfSpan(filter) / step + slack);
    const auto half = static_cast<std::int64_t>(std::clamp(asked, 0.0, std::max(widest, 0.0)));
    std::vector<double> kernel(static_cast<std::size_t>(2 * half + 1));
    for (std::int64_t j = 0; j <= half; ++j) {
        const double weight = OsaWeight(filter, static_cast<double>(j) * step);
        kernel[static_cast<std::size_t>(half - j)] = kernel[static_cast<std::size_t>(half + j)] =
            weight;
    }
    return kernel;
}

}  // namespace photrak

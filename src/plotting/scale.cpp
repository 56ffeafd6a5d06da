#include "plotting/scale.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace photrak {
namespace {

constexpr double leastRate = 1e-300, greatestRate = 0.4999;
constexpr double belowAxis = -1e3;  // place of what a logarithm does not have

/// ln(erfc(Q / sqrt 2) / 2), by the asymptotic series where erfc fades out. Source: Abramowitz and
/// Stegun 26.2.12.
double LogRate(double Q) {
    if (Q < 25.0) return std::log(0.5 * std::erfc(Q / std::numbers::sqrt2));
    const double q2 = 1.0 / (Q * Q);
    const double series = 1.0 - q2 * (1.0 - q2 * (3.0 - q2 * (15.0 - q2 * 105.0)));
    return -0.5 * Q * Q - std::log(Q) - 0.5 * std::log(2.0 * std::numbers::pi) + std::log(series);
}

}  // namespace

double QOfRate(double rate) {
    if (!(rate > 0.0) || rate >= 0.5) return 0.0;
    const double wanted = std::log(rate);
    double Q = std::sqrt(std::max(0.0, -2.0 * wanted - std::log(2.0 * std::numbers::pi)));
    for (int i = 0; i < 50; ++i) {
        const double value = LogRate(Q);
        // d ln BER / dQ = -phi(Q) / BER
        const double density = -0.5 * Q * Q - 0.5 * std::log(2.0 * std::numbers::pi);
        const double slope = -std::exp(density - value);
        const double change = (wanted - value) / slope;
        Q = std::max(0.0, Q + change);
        if (std::fabs(change) <= 1e-13 * std::max(Q, 1e-3)) break;
    }
    return Q;
}

double RateOfQ(double Q) {
    return Q >= 0.0 ? std::exp(LogRate(Q)) : 1.0 - std::exp(LogRate(-Q));
}

ValueRange Roomy(ValueRange range) {
    if (range.IsEmpty() || !std::isfinite(range.least) || !std::isfinite(range.greatest))
        return {0.0, 1.0};
    const double size = std::max(std::fabs(range.least), std::fabs(range.greatest));
    // Half of each limit: the span of two huge ones of either sign may be infinite.
    if (0.5 * range.greatest - 0.5 * range.least > 1e-12 * size) return range;
    if (size < 1e-300) return {-1.0, 1.0};
    return {range.least - 0.5 * size, range.greatest + 0.5 * size};
}

AxisScale::AxisScale(ScaleKind kind, ValueRange range) : kind_(kind), range_(range) {
    if (kind == ScaleKind::Linear) {
        constexpr double most = 1e300;
        range_ = Roomy({std::max(range.least, -most), std::min(range.greatest, most)});
    } else {
        const double most = kind == ScaleKind::Probability ? greatestRate : 1e300;
        if (range.IsEmpty() || !(range.greatest > 0.0)) range_ = {0.1, 1.0};
        range_.greatest = std::clamp(range_.greatest, leastRate * 10.0, most);
        range_.least = std::clamp(range_.least, leastRate, range_.greatest);
        if (range_.least > 0.999 * range_.greatest) {
            range_.least = std::max(leastRate, 0.1 * range_.least);
            range_.greatest = std::min(most, 10.0 * range_.greatest);
        }
    }
    start_ = Even(range_.least);
    span_ = Even(range_.greatest) - start_;
}

double AxisScale::Even(double value) const {
    switch (kind_) {
        case ScaleKind::Logarithmic:
            return std::log10(value);
        case ScaleKind::Probability:
            return -QOfRate(std::max(value, leastRate));
        case ScaleKind::Linear:
            break;
    }
    return value;
}

bool AxisScale::Shows(double value) const {
    return kind_ == ScaleKind::Linear || value > 0.0;
}

double AxisScale::Place(double value) const {
    if (!Shows(value)) return belowAxis;
    return (Even(value) - start_) / span_;
}

double AxisScale::Value(double place) const {
    const double even = start_ + place * span_;
    switch (kind_) {
        case ScaleKind::Logarithmic:
            return std::pow(10.0, std::clamp(even, -307.0, 307.0));
        case ScaleKind::Probability:
            return RateOfQ(-even);
        case ScaleKind::Linear:
            break;
    }
    return even;
}

}  // namespace photrak

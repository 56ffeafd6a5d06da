// Sources of the formulas: the three-term Sellmeier fit of the chromatic dispersion of standard
// fiber (ITU-T G.652: group delay A + B lambda^2 + C lambda^-2), its derivatives, and
// beta2 = -D lambda^2 / (2 pi c).
#include "models/optical/fiber_dispersion.h"

namespace photrak {

namespace {

constexpr double minusInverseTwoPiC = -5.308837458876145e-10;  // s/m
constexpr double twoByTwoPiCSquared = 5.636751032953306e-19;   // 2/(2 pi c)^2, s^2/m^2

constexpr double Square(double x) {
    return x * x;
}

}  // namespace

std::optional<DispersionKind> DispersionKindOf(std::string_view word) {
    if (word == "custom") return DispersionKind::Custom;
    if (word == "defined") return DispersionKind::Defined;
    if (word == "defined2") return DispersionKind::Defined2;
    return std::nullopt;
}

double DispersionCurve::D(double lambda) const {
    if (kind == DispersionKind::Defined2) return (lambda - lambda0) * S0 + D0;
    return (1.0 - Square(Square(lambda0 / lambda))) * S0 * lambda * 0.25 + D0;
}

double DispersionCurve::Beta2(double lambda) const {
    if (kind == DispersionKind::Custom) return beta2;
    return D(lambda) * lambda * lambda * minusInverseTwoPiC;
}

double DispersionCurve::Beta3(double lambda) const {
    if (kind == DispersionKind::Custom) return beta3;
    const double cube = lambda * lambda * lambda;
    if (kind == DispersionKind::Defined2)
        return cube / Square(twoPiC) * (S0 * lambda + 2.0 * D(lambda));
    return ((Square(Square(lambda0 / lambda)) + 3.0) * S0 * lambda * 0.125 + D0) * cube *
           twoByTwoPiCSquared;
}

double DispersionCurve::GroupDelay(double lambda) const {
    if (kind == DispersionKind::Custom)
        return (1.0 / lambda - 1.0 / lambda0) * beta2 * twoPiC + n1 * inverseSpeed;
    // By design: the straight line travels with the group delay of the other curve; the two
    // differ in third order around lambda0 only.
    const double square0 = Square(lambda0);
    return (Square(lambda) + (Square(lambda0 / lambda) - 2.0) * square0) * S0 * 0.125 +
           (lambda - lambda0) * D0 + n1 * inverseSpeed;
}

}  // namespace photrak

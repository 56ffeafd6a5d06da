// The functions of a complex argument; angles in radians.
#include "base/complex.h"

#include <cmath>
#include <numbers>

namespace photrak {

Complex operator/(Complex a, Complex b) {
    if (std::fabs(b.re) < std::fabs(b.im)) {
        const double r = b.re / b.im;
        const double den = b.re * r + b.im;
        return {(a.re * r + a.im) / den, (r * a.im - a.re) / den};
    }
    const double r = b.im / b.re;
    const double den = b.im * r + b.re;
    return {(a.im * r + a.re) / den, (a.im - a.re * r) / den};
}

Complex operator/(double a, Complex b) {
    return MakeComplex(a) / b;
}

double Magnitude(Complex a) {
    return std::sqrt(SquaredMagnitude(a));
}

double Phase(Complex a) {
    if (a.re == 0.0) {
        if (a.im == 0.0) return 0.0;
        return a.im > 0.0 ? std::numbers::pi / 2.0 : -std::numbers::pi / 2.0;
    }
    const double angle = std::atan(a.im / a.re);
    if (!(a.re < 0.0)) return angle;
    return a.im < 0.0 ? angle - std::numbers::pi : angle + std::numbers::pi;
}

Complex Exp(Complex a) {
    const double m = std::exp(a.re);
    return {m * std::cos(a.im), m * std::sin(a.im)};
}

Complex Sin(Complex a) {
    return {std::sin(a.re) * std::cosh(a.im), std::cos(a.re) * std::sinh(a.im)};
}

Complex Cos(Complex a) {
    return {std::cos(a.re) * std::cosh(a.im), -(std::sin(a.re) * std::sinh(a.im))};
}

// The principal root, without squaring a part that could overflow: with w = sqrt((|z| + |re|) / 2)
// the parts are w and im / 2w, swapped in the left half plane.
Complex Sqrt(Complex a) {
    if (a.re == 0.0 && a.im == 0.0) return {};
    const double x = std::fabs(a.re), y = std::fabs(a.im);
    double w = 0.0;
    if (x >= y) {
        const double r = y / x;
        w = std::sqrt(x) * std::sqrt(0.5 * (1.0 + std::sqrt(1.0 + r * r)));
    } else {
        const double r = x / y;
        w = std::sqrt(y) * std::sqrt(0.5 * (r + std::sqrt(1.0 + r * r)));
    }
    if (a.re >= 0.0) return {w, a.im / (2.0 * w)};
    const double im = a.im >= 0.0 ? w : -w;
    return {a.im / (2.0 * im), im};
}

Complex Log(Complex a) {
    return {std::log(Magnitude(a)), Phase(a)};
}

Complex Power(Complex a, double p) {
    const double m = std::pow(Magnitude(a), p);
    const double angle = Phase(a) * p;
    return {m * std::cos(angle), m * std::sin(angle)};
}

double Asinh(double x) {
    return std::log(std::sqrt(x * x + 1.0) + x);
}

double Acosh(double x) {
    return std::log(std::sqrt(x * x - 1.0) + x);
}

}  // namespace photrak

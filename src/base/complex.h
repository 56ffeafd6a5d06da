// Arithmetic on the Complex record. The formulas are fixed, since results are compared bit for bit
// between machines: a product takes three real multiplications, a quotient is Smith's.
#pragma once

#include "photrak/user_model.h"

namespace photrak {

using ::Complex;

constexpr Complex MakeComplex(double re, double im) {
    return {re, im};
}
constexpr Complex MakeComplex(double re) {
    return {re, 0.0};
}
constexpr Complex operator+(Complex a, Complex b) {
    return {a.re + b.re, a.im + b.im};
}
constexpr Complex operator-(Complex a, Complex b) {
    return {a.re - b.re, a.im - b.im};
}
constexpr Complex operator+(double a, Complex b) {
    return {a + b.re, b.im};
}
constexpr Complex operator*(double a, Complex b) {
    return {a * b.re, a * b.im};
}
constexpr Complex Conjugate(Complex a) {
    return {a.re, -a.im};
}
constexpr bool operator==(Complex a, Complex b) {
    return a.re == b.re && a.im == b.im;
}

constexpr Complex operator*(Complex a, Complex b) {
    const double t = (a.im - a.re) * b.re;
    return {(b.re - b.im) * a.im - t, t + (b.im + b.re) * a.re};
}

/// Smith's quotient; on a tie of the divisor's parts the real part counts as the larger.
Complex operator/(Complex a, Complex b);
Complex operator/(double a, Complex b);

/// sqrt(re^2 + im^2), without scaling.
double Magnitude(Complex a);
/// re^2 + im^2.
constexpr double SquaredMagnitude(Complex a) {
    return a.re * a.re + a.im * a.im;
}
/// Angle in radians, -pi to pi; 0 at the origin, atan(im/re) for re > 0, that plus pi for re < 0
/// and im >= 0, minus pi for re < 0 and im < 0, plus or minus pi/2 on the imaginary axis.
double Phase(Complex a);
Complex Exp(Complex a);
Complex Sin(Complex a);
Complex Cos(Complex a);
Complex Sqrt(Complex a);
Complex Log(Complex a);
/// |a|^p at the angle p times the phase.
Complex Power(Complex a, double p);

/// ln(sqrt(x^2 + 1) + x) and ln(sqrt(x^2 - 1) + x).
double Asinh(double x);
double Acosh(double x);

}  // namespace photrak

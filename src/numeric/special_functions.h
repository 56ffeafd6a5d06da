// The gamma family and the complementary error function. Failures go to NumericFailure; arguments
// that are no numbers give no number.
#pragma once

#include <cstdint>

namespace photrak {

/// Regularized incomplete gamma functions P(a, x) and Q(a, x) = 1 - P(a, x), for a > 0, x >= 0.
double gammp(double a, double x);
double gammq(double a, double x);
/// P(a, x) by its series (for x < a + 1); *gln gets ln gamma(a).
void gser(double* result, double a, double x, double* gln);
/// Q(a, x) by its continued fraction (for x >= a + 1).
void gcf(double* result, double a, double x, double* gln);
/// ln gamma(x) for x > 0 by the series of Lanczos, error below 2e-10.
double LogGamma(double x);
/// n!, from a table up to 32, by LogGamma above.
double factrl(std::int16_t n);
/// 2 / sqrt(pi) times the integral of exp(-t^2) from x to infinity, to full precision also in the
/// tail.
double erfc(double x);

}  // namespace photrak

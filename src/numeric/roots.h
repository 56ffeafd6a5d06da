// Two roots that the models need, by Brent's method (inverse quadratic interpolation guarded by
// bisection).
#pragma once

#include <string>

#include "base/status.h"

namespace photrak {

/// The x between x1 and x2 with erfc(x) = target, to within tol. An end that meets the target
/// exactly is the answer. Failing (no change of sign, over 100 iterations) is no reason to stop a
/// sweep: it sets `status` to Warning, appends its text to `message` and gives 0.
double QFactorRoot(double target, double x1, double x2, double tol, Status& status,
                   std::string& message);

/// The exponent x between x1 and x2 for which exp(-ln 2 s^x) falls from 90 % to 10 % over `target`
/// (in half widths): L10^(1/x) - L9^(1/x) = target. Failures go to NumericFailure.
double SuperGaussianOrder(double target, double x1, double x2, double tol);

}  // namespace photrak

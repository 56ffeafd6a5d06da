// Integration of a few stiff differential equations: a fourth-order Rosenbrock method with an
// error estimate, and the driver that adapts its step.
// Source: P. Kaps and P. Rentrop, Numer. Math. 33, 55 (1979), with the constants of L. F. Shampine,
// ACM Trans. Math. Softw. 8, 93 (1982).
#pragma once

#include <string>

#include "base/status.h"

namespace photrak {

inline constexpr int stiffVariables = 3;

/// Equations y' = f(x, y) of three variables, y[0..2].
struct StiffSystem {
    virtual ~StiffSystem() = default;
    virtual void Rates(const double* y, double* dydx) const = 0;
    /// dfdx[i] = df_i/dx, dfdy[i][j] = df_i/dy_j.
    virtual void Jacobian(const double* y, double* dfdx, double (*dfdy)[stiffVariables]) const = 0;
};

/// One step from *x, h long at first and shorter until the error, in units of `scale`, is below
/// eps. y and *x move on; *next is the step to try then. `rates` are those at the start. More than
/// 40 tries and a step that is lost against *x go to NumericFailure.
void stiff(const StiffSystem& system, double* y, const double* rates, double* x, double h,
           double eps, const double* scale, double* next);

struct OdeLimits {
    double eps = 1e-6;         // relative error of a step
    double firstStep = 1e-13;  // of every call
    double leastStep = 0.0;
    bool isTrial = false;  // a step that cannot be made is an error without a text, no failure
};

/// What the driver did, for whoever measures it.
struct OdeCount {
    long steps = 0;
};

/// Moves y from x1 to x2 > x1. At most 100,000 steps; beyond, and with a step not above the least,
/// an error with a text, in the log too.
Status odeint(const StiffSystem& system, double* y, double x1, double x2, const OdeLimits& limits,
              std::string& errorText, OdeCount* count = nullptr);

}  // namespace photrak

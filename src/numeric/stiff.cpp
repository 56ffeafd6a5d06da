// The constants belong to one method: each stage solves with the same matrix 2/h - J.
#include "numeric/stiff.h"

#include <algorithm>
#include <cmath>

#include "base/escape.h"
#include "base/log.h"
#include "base/text.h"
#include "numeric/linear_algebra.h"

namespace photrak {
namespace {

constexpr int n = stiffVariables;
constexpr int mostTries = 40, mostSteps = 100000;
constexpr double tiny = 1e-30;

/// The matrix of a step, one-based as the solver wants it.
class StepMatrix {
  public:
    StepMatrix(const double (*dfdy)[n], double h) {
        for (int i = 0; i < n; ++i) {
            rows_[i + 1] = cells_[i + 1];
            for (int j = 0; j < n; ++j) cells_[i + 1][j + 1] = -dfdy[i][j];
            cells_[i + 1][i + 1] += 1.0 / (0.5 * h);
        }
        double exchanges = 0.0;
        LUDecompose(rows_, n, order_, &exchanges);
    }
    /// Replaces the right side b[0..n-1] by the solution.
    void Solve(double (&b)[n]) const {
        double oneBased[n + 1];
        std::copy_n(b, n, oneBased + 1);
        LUBackSubstitute(rows_, n, order_, oneBased);
        std::copy_n(oneBased + 1, n, b);
    }

  private:
    double cells_[n + 1][n + 1] = {};
    double* rows_[n + 1] = {};
    int order_[n + 1] = {};
};

struct Stages {
    double g1[n], g2[n], g3[n], g4[n];
};

/// What a step of h starts from.
struct StepStart {
    double y[n], rates[n], dfdx[n], dfdy[n][n];
};

Stages SolveStages(const StiffSystem& system, const StepStart& at, double h) {
    const StepMatrix matrix(at.dfdy, h);
    Stages s;
    double y[n], f[n];
    for (int i = 0; i < n; ++i) s.g1[i] = at.rates[i] + h * 0.5 * at.dfdx[i];
    matrix.Solve(s.g1);
    for (int i = 0; i < n; ++i) y[i] = at.y[i] + 2.0 * s.g1[i];
    system.Rates(y, f);
    for (int i = 0; i < n; ++i) s.g2[i] = f[i] - 8.0 * s.g1[i] / h - 1.5 * h * at.dfdx[i];
    matrix.Solve(s.g2);
    for (int i = 0; i < n; ++i) y[i] = at.y[i] + 1.92 * s.g1[i] + 0.24 * s.g2[i];
    system.Rates(y, f);
    for (int i = 0; i < n; ++i) {
        s.g3[i] = f[i] + (14.88 * s.g1[i] + 2.4 * s.g2[i]) / h + 2.42 * h * at.dfdx[i];
    }
    matrix.Solve(s.g3);
    for (int i = 0; i < n; ++i) {
        s.g4[i] = f[i] + (-0.896 * s.g1[i] - 0.432 * s.g2[i] - 0.4 * s.g3[i]) / h +
                  0.116 * h * at.dfdx[i];
    }
    matrix.Solve(s.g4);
    return s;
}

/// The new y, and the largest error in units of the scale.
double Advance(const StepStart& at, const Stages& s, const double* scale, double* y) {
    double worst = 0.0;
    for (int i = 0; i < n; ++i) {
        y[i] = at.y[i] + 2.111111111111111 * s.g1[i] + 0.5 * s.g2[i] +
               0.23148148148148148 * s.g3[i] + 1.1574074074074074 * s.g4[i];
        const double error = 0.3148148148148148 * s.g1[i] + 0.19444444444444445 * s.g2[i] +
                             1.1574074074074074 * s.g4[i];
        const double share = std::fabs(error / scale[i]);
        if (!(share <= worst)) worst = share;  // a NaN stays
    }
    return worst;
}

/// Why a step could not be made; null if it was.
const char* TryStep(const StiffSystem& system, double* y, const double* rates, double* x, double h,
                    double eps, const double* scale, double* next) {
    StepStart at;
    std::copy_n(y, n, at.y);
    std::copy_n(rates, n, at.rates);
    system.Jacobian(at.y, at.dfdx, at.dfdy);
    for (int tries = 0; tries < mostTries; ++tries) {
        const double end = *x + h;
        if (end == *x) return "stepsize not significant in stiff";
        const double err = Advance(at, SolveStages(system, at, h), scale, y) / eps;
        if (err <= 1.0) {
            *x = end;
            *next = err > 0.1296 ? 0.9 * h * std::pow(err, -0.25) : 1.5 * h;
            return nullptr;
        }
        const double shorter = 0.9 * h * std::pow(err, -1.0 / 3.0);
        h = shorter >= 0.5 * h ? shorter : 0.5 * h;  // a NaN halves
    }
    return "exceeded MAXTRY in stiff";
}

}  // namespace

void stiff(const StiffSystem& system, double* y, const double* rates, double* x, double h,
           double eps, const double* scale, double* next) {
    const char* failure = TryStep(system, y, rates, x, h, eps, scale, next);
    if (failure) NumericFailure(failure);
}

Status odeint(const StiffSystem& system, double* y, double x1, double x2, const OdeLimits& limits,
              std::string& errorText, OdeCount* count) {
    double x = x1, h = limits.firstStep;
    for (int step = 0; step < mostSteps; ++step) {
        double rates[n], scale[n];
        system.Rates(y, rates);
        const bool isLast = x + h > x2;
        if (isLast) h = x2 - x;
        const double aim = x + h;
        for (int i = 0; i < n; ++i) scale[i] = std::fabs(y[i]) + std::fabs(rates[i] * h) + tiny;
        if (count) ++count->steps;
        const char* failure = TryStep(system, y, rates, &x, h, limits.eps, scale, &h);
        if (failure && limits.isTrial) return Status::Error;
        if (failure) NumericFailure(failure);
        // The sum may miss x2 by a rounding, and what is left would be no step.
        if (x >= x2 || (isLast && x == aim)) return Status::Success;
        if (h <= limits.leastStep) {
            LogText("Step size too small in odeint\n");
            errorText += Concat("Step size too small in odeint: ", FormatExponent(h));
            return Status::Error;
        }
    }
    LogText("Too many steps in routine odeint\n");
    errorText += Concat("Too many steps in routine odeint: ", mostSteps);
    return Status::Error;
}

}  // namespace photrak

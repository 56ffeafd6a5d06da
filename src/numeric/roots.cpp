// One engine; the callers differ in the function and in what they do about a failure.
#include "numeric/roots.h"

#include <cmath>
#include <numbers>
#include <utility>

#include "base/escape.h"
#include "numeric/special_functions.h"

namespace photrak {
namespace {

enum class Outcome { Found, NotBracketed, TooManyIterations };

struct Root {
    Outcome outcome = Outcome::Found;
    double x = 0.0;
};

constexpr double machinePrecision = 2e-20;
constexpr int maxIterations = 100;

/// The step that inverse quadratic interpolation (secant while two points coincide) proposes from
/// b; `bisect` half the bracket.
struct Proposal {
    double p, q;  // step p / q, p >= 0
};
Proposal Interpolate(double a, double b, double c, double fa, double fb, double fc, double bisect) {
    const double s = fb / fa;
    double p = 0.0, q = 0.0;
    if (a == c) {
        p = 2.0 * bisect * s;
        q = 1.0 - s;
    } else {
        const double t = fa / fc, r = fb / fc;
        p = s * (2.0 * bisect * t * (t - r) - (b - a) * (r - 1.0));
        q = (t - 1.0) * (r - 1.0) * (s - 1.0);
    }
    if (p > 0.0) q = -q;
    return {std::fabs(p), q};
}

/// b is the best point, a the one before it, and the root lies between b and c.
template <class Function>
Root FindRoot(Function f, double x1, double x2, double tol) {
    double a = x1, b = x2, c = x2;
    double fa = f(a), fb = f(b);
    const bool bracketed = (fa >= 0.0 && fb <= 0.0) || (fa <= 0.0 && fb >= 0.0);
    if (!bracketed) return {Outcome::NotBracketed};
    double fc = fb, last = 0.0, lastButOne = 0.0;
    for (int i = 0; i < maxIterations; ++i) {
        if ((fb > 0.0 && fc > 0.0) || (fb < 0.0 && fc < 0.0)) {
            c = a;
            fc = fa;
            last = lastButOne = b - a;
        }
        if (std::fabs(fc) < std::fabs(fb)) {
            a = std::exchange(b, c);
            c = a;
            fa = std::exchange(fb, fc);
            fc = fa;
        }
        const double near = machinePrecision * std::fabs(b) + tol / 2.0;
        const double bisect = 0.5 * (c - b);
        if (std::fabs(bisect) <= near || fb == 0.0) return {Outcome::Found, b};
        Proposal step{bisect, 1.0};
        bool accepted = false;
        if (std::fabs(lastButOne) >= near && std::fabs(fa) > std::fabs(fb)) {
            step = Interpolate(a, b, c, fa, fb, fc, bisect);
            const double insideBracket = 3.0 * bisect * step.q - std::fabs(near * step.q);
            const double shrinking = std::fabs(lastButOne * step.q);
            accepted = 2.0 * step.p < std::fmin(insideBracket, shrinking);
        }
        lastButOne = accepted ? last : bisect;
        last = accepted ? step.p / step.q : bisect;
        a = b;
        fa = fb;
        b += std::fabs(last) > near ? last : std::copysign(near, bisect);
        fb = f(b);
    }
    return {Outcome::TooManyIterations};
}

}  // namespace

double QFactorRoot(double target, double x1, double x2, double tol, Status& status,
                   std::string& message) {
    const Root root = FindRoot([target](double x) { return erfc(x) - target; }, x1, x2, tol);
    if (root.outcome == Outcome::Found) return root.x;
    status = Status::Warning;
    message += root.outcome == Outcome::NotBracketed
                   ? "Q factor cannot be computed: root not bracketed\n"
                   : "Q factor cannot be computed: max number of iterations exceeded\n";
    return 0.0;
}

double SuperGaussianOrder(double target, double x1, double x2, double tol) {
    // exp(-ln 2 s^x) is 10 % at s = l10^(1/x) and 90 % at s = l9^(1/x).
    const double l10 = std::log(10.0) / std::numbers::ln2;
    const double l9 = std::log(1.1111111111111112) / std::numbers::ln2;
    const auto riseTime = [=](double x) {
        return std::pow(l10, 1.0 / x) - std::pow(l9, 1.0 / x) - target;
    };
    const Root root = FindRoot(riseTime, x1, x2, tol);
    if (root.outcome == Outcome::NotBracketed) {
        NumericFailure("Root must be bracketed in SuperGaussian");
    }
    if (root.outcome == Outcome::TooManyIterations) {
        NumericFailure("Maximum number of iterations exceeded in SuperGaussian");
    }
    return root.x;
}

}  // namespace photrak

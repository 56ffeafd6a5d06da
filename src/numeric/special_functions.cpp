// Series below x = a + 1, modified Lentz continued fraction above.
#include "numeric/special_functions.h"

#include <array>
#include <cmath>
#include <limits>

#include "base/escape.h"

namespace photrak {
namespace {

constexpr int maxTerms = 250;
constexpr double limit = 1e-15;
constexpr double guard = 1e-60;  // in place of a denominator that vanishes

double Prefactor(double a, double x, double gln) {
    return std::exp(-x + a * std::log(x) - gln);
}

bool IsNoNumber(double a, double x) {
    return std::isnan(a) || std::isnan(x);
}

double Guarded(double value) {
    return std::fabs(value) < guard ? guard : value;
}

}  // namespace

double gammp(double a, double x) {
    if (IsNoNumber(a, x)) return std::numeric_limits<double>::quiet_NaN();
    if (x < 0.0 || a <= 0.0) NumericFailure("Invalid arguments in routine gammp");
    if (std::isinf(x)) return 1.0;
    double result = 0.0, gln = 0.0;
    if (x < a + 1.0) {
        gser(&result, a, x, &gln);
        return result;
    }
    gcf(&result, a, x, &gln);
    return 1.0 - result;
}

double gammq(double a, double x) {
    if (IsNoNumber(a, x)) return std::numeric_limits<double>::quiet_NaN();
    if (x < 0.0 || a <= 0.0) NumericFailure("Invalid arguments in routine gammq");
    if (std::isinf(x)) return 0.0;
    double result = 0.0, gln = 0.0;
    if (x < a + 1.0) {
        gser(&result, a, x, &gln);
        return 1.0 - result;
    }
    gcf(&result, a, x, &gln);
    return result;
}

void gser(double* result, double a, double x, double* gln) {
    *gln = LogGamma(a);
    *result = 0.0;
    if (x < 0.0) NumericFailure("x less than 0 in routine gser");
    if (x == 0.0) return;
    double denominator = a, term = 1.0 / a, sum = term;
    for (int n = 1; n <= maxTerms; ++n) {
        denominator += 1.0;
        term *= x / denominator;
        sum += term;
        if (std::fabs(term) < std::fabs(sum) * limit) {
            *result = sum * Prefactor(a, x, *gln);
            return;
        }
    }
    NumericFailure("a too large, ITMAX too small in routine gser");
}

void gcf(double* result, double a, double x, double* gln) {
    *gln = LogGamma(a);
    double b = x + 1.0 - a, c = 1.0 / guard, d = 1.0 / b, fraction = d;
    for (int i = 1; i <= maxTerms; ++i) {
        const double an = -i * (i - a);
        b += 2.0;
        d = 1.0 / Guarded(an * d + b);
        c = Guarded(b + an / c);
        const double factor = d * c;
        fraction *= factor;
        if (std::fabs(factor - 1.0) < limit) {
            *result = Prefactor(a, x, *gln) * fraction;
            return;
        }
    }
    NumericFailure("a too large, ITMAX too small in gcf");
}

double LogGamma(double x) {
    constexpr std::array coefficients = {76.18009172947146,    -86.50532032941678,
                                         24.01409824083091,    -1.231739572450155,
                                         0.001208650973866179, -5.395239384953e-06};
    double series = 1.000000000190015, y = x;
    for (const double coefficient : coefficients) series += coefficient / (y += 1.0);
    const double tmp = x + 5.5;
    return std::log(2.5066282746310007 * series / x) - (tmp - (x + 0.5) * std::log(tmp));
}

double factrl(std::int16_t n) {
    constexpr int tableTop = 32;
    static std::array<double, tableTop + 1> table = {1.0};
    static int top = 0;
    if (n < 0) NumericFailure("Negative factorial in routine factrl");
    if (n > tableTop) return std::exp(LogGamma(n + 1.0));
    for (; top < n; ++top) {
        const auto i = static_cast<std::size_t>(top);
        table[i + 1] = table[i] * (top + 1.0);
    }
    return table[static_cast<std::size_t>(n)];
}

double erfc(double x) {
    return x < 0.0 ? 1.0 + gammp(0.5, x * x) : gammq(0.5, x * x);
}

}  // namespace photrak

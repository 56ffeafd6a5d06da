// The gamma family and the roots that invert it, against closed forms and the library's own long
// double functions.
#include "numeric/special_functions.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "numeric/roots.h"
#include "support/failure.h"

namespace photrak {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(IncompleteGamma, IsThePoissonSumForWholeA) {
    for (int a = 1; a <= 30; a += 4) {
        for (const double x : {0.0, 0.3, 2.0, 7.7, 31.0, 80.0}) {
            long double term = std::exp(-static_cast<long double>(x)), q = 0.0L;
            for (int k = 0; k < a; term *= x / ++k) q += term;
            // The error of LogGamma is what remains.
            EXPECT_NEAR(gammq(a, x), static_cast<double>(q), 2e-10) << a << " " << x;
            EXPECT_NEAR(gammp(a, x), static_cast<double>(1.0L - q), 2e-10) << a << " " << x;
        }
    }
}

TEST(Erfc, KeepsItsRelativePrecisionIntoTheTail) {
    for (double x = -6.0; x <= 26.0; x += 0.0625) {
        const auto wanted = static_cast<double>(std::erfc(static_cast<long double>(x)));
        EXPECT_NEAR(erfc(x) / wanted, 1.0, 1e-12) << x;
    }
    EXPECT_EQ(erfc(0.0), 1.0);
    // An ideal receiver has no noise: Q is infinite, or its square leaves the range.
    for (const double x : {1000.0, 1e200, infinity}) EXPECT_EQ(erfc(x), 0.0);
    EXPECT_EQ(erfc(-infinity), 2.0);
    EXPECT_TRUE(std::isnan(erfc(std::nan(""))));
}

TEST(Factorial, IsAProductUpTo32AndLanczosAbove) {
    double product = 1.0;
    for (std::int16_t n = 1; n <= 32; ++n) EXPECT_EQ(factrl(n), product *= n);
    EXPECT_EQ(factrl(200), infinity);
    for (const double x : {0.01, 0.5, 3.5, 170.6, 1e5}) {
        const auto wanted = static_cast<double>(std::lgamma(static_cast<long double>(x)));
        EXPECT_NEAR(LogGamma(x), wanted, 2e-10 * (1.0 + std::fabs(wanted))) << x;
    }
}

TEST(GammaFamily, StopsTheRunWithTheRoutinesName) {
    EXPECT_EQ(FailureOf([] { gammp(1.0, -1.0); }), "Invalid arguments in routine gammp");
    EXPECT_EQ(FailureOf([] { gammp(1e6, 1e6); }), "a too large, ITMAX too small in routine gser");
    EXPECT_EQ(FailureOf([] { gammq(1e6, 1e6 + 2.0); }), "a too large, ITMAX too small in gcf");
    EXPECT_EQ(FailureOf([] { factrl(-1); }), "Negative factorial in routine factrl");
}

struct Root {
    Status status = Status::Success;
    std::string message = "BER: ";
    double value;

    Root(double target, double tolerance)
        : value(QFactorRoot(target, 1e-5, 1000.0, tolerance, status, message)) {}
};

TEST(QFactorRoot, InvertsTheComplementaryErrorFunction) {
    for (const double x : {0.01, 1.0, 4.24, 25.0}) {
        const Root root(static_cast<double>(std::erfc(static_cast<long double>(x))), 1e-10);
        // The accuracy asked for; the far tail is still resolved since erfc is relative there.
        EXPECT_NEAR(root.value, x, 2e-10);
        EXPECT_EQ(root.status, Status::Success);
        EXPECT_EQ(root.message, "BER: ");
    }
    EXPECT_EQ(Root(0.0, 1e-6).value, 1000.0) << "an end may meet the target";
}

TEST(QFactorRoot, WarnsWhereNoRootIsFound) {
    for (const double target : {1.0, 1.5, -0.1, std::numeric_limits<double>::quiet_NaN()}) {
        const Root root(target, 1e-6);
        EXPECT_EQ(root.value, 0.0);
        EXPECT_EQ(root.status, Status::Warning);
        EXPECT_EQ(root.message, "BER: Q factor cannot be computed: root not bracketed\n");
    }
}

TEST(SuperGaussianOrder, RecoversTheOrderFromItsRiseTimeOrStopsTheRun) {
    for (const double order : {2.0, 3.7, 12.0}) {
        // Where exp(-ln 2 s^order) is 10 % and 90 %, solved by its logarithms.
        const auto crossing = [order](long double level) {
            return std::exp2(std::log2(-std::log2(level)) / order);
        };
        const auto rise = static_cast<double>(crossing(0.1L) - crossing(0.9L));
        EXPECT_NEAR(SuperGaussianOrder(rise, 1.0, 100.0, 1e-9), order, 1e-8);
    }
    EXPECT_EQ(FailureOf([] { SuperGaussianOrder(50.0, 1.0, 100.0, 1e-9); }),
              "Root must be bracketed in SuperGaussian");
}

}  // namespace
}  // namespace photrak

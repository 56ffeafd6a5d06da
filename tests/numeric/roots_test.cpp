// Roots by putting them back into the function, here by the library's own long double functions.
#include "numeric/roots.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "support/failure.h"

namespace photrak {
namespace {

TEST(QFactorRoot, InvertsTheComplementaryErrorFunction) {
    for (const double x : {0.01, 0.5, 1.0, 2.5, 4.24, 6.0, 15.0, 25.0}) {
        Status status = Status::Success;
        std::string message;
        const double root = QFactorRoot(static_cast<double>(std::erfc(static_cast<long double>(x))),
                                        1e-5, 1000.0, 1e-10, status, message);
        // The accuracy asked for; the far tail is still resolved since erfc is relative there.
        EXPECT_NEAR(root, x, 2e-10);
        EXPECT_EQ(status, Status::Success);
        EXPECT_EQ(message, "");
    }
}

TEST(QFactorRoot, WarnsWhereThereIsNoRoot) {
    for (const double target : {1.0, 1.5, -0.1, std::numeric_limits<double>::quiet_NaN()}) {
        Status status = Status::Success;
        std::string message = "BER: ";
        EXPECT_EQ(QFactorRoot(target, 1e-5, 1000.0, 1e-6, status, message), 0.0);
        EXPECT_EQ(status, Status::Warning);
        EXPECT_EQ(message, "BER: Q factor cannot be computed: root not bracketed\n");
    }
}

TEST(QFactorRoot, WarnsWhenATolerableRootIsNotFoundInTime) {
    // A tolerance of 0 is below the spacing of numbers: met only where erfc hits the target.
    int unmet = 0;
    for (int i = 1; i <= 50; ++i) {
        Status status = Status::Success;
        std::string message;
        const double root = QFactorRoot(0.001 * i, 1e-5, 1000.0, 0.0, status, message);
        if (status == Status::Success) continue;
        EXPECT_EQ(message, "Q factor cannot be computed: max number of iterations exceeded\n");
        EXPECT_EQ(root, 0.0);
        ++unmet;
    }
    EXPECT_GT(unmet, 0);
}

TEST(QFactorRoot, AcceptsAnEndThatMeetsTheTargetExactly) {
    Status status = Status::Success;
    std::string message;
    EXPECT_EQ(QFactorRoot(0.0, 1e-5, 1000.0, 1e-6, status, message), 1000.0);
    EXPECT_EQ(QFactorRoot(1.0, 0.0, 1000.0, 1e-6, status, message), 0.0);
    EXPECT_EQ(status, Status::Success);
    EXPECT_EQ(message, "");
}

TEST(SuperGaussianOrder, RecoversTheOrderFromItsRiseTime) {
    for (const double order : {2.0, 3.7, 12.0}) {
        // Where exp(-ln 2 s^order) is 10 % and 90 %, solved by its logarithms.
        const auto crossing = [order](long double level) {
            return std::exp2(std::log2(-std::log2(level)) / order);
        };
        const auto rise = static_cast<double>(crossing(0.1L) - crossing(0.9L));
        EXPECT_NEAR(SuperGaussianOrder(rise, 1.0, 100.0, 1e-9), order, 1e-8);
    }
}

TEST(SuperGaussianOrder, StopsTheRunWithoutARoot) {
    EXPECT_EQ(FailureOf([] { SuperGaussianOrder(50.0, 1.0, 100.0, 1e-9); }),
              "Root must be bracketed in SuperGaussian");
}

}  // namespace
}  // namespace photrak

// Roots by putting them back into the function, here by the library's own long double functions.
#include "numeric/roots.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "support/failure.h"

namespace photrak {
namespace {

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

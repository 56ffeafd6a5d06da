// Table search against a linear search, interpolation against polynomials in long double, and the
// uniform grid against both.
#include "numeric/interpolation.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <utility>
#include <vector>

#include "numeric/uniform_grid.h"
#include "support/failure.h"

namespace photrak {
namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

/// A one-based table.
std::vector<double> Table(std::vector<double> values) {
    values.insert(values.begin(), noNumber);
    return values;
}

TEST(HuntTable, AgreesWithALinearSearchFromEveryGuess) {
    for (int n = 2; n <= 20; ++n) {
        for (const double sign : {1.0, -1.0}) {
            std::vector<double> xx(1, noNumber);
            for (int i = 1; i <= n; ++i) xx.push_back(sign * (i + 0.125 * i * i));
            // The steps of x meet every entry, which belongs to the interval that it opens.
            for (double x = -1.0; x <= xx[n] * sign + 1.0; x += 0.125) {
                const double at = sign * x;
                int wanted = 0;
                for (int i = 1; i <= n; ++i) {
                    if (sign > 0.0 ? at >= xx[i] : at < xx[i]) wanted = i;
                }
                for (int guess = -1; guess <= n + 2; ++guess) {
                    int j = guess;
                    HuntTable(xx.data(), n, at, &j);
                    ASSERT_EQ(j, wanted) << "n " << n << " x " << at << " guess " << guess;
                }
            }
        }
    }
}

TEST(HuntTable, EndsOnWhatIsNoTable) {
    const auto xx = Table({1.0, noNumber, 0.5, noNumber});
    for (const double x : {noNumber, 0.7}) {
        for (int guess = 0; guess <= 4; ++guess) {
            int j = guess;
            HuntTable(xx.data(), 4, x, &j);
            EXPECT_TRUE(j >= 0 && j <= 4);
        }
    }
}

long double Polynomial(long double x, int degree) {
    long double sum = 0.0L, power = 1.0L;
    for (int i = 0; i <= degree; ++i, power *= x) sum += power * (i % 2 ? -0.5L : 1.0L) / (i + 1);
    return sum;
}

TEST(PolyInt, ReproducesThePolynomialThroughItsPoints) {
    for (int n = 1; n <= 12; ++n) {  // below and above the size that needs no heap
        std::vector<double> xa(1), ya(1);
        for (int i = 1; i <= n; ++i) {
            xa.push_back(-1.0 + 0.21 * i + 0.03 * (i % 3));
            ya.push_back(static_cast<double>(Polynomial(xa[i], n - 1)));
        }
        for (const double x : {-1.1, -0.3, 0.42, 1.3}) {
            double y = 0.0, dy = 0.0;
            PolyIntTwoRealArray(xa.data(), ya.data(), n, x, &y, &dy);
            // Rounding of the ordinates grows with the Lebesgue constant outside the points.
            EXPECT_NEAR(y, static_cast<double>(Polynomial(x, n - 1)), n > 8 ? 1e-8 : 1e-11) << n;
        }
    }
}

TEST(PolyInt, EstimatesItsErrorByTheLastCorrectionFromTheNearestPoint) {
    const auto xa = Table({0.0, 1.0, 3.0}), ya = Table({0.0, 1.0, 9.0});  // x^2
    double y = 0.0, dy = 0.0;
    PolyIntTwoRealArray(xa.data(), ya.data(), 3, 1.25, &y, &dy);
    EXPECT_DOUBLE_EQ(y, 1.5625);
    EXPECT_DOUBLE_EQ(dy, 1.5625 - 1.25);  // what the third point adds to the line of the first two
    const auto twice = Table({1.0, 2.0, 2.0});
    EXPECT_EQ(FailureOf([&] { PolyIntTwoRealArray(twice.data(), ya.data(), 3, 1.5, &y, &dy); }),
              "Error in routine PolyIntTwoRealArray");
}

TEST(PolyInt4, UsesTheWindowAroundTheInterval) {
    // For y = x^4 a cubic through x1..x4 is off by (x - x1)(x - x2)(x - x3)(x - x4): the error
    // tells which points were used.
    std::vector<double> xa(1), ya(1);
    for (int i = 1; i <= 8; ++i) {
        xa.push_back(i);
        ya.push_back(std::pow(i, 4));
    }
    const std::pair<double, int> windows[] = {{0.5, 1}, {2.5, 1}, {3.0, 2},
                                              {4.5, 3}, {6.5, 5}, {9.0, 5}};
    for (const auto& [x, start] : windows) {
        double y = 0.0, dy = 0.0, error = 1.0;
        PolyInt4(x, xa.data(), ya.data(), 8, &y, &dy);
        for (int i = start; i < start + 4; ++i) error *= x - i;
        EXPECT_NEAR(y, std::pow(x, 4) - error, 1e-9) << x;
    }
}

TEST(UniformGrid, AgreesWithTheTableSearch) {
    for (const int n : {4, 5, 37}) {
        for (const double tStep : {1.0, 3.7e-13}) {
            std::vector<double> xa(static_cast<std::size_t>(n) + 1), ya(xa.size());
            for (int k = 1; k <= n; ++k) {
                xa[static_cast<std::size_t>(k)] = (k - 1) * tStep;
                ya[static_cast<std::size_t>(k)] = std::cos(1.7 * k * k);
            }
            const UniformGrid grid(n, tStep);
            for (int i = -300; i < 100 * n + 200; ++i) {  // every sample is among the times
                const double t = i * 0.01 * tStep;
                double expected = 0.0, ignored = 0.0;
                PolyInt4(t, xa.data(), ya.data(), n, &expected, &ignored);
                const GridPlace place = grid.Locate(t);
                ASSERT_EQ(place.first, WindowOfFour(xa.data(), n, t)) << n << " " << i;
                double scale = 1.0;  // cancellation grows outside the table
                for (const double weight : place.weights) scale += std::fabs(weight);
                ASSERT_NEAR(place.Value(ya.data()), expected, 4e-15 * scale * n) << n << " " << i;
            }
        }
    }
}

TEST(UniformGrid, StaysInsideTheSamplesHoweverFarOut) {
    const int n = 1 << 30;
    const UniformGrid grid(n, 0.1 / 3.0);
    for (const double far : {-1e300, 1e300, -HUGE_VAL, HUGE_VAL, std::nan("")}) {
        const std::int32_t first = grid.Locate(far).first;
        EXPECT_TRUE(first == 1 || first == n - 3);
    }
}

}  // namespace
}  // namespace photrak

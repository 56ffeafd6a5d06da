// The grid's weights against the general interpolation on a table of the same times.
#include "numeric/uniform_grid.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include "numeric/interpolation.h"

namespace photrak {
namespace {

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

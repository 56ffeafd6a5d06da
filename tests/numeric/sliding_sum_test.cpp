// Each of the ways to a sliding sum against its definition.
#include "numeric/sliding_sum.h"

#include <cmath>
#include <gtest/gtest.h>

namespace photrak {
namespace {

double ByDefinition(const std::vector<double>& in, const std::vector<double>& kernel,
                    std::size_t i) {
    long double sum = 0;
    for (std::size_t j = 0; j < kernel.size(); ++j) {
        const std::size_t shifted = i + j, half = kernel.size() / 2;
        if (shifted >= half && shifted - half < in.size()) {
            sum += static_cast<long double>(in[shifted - half]) * kernel[j];
        }
    }
    return static_cast<double>(sum);
}

std::vector<double> Bell(std::size_t m) {
    std::vector<double> kernel(m);
    for (std::size_t j = 0; j < m; ++j) {
        const double x = (static_cast<double>(j) - static_cast<double>(m / 2)) / (m / 2.0);
        kernel[j] = std::exp(-9.2 * x * x);  // 1e-4 at both ends
    }
    return kernel;
}

/// Lines of very unequal strength over darkness and a weak floor.
std::vector<double> Lines(std::size_t n) {
    std::vector<double> in(n, 0.0);
    for (std::size_t i = n / 2; i < n; ++i) in[i] = 1e-27 * (1.0 + std::sin(0.7 * double(i)));
    in[n / 16] = 1.0;
    in[n / 2] = 3e-9;
    in[n - 1] = 2e-14;
    return in;
}

TEST(SlidingSum, KeepsItsDefinitionBetweenWeakAndStrong) {
    const struct {
        const char* way;
        std::size_t n;
        std::vector<double> kernel;
        double tolerance;  // relative
    } rows[] = {
        {"block by block", 1000, std::vector<double>(101, 0.5), 1e-13},
        {"one block", 101, std::vector<double>(101, 1.0), 1e-13},
        {"a single weight", 64, {2.0}, 0.0},
        {"term by term", 1000, Bell(101), 1e-13},
        // A transform rounds to 1e-16 of its strongest element, 1e-5 above the weakest that it
        // serves, seen through a weight of 1e-4.
        {"layer by layer", std::size_t{1} << 15, Bell(4097), 1e-4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.way);
        const std::vector<double> in = Lines(row.n);
        const std::vector<double> sums = SlidingSum(in, row.kernel);
        ASSERT_EQ(sums.size(), row.n);
        for (std::size_t i = 0; i<row.n; i += row.n> 1000 ? 61 : 1) {
            const double expected = ByDefinition(in, row.kernel, i);
            ASSERT_NEAR(sums[i], expected, row.tolerance * expected) << i;
        }
    }
    EXPECT_TRUE(SlidingSum({}, Bell(3)).empty());
}

}  // namespace
}  // namespace photrak

// Linear systems with known solutions, and the smoothing fits that rest on them.
#include <cmath>
#include <gtest/gtest.h>
#include <vector>

#include "base/arrays.h"
#include "base/memory.h"
#include "numeric/derivative.h"
#include "numeric/linear_algebra.h"
#include "support/failure.h"

namespace photrak {
namespace {

/// A square matrix 1..n that frees itself.
struct Square {
    explicit Square(const std::vector<std::vector<double>>& rows)
        : n(static_cast<int>(rows.size())), a(dmatrix(1, n, 1, n)), indx(rows.size() + 1) {
        for (int i = 1; i <= n; ++i) {
            for (int j = 1; j <= n; ++j) a[i][j] = rows[i - 1][j - 1];
        }
    }
    ~Square() { free_dmatrix(a, 1, 1); }
    Square(const Square&) = delete;
    Square& operator=(const Square&) = delete;

    int n;
    double** a;
    std::vector<int> indx;
    double parity = 0.0;
};

TEST(LUDecompose, SolvesSystemsThatNeedExchanges) {
    // Zeros on the diagonal and rows of very different scale; b = A (1, 2, ..., n).
    const std::vector<std::vector<double>> systems[] = {
        {{4.0}},
        {{0.0, 2.0}, {3.0, 1.0}},
        {{0.0, 1.0, 2.0}, {1e9, 3e9, 5e9}, {2.0, 0.0, 1.0}},
        {{1.0, 1.0 / 2, 1.0 / 3, 1.0 / 4},
         {1.0 / 2, 1.0 / 3, 1.0 / 4, 1.0 / 5},
         {1.0 / 3, 1.0 / 4, 1.0 / 5, 1.0 / 6},
         {1.0 / 4, 1.0 / 5, 1.0 / 6, 1.0 / 7}},
    };
    for (const auto& rows : systems) {
        Square s(rows);
        std::vector<double> b(1);
        for (const auto& row : rows) {
            long double sum = 0.0L;
            for (int j = 0; j < s.n; ++j) sum += static_cast<long double>(row[j]) * (j + 1);
            b.push_back(static_cast<double>(sum));
        }
        LUDecompose(s.a, s.n, s.indx.data(), &s.parity);
        LUBackSubstitute(s.a, s.n, s.indx.data(), b.data());
        // The Hilbert matrix of order 4 has a condition number of 15,000.
        for (int i = 1; i <= s.n; ++i) EXPECT_NEAR(b[i], i, 1e-11);
    }
}

TEST(LUDecompose, TakesTheLaterRowOnATieAndAVerySmallPivotForZero) {
    Square tie({{2.0, 1.0}, {2.0, 2.0}});
    LUDecompose(tie.a, 2, tie.indx.data(), &tie.parity);
    EXPECT_EQ(tie.indx[1], 2);
    EXPECT_EQ(tie.parity, -1.0);

    Square dependent({{1.0, 1.0}, {1.0, 1.0}});
    LUDecompose(dependent.a, 2, dependent.indx.data(), &dependent.parity);
    EXPECT_EQ(dependent.a[2][2], 1e-50);

    const double nan = std::nan("");
    for (const double element : {0.0, nan}) {
        EXPECT_EQ(FailureOf([&] {
                      Square s({{1.0, 2.0}, {element, element}});
                      LUDecompose(s.a, 2, s.indx.data(), &s.parity);
                  }),
                  "Singular matrix in LU decomposition");
    }
}

TEST(SavitzkyGolay, GivesThePublishedWindows) {
    double c[10] = {};
    SavitzkyGolay(c, 5, 2, 2, 0, 2);  // smoothing: (-3, 12, 17, 12, -3) / 35
    constexpr double smoothing[] = {17.0, 12.0, -3.0, -3.0, 12.0};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(c[i + 1], smoothing[i] / 35.0, 1e-15);
    SavitzkyGolay(c, 9, 3, 3, 1, 2);       // slope: k / 28, zeros between the halves
    EXPECT_NEAR(c[9], 1.0 / 28.0, 1e-15);  // offset +1 wraps to the end
    EXPECT_EQ(c[5], 0.0);
}

TEST(SavitzkyGolay, RefusesWindowsThatDoNotFit) {
    struct Row {
        int np, nl, nr, ld, m;
    };
    constexpr Row rows[] = {{6, 3, 3, 1, 2}, {7, -1, 6, 1, 2}, {7, 3, -1, 1, 2},
                            {7, 3, 3, 3, 2}, {7, 1, 0, 1, 2},  {7, 3, 3, -1, 2}};
    for (const Row& row : rows) {
        double c[8];
        EXPECT_EQ(FailureOf([&] { SavitzkyGolay(c, row.np, row.nl, row.nr, row.ld, row.m); }),
                  "Bad arguments in computing Derivative");
    }
}

TEST(Derivative, IsExactForParabolasUpToBothEnds) {
    constexpr double dt = 1e-12;
    for (const int n : {7, 8, 9, 13, 40}) {
        std::vector<double> y(n + 1), slope(n + 1);
        for (int i = 1; i <= n; ++i) y[i] = 2.0 - 3.0 * i + 0.5 * i * i;
        ASSERT_EQ(Derivative(slope.data(), y.data(), dt, n), 0);
        for (int i = 1; i <= n; ++i) EXPECT_NEAR(slope[i] * dt, i - 3.0, 1e-10) << n << " " << i;
    }
}

TEST(Derivative, WeighsOnlyTheSevenSamplesOfItsWindow) {
    constexpr int n = 20, spike = 10;
    std::vector<double> y(n + 1), slope(n + 1);
    y[spike] = 28.0;
    ASSERT_EQ(Derivative(slope.data(), y.data(), 1.0, n), 0);
    for (int i = 4; i <= n - 3; ++i) {
        const int k = spike - i;
        EXPECT_NEAR(slope[i], std::abs(k) <= 3 ? k : 0.0, 1e-12) << i;
    }
}

TEST(Derivative, FailsUnderSevenSamplesOrWithoutMemory) {
    double y[8] = {}, slope[8] = {};
    EXPECT_EQ(Derivative(slope, y, 1.0, 6), 1);
    RefuseAllocationsFrom(1);
    EXPECT_EQ(Derivative(slope, y, 1.0, 7), 1);
    RefuseAllocationsFrom(-1);
}

}  // namespace
}  // namespace photrak

// Linear systems with known solutions, and the smoothing fits that rest on them.
#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "base/arrays.h"
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
    std::vector<std::vector<double>> hilbert(4, std::vector<double>(4));
    for (int i = 0; i < 16; ++i) hilbert[i / 4][i % 4] = 1.0 / (i / 4 + i % 4 + 1);
    const std::vector<std::vector<double>> systems[] = {
        {{4.0}},
        {{0.0, 2.0}, {3.0, 1.0}},
        {{0.0, 1.0, 2.0}, {1e9, 3e9, 5e9}, {2.0, 0.0, 1.0}},
        hilbert};
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
    const auto decomposed = [](double a11, double a12, double a21, double a22) {
        auto s = std::make_unique<Square>(std::vector<std::vector<double>>{{a11, a12}, {a21, a22}});
        LUDecompose(s->a, 2, s->indx.data(), &s->parity);
        return s;
    };
    const auto tie = decomposed(2.0, 1.0, 2.0, 2.0);
    EXPECT_EQ(tie->indx[1], 2);
    EXPECT_EQ(decomposed(1.0, 1.0, 1.0, 1.0)->a[2][2], 1e-50);
    for (const double element : {0.0, std::nan("")}) {
        EXPECT_EQ(FailureOf([&] { decomposed(1.0, 2.0, element, element); }),
                  "Singular matrix in LU decomposition");
    }
}

TEST(SavitzkyGolay, GivesThePublishedWindowsAndRefusesWhatDoesNotFit) {
    double c[10] = {};
    SavitzkyGolay(c, 5, 2, 2, 0, 2);  // smoothing: (-3, 12, 17, 12, -3) / 35
    constexpr double smoothing[] = {17.0, 12.0, -3.0, -3.0, 12.0};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(c[i + 1], smoothing[i] / 35.0, 1e-15);
    SavitzkyGolay(c, 9, 3, 3, 1, 2);       // slope: k / 28, zeros between the halves
    EXPECT_NEAR(c[9], 1.0 / 28.0, 1e-15);  // offset +1 wraps to the end
    EXPECT_EQ(c[5], 0.0);

    EXPECT_EQ(FailureOf([&] { SavitzkyGolay(c, 6, 3, 3, 1, 2); }),
              "Bad arguments in computing Derivative");
}

TEST(Derivative, IsExactForParabolasUpToBothEnds) {
    constexpr double dt = 1e-12;
    for (const int n : {7, 8, 13}) {
        std::vector<double> y(n + 1), slope(n + 1);
        for (int i = 1; i <= n; ++i) y[i] = 2.0 - 3.0 * i + 0.5 * i * i;
        ASSERT_EQ(Derivative(slope.data(), y.data(), dt, n), 0);
        for (int i = 1; i <= n; ++i) EXPECT_NEAR(slope[i] * dt, i - 3.0, 1e-10) << n << " " << i;
        EXPECT_EQ(Derivative(slope.data(), y.data(), dt, 6), 1) << "less than a window";
    }
}

}  // namespace
}  // namespace photrak

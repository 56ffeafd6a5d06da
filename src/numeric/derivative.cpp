// The fit's normal equations are solved once for each shape of the window.
#include "numeric/derivative.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "base/arrays.h"
#include "base/escape.h"
#include "base/memory.h"
#include "numeric/linear_algebra.h"

namespace photrak {
namespace {

constexpr int windowSize = 7, windowOrder = 2;

struct MatrixDeleter {
    void operator()(double** m) const { free_dmatrix(m, 1, 1); }
};
struct VectorDeleter {
    void operator()(double* p) const { free_vector(p, 1); }
};
struct IndexDeleter {
    void operator()(std::int32_t* p) const { free_ivector(p, 1); }
};

/// Sum over the window of offset^power.
double Moment(int nl, int nr, int power) {
    double sum = power == 0 ? 1.0 : 0.0;
    for (int k = 1; k <= nr; ++k) sum += std::pow(static_cast<double>(k), power);
    for (int k = 1; k <= nl; ++k) sum += std::pow(static_cast<double>(-k), power);
    return sum;
}

/// Slope at y[i] by the window's coefficients, per sample.
double Slope(const double* y, long i, int nl, int nr, const double* c) {
    double sum = y[i] * c[1];
    for (int j = 1; j <= nr; ++j) sum += y[i + j] * c[windowSize + 1 - j];
    for (int j = 1; j <= nl; ++j) sum += y[i - j] * c[1 + j];
    return sum;
}

}  // namespace

void SavitzkyGolay(double* c, int np, int nl, int nr, int ld, int m) {
    if (nl < 0 || nr < 0 || np < nl + nr + 1 || ld > m || nl + nr < m || ld < 0) {
        NumericFailure("Bad arguments in computing Derivative");
    }
    const std::unique_ptr<std::int32_t, IndexDeleter> indx(ivector(1, m + 1));
    const std::unique_ptr<double*, MatrixDeleter> a(dmatrix(1, m + 1, 1, m + 1));
    const std::unique_ptr<double, VectorDeleter> unknowns(vector(1, m + 1));
    double* b = unknowns.get();
    for (int i = 1; i <= m + 1; ++i) {
        for (int j = 1; j <= m + 1; ++j) a.get()[i][j] = Moment(nl, nr, i + j - 2);
        b[i] = i == ld + 1 ? 1.0 : 0.0;
    }
    double parity = 0.0;
    LUDecompose(a.get(), m + 1, indx.get(), &parity);
    LUBackSubstitute(a.get(), m + 1, indx.get(), b);

    std::fill(c + 1, c + np + 1, 0.0);
    for (int k = -nl; k <= nr; ++k) {
        double sum = b[1], power = 1.0;
        for (int i = 1; i <= m; ++i) sum += b[i + 1] * (power *= k);
        c[1 + (np - k) % np] = sum;
    }
}

int Derivative(double* out, const double* y, double dt, long n) {
    if (n < windowSize) return 1;
    const OwnedBlock<double> c(static_cast<double*>(Allocate((windowSize + 1) * sizeof(double))));
    if (!c) return 1;
    constexpr int half = windowSize / 2;
    int nl = 0, nr = windowSize - 1;
    SavitzkyGolay(c.get(), windowSize, nl, nr, 1, windowOrder);
    for (long i = 1; i <= n; ++i) {
        out[i] = Slope(y, i, nl, nr, c.get()) / dt;
        const bool leans = i <= half || i >= n - half;
        if (leans && i < n) SavitzkyGolay(c.get(), windowSize, ++nl, --nr, 1, windowOrder);
    }
    return 0;
}

}  // namespace photrak

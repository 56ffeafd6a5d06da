// Crout's method: lower triangle with unit diagonal, upper triangle, both in the place of a.
#include "numeric/linear_algebra.h"

#include <cmath>
#include <utility>

#include "base/arrays.h"
#include "base/escape.h"

namespace photrak {
namespace {

constexpr double tinyPivot = 1e-50;

/// 1 / largest element of each row, by which pivots are compared.
void ScaleRows(double** a, int n, Doubles& scale) {
    for (int i = 1; i <= n; ++i) {
        double largest = 0.0;
        for (int j = 1; j <= n; ++j) largest = std::fmax(largest, std::fabs(a[i][j]));
        if (largest == 0.0) NumericFailure("Singular matrix in LU decomposition");
        scale[i] = 1.0 / largest;
    }
}

/// a[i][j] less the products of what stands left of it and above it, in the first `count` terms.
double Reduce(double** a, int i, int j, int count) {
    double sum = a[i][j];
    for (int k = 1; k <= count; ++k) sum -= a[i][k] * a[k][j];
    return sum;
}

/// Completes the lower part of column j and gives the row of its pivot; on a tie the later row.
int ReduceColumn(double** a, int n, int j, const Doubles& scale) {
    for (int i = 1; i < j; ++i) a[i][j] = Reduce(a, i, j, i - 1);
    double largest = 0.0;
    int pivot = j;
    for (int i = j; i <= n; ++i) {
        a[i][j] = Reduce(a, i, j, j - 1);
        const double size = scale[i] * std::fabs(a[i][j]);
        if (size >= largest) {
            largest = size;
            pivot = i;
        }
    }
    return pivot;
}

}  // namespace

void LUDecompose(double** a, int n, int* indx, double* d) {
    Doubles scale(n);
    *d = 1.0;
    ScaleRows(a, n, scale);
    for (int j = 1; j <= n; ++j) {
        const int pivot = ReduceColumn(a, n, j, scale);
        if (pivot != j) {
            for (int k = 1; k <= n; ++k) std::swap(a[pivot][k], a[j][k]);
            *d = -*d;
            scale[pivot] = scale[j];
        }
        indx[j] = pivot;
        if (a[j][j] == 0.0) a[j][j] = tinyPivot;
        const double inverse = 1.0 / a[j][j];
        for (int i = j + 1; i <= n; ++i) a[i][j] *= inverse;
    }
}

void LUBackSubstitute(const double* const* a, int n, const int* indx, double* b) {
    int firstNonZero = 0;
    for (int i = 1; i <= n; ++i) {
        double sum = b[indx[i]];
        b[indx[i]] = b[i];
        if (firstNonZero != 0) {
            for (int j = firstNonZero; j < i; ++j) sum -= a[i][j] * b[j];
        } else if (sum != 0.0) {
            firstNonZero = i;
        }
        b[i] = sum;
    }
    for (int i = n; i >= 1; --i) {
        double sum = b[i];
        for (int j = i + 1; j <= n; ++j) sum -= a[i][j] * b[j];
        b[i] = sum / a[i][i];
    }
}

}  // namespace photrak

// Solution of small linear systems. Matrices and vectors are one-based, from base/arrays.h.
#pragma once

namespace photrak {

/// Replaces a[1..n][1..n] by the LU decomposition of a row-wise permutation of itself (Crout's
/// method, implicit scaled partial pivoting). indx[1..n] gets the permutation, *d +1 or -1 for an
/// even or odd number of exchanges. A row of zeros goes to NumericFailure; a pivot of zero becomes
/// 1e-50.
void LUDecompose(double** a, int n, int* indx, double* d);
/// Solves a x = b with what LUDecompose made of a; b is replaced by x.
void LUBackSubstitute(const double* const* a, int n, const int* indx, double* b);

}  // namespace photrak

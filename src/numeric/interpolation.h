// Search in monotonic tables and polynomial interpolation. All arrays are one-based.
#pragma once

namespace photrak {

/// Index of the interval of xx[1..n] (ascending if xx[n] > xx[1], else descending) that holds x:
/// ascending xx[j] <= x < xx[j+1], descending xx[j] > x >= xx[j+1]. 0 or n: x lies before or after
/// the table. *j on entry is a guess from which the hunt starts with doubling steps; a guess
/// outside 1..n gives a plain bisection. An empty table gives 0.
void HuntTable(const double* xx, int n, double x, int* j);

/// Polynomial of degree n - 1 through (xa[i], ya[i]), evaluated at x by Neville's algorithm. *dy
/// gets the last correction, an estimate of the error. Two equal xa go to NumericFailure. Without
/// points both are 0.
void PolyIntTwoRealArray(const double* xa, const double* ya, int n, double x, double* y,
                         double* dy);
/// The same with ya[i] = i: the fractional position of x in xa.
void PolyIntOneRealArray(const double* xa, int n, double x, double* y, double* dy);

/// First of the four points around x in a table of at least four: one before its interval where
/// there is one, the first or last four at the ends.
int WindowOfFour(const double* xa, int n, double x);
/// The cubic through the four points around x; all points of a shorter table.
void PolyInt4(double x, const double* xa, const double* ya, int n, double* y, double* dy);

}  // namespace photrak

// Derivative of a sampled curve by least-squares fits of a parabola (Savitzky and Golay).
#pragma once

namespace photrak {

/// Coefficients c[1..np] of the ld-th derivative at the center of a window of nl points to the left
/// and nr to the right, fitted by a polynomial of order m; for ld > 1 to be multiplied by ld!. They
/// stand in wrap-around order: offset k at c[1 + (np - k) mod np]. Bad arguments go to
/// NumericFailure.
void SavitzkyGolay(double* c, int np, int nl, int nr, int ld, int m);

/// out[i] = dy/dt at the samples y[1..n], spacing dt, with a window of 7 points that leans inward
/// at both ends; exact for parabolas. `out` may not be `y`. Gives 1 when there are fewer than 7
/// samples or no memory, else 0.
[[nodiscard]] int Derivative(double* out, const double* y, double dt, long n);

}  // namespace photrak

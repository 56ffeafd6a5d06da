// The engine of the transforms: what a length needs is worked out once and kept for the process.
#pragma once

namespace photrak {

/// Transforms n (a power of two) interleaved complex numbers in place, unscaled, sign +1 or -1.
void TransformInterleaved(double* data, long n, int sign);

/// Forgets the tables of all lengths; a test measures memory with it.
void ResetFFTPlans();

}  // namespace photrak

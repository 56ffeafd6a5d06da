// Choice of the vector width at run time. The hot loops are compiled once for each width; which one
// serves is settled at the first use by what the processor has. Every width does the same
// arithmetic on every element, so the choice changes the time and no bit of a result.
#pragma once

namespace photrak {

enum class SimdLevel { Plain, Avx2, Avx512 };

/// The level in use: the highest that the processor has and that the environment variable
/// PHOTRAK_SIMD (plain, avx2 or avx512) allows.
SimdLevel ActiveSimdLevel();

/// Takes `level` from now on, for tests and benchmarks; false (and no change) without the
/// processor for it.
bool UseSimdLevel(SimdLevel level);

/// "plain", "avx2", "avx512".
const char* SimdLevelName(SimdLevel level);

struct FFTKernels;
/// The hot loops of the active level.
const FFTKernels& Kernels();

}  // namespace photrak

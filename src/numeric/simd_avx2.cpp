// The hot loops with vectors of 4 doubles.
#ifdef __AVX2__
#include <immintrin.h>
#define PHOTRAK_SIMD_WIDTH 4
#include "numeric/fft_kernels.h"

namespace photrak::simd_avx2 {

namespace {
#include "numeric/simd_loops.inl"
}  // namespace

extern const FFTKernels kernels;
const FFTKernels kernels = hotLoops;

}  // namespace photrak::simd_avx2
#endif

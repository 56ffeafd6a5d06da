// The hot loops with vectors of 8 doubles.
#ifdef __AVX512DQ__
#include <immintrin.h>
#define PHOTRAK_SIMD_WIDTH 8
#include "numeric/fft_kernels.h"

namespace photrak::simd_avx512 {

namespace {
#include "numeric/simd_loops.inl"
}  // namespace

extern const FFTKernels kernels;
const FFTKernels kernels = hotLoops;

}  // namespace photrak::simd_avx512
#endif

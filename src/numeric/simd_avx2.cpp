// The hot loops with vectors of 4 doubles.
#define PHOTRAK_SIMD_WIDTH 4
#include "numeric/fft_kernels.h"

namespace photrak::simd_avx2 {

namespace {
#include "numeric/simd_vector.inl"
//
#include "numeric/fft_butterflies.inl"
//
#include "numeric/fft_rows.inl"
#include "numeric/fft_split.inl"
}  // namespace

extern const FFTKernels kernels;
const FFTKernels kernels = {Transform, Filter};

}  // namespace photrak::simd_avx2

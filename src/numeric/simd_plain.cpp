// The hot loops with vectors of 2 doubles.
#define PHOTRAK_SIMD_WIDTH 2
#include "numeric/fft_kernels.h"

namespace photrak::simd_plain {

namespace {
#include "numeric/simd_loops.inl"
}  // namespace

extern const FFTKernels kernels;
const FFTKernels kernels = hotLoops;

}  // namespace photrak::simd_plain

// Adapter by which the program's own transform and fiber join the race of the reference programs.
// It only translates arrays.
#include "numeric/fft.h"
#include "plugin.h"
#include "race_fiber.h"

namespace {

// Zero-based interleaved numbers as a one-based double view.
void Transform(double* z, long n, int sign) {
    photrak::DoFFT(z - 1, n, sign);
}

const bench_plugin_v1 self = {"photrak", Transform, RunRaceFiber};

}  // namespace

extern "C" const bench_plugin_v1* bench_plugin() {
    return &self;
}

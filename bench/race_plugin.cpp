// Adapter by which the program's own transform joins the race of the reference programs. It only
// translates arrays.
#include "numeric/fft.h"
#include "plugin.h"

namespace {

// Zero-based interleaved numbers as a one-based double view.
void Transform(double* z, long n, int sign) {
    photrak::DoFFT(z - 1, n, sign);
}

const bench_plugin_v1 self = {"photrak", Transform, nullptr};

}  // namespace

extern "C" const bench_plugin_v1* bench_plugin() {
    return &self;
}

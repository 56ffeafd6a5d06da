// The transform back.
#include "models/common/electrical_spectrum.h"

#include "numeric/fft.h"

namespace photrak {

void ReturnToTime(double* view, long n) {
    DoFFT(view, n, +1);
    const auto count = static_cast<double>(n);
    for (long i = 1; i <= 2 * n; ++i) view[i] /= count;
}

}  // namespace photrak

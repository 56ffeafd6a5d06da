// The transform as the models call it: checks of the length, window, centering and scaling. The
// arithmetic of the transform itself is in the engine, numeric/fft_plan.h.
#include "numeric/fft.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "base/escape.h"
#include "base/text.h"
#include "numeric/fft_plan.h"
#include "platform/stop_point.h"

namespace photrak {

namespace {

// Twice the usual raised cosine. By design: spectra are compared at a peak gain of 2.
void ApplyHannWindow(Complex* samples, std::int32_t n) {
    const double m = n < 2 ? 1.0 : n - 1.0;
    for (std::int32_t i = 1; i <= n; ++i)
        samples[i] = (1 - std::cos(2 * std::numbers::pi * (i - 1) / m)) * samples[i];
}

// The upper half of elements 1..n goes to 0..n/2-1, the lower half to n/2..n-1. The Nyquist bin,
// now in element 0, is repeated in element n; a single sample stands for bin 0 at both ends.
void CenterSpectrum(Complex* samples, std::int32_t n) {
    std::swap_ranges(samples + 1, samples + 1 + n / 2, samples + 1 + n / 2);
    std::copy(samples + 1, samples + 1 + n, samples);
    samples[n] = samples[0];
}

}  // namespace

void DoFFT(double* view, long n, int sign) {
    if (!IsPowerOfTwo(n))
        NumericFailure(Concat("Fourier transform of ", n, " samples: not a power of two"));
    StopPoint();
    TransformInterleaved(view + 1, n, sign < 0 ? -1 : +1);
    StopPoint();
}

std::int32_t DoFFTFlagged(Complex* samples, std::int32_t n, std::int32_t sign, std::int32_t flags) {
    if (flags & fftShrinkToPower) n = LargestPowerOfTwo(n);
    if (n == 0 && (flags & fftShrinkToPower)) return 0;
    if (!IsPowerOfTwo(n))
        NumericFailure(Concat("Fourier transform of ", n, " samples: not a power of two"));
    if (flags & fftHannWindow) ApplyHannWindow(samples, n);
    StopPoint();
    TransformInterleaved(&samples[1].re, n, sign < 0 ? -1 : +1);
    StopPoint();
    if (flags & fftCenter) CenterSpectrum(samples, n);
    if (flags & fftDivideByN)
        for (std::int32_t i = flags & fftCenter ? 0 : 1; i <= n; ++i)
            samples[i] = MakeComplex(samples[i].re / n, samples[i].im / n);
    return n;
}

std::int32_t FFTIndexToBin(std::int32_t n, std::int32_t i) {
    const std::int64_t k = std::int64_t{i} - 1;
    return static_cast<std::int32_t>(k > n / 2 ? k - n : k);
}

std::int32_t FFTBinToIndex(std::int32_t n, std::int32_t k) {
    return static_cast<std::int32_t>(k >= 0 ? std::int64_t{k} + 1 : std::int64_t{n} + k + 1);
}

std::int32_t LargestPowerOfTwo(std::int32_t n) {
    if (n < 1) return 0;
    return static_cast<std::int32_t>(std::bit_floor(static_cast<std::uint32_t>(n)));
}

bool IsPowerOfTwo(long n) {
    return n > 0 && std::has_single_bit(static_cast<unsigned long>(n));
}

}  // namespace photrak

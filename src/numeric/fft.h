// The complex Fourier transform of one-based sample arrays, and the bin bookkeeping around it.
// Sum over j of x[j] exp(sign * 2 pi i j k / n), k = 0..n-1, unscaled: the caller divides by n on
// the way back. Element 1 is DC, 2..n/2+1 are the positive frequencies, the rest the negative ones.
// Filters and the fiber, which transform only to multiply and come back, use numeric/transfer.h.
#pragma once

#include <cstdint>

#include "base/complex.h"

namespace photrak {

/// Options of DoFFTFlagged, applied in this order.
enum FFTFlag : std::int32_t {
    fftShrinkToPower = 1,  // n becomes LargestPowerOfTwo(n)
    fftHannWindow = 8,     // every sample times 1 - cos(2 pi (i-1) / (n-1)): the peak gain is 2
    fftCenter = 2,    // bins -n/2..n/2 in elements 0..n, DC in n/2, the Nyquist bin at both ends
    fftDivideByN = 4  // every element divided by n: 1..n, or 0..n after fftCenter
};

/// Transforms n complex samples in place, unscaled.
/// \param view  double view of a one-based array: view[2k-1], view[2k] = re, im of sample k (1..n).
/// \param n     number of samples, a power of two; anything else goes to NumericFailure.
/// \param sign  sign of the exponent: negative for -1, everything else counts as +1.
/// Exhausted memory for the tables of a new length goes to NumericFailure, too.
void DoFFT(double* view, long n, int sign);

/// The same on samples[1..n], with any sum of FFTFlag. Returns the n used: 0 (nothing is touched)
/// when fftShrinkToPower meets n below 1. With fftCenter samples[0] is written.
std::int32_t DoFFTFlagged(Complex* samples, std::int32_t n, std::int32_t sign, std::int32_t flags);

/// Signed bin number of element i (1..n); element n/2+1 counts as +n/2.
std::int32_t FFTIndexToBin(std::int32_t n, std::int32_t i);
/// Element that holds bin k (-n/2..n/2).
std::int32_t FFTBinToIndex(std::int32_t n, std::int32_t k);

/// Largest power of two not above n; 0 for n below 1.
std::int32_t LargestPowerOfTwo(std::int32_t n);
bool IsPowerOfTwo(long n);

}  // namespace photrak

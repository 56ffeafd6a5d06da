// Measures of signals and shifts in time. Samples are one-based; a "double view" has view[2k-1],
// view[2k] = re, im of sample k. A signal is one period of a repeating pattern: shifts rotate.
#pragma once

#include "base/complex.h"

namespace photrak {

/// Rotates a[1..n] by k samples: toward higher index for k > 0, toward lower for k < 0.
void RotateSamples(long k, long n, Complex* a);
/// Rotates both polarizations to start at t (seconds, to the nearest sample) and sets startTime.
void AlignStartTime(OpSig* sig, double t);

/// Mean of |Ex|^2 + |Ey|^2, W; 0 without samples.
double AverageOpSigPower(const OpSig* sig);
/// AverageOpSigPower of the channels of a list, power by power to take(channel, power) in their
/// order. Neighbors of one size are walked through together: each sum waits for itself, not for
/// the memory.
template <class Take>
void TakeAveragePowers(const OpSig* channels, Take take);
/// Average power of all channels plus the noise integrated over its spectrum, W.
double NodelistPower(const OpSignal* signal);

/// Weight of point i (1..n) in a sum that integrates over a sampled axis in units of its step: 3/8,
/// 7/6, 23/24 at both ends, 1 inside (the fourth-order end correction). Under 6 points the ends
/// would overlap: all 1, a plain sum.
constexpr double EndWeight(long i, long n) {
    constexpr long shortest = 6;
    constexpr double weights[] = {3.0 / 8.0, 7.0 / 6.0, 23.0 / 24.0};
    if (n < shortest) return 1.0;
    const long fromEnd = i - 1 < n - i ? i - 1 : n - i;
    return fromEnd < 3 ? weights[fromEnd] : 1.0;
}
/// Sum of value(i) with these weights, i = 1..n.
template <class Value>
double WeightedSum(long n, Value value) {
    double sum = 0.0;
    long i = 1;
    for (; i <= 3 && i <= n; ++i) sum += EndWeight(i, n) * value(i);
    for (; i <= n - 3; ++i) sum += value(i);
    for (; i <= n; ++i) sum += EndWeight(i, n) * value(i);
    return sum;
}

/// Mean magnitude with end weights. `count` is the number of doubles, twice that of samples.
double IntegrateMagnitude(const double* view, long count);
/// Largest re^2 + im^2. `count` is the number of doubles.
double PeakMagnitudeSquared(const double* view, long count);
/// Largest magnitude. `count` is the number of samples.
double PeakMagnitude(const double* view, long count);

/// The first channel with exactly this wavelength, or null.
OpSig* FindOpSigByWavelength(OpSig* head, double wavelength);
const OpSig* FindOpSigByWavelength(const OpSig* head, double wavelength);
/// Sorts channels[lo..hi] by wavelength, ascending (quicksort; equal ones may change places).
void SortOpSigByWavelength(OpSig** channels, long lo, long hi);

/// What TakeAveragePowers goes by: the powers of `channel` and of its neighbors, as many as can be
/// had together, at least 1 and at most `mostTogether`; how many.
inline constexpr int mostTogether = 4;
int AveragePowersTogether(const OpSig* channel, double* powers);

template <class Take>
void TakeAveragePowers(const OpSig* channels, Take take) {
    while (channels) {
        double powers[mostTogether];
        const int count = AveragePowersTogether(channels, powers);
        for (int k = 0; k < count; ++k, channels = channels->next) take(*channels, powers[k]);
    }
}

}  // namespace photrak

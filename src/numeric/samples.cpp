// Plain loops over samples.
#include "numeric/samples.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/text.h"

namespace photrak {
namespace {

double TotalPower(const Complex* samples, long n) {
    double sum = 0.0;
    if (!samples) return sum;
    for (long i = 1; i <= n; ++i) sum += SquaredMagnitude(samples[i]);
    return sum;
}

/// The same of as many arrays as are walked through together.
void TotalPowers(const Complex* const* arrays, long n, double* sums) {
    double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
    for (long i = 1; i <= n; ++i) {
        a += SquaredMagnitude(arrays[0][i]);
        b += SquaredMagnitude(arrays[1][i]);
        c += SquaredMagnitude(arrays[2][i]);
        d += SquaredMagnitude(arrays[3][i]);
    }
    sums[0] = a;
    sums[1] = b;
    sums[2] = c;
    sums[3] = d;
}

/// Hoare's partition about the wavelength at lo: lo..result are not above what lies after.
long Partition(OpSig** channels, long lo, long hi) {
    const double pivot = channels[lo]->wavelength;
    long i = lo - 1, j = hi + 1;
    for (;;) {
        do ++i;
        while (channels[i]->wavelength < pivot);
        do --j;
        while (channels[j]->wavelength > pivot);
        if (i >= j) return j;
        std::swap(channels[i], channels[j]);
    }
}

}  // namespace

void RotateSamples(long k, long n, Complex* a) {
    if (n < 2 || !a) return;
    const long up = (k % n + n) % n;
    if (up != 0) std::rotate(a + 1, a + 1 + n - up, a + 1 + n);
}

void AlignStartTime(OpSig* sig, double t) {
    const double steps = std::fabs(sig->startTime - t) / sig->tStep;
    const double n = sig->noPoints;
    const double shift = std::trunc(steps - std::floor(steps / n) * n + 0.5);
    if (std::isfinite(shift)) {  // a signal without step or samples has nothing to rotate
        const long k = SaturateToInt(shift);
        const long signedK = sig->startTime < t ? -k : k;
        RotateSamples(signedK, sig->noPoints, sig->Ex_samples);
        RotateSamples(signedK, sig->noPoints, sig->Ey_samples);
    }
    sig->startTime = t;
}

double AverageOpSigPower(const OpSig* sig) {
    const long n = sig->noPoints;
    if (n < 1) return 0.0;
    return (TotalPower(sig->Ex_samples, n) + TotalPower(sig->Ey_samples, n)) /
           static_cast<double>(n);
}

int AveragePowersTogether(const OpSig* channel, double* powers) {
    const Complex *x[mostTogether], *y[mostTogether];
    const long n = channel->noPoints;
    const bool dual = channel->Ey_samples != nullptr;
    int count = 0;
    for (const OpSig* next = channel; next && count < mostTogether; next = next->next, ++count) {
        if (next->noPoints != n || !next->Ex_samples || dual != (next->Ey_samples != nullptr))
            break;
        x[count] = next->Ex_samples;
        y[count] = next->Ey_samples;
    }
    if (count < mostTogether || n < 1) {
        powers[0] = AverageOpSigPower(channel);
        return 1;
    }
    double sums[mostTogether], ySums[mostTogether] = {};
    TotalPowers(x, n, sums);
    if (dual) TotalPowers(y, n, ySums);
    for (int k = 0; k < count; ++k) powers[k] = (sums[k] + ySums[k]) / static_cast<double>(n);
    return count;
}

double NodelistPower(const OpSignal* signal) {
    double power = 0.0;
    if (!signal) return power;
    TakeAveragePowers(signal->channels, [&](const OpSig&, double average) { power += average; });
    for (const OpSigASE* ase = signal->noise; ase; ase = ase->next) {
        double sum = 0.0;
        for (long i = 1; i <= ase->noPoints; ++i) sum += ase->powerSamples[i];
        power += sum * ase->fstep;
    }
    return power;
}

double IntegrateMagnitude(const double* view, long count) {
    const long n = count / 2;
    if (n < 1) return 0.0;
    const double sum = WeightedSum(n, [view](long k) {
        return Magnitude({view[2 * k - 1], view[2 * k]});
    });
    return sum * (2.0 / static_cast<double>(count));
}

double PeakMagnitudeSquared(const double* view, long count) {
    double peak = 0.0;
    for (long k = 1; k <= count / 2; ++k) {
        peak = std::max(peak, SquaredMagnitude({view[2 * k - 1], view[2 * k]}));
    }
    return peak;
}

double PeakMagnitude(const double* view, long count) {
    return std::sqrt(PeakMagnitudeSquared(view, 2 * count));
}

const OpSig* FindOpSigByWavelength(const OpSig* head, double wavelength) {
    while (head && head->wavelength != wavelength) head = head->next;
    return head;
}

OpSig* FindOpSigByWavelength(OpSig* head, double wavelength) {
    return const_cast<OpSig*>(FindOpSigByWavelength(static_cast<const OpSig*>(head), wavelength));
}

void SortOpSigByWavelength(OpSig** channels, long lo, long hi) {
    while (lo < hi) {
        const long middle = Partition(channels, lo, hi);
        // Recursion into the smaller part only: a sorted list must not exhaust the stack.
        if (middle - lo < hi - middle) {
            SortOpSigByWavelength(channels, lo, middle);
            lo = middle + 1;
        } else {
            SortOpSigByWavelength(channels, middle + 1, hi);
            hi = middle;
        }
    }
}

}  // namespace photrak

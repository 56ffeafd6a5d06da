// Tables per length and the transform over them: radix 2, decimation in time.
#include "numeric/fft_plan.h"

#include <bit>
#include <cmath>
#include <map>
#include <mutex>
#include <numbers>
#include <utility>

#include "base/escape.h"
#include "base/memory.h"

namespace photrak {

namespace {

// cos and sin of 2 pi k / n for k < n/2.
using Twiddles = OwnedBlock<double>;

std::map<long, Twiddles>& Plans() {
    static std::map<long, Twiddles> plans;
    return plans;
}
std::mutex planMutex;

Twiddles MakeTwiddles(long n) {
    Twiddles table(
        static_cast<double*>(Allocate(sizeof(double) * static_cast<std::size_t>(n + 1))));
    if (!table) NumericFailure("Insufficient memory for the tables of a Fourier transform");
    for (long k = 0; k < n / 2; ++k) {
        const long double angle = 2 * std::numbers::pi_v<long double> * k / n;
        table.get()[2 * k] = static_cast<double>(std::cos(angle));
        table.get()[2 * k + 1] = static_cast<double>(std::sin(angle));
    }
    return table;
}

const double* TwiddlesFor(long n) {
    const std::lock_guard lock(planMutex);
    Twiddles& table = Plans()[n];
    if (!table) table = MakeTwiddles(n);
    return table.get();
}

void ReverseBits(double* data, long n) {
    for (long i = 0, j = 0; i < n; ++i) {
        if (j > i) {
            std::swap(data[2 * i], data[2 * j]);
            std::swap(data[2 * i + 1], data[2 * j + 1]);
        }
        long bit = n >> 1;
        while (bit > 0 && (j & bit)) j ^= bit, bit >>= 1;
        j |= bit;
    }
}

}  // namespace

void TransformInterleaved(double* data, long n, int sign) {
    const double* table = TwiddlesFor(n);
    ReverseBits(data, n);
    for (long half = 1; half < n; half *= 2)
        for (long start = 0; start < n; start += 2 * half)
            for (long k = 0; k < half; ++k) {
                const double* w = table + k * (n / half);
                double *a = data + 2 * (start + k), *b = a + 2 * half;
                const double re = w[0] * b[0] - sign * w[1] * b[1];
                const double im = w[0] * b[1] + sign * w[1] * b[0];
                b[0] = a[0] - re, b[1] = a[1] - im;
                a[0] += re, a[1] += im;
            }
}

void ResetFFTPlans() {
    const std::lock_guard lock(planMutex);
    Plans().clear();
}

}  // namespace photrak

// What detector, front end and electrical filter share: walks over a spectrum of N elements in
// transform order. Element 1 is DC; elements i and N + 2 - i are the positive and the negative
// frequency (i - 1) df, df = 1 / (N tStep). Spectra come as double views (base/arrays.h).
#pragma once

#include "base/complex.h"

namespace photrak {

inline void MultiplyElement(double* view, long i, Complex factor) {
    const Complex product = Complex{view[2 * i - 1], view[2 * i]} * factor;
    view[2 * i - 1] = product.re;
    view[2 * i] = product.im;
}

/// Multiplies all elements but DC by the transfer function of a real system: each positive element
/// by transfer(f), the negative one at -f by its conjugate, f in Hz.
// By design: element N/2 + 1 is both ends of the walk and gets both factors.
template <class Transfer>
void MultiplyPairs(double* view, long n, double df, Transfer transfer) {
    for (long i = 2; i <= n / 2 + 1; ++i) {
        const Complex h = transfer(static_cast<double>(i - 1) * df);
        MultiplyElement(view, i, h);
        MultiplyElement(view, n + 2 - i, Conjugate(h));
    }
}

/// Spectrum of electrical samples back to time, the division by N included.
void ReturnToTime(double* view, long n);

}  // namespace photrak

// The turns of the coarse-step method (Wai and Menyuk, J. Lightwave Technol. 14, 148, 1996) and the
// Gaussian filter of the approximate one.
#include "models/optical/fiber_pmd.h"

#include <cmath>

#include "numeric/random.h"

namespace photrak {

void RotationSource::Draw(FiberChannel& channel) {
    channel.rotation = pi * static_cast<double>(ShuffledUniformRandom(&seed_));
    channel.retardation = pi * static_cast<double>(ShuffledUniformRandom(&seed_));
}

void TurnPolarizations(SplitField& x, SplitField& y, double rotation, double retardation) {
    const double c = std::cos(rotation), s = std::sin(rotation);
    const double re = std::cos(retardation), im = std::sin(retardation);
    const double cRe = c * re, cIm = c * im, sRe = s * re, sIm = s * im;
    double *xRe = x.Re(), *xIm = x.Im(), *yRe = y.Re(), *yIm = y.Im();
    const long n = x.Size();
#ifndef __clang__
#pragma GCC ivdep
#endif
    for (long q = 0; q < n; ++q) {
        const double a = xRe[q], b = xIm[q], d = yRe[q], e = yIm[q];
        xRe[q] = (cRe * a - cIm * b) + (sRe * d - sIm * e);
        xIm[q] = (cRe * b + cIm * a) + (sRe * e + sIm * d);
        yRe[q] = c * d - s * a;
        yIm[q] = c * e - s * b;
    }
}

namespace {

/// A window of twice the length, padded like that of the fiber's own steps, so that the blur does
/// not reach around the ends.
void Blur(OpSig& signal, double sigma) {
    const FiberWindow window = MakeFiberWindow(signal.noPoints, /*doubled=*/true);
    SplitField field(window.points);
    field.CopyFrom(signal.Ex_samples, window.first, window.count);
    RenewPadding(field, window);
    TransferArray gauss(window.points, +1);
    const double df = 1.0 / (static_cast<double>(window.points) * signal.tStep);
    gauss.Fill([&](long bin) {
        const double x = twoPi * static_cast<double>(bin) * df * sigma;
        return std::exp(-0.5 * x * x);
    });
    ApplyTransfer(field, gauss);
    field.CopyTo(signal.Ex_samples, window.first, window.count);
}

}  // namespace

Status BlurByPmd(OpSig* list, const FiberParams& params, const ModelReport& report) {
    const double sigma = params.pmdCoefficient /
                         std::sqrt(params.distance / params.pmdCorrelationLength + 1.0) *
                         params.distance;
    if (!std::isfinite(sigma))
        return report.Refuse("a correlation length of ", params.pmdCorrelationLength,
                             " m gives no polarization mode dispersion");
    if (sigma == 0.0) return Status::Success;
    // By design: only the x polarization is blurred.
    for (OpSig& signal : Items(list)) {
        // A single sample is a carrier and nothing else, which the filter leaves alone.
        if (signal.noPoints > 1) Blur(signal, sigma);
    }
    return Status::Success;
}

}  // namespace photrak

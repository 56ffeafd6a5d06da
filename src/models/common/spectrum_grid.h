// The frequencies of a channel's spectrum, and whether it can be transformed at all.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"
#include "base/units.h"
#include "kernel/model_report.h"
#include "kernel/signals.h"
#include "numeric/fft.h"

namespace photrak {

/// A channel must have a power of two of samples and a time step above 0, or be a level in one
/// sample (or empty).
Status CheckSpectrumGrid(const OpSig& channel, const ModelReport& report);

struct SpectrumGrid {
    std::int32_t n = 0;    // bins
    double df = 0.0;       // Hz; 0 for a level in one sample, which has no other bin
    double carrier = 0.0;  // Hz

    /// For a window of n samples.
    SpectrumGrid(const OpSig& channel, std::int32_t window)
        : n(window),
          df(channel.noPoints == 1 ? 0.0 : 1.0 / (window * channel.tStep)),
          carrier(lightSpeed / channel.wavelength) {}

    /// Optical frequency of element k (1..n) of a transform with exponent sign +1.
    double Frequency(std::int32_t k) const { return FFTIndexToBin(n, k) * df + carrier; }
};

}  // namespace photrak

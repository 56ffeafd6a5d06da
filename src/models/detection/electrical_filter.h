// Analog filter prototypes (Butterworth, Chebyshev, Bessel as low-pass, high-pass, band-pass) that
// multiply a spectrum, and the block ElectricalFilter that applies one to a waveform. Nothing is
// filtered in the time domain anywhere.
#pragma once

#include <string>
#include <string_view>

#include "kernel/driver.h"

namespace photrak {

/// Above this order a product of pole distances leaves the range of doubles in ordinary use.
inline constexpr std::int16_t maxFilterOrder = 64;

struct ElectricalFilterParams {
    std::string owner;             // the component's name, for messages
    std::string type;              // "LP", "HP" or "BP" and "butterworth", "chebyshev" or "bessel"
    double bandwidth = 0.0;        // B, Hz: corner, or width of a band-pass
    double center = 0.0;           // geometric center of a band-pass, Hz
    std::int16_t order = 0;        // number of poles
    double gain = 0.0;             // dB as read; DoEleFilter works with the linear amplitude factor
    double ripple = 0.0;           // dB as read; DoEleFilter works with eps
    double dcFactor = 1.0;         // Chebyshev: DC value of the prototype
    double scaledBandwidth = 0.0;  // Chebyshev: where the ripple band ends, Hz
};

/// Reads `type`, `bandwidth`, `geometricCenter`, `order`, `lossGain` and `passbandRipple`, each
/// name behind `prefix` ("flt_" in the receiver).
ElectricalFilterParams ReadElectricalFilterParams(const Component& component,
                                                  std::string_view prefix);

/// Multiplies a spectrum in transform order by the filter's transfer function.
/// \param signal    tells the number of elements and the time step; its samples are not touched.
/// \param spectrum  double view of signal->noPoints complex elements.
/// A type that is none of the nine words leaves the spectrum alone. Order, bandwidth or ripple out
/// of range, a null and exhausted memory are errors with a text in `message`.
Status DoEleFilter(const ElecSig* signal, double* spectrum, ElectricalFilterParams params,
                   std::string& message);

/// The model: the filtered copy of its input. The noise record stays as it is in the input.
Status ElectricalFilter(const ModelCall& call);

}  // namespace photrak

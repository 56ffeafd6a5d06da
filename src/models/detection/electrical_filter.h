// Analog filter prototypes (Butterworth, Chebyshev, Bessel as low-pass, high-pass, band-pass) that
// multiply a spectrum, and the block ElectricalFilter that applies one to a waveform. Nothing is
// filtered in the time domain anywhere.
#pragma once

#include <string>
#include <string_view>

#include "kernel/driver.h"

namespace photrak {

/// Above this order a product of pole distances leaves the range of doubles in ordinary use.
inline constexpr std::int32_t maxFilterOrder = 64;

struct ElectricalFilterParams {
    std::string type;              // "LP", "HP" or "BP" and "butterworth", "chebyshev" or "bessel"
    double bandwidth = 0.0;        // B, Hz: corner, or width of a band-pass
    double center = 0.0;           // geometric center of a band-pass, Hz
    std::int32_t order = 0;        // number of poles
    double gain = 1.0;             // factor of the amplitude
    double ripple = 0.0;           // dB as read; DoEleFilter works with eps
    double dcFactor = 1.0;         // Chebyshev: DC value of the prototype
    double scaledBandwidth = 0.0;  // Chebyshev: where the ripple band ends, Hz
};

// A filter that is not in use has any values: DoEleFilter checks those that its type needs.
inline constexpr ParamRow<ElectricalFilterParams> electricalFilterRows[] = {
    {"type", &ElectricalFilterParams::type, "LPbessel",
     Words{"LPbutterworth LPchebyshev LPbessel HPbutterworth HPchebyshev HPbessel BPbutterworth "
           "BPchebyshev BPbessel"}},
    {"bandwidth", &ElectricalFilterParams::bandwidth, 7.5e9, Range::Any},
    {"geometricCenter", &ElectricalFilterParams::center, 5e9, Range::Any},
    {"order", &ElectricalFilterParams::order, 4},
    {"lossGain", &ElectricalFilterParams::gain, 0.0, Range::Any, ParamUnit::FieldDecibels},
    {"passbandRipple", &ElectricalFilterParams::ripple, 0.5, Range::Any}};
/// The same of a receiver, which may do without.
inline constexpr ParamRow<ElectricalFilterParams> receiverFilterRows[] = {
    {"flt_type", &ElectricalFilterParams::type, "LPbessel",
     Words{"LPbutterworth LPchebyshev LPbessel HPbutterworth HPchebyshev HPbessel BPbutterworth "
           "BPchebyshev BPbessel none"}},
    {"flt_bandwidth", &ElectricalFilterParams::bandwidth, 7.5e9, Range::Any},
    {"flt_geometricCenter", &ElectricalFilterParams::center, 5e9, Range::Any},
    {"flt_order", &ElectricalFilterParams::order, 4},
    {"flt_lossGain", &ElectricalFilterParams::gain, 0.0, Range::Any, ParamUnit::FieldDecibels},
    {"flt_passbandRipple", &ElectricalFilterParams::ripple, 0.5, Range::Any}};
std::vector<ParamSpec> ElectricalFilterParamSpecs();

/// Multiplies a spectrum in transform order by the filter's transfer function.
/// \param signal    tells the number of elements and the time step; its samples are not touched.
/// \param spectrum  double view of signal->noPoints complex elements.
/// A type that is none of the nine words leaves the spectrum alone. Order, bandwidth or ripple out
/// of range, a null and exhausted memory are errors.
Status DoEleFilter(const ElecSig* signal, double* spectrum, ElectricalFilterParams params,
                   const ModelReport& report);

/// The model: the filtered copy of its input. The noise record stays as it is in the input.
Status ElectricalFilter(const ModelCall& call);

}  // namespace photrak

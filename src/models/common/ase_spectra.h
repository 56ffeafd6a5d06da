// Arithmetic on spectra of amplified spontaneous emission, shared by the blocks that make noise and
// those that join signals: powers add, on a grid that holds both spectra.
#pragma once

#include <cstdint>
#include <string>

#include "kernel/model_report.h"
#include "kernel/signals.h"

namespace photrak {

/// Points that one spectrum may have: 32 MiB. Two spectra far apart, one of them fine, would ask
/// for any number.
inline constexpr std::int32_t maxSpectrumPoints = std::int32_t{1} << 22;

/// Frequency of point i (1..noPoints), Hz.
inline double SpectrumFrequency(const OpSigASE& spectrum, std::int32_t i) {
    return spectrum.fstart + (i - 1) * spectrum.fstep;
}
inline double LastFrequency(const OpSigASE& spectrum) {
    return SpectrumFrequency(spectrum, spectrum.noPoints);
}

/// Multiplies every sample of every record of the list.
void ScaleSpectra(OpSigASE* spectra, double factor);

/// Adds `added` to `sum`, which keeps its place in its list. Equal grids add sample by sample.
/// Otherwise the result has the smaller start, the smaller step and the greater end of the two, and
/// both are resampled onto it by straight lines, 0 outside their own range. On failure `sum` is as
/// it was.
[[nodiscard]] Status AddSpectrum(OpSigASE& sum, const OpSigASE& added, const ModelReport& report);

}  // namespace photrak

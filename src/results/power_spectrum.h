// Powers over frequency: the bins of one signal, and the axis on which the spectra of several
// optical channels and of the noise beside them add. All bins and points stand in ascending order.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "results/traces.h"

namespace photrak {

enum class DcBin { Kept, Hidden };

/// Bins -(N/2 - 1) .. N/2 of a signal, W or V^2; their sum is the mean power. `polarization`
/// (plotFlag) chooses the field of a channel. Hidden puts bin 1 in the place of DC. The number of
/// samples is a power of two.
std::vector<double> PowerSpectrum(const Trace& trace, int polarization, DcBin dc);
/// Number of the first bin of N.
inline std::int64_t FirstBin(std::int64_t n) {
    return n > 1 ? 1 - n / 2 : 0;
}

/// Points that a spectrum may have.
inline constexpr std::int32_t mostSpectrumPoints = std::int32_t{1} << 24;

/// Evenly spaced optical frequencies. They are kept as distances from a carrier, since a hertz is
/// the rounding of an optical frequency itself.
struct OpticalAxis {
    double reference = 0.0;  // Hz
    double start = 0.0;      // Hz from the reference to the first point
    double step = 0.0;       // Hz
    std::int64_t count = 0;
    bool isCoarse = false;  // fewer points than bins
    double Frequency(std::int64_t i) const {
        return reference + (start + static_cast<double>(i) * step);
    }
};

/// An axis from the first bin of the lowest carrier to the last of the highest, N bins of df Hz
/// about each. `asked` points, or one per bin if that is 0 or more than there are.
OpticalAxis PlanOpticalAxis(double lowestCarrier, double highestCarrier, std::int64_t n, double df,
                            std::int64_t asked);
/// Adds the bins of a channel to `sums`. A coarse axis takes each bin at its nearest point, so that
/// no line is lost and the total stays; otherwise a point has the straight line between the bins
/// around it.
void AddBins(const OpticalAxis& axis, double carrier, double df, std::span<const double> bins,
             std::span<double> sums);
/// Adds the densities of a noise record, W/Hz.
void AddNoise(const OpticalAxis& axis, const OpSigASE& record, std::span<double> densities);

}  // namespace photrak

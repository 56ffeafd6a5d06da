// The resolution filter of an optical spectrum analyzer as weights on a grid of frequencies.
#pragma once

#include <cstdint>
#include <vector>

namespace photrak {

enum class OsaShape { None, Gaussian, Trapezoidal };

struct OsaFilter {
    OsaShape shape = OsaShape::None;
    double BW = 0.0;          // Hz: full width at 6 dB (Gaussian) or 3 dB (Trapezoidal), above 0
    double BW0 = 0.0;         // Hz: full width of the flat top of the trapezoid
    std::int32_t order = 1;   // of the Gaussian
    double threshold = 40.0;  // dB below the top at which the weights end; not above 0 counts as 40
};

/// Weight at `offset` Hz from the middle: exp(-ln 4 |2 offset / BW|^(2 order)), or 1 over the flat
/// top and then falling linearly in dB through 3 dB at BW/2; a top not below BW is a rectangle.
double OsaWeight(const OsaFilter& filter, double offset);

/// The weights at the points of a grid of `length` steps of `step` Hz, an odd number of them with
/// the top in the middle; at most as many as fit the grid.
std::vector<double> OsaKernel(const OsaFilter& filter, double step, std::int64_t length);

}  // namespace photrak

// A resolution filter over a spectrum of powers: at each point the sum of what falls into the band
// around it. All terms are at least 0, so that every sum can be had to a small relative error, also
// far below the strongest line; a plain transform would bury weak sums under its rounding.
#pragma once

#include <span>
#include <vector>

namespace photrak {

/// out[i] = sum over j of in[i - m/2 + j] kernel[j], over the j that meet an element.
/// \param in      not negative.
/// \param kernel  an odd number m of weights above 0, symmetric, not rising away from the middle;
///                at most as many as `in` has elements.
/// Work: n for equal weights, n m for short kernels, else n log n for each 50 dB of range of `in`.
std::vector<double> SlidingSum(std::span<const double> in, std::span<const double> kernel);

}  // namespace photrak

// Cubic interpolation on a uniform grid of time, for many arrays at the same instants: the place on
// the grid and the weights are found once. For a single value on any grid see interpolation.h.
#pragma once

#include <cstdint>

namespace photrak {

/// Weights of four neighboring samples of any array on the grid.
struct GridPlace {
    std::int32_t first = 1;  // of the four samples, one-based
    double weights[4] = {};

    double Value(const double* ya) const {
        const double* y = ya + first;
        return weights[0] * y[0] + weights[1] * y[1] + weights[2] * y[2] + weights[3] * y[3];
    }
};

/// Samples k = 1..n (at least 4) at the times (k - 1) tStep.
class UniformGrid {
  public:
    UniformGrid(std::int32_t n, double tStep) : n_(n), tStep_(tStep) {}

    /// The cubic of PolyInt4 at time t: the same four points, in Lagrange's form. Outside the grid
    /// the first or last four extrapolate. At a sample its own weight is 1, the others are 0.
    GridPlace Locate(double t) const;

  private:
    double Time(std::int64_t k) const { return static_cast<double>(k - 1) * tStep_; }
    std::int32_t n_;
    double tStep_;
};

}  // namespace photrak

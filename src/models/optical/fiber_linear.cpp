// Phases of the bins and the factors made from them.
#include "models/optical/fiber_linear.h"

#include <cmath>

namespace photrak {

namespace {

/// Angular frequency of a bin against the carrier; bin n/2 counts as positive.
double Offset(const FrequencyGrid& grid, std::int32_t bin) {
    const long k = bin > grid.points / 2 ? bin - grid.points : bin;
    return k == 0 ? 0.0 : static_cast<double>(k) * grid.spacing;
}

}  // namespace

LinearTable::LinearTable(const FrequencyGrid& grid, const DispersionCurve& curve, double omega0,
                         double alpha, bool splitsModes)
    : grid_(grid),
      alpha_(alpha),
      phase_(static_cast<std::size_t>(grid.points)),
      x_(grid.points, +1) {
    if (splitsModes) {
        modePhase_ = AlignedDoubles(static_cast<std::size_t>(grid.points));
        y_.emplace(grid.points, +1);
    }
    const std::int32_t* order = x_.BinOrder();
    for (long q = 0; q < grid.points; ++q) {
        const double w = Offset(grid, order[q]);
        // Both coefficients at the bin's own wavelength: the curve enters whole, not as a series
        // around the carrier. By design: the third order comes on top of that.
        const double lambda = twoPiC / (w + omega0);
        const double phase = (curve.Beta2(lambda) - curve.Beta3(lambda) * w / 3) * w * 0.5 * w;
        phase_[static_cast<std::size_t>(q)] = phase;
        const bool hasWavelength = curve.kind == DispersionKind::Custom || w + omega0 > 0;
        coversBand_ = coversBand_ && hasWavelength && std::isfinite(phase);
    }
}

void LinearTable::Prepare(const LinearStretch& stretch) {
    FillMode(x_, stretch, -0.5);
    if (y_) FillMode(*y_, stretch, +0.5);
    made_ = stretch;
}

void LinearTable::FillMode(TransferArray& factors, const LinearStretch& stretch, double side) {
    const double gain = std::exp(stretch.length * -alpha_ / 2);
    if (!y_) return factors.FillPhases(phase_.Data(), stretch.length, gain);
    // One polarization leads and the other lags by half the delay.
    const double delay = side * stretch.modeDelay / stretch.length;
    const std::int32_t* order = factors.BinOrder();
    for (long q = 0; q < grid_.points; ++q) {
        const auto at = static_cast<std::size_t>(q);
        modePhase_[at] = phase_[at] + delay * Offset(grid_, order[q]);
    }
    factors.FillPhases(modePhase_.Data(), stretch.length, gain);
}

}  // namespace photrak

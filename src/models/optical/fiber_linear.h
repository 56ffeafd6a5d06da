// The linear part of a fiber: loss, dispersion and the walk-off of the two polarizations, as
// transfer arrays in the order of the scrambled spectrum.
#pragma once

#include <memory>
#include <optional>

#include "models/optical/fiber_dispersion.h"
#include "numeric/factor_cache.h"
#include "numeric/transfer.h"

namespace photrak {

/// A stretch of linear fiber. Two in a row act as one, so they add up.
struct LinearStretch {
    double length = 0;     // m
    double modeDelay = 0;  // group delay between the polarizations over the stretch, s
};
inline LinearStretch operator+(const LinearStretch& a, const LinearStretch& b) {
    return {a.length + b.length, a.modeDelay + b.modeDelay};
}
inline bool operator==(const LinearStretch& a, const LinearStretch& b) {
    return a.length == b.length && a.modeDelay == b.modeDelay;
}

/// Where the bins of a window lie.
struct FrequencyGrid {
    long points = 0;
    double spacing = 0;  // 2 pi / (points * tStep), rad/s
};

/// Phases per meter and bin, in the order of the transfer arrays.
struct LinearPhases {
    AlignedDoubles phase;
    bool coversBand = true;  // false when some bin has no finite phase, or a curve no wavelength
};

enum class Stretches { Few, Many };

/// The linear part for the channels of one carrier: phases per bin made once, factors per stretch.
/// Both are kept for the next fiber of the run, the factors where a run has few stretches.
class LinearTable {
  public:
    LinearTable(const FrequencyGrid& grid, const DispersionCurve& curve, double omega0,
                double alpha, bool splitsModes, Stretches stretches);
    bool CoversBand() const { return phases_->coversBand; }

    /// Makes the factors of a stretch.
    void Prepare(const LinearStretch& stretch);
    /// Whether the factors are those of this stretch.
    bool IsFor(const LinearStretch& stretch) const { return stretch == made_; }
    const TransferArray& X() const { return *x_; }
    const TransferArray& Y() const { return y_ ? *y_ : *x_; }

  private:
    void FillMode(TransferArray& factors, const LinearStretch& stretch, double side);

    std::shared_ptr<const TransferArray> KeptFactors(const LinearStretch& stretch) const;

    FrequencyGrid grid_;
    double alpha_;   // power loss, 1/m
    FactorKey key_;  // of the phases
    std::shared_ptr<const LinearPhases> phases_;
    AlignedDoubles modePhase_;                // the phases with the mode delay; empty without
    std::shared_ptr<TransferArray> own_;      // what is filled anew for every stretch, or null
    std::shared_ptr<const TransferArray> x_;  // own_ or kept
    std::optional<TransferArray> y_;
    LinearStretch made_{-1, 0};  // what the factors are for; no stretch is shorter than 0
};

}  // namespace photrak

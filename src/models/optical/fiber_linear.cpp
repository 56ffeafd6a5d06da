// Phases of the bins and the factors made from them.
#include "models/optical/fiber_linear.h"

#include <cmath>
#include <string_view>
#include <utility>

#include "platform/stop_point.h"

namespace photrak {

namespace {

/// Angular frequency of a bin against the carrier; bin n/2 counts as positive.
double Offset(const FrequencyGrid& grid, std::int32_t bin) {
    const long k = bin > grid.points / 2 ? bin - grid.points : bin;
    return k == 0 ? 0.0 : static_cast<double>(k) * grid.spacing;
}

/// What the phases depend on; a curve without wavelengths not on the carrier.
FactorKey PhaseKey(const FrequencyGrid& grid, const DispersionCurve& curve, double omega0) {
    FactorKey key("fiber phases");
    key.AddAll(std::int64_t{grid.points}, grid.spacing, static_cast<std::int64_t>(curve.kind));
    if (curve.kind == DispersionKind::Custom) return key.AddAll(curve.beta2, curve.beta3);
    return key.AddAll(curve.lambda0, curve.S0, curve.D0, omega0);
}

std::shared_ptr<const LinearPhases> MakePhases(const FrequencyGrid& grid,
                                               const DispersionCurve& curve, double omega0,
                                               const std::int32_t* order) {
    auto made = std::make_shared<LinearPhases>();
    made->phase = AlignedDoubles(static_cast<std::size_t>(grid.points));
    for (long q = 0; q < grid.points; ++q) {
        LookForStop(q);
        const double w = Offset(grid, order[q]);
        // Both coefficients at the bin's own wavelength: the curve enters whole, not as a series
        // around the carrier. By design: the third order comes on top of that.
        const double lambda = twoPiC / (w + omega0);
        const double phase = (curve.Beta2(lambda) - curve.Beta3(lambda) * w / 3) * w * 0.5 * w;
        made->phase[static_cast<std::size_t>(q)] = phase;
        const bool hasWavelength = curve.kind == DispersionKind::Custom || w + omega0 > 0;
        made->coversBand = made->coversBand && hasWavelength && std::isfinite(phase);
    }
    return made;
}

std::size_t BytesOf(const FrequencyGrid& grid, std::size_t doubles) {
    return static_cast<std::size_t>(grid.points) * doubles * sizeof(double);
}

}  // namespace

LinearTable::LinearTable(const FrequencyGrid& grid, const DispersionCurve& curve, double omega0,
                         double alpha, bool splitsModes, Stretches stretches)
    : grid_(grid), alpha_(alpha), key_(PhaseKey(grid, curve, omega0)) {
    auto first = std::make_shared<TransferArray>(grid.points, +1);
    phases_ = FactorsFor<LinearPhases>(
        key_, BytesOf(grid, 1), [&] { return MakePhases(grid, curve, omega0, first->BinOrder()); });
    x_ = first;
    if (splitsModes || stretches == Stretches::Many) own_ = std::move(first);
    if (!splitsModes) return;
    modePhase_ = AlignedDoubles(static_cast<std::size_t>(grid.points));
    y_.emplace(grid.points, +1);
}

void LinearTable::Prepare(const LinearStretch& stretch) {
    if (own_)
        FillMode(*own_, stretch, -0.5);
    else
        x_ = KeptFactors(stretch);
    if (y_) FillMode(*y_, stretch, +0.5);
    made_ = stretch;
}

std::shared_ptr<const TransferArray> LinearTable::KeptFactors(const LinearStretch& stretch) const {
    FactorKey key("fiber factors");
    key.AddAll(std::string_view(key_.Bytes()), alpha_, stretch.length);
    return FactorsFor<TransferArray>(key, BytesOf(grid_, 2), [&] {
        auto made = std::make_shared<TransferArray>(grid_.points, +1);
        made->FillPhases(phases_->phase.Data(), stretch.length,
                         std::exp(stretch.length * -alpha_ / 2));
        return made;
    });
}

void LinearTable::FillMode(TransferArray& factors, const LinearStretch& stretch, double side) {
    const double gain = std::exp(stretch.length * -alpha_ / 2);
    if (!y_) return factors.FillPhases(phases_->phase.Data(), stretch.length, gain);
    // One polarization leads and the other lags by half the delay.
    const double delay = side * stretch.modeDelay / stretch.length;
    const std::int32_t* order = factors.BinOrder();
    for (long q = 0; q < grid_.points; ++q) {
        const auto at = static_cast<std::size_t>(q);
        modePhase_[at] = phases_->phase[at] + delay * Offset(grid_, order[q]);
    }
    factors.FillPhases(modePhase_.Data(), stretch.length, gain);
}

}  // namespace photrak

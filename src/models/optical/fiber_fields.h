// The fields of all channels in a fiber and what a step does to them: the linear part, the Kerr
// effect and Raman transfer, the turns of the polarizations. Work is shared out by channels.
#pragma once

#include <vector>

#include "models/optical/fiber_channels.h"
#include "models/optical/fiber_linear.h"
#include "numeric/split_step.h"
#include "platform/workers.h"

namespace photrak {

/// Bytes that the fields, tables and powers of a run take, about.
double WorkBytes(const FiberChannels& channels, const FiberWindow& window,
                 const FiberParams& params);

class FiberFields {
  public:
    /// Loads the signals into the work fields. The channels outlive this.
    FiberFields(FiberChannels& channels, const FiberWindow& window, const FiberParams& params);

    /// False when the dispersion curve has no phase for some bin of the signal's band.
    bool CoversBand() const;
    /// Whether the polarizations turn in every step ("Coarse_Step").
    bool TurnsPolarizations() const { return turnsPolarizations_; }

    /// Takes all channels through a stretch of linear fiber.
    void Linear(const LinearStretch& stretch);
    /// The nonlinear step over dz, the turns of the polarizations, and a linear stretch after it;
    /// none when its length is 0. Each channel stands `shift` samples away from the first.
    void Nonlinear(double dz, const LinearStretch& after);
    /// Nonlinear and then the sum over the channels of the largest power in the window, W. Where
    /// the run goes on, Linear must follow: it may have begun.
    double NonlinearAndPeak(double dz, const LinearStretch& after, bool goesOn);
    /// Writes the fields back into the signals.
    void Store();

  private:
    /// Channels first..end-1 with the sums of their powers. Sums over all channels are sums of
    /// these, whatever the number of threads, so that results are the same to the last bit.
    struct PowerGroup {
        std::size_t first, end;
        AlignedDoubles x, y;
    };

    void MakeTables(const FiberParams& params);
    void MakePowerGroups();
    void Prepare(const LinearStretch& stretch);
    const LinearTable& TableOf(std::size_t channel) const;

    void WalkOff();
    void SumUp(PowerGroup& group, bool ofY);
    void SumGroups(long from, long to);
    KerrStep StepOf(const FiberChannel& channel, double dz) const;
    void Advance(std::size_t channel, double dz, const LinearTable* after, int worker);
    double AdvanceAndPeak(std::size_t channel, double dz, const LinearTable* after, bool goesOn,
                          int worker);
    void TransferRaman(FiberChannel& channel, double dz, double* exponent);

    FiberChannels& channels_;
    FiberWindow window_;
    bool hasRaman_, turnsPolarizations_;
    bool anyY_ = false, allY_ = true;
    Workers workers_;
    std::vector<LinearTable> tables_;  // one for all channels if their phases are the same
    std::vector<PowerGroup> groups_;   // none with a single channel
    AlignedDoubles totalX_, totalY_;   // sums of several groups
    AlignedDoubles crossTotal_;        // x plus two thirds of y: what a channel with x only meets
    std::vector<AlignedDoubles> exponents_;  // Raman, one per worker
    std::vector<double> peaks_;
};

}  // namespace photrak

// Polarization mode dispersion of a fiber, by two methods: "Coarse_Step" turns the polarizations at
// random between the steps and lets them drift apart within each; "Approximate" blurs the output.
#pragma once

#include "models/optical/fiber_channels.h"

namespace photrak {

/// The angles of the coarse steps: uniform in (0, pi). Every fiber draws the same sequence, so that
/// two fibers of the same steps turn a signal alike, and a run repeats.
class RotationSource {
  public:
    /// Draws rotation, then retardation.
    void Draw(FiberChannel& channel);

  private:
    int seed_ = -1;
};

/// x' = exp(i retardation) (cos x + sin y), y' = -sin x + cos y, on all samples of settled fields.
void TurnPolarizations(SplitField& x, SplitField& y, double rotation, double retardation);

/// Blurs the x polarization of every channel by a Gaussian of the mean delay between the modes.
Status BlurByPmd(OpSig* list, const FiberParams& params, const ModelReport& report);

}  // namespace photrak

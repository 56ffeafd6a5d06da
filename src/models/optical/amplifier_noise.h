// Spectrum of the spontaneous emission that an amplifier adds: its density and its shape on a
// frequency grid.
#pragma once

#include <string>

#include "kernel/signals.h"
#include "models/optical/amplifier.h"

namespace photrak {

/// Density of the emission in W/Hz: (g^2 - 1) Fn nu h/2 for a field gain g above 1, else 0. The
/// noise figure is twice the population inversion factor, hence the half of Planck's constant.
double EmissionDensity(double g, double Fn, double nu);

/// A new spectrum of the shape that the parameters ask for. `density` (W/Hz) is the height of the
/// computed shapes; curves bring their own, chosen by the input power (W).
[[nodiscard]] Status MakeEmission(const EdfaParams& params, double density, double inputPower,
                                  Owned<OpSigASE>& emission, const ModelReport& report);

}  // namespace photrak

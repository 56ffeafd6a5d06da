// The package of a laser diode: what its parasitics let through of a drive voltage.
#pragma once

#include "models/sources/laser_rates.h"

namespace photrak {

/// Diode current over drive voltage at w = 2 pi f, 1/ohm: the bond inductance and the series
/// resistance in front of the pad capacitance beside the diode.
Complex PackageResponse(const LaserParams& params, double w);

/// Turns the drive's samples, V (or A, which the series resistance makes volts of), into the diode
/// current, A.
void ApplyPackage(const LaserParams& params, ElecSig& drive);

}  // namespace photrak

// Levels shown in decibels, and decibels shown as levels again.
#pragma once

#include "plotting/plot.h"

namespace photrak {

/// True when a y axis has levels that can be turned: W, W/Hz, V, A, or decibels of these.
bool TurnsToDecibels(const Plot& plot);

/// The plot with the values and labels of its turnable y axes changed: 10 lg of powers (W becomes
/// dBm, W/Hz dBm/Hz), 20 lg of amplitudes (V becomes dBV, A dBA), and back from dBm,
/// dBm/Hz, dBV, dBA. What has no logarithm becomes a gap. Windows of these axes are dropped.
void TurnDecibels(Plot& plot);

}  // namespace photrak

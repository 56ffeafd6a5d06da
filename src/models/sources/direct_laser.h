// Directly modulated laser: the source DirectModulatedLaserModel, whose drive passes the parasitics
// of the package and then the rate equations, sample by sample.
#pragma once

#include "kernel/driver.h"
#include "models/common/block_test.h"
#include "models/sources/laser_rates.h"

namespace photrak {

/// Stores an OpSignal of one channel in the output cell. The drive must be electrical, of a power
/// of two of at least 8 samples. The field of sample i is that at the end of its interval. Warning:
/// the drive went below 0 and is folded. Error: a text; what was filled stays.
Status LaserDirectMod(LaserParams params, const Nodelist* input, Nodelist* output,
                      const std::atomic<std::int16_t>& stop, const ModelReport& report,
                      const OdeLimits& limits = {}, OdeCount* count = nullptr);

/// The model.
Status RunDirectLaser(const ModelCall& call);
/// Its test: the static curve of power over current as the plot "licurve", and the figures of the
/// laser in "lasertest.dat".
Status LDDirectModTest(const BlockTestCall& call);

}  // namespace photrak

// Peaks of a curve by their prominence: for spectra and pulses.
#pragma once

#include <cstddef>
#include <vector>

#include "plotting/plot.h"

namespace photrak {

struct Peak {
    std::size_t sample = 0;
    double x = 0.0, y = 0.0;
    double prominence =
        0.0;  // height above the higher of the two lowest points toward higher ground
};

/// Peaks of at least this prominence, the highest first, at most `most`. Gaps end the curve. A flat
/// top counts at its middle. The lowest point of the whole curve bounds the prominence of the
/// highest peak.
std::vector<Peak> FindPeaks(const Column& x, const Column& y, double prominence,
                            std::size_t most = 100);

}  // namespace photrak

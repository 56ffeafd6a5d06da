// Filters that round the pulses of the electrical signal generator: an RC low-pass and a ring, both
// applied to the spectrum of the whole period.
#pragma once

#include <string>
#include <string_view>

#include "base/complex.h"
#include "kernel/model_report.h"

namespace photrak {

struct DriveFilterParams {
    std::string type;       // "RCFilter", "RingFilter", "None" or "none"
    double riseTime = 0.0;  // 10 % to 90 %, s
    double f0 = 0.0;        // resonance of the ring, Hz
    double gamma = 0.0;     // damping of the ring, Hz: its width at half height
};

/// Filters a real waveform whose number of samples must be a power of two unless the type is "None"
/// or "none". Any other type, and a ring without a resonance, is an error with a text appended.
Status FilterDrive(const DriveFilterParams& params, ElecSig& wave, const ModelReport& report);

}  // namespace photrak

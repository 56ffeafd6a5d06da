// What instruments would read off a signal on a node: power, wavelength, OSNR, the levels of its
// eye and what follows from them.
#pragma once

#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "kernel/signals.h"

namespace photrak {

inline constexpr double notMeasured = std::numeric_limits<double>::quiet_NaN();

/// One optical channel, one electrical signal or one bit sequence. What does not apply is NaN.
struct SignalMeasures {
    std::int32_t sigType = NoSigType;
    std::int32_t channel = 0;         // of an optical signal, from 1
    std::string_view unit;            // of levels: "W", "V" or "A"; empty for bits
    double wavelength = notMeasured;  // m
    double frequency = notMeasured;   // Hz
    double average = notMeasured;     // W, V, A, or the part of ones
    double peak = notMeasured;        // the largest value
    double noise = notMeasured;       // density of both polarizations, W/Hz; mean deviation, V or A
    double osnr = notMeasured;        // dB: average over the noise of both polarizations in 0.1 nm
    double level0 = notMeasured;      // mean of the lower values at the eye's time
    double level1 = notMeasured;      // and of the upper ones
    double extinctionRatio = notMeasured;  // dB: level1 over level0; of optical signals
    double eyeOpening = notMeasured;       // between the two groups at the eye's time
    double eyeTime = notMeasured;          // of the largest opening after the start of a bit, s
    double bitRate = notMeasured;          // bit/s
};

/// The levels of a waveform with `samplesPerBit` samples to a bit, at the phase where two groups of
/// values lie farthest apart. At each phase the groups are those of the largest variance between
/// them (N. Otsu, IEEE Trans. SMC 9 (1979) 62): no bit sequence is needed. Opening 0: no eye.
struct EyeLevels {
    double level0 = 0.0, level1 = 0.0, opening = 0.0;
    std::int32_t phase = 0;  // samples after the start of a bit
};
EyeLevels FindEyeLevels(const std::vector<double>& wave, std::int32_t samplesPerBit);

/// A row for each channel of an optical signal, one for any other.
std::vector<SignalMeasures> MeasureSignal(const SigRecord& record);

}  // namespace photrak

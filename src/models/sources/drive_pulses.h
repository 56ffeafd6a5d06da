// Pulse shapes of the electrical signal generator: a bit pattern painted as pulses over the samples
// of one period. The pattern repeats, so that pulses at its end run on at its start.
#pragma once

#include <string_view>

#include "base/complex.h"

namespace photrak {

/// How a bit of 1 is painted: "on_off_ramp", "on_off_exp" (rectangles, for a filter to round) or
/// "raisedCosine".
struct DriveType;
/// Null for any other word.
const DriveType* FindDriveType(std::string_view word);

struct DrivePulses {
    const DriveType* type = nullptr;
    std::int32_t samplesPerBit = 0;
    double amplitude = 0.0;                 // of a 1 above a 0, V
    double bitTime = 0.0;                   // T, distance of the bits, s
    double bitWidth = 0.0;                  // W, width of a pulse at half height, s
    double riseTime = 0.0, fallTime = 0.0;  // s; 0: a sharp edge
    double timeJitter = 0.0;                // standard deviation of an edge, s
};

/// Paints the pulses over bits->noPoints * samplesPerBit samples[1..], real parts that are all 0.
/// Bit k is centered in its slot, samples (k - 1) samplesPerBit + 1 to k samplesPerBit. The results
/// lie between 0 and the amplitude.
void PaintPulses(const DrivePulses& drive, const BinSig& bits, Complex* samples);

}  // namespace photrak

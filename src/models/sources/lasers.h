// Lasers that need no drive: CWLaserModel, a constant field, and ModeLockedLaserModel, one pulse or
// a train of them. Both give one channel in x polarization. Intensity noise is not put on the
// samples: the channel carries its density in RIN, and the detector applies it.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

/// Samples of a laser's signal are 2^e with e from 0 to this.
inline constexpr std::int32_t maxLaserExponent = 26;

struct CwLaserParams {
    double peakPower = 0.0;      // W
    double wavelength = 0.0;     // m
    double RIN = 0.0;            // 1/Hz, linear
    std::string signalType;      // "TimeSequence": sampled; anything else: one sample
    std::int32_t noSamples = 0;  // exponent
    double timeStep = 0.0;       // s
    double phase = 0.0;          // rad
};

struct ModeLockedLaserParams {
    std::string type;                // pulse shape
    std::string pattern;             // "Single": one pulse in mid-window; anything else: a train
    double repRate = 0.0;            // Hz
    std::int32_t patternLength = 0;  // exponent: 2^patternLength slots
    std::int32_t pointsPerBit = 0;   // exponent: 2^pointsPerBit samples in each slot
    double peakPower = 0.0;          // W
    double wavelength = 0.0;         // m
    double RIN = 0.0;                // 1/Hz, linear
    double width = 0.0;              // s
    double ChirpFactor = 0.0;
    double phaseShift = 0.0;  // rad, between neighboring pulses
    double riseTime = 0.0;    // s, "supGaussian" and "on_off"
    double fallTime = 0.0;    // s, "on_off"
};

/// The rows of their tables, and the records read from them.
std::vector<ParamSpec> CwLaserParamSpecs();
std::vector<ParamSpec> ModeLockedLaserParamSpecs();
CwLaserParams ReadCwLaserParams(Parameter* parameters);
ModeLockedLaserParams ReadModeLockedLaserParams(Parameter* parameters);

/// Stores an OpSignal of one channel in the output cell. Success, or an error with a text appended
/// and an empty cell.
Status LaserCW(const CwLaserParams& params, Nodelist* output, const ModelReport& report);
/// The same. An "on_off" pulse shorter than its ramps leaves the signal, all zeros, in the cell. A
/// rise time that no super-Gaussian of exponent 1 to 25 has ends the run.
Status LaserModeLocked(const ModeLockedLaserParams& params, Nodelist* output,
                       const ModelReport& report);

/// The models.
Status RunCwLaser(const ModelCall& call);
Status RunModeLockedLaser(const ModelCall& call);

}  // namespace photrak

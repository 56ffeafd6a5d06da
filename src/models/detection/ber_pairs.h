// The inputs of the bit error rate tester: pairs of a waveform with its noise and the bits that
// were sent, checked, turned to a common start and laid out as magnitudes.
#pragma once

#include <cstdint>
#include <vector>

#include "base/memory.h"
#include "kernel/model_report.h"
#include "kernel/signals.h"

namespace photrak {

/// Arrays are one-based: voltage and sigma of noPoints samples (V), bits of patternLength bits.
struct BerPair {
    const ElecSig* wave = nullptr;  // borrowed
    const BinSig* sent = nullptr;   // borrowed; null: the bits come from the waveform
    OwnedBlock<double[]> voltage, sigma;
    /// Bits that come from the waveform serve as ballot boxes while decisions are counted.
    OwnedBlock<std::int16_t[]> bits;
};

/// All pairs with what they have in common.
struct BerPairs {
    std::vector<BerPair> pairs;
    std::int32_t noPoints = 0, patternLength = 0, samplesPerBit = 0;
    double tStep = 0.0;  // s
};

/// Shorter patterns leave no bit to decide: the first, the last two and one in the middle are cut.
inline constexpr std::int32_t shortestBerPattern = 5;

/// Checks the inputs in the order of the ports and finds what they have in common. Warning: an
/// electrical port holds no signal.
Status ReadBerPairs(const Nodelist* inputs, BerPairs& set, const ModelReport& report);

/// Fills voltage and sigma, turned to the latest start, and the bits of every pair.
Status FillBerPairs(BerPairs& set, const ModelReport& report);

/// The bits of a waveform by the middle between its extremes, taken just before each bit ends.
void DeriveBits(const double* voltage, std::int32_t noPoints, std::int32_t patternLength,
                std::int16_t* bits);

}  // namespace photrak

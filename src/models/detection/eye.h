// The eye of the bit error rate tester: the lids over two bits, what is measured between them, and
// the decision time and level that follow. Waveforms and noise come from ber_pairs.h.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "base/memory.h"
#include "kernel/model_report.h"
#include "kernel/workspace.h"
#include "models/detection/ber_pairs.h"

namespace photrak {

/// The record of one pass.
struct EyeResult {
    std::uint32_t eyeStart = 0, eyeEnd = 0;  // open span in lid samples, from 1; 0 without an eye
    std::int32_t samplesPerBit = 0;
    std::uint32_t decisionIndex = 1;  // chosen lid sample; the first until an eye was found
    std::int32_t lidLength = 0;       // two bits
    double decisionLevel = 0.0;       // V; the parameter's until an eye was found
    double decisionTime = 0.0;        // after the start of the lids, with the shift asked for, s
    double eyeWidth = 0.0;            // fraction of a bit
    double eyeOpening = 0.0;          // upper minus lower lid at decisionIndex, V
    double eyeArea = 0.0;             // V; 0: no eye
    double BER = 0.0, Q = 0.0;
    bool stopped = false;          // on request, before BER was known
    double erfcArgument = 0.0;     // minus the root x of erfc(x) = 2 BER
    OwnedBlock<double[]> eyeData;  // one-based: noisy traces of lidLength, by pair, then by bit, V
};

enum class EyeMode { WorstCase, Average };

/// One-based, lidLength samples, V.
struct EyeLids {
    OwnedBlock<double[]> lower, upper;
};

/// False when memory is exhausted, which it has told.
bool AllocateLids(std::int32_t lidLength, EyeLids& lids, const ModelReport& report);

/// Lids over two bits, sorted by the first of them. Worst case: the highest 0 and the lowest 1 at
/// each sample (-1e32 and 1e32 without such a bit). Average: sums of the 0s and of the 1s, each
/// divided by the samples of a lid, so that they compare with each other but are no means.
void BuildEyeLids(const BerPairs& set, EyeMode mode, EyeLids& lids);

/// Finds the open span around the widest opening and fills the eye's fields from it. Without an
/// opening eyeArea is 0 and the decision stays as it was.
void MeasureEye(const EyeLids& lids, EyeResult& eye);

/// Turns an array of n samples so that sample `index` becomes the first.
void RotateToDecisionPoint(double* samples, std::int32_t n, std::uint32_t index);

/// What the eye needs of the run around it.
struct EyeJob {
    const SimOptions& options;
    std::string root;     // of file names
    int plotEyeLids = 0;  // 0 only when the eye is in doubt, 1 always, 2 with the viewer
};

/// Builds and measures the eye, fills eyeData, writes the lid files, and turns voltage and sigma of
/// every pair to the decision time. Warning: the eye of worst cases is shut. The average eye then
/// sets the decision if it is open (eyeArea above 0), and nothing is turned.
Status DoEyeDiagram(const EyeJob& job, BerPairs& set, EyeResult& eye, const ModelReport& report);

}  // namespace photrak

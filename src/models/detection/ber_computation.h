// The bit error rate in closed form: the Gaussian tail of every bit's own noise beyond the decision
// level, averaged over jittered decisions. No noise is added to a waveform. For sweeps and runs see
// ber_tester.h.
#pragma once

#include <cstdint>
#include <string>

#include "kernel/driver.h"
#include "models/detection/eye.h"

namespace photrak {

enum class StatisticalPlot { Average, Minimum, Maximum, Latest };

struct BerParams {
    double timingJitter = 0.0;          // standard deviation of the decision time, s
    double decisionLevelJitter = 0.0;   // standard deviation of the decision level, V
    double decisionPointShift = 0.0;    // of the decision time, fraction of a bit
    double decisionLevel = 0.0;         // V, where it is defined
    bool decisionLevelDefined = false;  // otherwise the eye's level
    std::string root;                   // of all file names
    std::int32_t bitsPerLine = 0;       // of the bit streams; below 1: no such files
    StatisticalPlot statistic = StatisticalPlot::Average;
    bool plotCurves = true, saveAllData = true, plotEyeLids = false, plotSignals = false;
    int saveOrDisplay = 0;  // 1 save, 2 display, 0 not told
};

/// The level that decides, V.
inline double DecisionLevel(const BerParams& params, const EyeResult& eye) {
    return params.decisionLevelDefined ? params.decisionLevel : eye.decisionLevel;
}

/// BER and Q of the pairs on the input ports, with the files that belong to a pass. Warning: there
/// is no signal, no open eye in the worst case, or no Q for the rate; the pass has no result then.
/// A set stop word ends the sum over the bits at once: `eye.stopped` then says that there is none.
/// `eye` is a fresh record whose decisionLevel is the parameter's.
Status ComputeBER(const SimOptions& options, const Nodelist* inputs, const BerParams& params,
                  EyeResult& eye, const ModelReport& report);

}  // namespace photrak

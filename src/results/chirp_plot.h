// The ChirpPlot block and its writer: the frequency deviation of optical signals over time.
#pragma once

#include <string>
#include <vector>

#include "results/signal_plot.h"

namespace photrak {

Status ChirpPlot(const ModelCall& call);
std::vector<ParamSpec> ChirpPlotParamSpecs();
Status WriteChirpPlot(const SignalPlotJob& job, const ModelReport& report);
/// Frequency deviation in Hz of n samples (one-based), walked cyclically from element `start`, into
/// out[1..n]. Backward difference of the phase; 0 after a dark sample; all 0 without samples.
void ComputeChirp(std::int32_t n, double* out, const Complex* samples, double tStep,
                  std::int32_t start);

}  // namespace photrak

// The test of an optical filter: its response as two plots, without a run.
#pragma once

#include "models/common/block_test.h"

namespace photrak {

/// Writes test_NAME_freqresp and test_NAME_lambdaresp (".lic", ".pcl"), transmission in dB over Hz
/// and over m. A plot that cannot be written is an error.
Status DrawOpticalFilter(const BlockTestCall& call);

}  // namespace photrak

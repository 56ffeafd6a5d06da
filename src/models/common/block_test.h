// What the test of a block gets: one component, without signals or a run.
#pragma once

#include "kernel/model_report.h"
#include "kernel/workspace.h"
#include "results/plot_files.h"

namespace photrak {

/// What one stage of a test had to tell.
struct TestFinding {
    Status status;
    std::string text;
};

struct BlockTestCall : ModelReport {
    const Component& component;  // parameters evaluated and within their limits
    PlotMode plotMode;           // the files are written in any mode
};

}  // namespace photrak

// Ideal splitter: every output carries the whole input, channels and noise, at an equal share of
// the power.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// `transmission` is the part of the power that all outputs together carry. An error appends a text
/// and leaves all cells empty; nothing, with success, while the input holds no data.
Status SplitSignal(double transmission, const Nodelist* input, Nodelist* outputs,
                   const ModelReport& report);

/// The rows of its table.
std::vector<ParamSpec> OpticalSplitterParamSpecs();
/// The model.
Status RunOpticalSplitter(const ModelCall& call);

}  // namespace photrak

// Ideal splitter: every output carries the whole input, channels and noise, at an equal share of
// the power.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

/// `transmission` is the part of the power that all outputs together carry. An error appends a text
/// and leaves all cells empty; nothing, with success, while the input holds no data.
Status SplitSignal(std::string_view owner, double transmission, const Nodelist* input,
                   Nodelist* outputs, std::string& errorText);

/// The model.
Status RunOpticalSplitter(const ModelCall& call);

}  // namespace photrak

// The blocks SaveSigBlock, which stores what passes it in a signal file, and LoadSigBlock, which
// feeds the signals of such a file into a topology.
#pragma once

#include "kernel/driver.h"

namespace photrak {

/// Writes the signals of the inputs, in port order, to the file of the present point of a scan:
/// prefix, `FileName` (the component's name if that is empty), tags, ".sgd". Inputs without a
/// signal are left out.
Status SaveSigBlock(const ModelCall& call);

/// Reads the next signal of the file `FileName` for each output in turn. The name is used as it is,
/// in every pass of a scan. An output for which none is left stays empty.
Status LoadSigBlock(const ModelCall& call);

/// The rows of the table that both have.
std::vector<ParamSpec> SignalBlockParamSpecs();

}  // namespace photrak

// A device with any number of optical ports whose outputs are sums of its inputs, each weighted by
// an element of a transfer matrix over the wavelength. The one table in use is process-wide: a
// block may set it from a file or build it (couplers), and a file of another kind leaves it in use.
#pragma once

#include <string>

#include "files/transfer_matrix.h"
#include "kernel/driver.h"

namespace photrak {

enum class SignalBandwidth {
    Narrow,  // one element for the whole channel, at its carrier
    Wide     // an element for every bin of the channel's spectrum
};

struct MultiportParams {
    std::string commandLine;  // run before the file is read; may be empty
    std::string fileName;
    SignalBandwidth bandwidth = SignalBandwidth::Narrow;
};

/// The rows of its table, and the record read from them.
std::vector<ParamSpec> MultiportParamSpecs();
MultiportParams ReadMultiportParams(Parameter* parameters);

/// The table in use; empty from the start.
TransferMatrix& TransferTable();
void ResetTransferTable();

/// Applies the table in use: rows are input cells, columns output cells, all optical. Channels of
/// exactly the same wavelength at the heads of the inputs are added as fields, shortest wavelength
/// first; noise (the first record of each input) is added by power. Inputs without data take no
/// part. An error leaves the output cells empty.
Status ApplyTransferTable(const Nodelist* inputs, Nodelist* outputs, SignalBandwidth bandwidth,
                          const ModelReport& report);

/// The model.
Status RunMultiportOpticalDevice(const ModelCall& call);

}  // namespace photrak

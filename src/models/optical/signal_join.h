// Joining of optical signals to one: what all multiplexers have in common after their filters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kernel/model_report.h"
#include "kernel/signals.h"

namespace photrak {

/// Owned copies of the signals at the input ports; null where a port holds none.
using OpSignals = std::vector<Owned<OpSignal>>;

/// Copies the inputs; each must be an optical port. `device` ("MUX", ...) is named in messages.
[[nodiscard]] Status CopyInputs(std::string_view device, const Nodelist* inputs, OpSignals& copies,
                                const ModelReport& report);

/// Moves all channels into one list ascending by wavelength and sums all noise spectra into one
/// record; without noise there is none. Channels of equal wavelength stand in any order.
[[nodiscard]] Status JoinSignals(std::string_view device, OpSignals& parts, Owned<OpSignal>& joined,
                                 const ModelReport& report);

/// Replaces the channels by their sum on a common carrier.
[[nodiscard]] Status MergeToOneChannel(OpSignal& signal, const ModelReport& report);

}  // namespace photrak

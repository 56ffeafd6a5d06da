// Optical filter: passes channels and noise through a response in frequency. The operations on
// lists serve the multiplexers, too; the block adds the dropping of channels that came out too
// weak.
#pragma once

#include <string>
#include <vector>

#include "kernel/driver.h"
#include "models/optical/filter_response.h"

namespace photrak {

/// Passes each channel's spectrum through the response, and scales noise spectra by its power at
/// their frequencies. Both lists are changed in place; either may be null. With shiftCarrier the
/// channels come out at the filter's wavelength. A level in one sample has no spectrum to move: it
/// is filtered at its own frequency and keeps it. After an error some may have passed.
Status ApplyOpticalFilter(const FilterResponse& response, OpSig* channels, OpSigASE* noise,
                          const ModelReport& report);
/// The same from a record; a custom file is read at each call.
Status ApplyOpticalFilter(const OpticalFilterRecord& record, OpSig* channels, OpSigASE* noise,
                          const ModelReport& report);
/// A copy of the signal for FilterInto to fill; false when memory is exhausted.
[[nodiscard]] bool MakeFilterCopy(const FilterResponse& response, const OpSignal& source,
                                  Owned<OpSignal>& copy);
/// The same as ApplyOpticalFilter from a signal into its copy. After an error there is no copy.
Status FilterInto(const FilterResponse& response, const OpSignal& source, Owned<OpSignal>& copy,
                  const ModelReport& report);

/// The rows of its table, and the record read from them.
std::vector<ParamSpec> OpticalFilterParamSpecs();
OpticalFilterRecord ReadOpticalFilterRecord(Parameter* parameters);

/// Peak over the samples of |Ex|^2 + |Ey|^2, W.
double PeakPower(const OpSig& channel);
/// Removes the channels whose peak power is below the threshold in W; noise stays.
void DropWeakChannels(OpSignal& signal, double threshold);

/// A filter's transmission without a run, for display: 1000 frequencies, from 4.99 widths below the
/// center on, a hundredth of a width apart; a custom type has those of its `wavelength` and `BW`.
struct FilterTest {
    std::vector<double> frequency;   // Hz
    std::vector<double> wavelength;  // m
    std::vector<double> power;       // dB; where nothing passes, 100 dB below the peak
};
Status TestOpticalFilter(const Component& component, FilterTest& test, const ModelReport& report);

/// The model.
Status RunOpticalFilter(const ModelCall& call);

}  // namespace photrak

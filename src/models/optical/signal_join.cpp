// The sum of the noise is laid out first, on a grid that holds every spectrum; then the channels
// are gathered, sorted and linked anew.
#include "models/optical/signal_join.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "models/common/ase_spectra.h"
#include "models/optical/channel_merge.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

template <class Action>
void ForEachSpectrum(const OpSignals& parts, Action action) {
    for (const Owned<OpSignal>& part : parts) {
        if (!part) continue;
        for (const OpSigASE& spectrum : Items(part->noise)) {
            if (spectrum.noPoints >= 1) action(spectrum);
        }
    }
}

/// A record of zeros from the lowest to the highest frequency in the finest step. Nothing where the
/// spectra span no range; false when it cannot be made.
bool CreateNoiseSum(const OpSignals& parts, Owned<OpSigASE>& sum) {
    double first = 1e300, last = 0.0, step = 1e300;
    ForEachSpectrum(parts, [&](const OpSigASE& spectrum) {
        first = std::min(first, spectrum.fstart);
        last = std::max(last, LastFrequency(spectrum));
        step = std::min(step, spectrum.fstep);
    });
    if (!(first < last)) return true;
    const double intervals = (last - first) / step;
    if (!(intervals >= 0.0 && intervals < maxSpectrumPoints)) return false;
    if (Make(sum, CreateOpSigASE, SaturateToInt(intervals + 1.0))) return false;
    sum->fstart = first;
    sum->fstep = step;
    return true;
}

Status SumNoise(std::string_view device, const OpSignals& parts, Owned<OpSigASE>& sum,
                const ModelReport& report) {
    bool summed = CreateNoiseSum(parts, sum);
    if (sum) {
        ForEachSpectrum(parts, [&](const OpSigASE& spectrum) {
            summed = summed && AddSpectrum(*sum, spectrum, report) == Status::Success;
        });
    }
    if (summed) return Status::Success;
    return report.Fail("ERROR in ", device, ": could not sum ASE noise spectra\n");
}

std::size_t CountChannels(const OpSignals& parts) {
    std::size_t count = 0;
    for (const Owned<OpSignal>& part : parts) {
        if (!part) continue;
        for ([[maybe_unused]] const OpSig& channel : Items(part->channels)) ++count;
    }
    return count;
}

/// Takes the channels out of the parts; channels[1..count] get them sorted.
void GatherChannels(OpSignals& parts, OpSig** channels) {
    long count = 0;
    for (Owned<OpSignal>& part : parts) {
        if (!part) continue;
        for (OpSig& channel : Items(std::exchange(part->channels, nullptr))) {
            channels[++count] = &channel;
        }
    }
    SortOpSigByWavelength(channels, 1, count);
}

/// Links channels[1..count] to a list and gives its head.
OpSig* Link(OpSig** channels, std::size_t count) {
    for (std::size_t i = 1; i <= count; ++i) {
        channels[i]->prev = i > 1 ? channels[i - 1] : nullptr;
        channels[i]->next = i < count ? channels[i + 1] : nullptr;
    }
    return count > 0 ? channels[1] : nullptr;
}

}  // namespace

Status CopyInputs(std::string_view device, const Nodelist* inputs, OpSignals& copies,
                  const ModelReport& report) {
    for (const Nodelist& input : Items(inputs)) {
        if (input.sigType != OpSigType) {
            return report.Fail("ERROR in ", device, ": an input signal is not optical\n");
        }
        copies.emplace_back();
        if (Make(copies.back(), CopyOpSignal, static_cast<const OpSignal*>(input.sig))) {
            return report.Fail("ERROR in ", device, ": could not copy the input signals\n");
        }
    }
    return Status::Success;
}

Status JoinSignals(std::string_view device, OpSignals& parts, Owned<OpSignal>& joined,
                   const ModelReport& report) {
    Owned<OpSigASE> noise;
    const Status status = SumNoise(device, parts, noise, report);
    if (status != Status::Success) return status;
    const std::size_t count = CountChannels(parts);
    const OwnedBlock<OpSig*> channels(
        static_cast<OpSig**>(AllocateZeroed(count + 1, sizeof(OpSig*))));
    if (!channels || Make(joined, CreateOpSignal)) {
        return report.Fail("ERROR in ", device, ": could not allocate array\n");
    }
    GatherChannels(parts, channels.get());
    joined->channels = Link(channels.get(), count);
    joined->noise = noise.release();
    return Status::Success;
}

Status MergeToOneChannel(OpSignal& signal, const ModelReport& report) {
    Owned<OpSig> merged;
    const Status status = MergeChannels(signal.channels, merged, report);
    if (status != Status::Success) return status;
    FreeOpSigList(&signal.channels);
    signal.channels = merged.release();
    return Status::Success;
}

}  // namespace photrak

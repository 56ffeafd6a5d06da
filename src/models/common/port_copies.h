// The walk that all passive blocks share: a deep copy of every input stands at the output of the
// same place and is changed there.
#pragma once

#include <string_view>

#include "kernel/driver.h"
#include "kernel/signals.h"

namespace photrak {

struct PortTexts {
    std::string_view badInput, copyFailed;
};

/// Calls change(OpSignal&), which gives a status, with the copy of each input. The first port that
/// fails ends the walk.
template <class Change>
Status ChangeCopies(const ModelCall& call, const PortTexts& texts, Change change) {
    Nodelist* output = call.outputs;
    for (const Nodelist& input : Items(call.inputs)) {
        if (!output) break;
        if (input.sigType != OpSigType) {
            return call.Fail(texts.badInput);
        }
        if (input.sig) {
            Owned<OpSignal> copy;
            if (Make(copy, CopyOpSignal, static_cast<const OpSignal*>(input.sig))) {
                return call.Fail(texts.copyFailed);
            }
            const Status status = change(*copy);
            if (status != Status::Success) return status;
            output->sig = copy.release();
            output->sigType = OpSigType;
        }
        output = output->next;
    }
    return Status::Success;
}

inline std::size_t CountPorts(const Nodelist* ports) {
    std::size_t count = 0;
    for ([[maybe_unused]] const Nodelist& port : Items(ports)) ++count;
    return count;
}

/// Multiplies a polarization, which may be absent, by a real or complex factor.
template <class Factor>
void ScaleField(Complex* field, std::int32_t n, Factor factor) {
    if (!field) return;
    for (std::int32_t i = 1; i <= n; ++i) field[i] = factor * field[i];
}
/// The same for both polarizations of a channel.
template <class Factor>
void ScaleChannel(OpSig& channel, Factor factor) {
    ScaleField(channel.Ex_samples, channel.noPoints, factor);
    ScaleField(channel.Ey_samples, channel.noPoints, factor);
}

}  // namespace photrak

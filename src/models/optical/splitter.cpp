// One deep copy for each output port.
#include "models/optical/splitter.h"

#include <cmath>
#include <vector>

#include "base/text.h"
#include "kernel/parameters.h"
#include "models/common/ase_spectra.h"
#include "models/common/parameter_limits.h"

namespace photrak {
namespace {

void Scale(Complex* samples, std::int32_t n, double factor) {
    if (!samples) return;
    for (std::int32_t i = 1; i <= n; ++i) samples[i] = factor * samples[i];
}

void Attenuate(OpSignal& signal, double powerFactor) {
    const double factor = std::sqrt(powerFactor);
    for (OpSig& channel : Items(signal.channels)) {
        Scale(channel.Ex_samples, channel.noPoints, factor);
        Scale(channel.Ey_samples, channel.noPoints, factor);
    }
    ScaleSpectra(signal.noise, powerFactor);
}

std::size_t CountPorts(const Nodelist* ports) {
    std::size_t count = 0;
    for ([[maybe_unused]] const Nodelist& port : Items(ports)) ++count;
    return count;
}

}  // namespace

Status SplitSignal(std::string_view owner, double transmission, const Nodelist* input,
                   Nodelist* outputs, std::string& errorText) {
    if (!input || input->sigType != OpSigType) {
        AppendPiece(errorText, "Invalid signal in user model.");
        return Status::Error;
    }
    const Status status =
        CheckRange(owner, "transmission", transmission, Range::NotNegative, errorText);
    if (status != Status::Success) return status;
    if (!input->sig) return Status::Success;
    const std::size_t ports = CountPorts(outputs);
    std::vector<Owned<OpSignal>> copies(ports);
    for (Owned<OpSignal>& copy : copies) {
        if (Make(copy, CopyOpSignal, static_cast<const OpSignal*>(input->sig))) {
            AppendPiece(errorText, "Can't copy optical signal.");
            return Status::Error;
        }
        Attenuate(*copy, transmission / static_cast<double>(ports));
    }
    std::size_t i = 0;
    for (Nodelist& output : Items(outputs)) {
        output.sig = copies[i++].release();
        output.sigType = OpSigType;
    }
    return Status::Success;
}

Status RunOpticalSplitter(const ModelCall& call) {
    const double transmission = GetParamDouble(call.component.parameters, "transmission", 1.0);
    return SplitSignal(call.component.name, transmission, call.inputs, call.outputs,
                       call.errorText);
}

}  // namespace photrak

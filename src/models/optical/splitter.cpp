// One deep copy for each output port.
#include "models/optical/splitter.h"

#include <cmath>
#include <vector>

#include "models/common/ase_spectra.h"
#include "models/common/port_copies.h"

namespace photrak {
namespace {

struct SplitterParams {
    double transmission = 0.0;  // part of the power that all outputs together carry
};
constexpr ParamRow<SplitterParams> rows[] = {
    {"transmission", &SplitterParams::transmission, 1.0, Range::NotNegative}};

void Attenuate(OpSignal& signal, double powerFactor) {
    for (OpSig& channel : Items(signal.channels)) ScaleChannel(channel, std::sqrt(powerFactor));
    ScaleSpectra(signal.noise, powerFactor);
}

}  // namespace

std::vector<ParamSpec> OpticalSplitterParamSpecs() {
    return SpecsOf(rows);
}

Status SplitSignal(double transmission, const Nodelist* input, Nodelist* outputs,
                   const ModelReport& report) {
    if (!input || input->sigType != OpSigType) {
        return report.Fail("Invalid signal in user model.");
    }
    const Status status = CheckRange(report, "transmission", transmission, Range::NotNegative);
    if (status != Status::Success) return status;
    if (!input->sig) return Status::Success;
    const std::size_t ports = CountPorts(outputs);
    std::vector<Owned<OpSignal>> copies(ports);
    for (Owned<OpSignal>& copy : copies) {
        if (Make(copy, CopyOpSignal, static_cast<const OpSignal*>(input->sig))) {
            return report.Fail("Can't copy optical signal.");
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
    SplitterParams params;
    ReadParams(rows, call.component.parameters, params);
    return SplitSignal(params.transmission, call.inputs, call.outputs, call);
}

}  // namespace photrak

// The lossless symmetric coupler: what crosses is a quarter period behind what goes straight, which
// is what conserves power. Source: H. A. Haus, Waves and Fields in Optoelectronics, ch. 7.
#include "models/optical/couplers.h"

#include <cmath>
#include <utility>

#include "base/text.h"
#include "kernel/parameters.h"
#include "models/common/parameter_limits.h"
#include "models/optical/filter_response.h"
#include "models/optical/jones_matrix.h"
#include "models/optical/multiport.h"
#include "numeric/messages.h"

namespace photrak {
namespace {

constexpr std::size_t opticalPorts = 2;

Status Fail(const ModelCall& call, std::string_view text) {
    AppendPiece(call.errorText, text);
    return Status::Error;
}

std::size_t CountPorts(const Nodelist* ports) {
    std::size_t count = 0;
    for ([[maybe_unused]] const Nodelist& port : Items(ports)) ++count;
    return count;
}

/// The first channel of a port that holds optical data; null without.
const OpSig* FirstChannel(const Nodelist& port) {
    return port.sig ? static_cast<const OpSignal*>(port.sig)->channels : nullptr;
}

/// One time grid, as far as both inputs have light: a path may be left open.
bool AreCompatible(const Nodelist& a, const Nodelist& b) {
    if ((a.sig && a.sigType != OpSigType) || (b.sig && b.sigType != OpSigType)) return false;
    const OpSig *first = FirstChannel(a), *second = FirstChannel(b);
    if (!first || !second) return true;
    return first->noPoints == second->noPoints && first->tStep == second->tStep;
}

// --- The matrix ---

/// From the parameter `name`, the part of the power that crosses.
Status ReadRatio(const ModelCall& call, std::string_view name, double fallback,
                 JonesMatrix& matrix) {
    const double alpha = GetParamDouble(call.component.parameters, name, fallback);
    if (!(alpha >= 0.0 && alpha <= 1.0)) {
        return RefuseParameter(call.component.name, name, alpha, "between 0 and 1", call.errorText);
    }
    const Complex straight = {std::sqrt(1.0 - alpha), 0.0}, across = {0.0, std::sqrt(alpha)};
    matrix = {straight, across, across, straight};
    return Status::Success;
}

/// Couples the two inputs by the matrix and the parameter `loss`.
Status Couple(const ModelCall& call, const Nodelist* inputs, const JonesMatrix& matrix) {
    const double loss = GetParamDouble(call.component.parameters, "loss", 0.0);
    const Status status =
        CheckRange(call.component.name, "loss", loss, Range::Finite, call.errorText);
    if (status != Status::Success) return status;
    TransferMatrix table;
    if (!SizeTransferMatrix(table, opticalPorts, opticalPorts, 1)) {
        ReportNoMemory(call.errorText, Concat("the matrix of '", call.component.name, "'"));
        return Status::Error;
    }
    const JonesMatrix m = LossFactor(loss) * matrix;
    *table.Element(1, 1) = m.m11;
    *table.Element(1, 2) = m.m12;
    *table.Element(2, 1) = m.m21;
    *table.Element(2, 2) = m.m22;
    TransferTable() = std::move(table);
    return ApplyTransferTable(call.component.name, inputs, call.outputs, SignalBandwidth::Narrow,
                              call.errorText);
}

/// On: the value of the control's first sample, without its fraction, is not 0.
bool IsOn(const ElecSig& control) {
    return std::fabs(control.elecSamples[1].re) >= 1.0;
}

}  // namespace

Status RunOpticalCoupler(const ModelCall& call) {
    if (CountPorts(call.inputs) != opticalPorts) {
        return Fail(call, "Improper number of input ports to OpticalCoupler\n");
    }
    if (!AreCompatible(*call.inputs, *call.inputs->next)) {
        return Fail(call, "OpticalCoupler error: incompatible input signals\n");
    }
    const bool custom = GetParamText(call.component.parameters, "mode", "Alpha") == "Custom";
    JonesMatrix matrix;
    const Status status = custom ? ReadCustomMatrix(call.component, matrix, call.errorText)
                                 : ReadRatio(call, "alpha", 0.5, matrix);
    return status == Status::Success ? Couple(call, call.inputs, matrix) : status;
}

Status RunControlledOpticalCoupler(const ModelCall& call) {
    if (CountPorts(call.inputs) != opticalPorts + 1) {
        return Fail(call, "Improper number of input ports to ControlledOpticalCoupler\n");
    }
    const Nodelist& control = *call.inputs->next->next;
    // The two optical cells as a list of their own; the signals stay with their nodes.
    Nodelist second = *call.inputs->next, first = *call.inputs;
    second.next = nullptr;
    first.next = &second;
    if (!AreCompatible(first, second)) {
        return Fail(call, "ControlledOpticalCoupler error: incompatible input signals\n");
    }
    const auto* drive = static_cast<const ElecSig*>(control.sig);
    if (!drive || control.sigType != ElecSigType || drive->noPoints < 1) {
        return Fail(call, "ControlledOpticalCoupler error: incorrect control input signal type\n");
    }
    JonesMatrix matrix;
    const Status status = IsOn(*drive) ? ReadRatio(call, "alpha_on", 1.0, matrix)
                                       : ReadRatio(call, "alpha_off", 0.0, matrix);
    return status == Status::Success ? Couple(call, &first, matrix) : status;
}

}  // namespace photrak

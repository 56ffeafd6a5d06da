// The lossless symmetric coupler: what crosses is a quarter period behind what goes straight, which
// is what conserves power. Source: H. A. Haus, Waves and Fields in Optoelectronics, ch. 7.
#include "models/optical/couplers.h"

#include <cmath>
#include <utility>

#include "base/text.h"
#include "models/common/port_copies.h"
#include "models/optical/filter_response.h"
#include "models/optical/jones_matrix.h"
#include "models/optical/multiport.h"
#include "numeric/messages.h"

namespace photrak {
namespace {

constexpr std::size_t opticalPorts = 2;

// --- Parameters ---

struct LossParams {
    double loss = 0.0;  // dB
};
constexpr ParamRow<LossParams> lossRows[] = {{"loss", &LossParams::loss, 0.0}};

struct CouplerParams {
    double alpha = 0.0;  // part of the power that crosses
    bool custom = false;
};
constexpr ParamRow<CouplerParams> couplerRows[] = {
    {"alpha", &CouplerParams::alpha, 0.5, Range::NotNegative},
    {"mode", [](CouplerParams& params, std::string_view word) { params.custom = word == "Custom"; },
     "Alpha", Words{"Alpha Custom"}}};

struct SwitchParams {
    double on = 0.0, off = 0.0;  // part of the power that crosses
};
constexpr ParamRow<SwitchParams> switchRows[] = {
    {"alpha_on", &SwitchParams::on, 1.0, Range::NotNegative},
    {"alpha_off", &SwitchParams::off, 0.0, Range::NotNegative}};

// --- Ports ---

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

/// Of the part of the power that crosses, the value of the parameter `name`.
Status MatrixOfRatio(const ModelReport& report, std::string_view name, double alpha,
                     JonesMatrix& matrix) {
    if (!(alpha >= 0.0 && alpha <= 1.0)) {
        return report.RefuseValue(name, alpha, "between 0 and 1");
    }
    const Complex straight = {std::sqrt(1.0 - alpha), 0.0}, across = {0.0, std::sqrt(alpha)};
    matrix = {straight, across, across, straight};
    return Status::Success;
}

/// Couples the two inputs by the matrix and the parameter `loss`.
Status Couple(const ModelCall& call, const Nodelist* inputs, const JonesMatrix& matrix) {
    LossParams params;
    ReadParams(lossRows, call.component.parameters, params);
    const Status status = CheckParams(lossRows, params, call);
    if (status != Status::Success) return status;
    TransferMatrix table;
    if (!SizeTransferMatrix(table, opticalPorts, opticalPorts, 1)) {
        ReportNoMemory(call.errorText, Concat("the matrix of '", call.owner, "'"));
        return Status::Error;
    }
    const JonesMatrix m = LossFactor(params.loss) * matrix;
    *table.Element(1, 1) = m.m11;
    *table.Element(1, 2) = m.m12;
    *table.Element(2, 1) = m.m21;
    *table.Element(2, 2) = m.m22;
    TransferTable() = std::move(table);
    return ApplyTransferTable(inputs, call.outputs, SignalBandwidth::Narrow, call);
}

/// On: the value of the control's first sample, without its fraction, is not 0.
bool IsOn(const ElecSig& control) {
    return std::fabs(control.elecSamples[1].re) >= 1.0;
}

}  // namespace

std::vector<ParamSpec> OpticalCouplerParamSpecs() {
    std::vector<ParamSpec> specs = SpecsOf(lossRows, couplerRows);
    for (const ParamSpec& spec : CustomMatrixParamSpecs()) specs.push_back(spec);
    return specs;
}

std::vector<ParamSpec> ControlledOpticalCouplerParamSpecs() {
    return SpecsOf(lossRows, switchRows);
}

Status RunOpticalCoupler(const ModelCall& call) {
    if (CountPorts(call.inputs) != opticalPorts) {
        return call.Fail("Improper number of input ports to OpticalCoupler\n");
    }
    if (!AreCompatible(*call.inputs, *call.inputs->next)) {
        return call.Fail("OpticalCoupler error: incompatible input signals\n");
    }
    CouplerParams params;
    ReadParams(couplerRows, call.component.parameters, params);
    JonesMatrix matrix;
    const Status status = params.custom ? ReadCustomMatrix(call.component.parameters, matrix, call)
                                        : MatrixOfRatio(call, "alpha", params.alpha, matrix);
    return status == Status::Success ? Couple(call, call.inputs, matrix) : status;
}

Status RunControlledOpticalCoupler(const ModelCall& call) {
    if (CountPorts(call.inputs) != opticalPorts + 1) {
        return call.Fail("Improper number of input ports to ControlledOpticalCoupler\n");
    }
    const Nodelist& control = *call.inputs->next->next;
    // The two optical cells as a list of their own; the signals stay with their nodes.
    Nodelist second = *call.inputs->next, first = *call.inputs;
    second.next = nullptr;
    first.next = &second;
    if (!AreCompatible(first, second)) {
        return call.Fail("ControlledOpticalCoupler error: incompatible input signals\n");
    }
    const auto* drive = static_cast<const ElecSig*>(control.sig);
    if (!drive || control.sigType != ElecSigType || drive->noPoints < 1) {
        return call.Fail("ControlledOpticalCoupler error: incorrect control input signal type\n");
    }
    SwitchParams params;
    ReadParams(switchRows, call.component.parameters, params);
    JonesMatrix matrix;
    const Status status = IsOn(*drive) ? MatrixOfRatio(call, "alpha_on", params.on, matrix)
                                       : MatrixOfRatio(call, "alpha_off", params.off, matrix);
    return status == Status::Success ? Couple(call, &first, matrix) : status;
}

}  // namespace photrak

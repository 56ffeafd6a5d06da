// The grid of either mode, then the sine on it.
#include "models/sources/analog_sine.h"

#include <cmath>
#include <numbers>

#include "base/text.h"
#include "base/units.h"
#include "kernel/parameters.h"
#include "models/common/parameter_limits.h"
#include "models/common/refusals.h"
#include "models/sources/drive_signal.h"

namespace photrak {
namespace {

struct Grid {
    std::int32_t noPoints = 0, patternLength = 0;
    double tStep = 0.0, bitRate = 0.0;
};

Status CheckExponent(const AnalogSineParams& params, std::string_view name, std::int64_t exponent,
                     std::string& errorText) {
    if (exponent >= 0 && exponent <= maxDriveExponent) return Status::Success;
    return RefuseParameter(params.owner, name, static_cast<double>(exponent),
                           Concat("an exponent of 2 from 0 to ", maxDriveExponent), errorText);
}

Status MakeAperiodicGrid(const AnalogSineParams& params, Grid& grid, std::string& errorText) {
    const Status status = CheckExponent(params, "noSamples", params.noSamples, errorText);
    if (status != Status::Success) return status;
    grid.noPoints = std::int32_t{1} << params.noSamples;
    grid.tStep = params.timeStep;
    return CheckRange(params.owner, "timeStep", params.timeStep, Range::Positive, errorText);
}

Status MakePeriodicGrid(const AnalogSineParams& params, Grid& grid, std::string& errorText) {
    const struct {
        std::string_view name;
        std::int64_t exponent;
    } exponents[] = {
        {"ptsPerPeriod", params.ptsPerPeriod},
        {"noPeriods", params.noPeriods},
        {"ptsPerPeriod + noPeriods", std::int64_t{params.ptsPerPeriod} + params.noPeriods}};
    for (const auto& [name, exponent] : exponents) {
        const Status status = CheckExponent(params, name, exponent, errorText);
        if (status != Status::Success) return status;
    }
    const std::int32_t periods = std::int32_t{1} << params.noPeriods;
    const std::int32_t samplesPerPeriod = std::int32_t{1} << params.ptsPerPeriod;
    grid.noPoints = periods * samplesPerPeriod;
    grid.patternLength = 2 * periods;
    grid.tStep = 1.0 / (samplesPerPeriod * params.frequency);
    grid.bitRate = 2.0 * params.frequency;
    if (!(std::isfinite(grid.tStep) && std::isfinite(grid.bitRate))) {
        return RefuseParameter(params.owner, "frequency", params.frequency,
                               "a frequency that has a period", errorText);
    }
    return CheckRange(params.owner, "frequency", params.frequency, Range::Positive, errorText);
}

constexpr ParameterLimit<AnalogSineParams> limits[] = {
    {"Vpp", &AnalogSineParams::Vpp, Range::Finite},
    {"Voffset", &AnalogSineParams::Voffset, Range::Finite},
    {"frequency", &AnalogSineParams::frequency, Range::Finite},
    {"phase", &AnalogSineParams::phase, Range::Finite}};

void FillSine(const AnalogSineParams& params, ElecSig& sig) {
    const double perSample = 2.0 * std::numbers::pi * params.frequency * sig.tStep;
    const double start = params.phase * radiansPerDegree;
    for (std::int32_t i = 0; i < sig.noPoints; ++i) {
        sig.elecSamples[i + 1].re =
            params.Vpp / 2.0 * std::sin(perSample * i + start) + params.Voffset;
    }
}

}  // namespace

AnalogSineParams ReadAnalogSineParams(const Component& component) {
    Parameter* list = component.parameters;
    AnalogSineParams params;
    params.owner = component.name;
    params.Vpp = GetParamDouble(list, "Vpp", params.Vpp);
    params.Voffset = GetParamDouble(list, "Voffset", params.Voffset);
    params.frequency = GetParamDouble(list, "frequency", params.frequency);
    params.phase = GetParamDouble(list, "phase", params.phase);
    params.ptsPerPeriod = GetParamInt(list, "ptsPerPeriod", params.ptsPerPeriod);
    params.noPeriods = GetParamInt(list, "noPeriods", params.noPeriods);
    params.noSamples = GetParamInt(list, "noSamples", params.noSamples);
    params.timeStep = GetParamDouble(list, "timeStep", params.timeStep);
    params.mode = GetParamText(list, "mode", "Periodic");
    return params;
}

Status AnalogSine(const AnalogSineParams& params, Nodelist* output, std::string& errorText) {
    if (!output) return RefuseComponent(params.owner, "no output port", errorText);
    Status status = CheckLimits<AnalogSineParams>(params, limits, errorText);
    if (status != Status::Success) return status;
    Grid grid;
    status = params.mode == "Aperiodic" ? MakeAperiodicGrid(params, grid, errorText)
                                        : MakePeriodicGrid(params, grid, errorText);
    if (status != Status::Success) return status;
    Owned<ElecSig> sig;
    if (Make(sig, CreateElecSig, grid.noPoints)) {
        errorText += "Can't create electrical signal.";
        return Status::Error;
    }
    sig->tStep = grid.tStep;
    sig->bitRate = grid.bitRate;
    sig->patternLength = grid.patternLength;
    FillSine(params, *sig);
    output->sig = sig.release();
    output->sigType = ElecSigType;
    return Status::Success;
}

Status RunAnalogSine(const ModelCall& call) {
    return AnalogSine(ReadAnalogSineParams(call.component), call.outputs, call.errorText);
}

}  // namespace photrak

// The grid of either mode, then the sine on it.
#include "models/sources/analog_sine.h"

#include <cmath>

#include "base/text.h"
#include "base/units.h"
#include "models/sources/drive_signal.h"

namespace photrak {
namespace {

constexpr ParamRow<AnalogSineParams> rows[] = {
    {"Vpp", &AnalogSineParams::Vpp, 1.0},
    {"Voffset", &AnalogSineParams::Voffset, 0.5},
    {"frequency", &AnalogSineParams::frequency, 1e9},
    {"phase", &AnalogSineParams::phase, -90.0, Range::Finite, ParamUnit::Degrees},
    {"ptsPerPeriod", &AnalogSineParams::ptsPerPeriod, 5},
    {"noPeriods", &AnalogSineParams::noPeriods, 2},
    {"noSamples", &AnalogSineParams::noSamples, 12},
    {"timeStep", &AnalogSineParams::timeStep, 3.125e-12},
    {"mode", &AnalogSineParams::mode, "Periodic", Words{"Periodic Aperiodic"}}};

struct Grid {
    std::int32_t noPoints = 0, patternLength = 0;
    double tStep = 0.0, bitRate = 0.0;
};

Status CheckExponent(std::string_view name, std::int64_t exponent, const ModelReport& report) {
    if (exponent >= 0 && exponent <= maxDriveExponent) return Status::Success;
    return report.RefuseValue(name, static_cast<double>(exponent),
                              Concat("an exponent of 2 from 0 to ", maxDriveExponent));
}

Status MakeAperiodicGrid(const AnalogSineParams& params, Grid& grid, const ModelReport& report) {
    const Status status = CheckExponent("noSamples", params.noSamples, report);
    if (status != Status::Success) return status;
    grid.noPoints = std::int32_t{1} << params.noSamples;
    grid.tStep = params.timeStep;
    return CheckRange(report, "timeStep", params.timeStep, Range::Positive);
}

Status MakePeriodicGrid(const AnalogSineParams& params, Grid& grid, const ModelReport& report) {
    const struct {
        std::string_view name;
        std::int64_t exponent;
    } exponents[] = {
        {"ptsPerPeriod", params.ptsPerPeriod},
        {"noPeriods", params.noPeriods},
        {"ptsPerPeriod + noPeriods", std::int64_t{params.ptsPerPeriod} + params.noPeriods}};
    for (const auto& [name, exponent] : exponents) {
        const Status status = CheckExponent(name, exponent, report);
        if (status != Status::Success) return status;
    }
    const std::int32_t periods = std::int32_t{1} << params.noPeriods;
    const std::int32_t samplesPerPeriod = std::int32_t{1} << params.ptsPerPeriod;
    grid.noPoints = periods * samplesPerPeriod;
    grid.patternLength = 2 * periods;
    grid.tStep = 1.0 / (samplesPerPeriod * params.frequency);
    grid.bitRate = 2.0 * params.frequency;
    if (!(std::isfinite(grid.tStep) && std::isfinite(grid.bitRate))) {
        return report.RefuseValue("frequency", params.frequency, "a frequency that has a period");
    }
    return CheckRange(report, "frequency", params.frequency, Range::Positive);
}

void FillSine(const AnalogSineParams& params, ElecSig& sig) {
    const double perSample = twoPi * params.frequency * sig.tStep;
    for (std::int32_t i = 0; i < sig.noPoints; ++i) {
        sig.elecSamples[i + 1].re =
            params.Vpp / 2.0 * std::sin(perSample * i + params.phase) + params.Voffset;
    }
}

}  // namespace

std::vector<ParamSpec> AnalogSineParamSpecs() {
    return SpecsOf(rows);
}

AnalogSineParams ReadAnalogSineParams(Parameter* parameters) {
    AnalogSineParams params;
    ReadParams(rows, parameters, params);
    return params;
}

Status AnalogSine(const AnalogSineParams& params, Nodelist* output, const ModelReport& report) {
    if (!output) return report.Refuse("no output port");
    Status status = CheckParams(rows, params, report);
    if (status != Status::Success) return status;
    Grid grid;
    status = params.mode == "Aperiodic" ? MakeAperiodicGrid(params, grid, report)
                                        : MakePeriodicGrid(params, grid, report);
    if (status != Status::Success) return status;
    Owned<ElecSig> sig;
    if (Make(sig, CreateElecSig, grid.noPoints)) {
        return report.Fail("Can't create electrical signal.");
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
    return AnalogSine(ReadAnalogSineParams(call.component.parameters), call.outputs, call);
}

}  // namespace photrak

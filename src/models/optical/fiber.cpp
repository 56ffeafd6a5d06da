// The outline of a fiber: parameters, checks, characteristic lengths, the way along the fiber, the
// noise beside it.
#include "models/optical/fiber.h"

#include <cmath>
#include <ctime>
#include <numbers>

#include "base/log.h"
#include "base/text.h"
#include "kernel/param_table.h"
#include "models/optical/fiber_channels.h"
#include "models/optical/fiber_pmd.h"
#include "models/optical/fiber_steps.h"
#include "numeric/fft.h"

namespace photrak {

namespace {

// Of what has no pulse or no dispersion to count soliton periods by, m.
constexpr double defaultDistance = 50000.0;

void StorePmdMethod(FiberParams& params, std::string_view word) {
    params.pmdMethod = word == "Coarse_Step"   ? PmdMethod::CoarseStep
                       : word == "Approximate" ? PmdMethod::Approximate
                                               : PmdMethod::None;
}

using Row = ParamRow<FiberParams>;
constexpr Row rows[] = {
    {"dataType", &FiberParams::dataType, "custom", Words{"custom defined defined2"}},
    {"distance", &FiberParams::distance, 80000.0},
    {"zStepSize", &FiberParams::zStepSize, -1.0},
    Row{"zStepFac", &FiberParams::zStepFac, 0.01}.WhenAbsent(-1.0),
    {"diameter", &FiberParams::diameter, 8.2e-6, Range::Positive},
    {"aEff", &FiberParams::aEff, 1.515, Range::Positive},
    {"loss", &FiberParams::loss, 0.2},
    {"n2", &FiberParams::n2, 2.6e-20},
    {"skew", &FiberParams::skew, 0.0},
    {"showstatus",
     [](FiberParams& params, std::string_view word) { params.showStatus = word == "Yes"; }, "No",
     Words{"No Yes"}},
    {"optimizationlevel", &FiberParams::optimizationLevel, 3},
    {"raman_effects",
     [](FiberParams& params, std::string_view word) { params.hasRaman = word == "Gain"; }, "None",
     Words{"None Gain"}},
    {"pmd_method", StorePmdMethod, "None", Words{"None Coarse_Step Approximate"}},
    {"pmd_coef", &FiberParams::pmdCoefficient, 3.2e-15},
    {"pmd_corlen", &FiberParams::pmdCorrelationLength, 100.0}};

constexpr ParamRow<DispersionCurve> curveRows[] = {
    {"beta2", &DispersionCurve::beta2, -2.17e-26},
    {"beta3", &DispersionCurve::beta3, 1.3e-40},
    {"n1", &DispersionCurve::n1, 1.468},
    {"dispersionLambda0", &DispersionCurve::lambda0, 1.31e-6},
    {"dispersionS0", &DispersionCurve::S0, 92.0},
    {"dispersionOffset", &DispersionCurve::D0, 0.0}};

Status CheckFiberParams(const FiberParams& params, const ModelReport& report) {
    if (CheckParams(rows, params, report) != Status::Success ||
        CheckParams(curveRows, params.curve, report) != Status::Success)
        return Status::Error;
    if (!DispersionKindOf(params.dataType))
        return report.RefuseValue("dataType", Concat("'", params.dataType, "'"),
                                  "custom, defined or defined2");
    if (!(params.zStepSize > 0 || params.zStepFac > 0))
        return report.Refuse("neither zStepSize nor zStepFac is above 0");
    if (!(params.zStepSize > 0) && params.n2 < 0)
        return report.RefuseValue("n2", params.n2, "at least 0 with adaptive steps");
    if (!(params.effectiveArea > 0 && std::isfinite(params.effectiveArea)))
        return report.Refuse("the effective area is ", params.effectiveArea, " m^2");
    return Status::Success;
}

double PeakOf(const OpSig& signal) {
    double peak = 0;
    for (std::int32_t i = 1; i <= signal.noPoints; ++i) {
        double power = SquaredMagnitude(signal.Ex_samples[i]);
        if (signal.Ey_samples) power += SquaredMagnitude(signal.Ey_samples[i]);
        if (!(power <= peak)) peak = power;
        if (!std::isfinite(peak)) break;
    }
    return peak;
}

Status CheckChannel(const FiberParams& params, const OpSig& signal, const OpSig& first,
                    const ModelReport& report) {
    if (signal.noPoints != first.noPoints || signal.tStep != first.tStep)
        return report.Refuse("channels of ", first.noPoints, " samples every ", first.tStep,
                             " s and of ", signal.noPoints, " samples every ", signal.tStep,
                             " s cannot go through together");
    if (!(signal.wavelength > 0 && std::isfinite(signal.wavelength)))
        return report.Refuse("a channel has the wavelength ", signal.wavelength, " m");
    if (!std::isfinite(signal.startTime))
        return report.Refuse("a channel starts at ", signal.startTime, " s");
    if (!std::isfinite(params.curve.GroupDelay(signal.wavelength)))
        return report.Refuse("no group velocity at ", signal.wavelength,
                             " m with dispersionLambda0 ", params.curve.lambda0, " m");
    return Status::Success;
}

Status CheckSignal(const FiberParams& params, const OpSig* list, const ModelReport& report) {
    if (!list) return Status::Success;
    if (!IsPowerOfTwo(list->noPoints))
        return report.Refuse("the number of samples must be a power of two, and it is ",
                             list->noPoints);
    // A single sample is a carrier without any time of its own.
    const bool hasTime = list->tStep > 0 && std::isfinite(list->tStep);
    if (!hasTime && list->noPoints > 1)
        return report.Refuse("the time step of the signal is ", list->tStep, " s");
    for (const OpSig& signal : Items(list)) {
        if (CheckChannel(params, signal, *list, report) != Status::Success) return Status::Error;
    }
    return Status::Success;
}

/// Sum of the largest powers of the channels, W.
Status MeasurePeak(const OpSig* list, double& peakPower, const ModelReport& report) {
    peakPower = 0;
    for (const OpSig& signal : Items(list)) peakPower += PeakOf(signal);
    if (std::isfinite(peakPower)) return Status::Success;
    return report.Refuse("the power of the signal is ", peakPower, " W");
}

/// The shortest bit, s; the first channel is not special. By design: a channel without a
/// bit rate sets 100 ps at its place in the list, whatever came before.
double TimeScale(const OpSig* list) {
    double T = 1000000.0;
    for (const OpSig& signal : Items(list)) {
        if (signal.bitRate == 0)
            T = 1e-10;
        else if (1.0 / signal.bitRate < T)
            T = 1.0 / signal.bitRate;
    }
    return T;
}

/// Dispersion lengths and soliton period after the first channel, and with them the distance.
void DeriveLengths(FiberParams& params, const OpSig* list) {
    DispersionCurve& curve = params.curve;
    if (list && curve.kind != DispersionKind::Custom) {
        curve.beta2 = curve.Beta2(list->wavelength);
        curve.beta3 = curve.Beta3(list->wavelength);
    }
    const double T = TimeScale(list);
    params.LD = params.z0 = params.L3 = infiniteLength;
    if (!list || curve.beta2 == 0) {
        if (params.distance < 0) params.distance = defaultDistance;
    } else {
        params.LD = std::fabs(T * T / curve.beta2);
        params.z0 = params.LD * 1.5707963267948966;
        if (params.distance < 0) params.distance = params.z0 * params.distance * -0.001;
    }
    if (list && curve.beta3 != 0) params.L3 = std::fabs(T * T * T / curve.beta3);
}

Status PropagateChannels(OpSig* list, FiberParams& params, const std::atomic<std::int16_t>& stop,
                         const ModelReport& report) {
    double peakPower = 0;
    if (MeasurePeak(list, peakPower, report) != Status::Success) return Status::Error;
    FiberChannels channels;
    if (MakeFiberChannels(list, params.curve, channels, report) != Status::Success)
        return Status::Error;
    for (const auto& channel : channels)
        channel->gamma = params.n2 * twoPi / (channel->signal.wavelength * params.effectiveArea);
    params.LNL = NonlinearLength(channels.front()->gamma, peakPower);
    return PropagateSteps(channels, params, peakPower, stop, report);
}

/// The noise sees the loss and nothing else, over the whole length.
void AttenuateNoise(OpSigASE* noise, const FiberParams& params) {
    const double transmission = std::exp(-params.alpha * params.distance);
    for (OpSigASE& spectrum : Items(noise)) {
        for (std::int32_t i = 1; i <= spectrum.noPoints; ++i)
            spectrum.powerSamples[i] *= transmission;
    }
}

/// What follows from the parameters alone.
void Derive(FiberParams& params) {
    params.alpha = params.loss / (10.0 * std::numbers::log10e) * 0.001;
    params.effectiveArea = params.aEff * pi * (params.diameter / 2) * (params.diameter / 2);
    if (params.zStepSize > 0) params.zStepFac = -1.0;
    if (const auto kind = DispersionKindOf(params.dataType)) params.curve.kind = *kind;
    if (params.curve.kind != DispersionKind::Custom) params.curve.beta2 = params.curve.beta3 = 0;
}

double ProcessSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

}  // namespace

std::vector<ParamSpec> FiberParamSpecs() {
    return SpecsOf(rows, curveRows);
}

FiberParams ReadFiberParams(Parameter* parameters) {
    FiberParams params;
    ReadParams(rows, parameters, params);
    ReadParams(curveRows, parameters, params.curve);
    return params;
}

Status Fiber(const Nodelist* inputPort, FiberParams& params, const std::atomic<std::int16_t>& stop,
             Nodelist* outputPort, const ModelReport& report) {
    const double start = ProcessSeconds();
    if (!inputPort || inputPort->sigType != OpSigType)
        return report.Fail("Input signal type incorrect for fiber model.\n");
    if (!inputPort->sig) return Status::Success;
    const auto* input = static_cast<const OpSignal*>(inputPort->sig);

    Derive(params);
    Status status = CheckFiberParams(params, report);
    if (status == Status::Success) status = CheckSignal(params, input->channels, report);
    if (status != Status::Success) return status;
    Owned<OpSignal> signal;
    if (Make(signal, CopyOpSignal, input))
        return report.Fail("Error in copying OpSig in Fiber().\n");

    DeriveLengths(params, signal->channels);
    if (!std::isfinite(params.distance))
        return report.Refuse("the distance is ", params.distance, " m");
    if (signal->channels) {
        status = PropagateChannels(signal->channels, params, stop, report);
        if (status != Status::Success) return status;
    }
    AttenuateNoise(signal->noise, params);
    if (outputPort) {
        outputPort->sig = signal.release();
        outputPort->sigType = OpSigType;
    }
    LogText(Concat("NLFiber calculation time = ", ProcessSeconds() - start,
                   " sec for distance = ", params.distance, " meters\n"));
    return Status::Success;
}

Status RunFiber(const ModelCall& call) {
    FiberParams params = ReadFiberParams(call.component.parameters);
    const Status status = Fiber(call.inputs, params, call.options.stop, call.outputs, call);
    if (status != Status::Success || !call.outputs || !call.outputs->sig) return status;
    auto* signal = static_cast<OpSignal*>(call.outputs->sig);
    if (params.skew != 0) {
        for (OpSig& channel : Items(signal->channels)) channel.startTime += params.skew;
    }
    if (params.pmdMethod != PmdMethod::Approximate) return status;
    return BlurByPmd(signal->channels, params, call);
}

}  // namespace photrak

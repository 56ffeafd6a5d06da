// The outline of a fiber: parameters, checks, characteristic lengths, the way along the fiber, the
// noise beside it.
#include "models/optical/fiber.h"

#include <cmath>
#include <ctime>
#include <numbers>

#include "base/log.h"
#include "base/text.h"
#include "kernel/parameters.h"
#include "models/optical/fiber_channels.h"
#include "models/optical/fiber_pmd.h"
#include "models/optical/fiber_steps.h"
#include "numeric/fft.h"

namespace photrak {

namespace {

// Of what has no pulse or no dispersion to count soliton periods by, m.
constexpr double defaultDistance = 50000.0;

Status Fail(std::string_view text, std::string& errorText) {
    errorText.append(text);
    return Status::Error;
}

template <class... Pieces>
Status Refuse(const FiberParams& params, std::string& errorText, const Pieces&... pieces) {
    return Fail(Concat("Error in fiber '", params.name, "': ", pieces..., ".\n"), errorText);
}

struct NamedNumber {
    std::string_view name;
    double value;
};

Status CheckNumbers(const FiberParams& params, std::string& errorText) {
    const DispersionCurve& curve = params.curve;
    const NamedNumber numbers[] = {{"distance", params.distance},
                                   {"zStepSize", params.zStepSize},
                                   {"zStepFac", params.zStepFac},
                                   {"diameter", params.diameter},
                                   {"aEff", params.aEff},
                                   {"loss", params.loss},
                                   {"beta2", curve.beta2},
                                   {"beta3", curve.beta3},
                                   {"n1", curve.n1},
                                   {"n2", params.n2},
                                   {"dispersionLambda0", curve.lambda0},
                                   {"dispersionS0", curve.S0},
                                   {"dispersionOffset", curve.D0},
                                   {"skew", params.skew},
                                   {"pmd_coef", params.pmdCoefficient},
                                   {"pmd_corlen", params.pmdCorrelationLength}};
    for (const NamedNumber& number : numbers) {
        if (!std::isfinite(number.value))
            return Refuse(params, errorText, number.name, " is ", number.value);
    }
    return Status::Success;
}

Status CheckParams(const FiberParams& params, std::string& errorText) {
    if (CheckNumbers(params, errorText) != Status::Success) return Status::Error;
    if (!DispersionKindOf(params.dataType))
        return Refuse(params, errorText, "dataType '", params.dataType,
                      "' is none of custom, defined and defined2");
    if (!(params.zStepSize > 0 || params.zStepFac > 0))
        return Refuse(params, errorText, "neither zStepSize nor zStepFac is above 0");
    if (!(params.zStepSize > 0) && params.n2 < 0)
        return Refuse(params, errorText, "an adaptive step needs an n2 not below 0, and it is ",
                      params.n2);
    if (!(params.effectiveArea > 0 && std::isfinite(params.effectiveArea)))
        return Refuse(params, errorText, "the effective area is ", params.effectiveArea, " m^2");
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
                    std::string& errorText) {
    if (signal.noPoints != first.noPoints || signal.tStep != first.tStep)
        return Refuse(params, errorText, "channels of ", first.noPoints, " samples every ",
                      first.tStep, " s and of ", signal.noPoints, " samples every ", signal.tStep,
                      " s cannot go through together");
    if (!(signal.wavelength > 0 && std::isfinite(signal.wavelength)))
        return Refuse(params, errorText, "a channel has the wavelength ", signal.wavelength, " m");
    if (!std::isfinite(signal.startTime))
        return Refuse(params, errorText, "a channel starts at ", signal.startTime, " s");
    if (!std::isfinite(params.curve.GroupDelay(signal.wavelength)))
        return Refuse(params, errorText, "no group velocity at ", signal.wavelength,
                      " m with dispersionLambda0 ", params.curve.lambda0, " m");
    return Status::Success;
}

Status CheckSignal(const FiberParams& params, const OpSig* list, std::string& errorText) {
    if (!list) return Status::Success;
    if (!IsPowerOfTwo(list->noPoints))
        return Refuse(params, errorText, "the number of samples must be a power of two, and it is ",
                      list->noPoints);
    // A single sample is a carrier without any time of its own.
    const bool hasTime = list->tStep > 0 && std::isfinite(list->tStep);
    if (!hasTime && list->noPoints > 1)
        return Refuse(params, errorText, "the time step of the signal is ", list->tStep, " s");
    for (const OpSig& signal : Items(list)) {
        if (CheckChannel(params, signal, *list, errorText) != Status::Success) return Status::Error;
    }
    return Status::Success;
}

/// Sum of the largest powers of the channels, W.
Status MeasurePeak(const FiberParams& params, const OpSig* list, double& peakPower,
                   std::string& errorText) {
    peakPower = 0;
    for (const OpSig& signal : Items(list)) peakPower += PeakOf(signal);
    if (std::isfinite(peakPower)) return Status::Success;
    return Refuse(params, errorText, "the power of the signal is ", peakPower, " W");
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
                         std::string& errorText) {
    double peakPower = 0;
    if (MeasurePeak(params, list, peakPower, errorText) != Status::Success) return Status::Error;
    FiberChannels channels;
    if (MakeFiberChannels(list, params.curve, channels, errorText) != Status::Success)
        return Status::Error;
    for (const auto& channel : channels)
        channel->gamma = params.n2 * twoPi / (channel->signal.wavelength * params.effectiveArea);
    params.LNL = NonlinearLength(channels.front()->gamma, peakPower);
    return PropagateSteps(channels, params, peakPower, stop, errorText);
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

FiberParams ReadFiberParams(const std::string& componentName, Parameter* parameters) {
    const auto number = [&](std::string_view name, double fallback) {
        return GetParamDouble(parameters, name, fallback);
    };
    const auto text = [&](std::string_view name, std::string_view fallback) {
        return GetParamText(parameters, name, fallback);
    };
    FiberParams params;
    params.name = componentName;
    params.dataType = text("dataType", "custom");
    params.distance = number("distance", 0.0);
    params.zStepSize = number("zStepSize", -1.0);
    params.zStepFac = number("zStepFac", -1.0);
    params.diameter = number("diameter", 0.0);
    params.aEff = number("aEff", 1.0);
    params.loss = number("loss", 0.0);
    params.curve.beta2 = number("beta2", 0.0);
    params.curve.beta3 = number("beta3", 0.0);
    params.curve.n1 = number("n1", 0.0);
    params.curve.lambda0 = number("dispersionLambda0", 0.0);
    params.curve.S0 = number("dispersionS0", 0.0);
    params.curve.D0 = number("dispersionOffset", 0.0);
    params.n2 = number("n2", 0.0);
    params.skew = number("skew", 0.0);
    params.showStatus = text("showstatus", "No") == "Yes";
    const std::int32_t level = GetParamInt(parameters, "optimizationlevel", 0);
    params.mergesHalfSteps = (level & 1) != 0;
    params.doublesWindow = (level & 2) == 0;
    params.hasRaman = text("raman_effects", "None") == "Gain";
    params.pmdMethod = text("pmd_method", "None");
    params.pmdCoefficient = number("pmd_coef", 0.0);
    params.pmdCorrelationLength = number("pmd_corlen", 0.0);
    return params;
}

Status Fiber(const Nodelist* inputPort, FiberParams& params, const std::atomic<std::int16_t>& stop,
             Nodelist* outputPort, std::string& errorText) {
    const double start = ProcessSeconds();
    if (!inputPort || inputPort->sigType != OpSigType)
        return Fail("Input signal type incorrect for fiber model.\n", errorText);
    if (!inputPort->sig) return Status::Success;
    const auto* input = static_cast<const OpSignal*>(inputPort->sig);

    Derive(params);
    Status status = CheckParams(params, errorText);
    if (status == Status::Success) status = CheckSignal(params, input->channels, errorText);
    if (status != Status::Success) return status;
    Owned<OpSignal> signal;
    if (Make(signal, CopyOpSignal, input))
        return Fail("Error in copying OpSig in Fiber().\n", errorText);

    DeriveLengths(params, signal->channels);
    if (!std::isfinite(params.distance))
        return Refuse(params, errorText, "the distance is ", params.distance, " m");
    if (signal->channels) {
        status = PropagateChannels(signal->channels, params, stop, errorText);
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
    FiberParams params = ReadFiberParams(call.component.name, call.component.parameters);
    const Status status =
        Fiber(call.inputs, params, call.options.stop, call.outputs, call.errorText);
    if (status != Status::Success || !call.outputs || !call.outputs->sig) return status;
    auto* signal = static_cast<OpSignal*>(call.outputs->sig);
    if (params.skew != 0) {
        for (OpSig& channel : Items(signal->channels)) channel.startTime += params.skew;
    }
    if (!IsApproximatePmd(params)) return status;
    return BlurByPmd(signal->channels, params, call.errorText);
}

}  // namespace photrak

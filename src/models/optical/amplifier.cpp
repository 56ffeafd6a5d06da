// The stages in order: input power, gain of the fields, gain of the noise that came in, emission of
// the amplifier itself (amplifier_noise.h).
#include "models/optical/amplifier.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "kernel/parameters.h"
#include "kernel/sample_arrays.h"
#include "models/optical/amplifier_noise.h"
#include "models/optical/ase_spectra.h"
#include "models/optical/spectrum_grid.h"
#include "models/parameter_limits.h"
#include "models/refusals.h"
#include "numeric/fft.h"
#include "numeric/messages.h"
#include "numeric/samples.h"
#include "numeric/transfer.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr double nanometersPerMeter = 1e9;

Status Fail(std::string_view text, std::string& errorText) {
    AppendPiece(errorText, text);
    return Status::Error;
}

constexpr ParameterLimit<EdfaParams> limits[] = {
    {"Psat", &EdfaParams::Psat, Range::Positive},
    {"gain", &EdfaParams::gain, Range::Positive},
    {"Fn", &EdfaParams::Fn, Range::NotNegative},
    {"BW", &EdfaParams::BW, Range::Finite},
    {"noiseResolution", &EdfaParams::noiseResolution, Range::Finite},
    {"noiseCenter", &EdfaParams::noiseCenter, Range::Positive}};

// --- Gain ---

/// What the noise needs to know about the gain of the fields.
struct Gain {
    double g = 0.0;     // factor of the field
    double nu = 0.0;    // the frequency at which g holds, Hz
    SCurvePair curves;  // "custom"
};

void Multiply(Complex* samples, std::int32_t n, double factor) {
    if (!samples) return;
    for (std::int32_t i = 1; i <= n; ++i) samples[i] = factor * samples[i];
}

/// One gain for all wavelengths. The power gain falls from G^2 toward Psat/Pin: the output power
/// G^2 Pin / (1 + G^2 Pin/Psat) never exceeds Psat.
Status AmplifyEvenly(const EdfaParams& params, double inputPower, OpSignal& signal, Gain& gain,
                     std::string& errorText) {
    const double unsaturated = params.gain * params.gain;
    gain.g = std::sqrt(unsaturated / (inputPower / params.Psat * unsaturated + 1.0));
    gain.nu = lightSpeed / params.noiseCenter;
    if (!std::isfinite(gain.g)) {
        return RefuseComponent(params.owner, "the gain is out of range", errorText);
    }
    for (OpSig& channel : Items(signal.channels)) {
        Multiply(channel.Ex_samples, channel.noPoints, gain.g);
        Multiply(channel.Ey_samples, channel.noPoints, gain.g);
    }
    ScaleSpectra(signal.noise, gain.g * gain.g);
    return Status::Success;
}

/// Factor of the power at a frequency in Hz, from a gain in dB.
double PowerFactor(const SCurvePair& curves, double nu) {
    return std::pow(10.0, 0.1 * SCurveValue(curves, lightSpeed / nu * nanometersPerMeter));
}

/// Multiplies the spectra of both polarizations by the factors[1..n] of their bins.
void MultiplySpectra(OpSig& channel, const double* factors) {
    const std::int32_t n = channel.noPoints;
    TransferArray transfer(n, +1);
    transfer.Fill(
        [&](long bin) { return factors[FFTBinToIndex(n, static_cast<std::int32_t>(bin))]; });
    for (Complex* samples : {channel.Ex_samples, channel.Ey_samples}) {
        if (samples) ApplyTransfer(samples, transfer);
    }
}

Status AmplifyChannel(const EdfaParams& params, OpSig& channel, Gain& gain,
                      std::string& errorText) {
    const Status status = CheckSpectrumGrid(channel, params.owner, errorText);
    if (status != Status::Success || channel.noPoints < 1) return status;
    const std::int32_t n = channel.noPoints;
    OwnedBlock<double> factors(NewUnclearedSamples<double>(n));
    if (!factors) {
        ReportNoMemory(errorText, "EDFA - gainArray");
        return Status::Error;
    }
    const SpectrumGrid grid(channel, n);
    gain.nu = grid.carrier;
    bool finite = true;
    for (std::int32_t k = 1; k <= n; ++k) {
        const double x = lightSpeed / grid.Frequency(k) * nanometersPerMeter;
        gain.g = factors.get()[k] = std::pow(10.0, 0.05 * SCurveValue(gain.curves, x));
        finite = finite && std::isfinite(gain.g);
    }
    if (!finite) {
        return RefuseComponent(params.owner, "the gain curves are out of range", errorText);
    }
    MultiplySpectra(channel, factors.get());
    return Status::Success;
}

/// A gain for each bin of each channel.
Status AmplifyByCurves(const EdfaParams& params, double inputPower, OpSignal& signal, Gain& gain,
                       std::string& errorText) {
    if (params.gainCurves.empty()) {
        return RefuseComponent(params.owner, "there are no gain curves", errorText);
    }
    gain.curves = ChooseSCurves(params.gainCurves, inputPower);
    // Without a channel the center of the noise stands for the last one.
    gain.nu = lightSpeed / params.noiseCenter;
    gain.g = std::sqrt(PowerFactor(gain.curves, gain.nu));
    // By design: the last bin of the last channel sets the gain and the frequency that the
    // emission follows, whatever the gain at other wavelengths is.
    for (OpSig& channel : Items(signal.channels)) {
        const Status status = AmplifyChannel(params, channel, gain, errorText);
        if (status != Status::Success) return status;
    }
    // By design: the first record is the one that the emission joins; further records pass
    // without gain.
    if (OpSigASE* first = signal.noise) {
        for (std::int32_t i = 1; i <= first->noPoints; ++i) {
            first->powerSamples[i] *= PowerFactor(gain.curves, SpectrumFrequency(*first, i));
        }
    }
    return Status::Success;
}

struct AmplifierType {
    std::string_view word;
    Status (*amplify)(const EdfaParams& params, double inputPower, OpSignal& signal, Gain& gain,
                      std::string& errorText);
};
constexpr AmplifierType types[] = {{"defined", AmplifyEvenly}, {"custom", AmplifyByCurves}};

// --- Noise ---

/// The spectrum joins the first record of the list, or becomes the list.
Status AddEmission(Owned<OpSigASE> emission, OpSignal& signal, std::string& errorText) {
    if (!signal.noise) {
        signal.noise = emission.release();
        return Status::Success;
    }
    if (AddSpectrum(*signal.noise, *emission, errorText) == Status::Success) {
        return Status::Success;
    }
    return Fail("ERROR in EDFA combining noise spectra\n", errorText);
}

Status Amplify(const EdfaParams& params, const AmplifierType& type, OpSignal& signal,
               std::string& errorText) {
    const double inputPower = NodelistPower(&signal);
    if (!std::isfinite(inputPower)) {
        return RefuseComponent(params.owner, "the input power is not a finite number", errorText);
    }
    Gain gain;
    Status status = type.amplify(params, inputPower, signal, gain, errorText);
    if (status != Status::Success) return status;
    Owned<OpSigASE> emission;
    const double density = EmissionDensity(gain.g, params.Fn, gain.nu);
    status = MakeEmission(params, density, inputPower, emission, errorText);
    if (status != Status::Success) return status;
    return AddEmission(std::move(emission), signal, errorText);
}

// --- Parameters ---

constexpr std::size_t maxCurveFileBytes = std::size_t{1} << 26;

/// Messages of a curve file: %s of the first are component and file, of the second the file.
struct CurveFileTexts {
    std::string_view cannotOpen, notStarted;
};
constexpr CurveFileTexts noiseTexts = {
    "OpticalAmplifier %s: Cannot open noise spectra filename '%s'\n",
    "The first line of file %s must specify the input power. exiting!\n"};
constexpr CurveFileTexts gainTexts = {
    "OpticalAmplifier %s: Cannot open gain spectra filename '%s'\n",
    "The first line of file %s must specify the input power, exit!\n"};

Status LoadCurves(const Component& component, std::string_view parameter,
                  const CurveFileTexts& texts, SCurves& curves, std::string& errorText) {
    const std::string fileName(GetParamText(component.parameters, parameter, ""));
    std::string text, reason;
    if (fileName.empty() || !ReadWholeFile(fileName, text, reason, maxCurveFileBytes)) {
        return Fail(FillIn(texts.cannotOpen, {component.name, fileName}), errorText);
    }
    return ReadSCurves(text, fileName, texts.notStarted, curves, errorText);
}

double PowerRatio(double decibels) {
    return std::pow(10.0, 0.1 * decibels);
}

constexpr double wattsPerMilliwatt = 0.001;

NoiseShape ShapeOf(std::string_view word) {
    if (word == "Gaussian") return NoiseShape::Gaussian;
    return word == "Custom" ? NoiseShape::Custom : NoiseShape::Flat;
}

}  // namespace

Status ReadEdfaParams(const Component& component, EdfaParams& params, std::string& errorText) {
    const auto number = [&](std::string_view name, double fallback) {
        return GetParamDouble(component.parameters, name, fallback);
    };
    params.owner = component.name;
    params.type = GetParamText(component.parameters, "type", "defined");
    params.Psat = PowerRatio(number("Psat", 20.0)) * wattsPerMilliwatt;
    params.gain = std::pow(10.0, 0.05 * number("gain", 16.0));
    params.Fn = PowerRatio(number("Fn", 5.0));
    params.BW = number("BW", 40e-9);
    params.noiseResolution = number("noiseResolution", 0.1e-9);
    params.noiseCenter = number("noiseCenter", 1.55e-6);
    params.noiseShape = ShapeOf(GetParamText(component.parameters, "noiseShape", "Flat"));
    if (params.noiseShape == NoiseShape::Custom) {
        const Status status =
            LoadCurves(component, "noiseFilename", noiseTexts, params.noiseCurves, errorText);
        if (status != Status::Success) return status;
    }
    if (params.type != "custom") return Status::Success;
    return LoadCurves(component, "spectraFilename", gainTexts, params.gainCurves, errorText);
}

Status EDFA(const Nodelist* input, const EdfaParams& params, Nodelist* output,
            std::string& errorText) {
    if (!input || input->sigType != OpSigType) {
        return Fail(
            "Input signal type incorrect for the EDFA.\nInput signal type must be 'OPSIG'.\n",
            errorText);
    }
    if (!output) return RefuseComponent(params.owner, "no output port", errorText);
    if (!input->sig) return Status::Success;
    const auto* type =
        std::find_if(std::begin(types), std::end(types),
                     [&](const AmplifierType& row) { return row.word == params.type; });
    if (type == std::end(types)) {
        return Fail("Wrong EDFA type in EDFA().\nThe allowed types are 'defined' and 'custom'.\n",
                    errorText);
    }
    Status status = CheckLimits<EdfaParams>(params, limits, errorText);
    if (status != Status::Success) return status;
    Owned<OpSignal> signal;
    if (Make(signal, CopyOpSignal, static_cast<const OpSignal*>(input->sig))) {
        return Fail("Error in copying OpSig in EDFA().\n", errorText);
    }
    status = Amplify(params, *type, *signal, errorText);
    if (status != Status::Success) return status;
    output->sig = signal.release();
    output->sigType = OpSigType;
    return Status::Success;
}

Status RunOpticalAmplifier(const ModelCall& call) {
    EdfaParams params;
    const Status status = ReadEdfaParams(call.component, params, call.errorText);
    if (status != Status::Success) return status;
    return EDFA(call.inputs, params, call.outputs, call.errorText);
}

}  // namespace photrak

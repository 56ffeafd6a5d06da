// The stages in order: input power, gain of the fields, gain of the noise that came in, emission of
// the amplifier itself (amplifier_noise.h).
#include "models/optical/amplifier.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "models/common/ase_spectra.h"
#include "models/common/spectrum_grid.h"
#include "models/optical/amplifier_noise.h"
#include "numeric/fft.h"
#include "numeric/messages.h"
#include "numeric/samples.h"
#include "numeric/transfer.h"
#include "platform/file_system.h"
#include "platform/workers.h"

namespace photrak {
namespace {

void StoreShape(EdfaParams& params, std::string_view word) {
    params.noiseShape = word == "Gaussian" ? NoiseShape::Gaussian
                        : word == "Custom" ? NoiseShape::Custom
                                           : NoiseShape::Flat;
}

constexpr ParamRow<EdfaParams> rows[] = {
    {"type", &EdfaParams::type, "defined", Words{"defined custom"}},
    {"spectraFilename", &EdfaParams::spectraFilename, ""},
    {"Psat", &EdfaParams::Psat, 20.0, Range::Positive, ParamUnit::Dbm},
    {"gain", &EdfaParams::gain, 16.0, Range::Positive, ParamUnit::FieldDecibels},
    {"Fn", &EdfaParams::Fn, 5.0, Range::NotNegative, ParamUnit::PowerDecibels},
    {"BW", &EdfaParams::BW, 40e-9},
    {"noiseResolution", &EdfaParams::noiseResolution, 0.1e-9},
    {"noiseCenter", &EdfaParams::noiseCenter, 1.55e-6, Range::Positive},
    {"noiseShape", StoreShape, "Flat", Words{"Flat Gaussian Custom"}},
    {"noiseFilename", &EdfaParams::noiseFilename, ""}};

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
                     const ModelReport& report) {
    const double unsaturated = params.gain * params.gain;
    gain.g = std::sqrt(unsaturated / (inputPower / params.Psat * unsaturated + 1.0));
    gain.nu = lightSpeed / params.noiseCenter;
    if (!std::isfinite(gain.g)) {
        return report.Refuse("the gain is out of range");
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
    return PowerRatio(SCurveValue(curves, lightSpeed / nu * nanometersPerMeter));
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

/// The gain at a channel's last bin; not finite if that of some bin is not.
struct LastGain {
    double g = 0.0, nu = 0.0;
};

/// \param factors  room for those of the channel's bins.
LastGain AmplifyChannel(const SCurvePair& curves, OpSig& channel, double* factors) {
    const SpectrumGrid grid(channel, channel.noPoints);
    LastGain last{0.0, grid.carrier};
    bool finite = true;
    for (std::int32_t k = 1; k <= channel.noPoints; ++k) {
        const double x = lightSpeed / grid.Frequency(k) * nanometersPerMeter;
        last.g = factors[k] = FieldRatio(SCurveValue(curves, x));
        finite = finite && std::isfinite(last.g);
    }
    if (!finite) return {std::numeric_limits<double>::infinity(), grid.carrier};
    MultiplySpectra(channel, factors);
    return last;
}

/// The channels that have samples, checked.
Status CollectChannels(OpSig* list, std::vector<OpSig*>& channels, std::int32_t& longest,
                       const ModelReport& report) {
    longest = 0;
    for (OpSig& channel : Items(list)) {
        if (CheckSpectrumGrid(channel, report) != Status::Success) return Status::Error;
        if (channel.noPoints < 1) continue;
        channels.push_back(&channel);
        longest = std::max(longest, channel.noPoints);
    }
    return Status::Success;
}

/// Shared out among threads. By design: the last bin of the last channel sets the gain and the
/// frequency that the emission follows, whatever the gain at other wavelengths is.
Status AmplifyChannels(OpSig* list, Gain& gain, const ModelReport& report) {
    std::vector<OpSig*> channels;
    std::int32_t longest = 0;
    if (CollectChannels(list, channels, longest, report) != Status::Success) return Status::Error;
    Workers workers(ThreadsFor(channels.size(), longest));
    std::vector<OwnedBlock<double>> factors(static_cast<std::size_t>(workers.Count()));
    for (OwnedBlock<double>& room : factors) {
        room.reset(NewUnclearedSamples<double>(longest));
        if (room) continue;
        ReportNoMemory(report.errorText, "EDFA - gainArray");
        return Status::Error;
    }
    std::vector<LastGain> gains(channels.size());
    workers.Share(static_cast<long>(channels.size()), [&](long task, int worker) {
        const auto at = static_cast<std::size_t>(task);
        gains[at] = AmplifyChannel(gain.curves, *channels[at],
                                   factors[static_cast<std::size_t>(worker)].get());
    });
    for (const LastGain& last : gains) {
        if (!std::isfinite(last.g)) return report.Refuse("the gain curves are out of range");
        gain.g = last.g;
        gain.nu = last.nu;
    }
    return Status::Success;
}

/// A gain for each bin of each channel.
Status AmplifyByCurves(const EdfaParams& params, double inputPower, OpSignal& signal, Gain& gain,
                       const ModelReport& report) {
    if (params.gainCurves.empty()) {
        return report.Refuse("there are no gain curves");
    }
    gain.curves = ChooseSCurves(params.gainCurves, inputPower);
    // Without a channel the center of the noise stands for the last one.
    gain.nu = lightSpeed / params.noiseCenter;
    gain.g = std::sqrt(PowerFactor(gain.curves, gain.nu));
    if (AmplifyChannels(signal.channels, gain, report) != Status::Success) return Status::Error;
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
                      const ModelReport& report);
};
constexpr AmplifierType types[] = {{"defined", AmplifyEvenly}, {"custom", AmplifyByCurves}};

// --- Noise ---

/// The spectrum joins the first record of the list, or becomes the list.
Status AddEmission(Owned<OpSigASE> emission, OpSignal& signal, const ModelReport& report) {
    if (!signal.noise) {
        signal.noise = emission.release();
        return Status::Success;
    }
    if (AddSpectrum(*signal.noise, *emission, report) == Status::Success) {
        return Status::Success;
    }
    return report.Fail("ERROR in EDFA combining noise spectra\n");
}

Status Amplify(const EdfaParams& params, const AmplifierType& type, OpSignal& signal,
               const ModelReport& report) {
    const double inputPower = NodelistPower(&signal);
    if (!std::isfinite(inputPower)) {
        return report.Refuse("the input power is not a finite number");
    }
    Gain gain;
    Status status = type.amplify(params, inputPower, signal, gain, report);
    if (status != Status::Success) return status;
    Owned<OpSigASE> emission;
    const double density = EmissionDensity(gain.g, params.Fn, gain.nu);
    status = MakeEmission(params, density, inputPower, emission, report);
    if (status != Status::Success) return status;
    return AddEmission(std::move(emission), signal, report);
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

Status LoadCurves(const std::string& fileName, const CurveFileTexts& texts, SCurves& curves,
                  const ModelReport& report) {
    std::string text, reason;
    if (fileName.empty() || !ReadWholeFile(fileName, text, reason, maxCurveFileBytes)) {
        const Status status = report.Fail(FillIn(texts.cannotOpen, {report.owner, fileName}));
        return fileName.empty() ? status : report.Refuse("file '", fileName, "': ", reason);
    }
    return ReadSCurves(text, fileName, texts.notStarted, curves, report);
}

}  // namespace

std::vector<ParamSpec> EdfaParamSpecs() {
    return SpecsOf(rows);
}

Status ReadEdfaParams(Parameter* parameters, EdfaParams& params, const ModelReport& report) {
    ReadParams(rows, parameters, params);
    if (params.noiseShape == NoiseShape::Custom) {
        const Status status =
            LoadCurves(params.noiseFilename, noiseTexts, params.noiseCurves, report);
        if (status != Status::Success) return status;
    }
    if (params.type != "custom") return Status::Success;
    return LoadCurves(params.spectraFilename, gainTexts, params.gainCurves, report);
}

Status EDFA(const Nodelist* input, const EdfaParams& params, Nodelist* output,
            const ModelReport& report) {
    if (!input || input->sigType != OpSigType) {
        return report.Fail(
            "Input signal type incorrect for the EDFA.\nInput signal type must be 'OPSIG'.\n");
    }
    if (!output) return report.Refuse("no output port");
    if (!input->sig) return Status::Success;
    const auto* type =
        std::find_if(std::begin(types), std::end(types),
                     [&](const AmplifierType& row) { return row.word == params.type; });
    if (type == std::end(types)) {
        return report.Fail(
            "Wrong EDFA type in EDFA().\nThe allowed types are 'defined' and 'custom'.\n");
    }
    Status status = CheckParams(rows, params, report);
    if (status != Status::Success) return status;
    Owned<OpSignal> signal;
    if (Make(signal, CopyOpSignal, static_cast<const OpSignal*>(input->sig))) {
        return report.Fail("Error in copying OpSig in EDFA().\n");
    }
    status = Amplify(params, *type, *signal, report);
    if (status != Status::Success) return status;
    output->sig = signal.release();
    output->sigType = OpSigType;
    return Status::Success;
}

Status RunOpticalAmplifier(const ModelCall& call) {
    EdfaParams params;
    const Status status = ReadEdfaParams(call.component.parameters, params, call);
    if (status != Status::Success) return status;
    return EDFA(call.inputs, params, call.outputs, call);
}

}  // namespace photrak

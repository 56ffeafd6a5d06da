// The modulator's stages in physical order: drive filter, transfer curve, chirp, matched ends,
// noise. The multiplier of each sample is computed once and serves all channels.
#include "models/sources/modulator.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>

#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "numeric/factor_cache.h"
#include "numeric/fft.h"
#include "numeric/messages.h"
#include "numeric/simd_array.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

constexpr double gigahertz = 1e9;

// --- Checks ---

void StoreLevelShift(ModulatorParams& params, std::string_view word) {
    params.levelShift = word != "No";
}
void StoreMatchEnds(ModulatorParams& params, std::string_view word) {
    params.matchEnds = word != "No";
}

constexpr ParamRow<ModulatorParams> rows[] = {
    {"modulationType", &ModulatorParams::modulationType, "MachZehnder",
     Words{"MachZehnder Ideal Amplitude Phase"}},
    {"fittingType", &ModulatorParams::fittingType, "fOffset",
     Words{"fOffset Coefficients Polynomial"}},
    {"fOffset", &ModulatorParams::fOffset, 16.655, Range::Any},
    {"power", &ModulatorParams::power, -0.10478, Range::Any},
    {"frequency", NoEffect{}, 1e9},
    {"coef1", &ModulatorParams::coef1, 1.0, Range::Any},
    {"coef2", &ModulatorParams::coef2, 0.011484, Range::Any},
    {"a0", &ModulatorParams::a0, 0.16567, Range::Any},
    {"a1", &ModulatorParams::a1, 0.073221, Range::Any},
    {"a2", &ModulatorParams::a2, -0.0079505, Range::Any},
    {"a3", &ModulatorParams::a3, 0.00020616, Range::Any},
    {"a4", &ModulatorParams::a4, -1.969e-06, Range::Any},
    {"vBias", &ModulatorParams::vBias, 1.0},
    {"vOffset", &ModulatorParams::vOffset, 0.0},
    {"vPi", &ModulatorParams::vPi, 2.0, Range::NotZero},
    {"onOffRatio", &ModulatorParams::onOffRatio, 30.0},
    {"insertionLoss", &ModulatorParams::insertionLoss, 5.0},
    {"ChirpFactor", &ModulatorParams::ChirpFactor, 0.5},
    {"LevelShift", StoreLevelShift, "Yes", Words{"Yes No"}},
    {"MatchEnds", StoreMatchEnds, "No", Words{"No Yes"}},
    {"phaseShift", &ModulatorParams::phaseShift, 180.0}};

Status CheckPorts(const Nodelist* inputs, const Nodelist* output, const ModelReport& report) {
    if (!inputs) return report.Fail("ERROR: Missing first input port\n");
    if (!inputs->next) return report.Fail("ERROR: Missing second input port\n");
    if (inputs->sigType != OpSigType) {
        return report.Fail("ERROR: Incorrect signal type on first input port\n");
    }
    if (inputs->next->sigType != ElecSigType) {
        return report.Fail("ERROR: Incorrect signal type on second input port\n");
    }
    return output ? Status::Success : report.Refuse("no output port");
}

/// A level in one sample, which takes the drive's time grid.
bool IsOneSampleLevel(const OpSig& channel) {
    return channel.noPoints == 1 && channel.tStep == 0.0;
}

Status CheckSizes(const OpSignal& light, const ElecSig& drive, const ModelReport& report) {
    for (const OpSig& channel : Items(light.channels)) {
        const bool equal = channel.noPoints == drive.noPoints && channel.tStep == drive.tStep;
        if (!equal && !IsOneSampleLevel(channel)) {
            return report.Fail(
                "ERROR: The number of points and time step must be the same for the optical and "
                "the electrical signal");
        }
    }
    if (drive.noPoints >= 1 && drive.elecSamples) return Status::Success;
    return report.Refuse("the electrical signal has no samples");
}

// --- Frequency response of the drive ---

double PowerLaw(const ModulatorParams& params, double g) {
    return std::pow(params.fOffset + g, params.power);
}

double FirstOrder(const ModulatorParams& params, double g) {
    return params.coef1 / std::sqrt(params.coef2 * params.coef2 * g * g + 1.0);
}

double Polynomial(const ModulatorParams& params, double g) {
    const ModulatorParams& p = params;
    return PowerRatio(p.a0 + g * (p.a1 + g * (p.a2 + g * (p.a3 + g * p.a4))));
}

/// Field transmission by frequency, g in GHz; real, even, not normalized at DC.
struct FrequencyResponse {
    std::string_view word;
    double (*value)(const ModulatorParams& params, double g);
};
constexpr FrequencyResponse responses[] = {
    {"fOffset", PowerLaw}, {"Coefficients", FirstOrder}, {"Polynomial", Polynomial}};

bool IsFlat(const ModulatorParams& params) {
    return params.fittingType == "Coefficients" && params.coef1 == 1.0 && params.coef2 == 0.0;
}

/// The response at frequencies 0 .. n/2 bins. The same for all modulators of one kind.
std::shared_ptr<const AlignedDoubles> ResponseOf(const ModulatorParams& params, double binWidth,
                                                 long n) {
    const auto* response =
        std::find_if(std::begin(responses), std::end(responses),
                     [&](const FrequencyResponse& row) { return row.word == params.fittingType; });
    const bool known = response != std::end(responses);
    const ModulatorParams& p = params;
    FactorKey key("modulator");
    key.AddAll(p.fittingType, p.fOffset, p.power, p.coef1, p.coef2, p.a0, p.a1, p.a2, p.a3, p.a4);
    key.AddAll(std::int64_t{n}, binWidth);
    const auto count = static_cast<std::size_t>(n / 2 + 1);
    return FactorsFor<AlignedDoubles>(key, count * sizeof(double), [&] {
        auto H = std::make_shared<AlignedDoubles>(count);
        for (std::size_t k = 0; k < count; ++k) {
            LookForStop(static_cast<std::int64_t>(k) + 1);
            const double g = static_cast<double>(k) * binWidth / gigahertz;
            (*H)[k] = known ? response->value(params, g) : 0.0;
        }
        return H;
    });
}

/// Multiplies the spectrum by the response; elements k and n + 2 - k hold the same frequency with
/// either sign. A fitting type of no known name passes nothing.
void MultiplySpectrum(const ModulatorParams& params, double binWidth, Complex* spectrum, long n) {
    const auto H = ResponseOf(params, binWidth, n);
    for (long k = 1; k <= n / 2 + 1; ++k) {
        const double factor = (*H)[static_cast<std::size_t>(k - 1)];
        spectrum[k] = factor * spectrum[k];
        const long mirrored = n + 2 - k;
        if (mirrored > k && mirrored <= n) spectrum[mirrored] = factor * spectrum[mirrored];
    }
}

Status FilterDrive(const ModulatorParams& params, const ElecSig& drive, Complex* samples,
                   const ModelReport& report) {
    if (IsFlat(params)) return Status::Success;
    const std::int32_t n = drive.noPoints;
    if (!IsPowerOfTwo(n)) {
        return report.Refuse("the electrical signal has ", n,
                             " samples; the frequency response needs a power of two");
    }
    const double binWidth = n == 1 ? 0.0 : 1.0 / (n * drive.tStep);
    if (!(binWidth >= 0.0) || std::isinf(binWidth)) {
        return report.Refuse("the electrical signal has the time step ", drive.tStep,
                             " s; the frequency response needs one above 0");
    }
    DoFFTFlagged(samples, n, -1, 0);
    MultiplySpectrum(params, binWidth, samples, n);
    DoFFTFlagged(samples, n, 1, fftDivideByN);
    return Status::Success;
}

// --- Transfer curve ---

double MachZehnder(double v) {
    return std::fabs(std::sin(v * pi / 2.0));
}

struct TransferCurve {
    std::string_view word;
    double (*field)(double v);  // of the normalized drive voltage; null for a pure phase
};
constexpr TransferCurve curves[] = {
    {"MachZehnder", MachZehnder},
    {"Ideal", [](double v) { return std::fabs(v); }},
    {"Amplitude", [](double v) { return v < 0.0 ? 0.0 : std::sqrt(v); }},
    {"Phase", nullptr},
};

/// The known curve of the parameters, or null.
const TransferCurve* FindCurve(const ModulatorParams& params) {
    const auto* curve =
        std::find_if(std::begin(curves), std::end(curves),
                     [&](const TransferCurve& row) { return row.word == params.modulationType; });
    return curve == std::end(curves) ? nullptr : curve;
}

/// Smallest and largest value of the drive; false if one of its values is not finite.
bool FindRange(const Complex* drive, std::int32_t n, double& least, double& greatest) {
    least = std::numeric_limits<double>::infinity();
    greatest = -least;
    for (std::int32_t i = 1; i <= n; ++i) {
        if (!std::isfinite(drive[i].re)) return false;
        least = std::min(least, drive[i].re);
        greatest = std::max(greatest, drive[i].re);
    }
    return true;
}

/// Turns each drive sample into the factor that its field sample is multiplied by.
Status DriveToFactors(const ModulatorParams& params, const TransferCurve& curve, Complex* drive,
                      std::int32_t n, const ModelReport& report) {
    double least = 0.0, greatest = 0.0;
    if (!FindRange(drive, n, least, greatest)) {
        return report.Refuse("the drive behind the frequency response is not a finite number");
    }
    const double level = params.levelShift ? (greatest + least) / 2.0 : 0.0;
    for (std::int32_t i = 1; i <= n; ++i) {
        LookForStop(i);
        const double v = (drive[i].re - params.vOffset - level + params.vBias) / params.vPi;
        if (curve.field) {
            double T = curve.field(v);
            if (params.extinction < 1.0 && T < params.extinction) T = params.extinction;
            drive[i] = {params.transmission * T, 0.0};
        } else {
            const double angle = v * params.phaseShift * radiansPerDegree;
            drive[i] = {params.transmission * std::cos(angle),
                        params.transmission * std::sin(angle)};
        }
    }
    return Status::Success;
}

/// The factor of each sample, from a filtered copy of the drive.
Status MakeFactors(const ModulatorParams& params, const TransferCurve& curve, const ElecSig& drive,
                   OwnedBlock<Complex>& factors, const ModelReport& report) {
    Complex* copied = nullptr;
    if (!CopySamples(copied, drive.elecSamples, drive.noPoints)) {
        ReportNoMemory(report.errorText, "the drive in Modulator()");
        return Status::Error;
    }
    factors.reset(copied);
    const Status filtered = FilterDrive(params, drive, copied, report);
    if (filtered != Status::Success) return filtered;
    return DriveToFactors(params, curve, copied, drive.noPoints, report);
}

void Multiply(const TransferCurve& curve, const Complex* factors, Complex* field, std::int32_t n) {
    StopPoint();
    if (curve.field) {
        for (std::int32_t i = 1; i <= n; ++i) field[i] = factors[i].re * field[i];
    } else {
        for (std::int32_t i = 1; i <= n; ++i) field[i] = factors[i] * field[i];
    }
}

// --- Chirp and ends ---

/// Phase that follows the power, phi = C/2 ln(P / P0), with P0 that of the first lit sample.
void Chirp(double chirpFactor, Complex* field, std::int32_t n) {
    if (chirpFactor == 0.0) return;
    std::int32_t first = 1;
    while (first <= n && SquaredMagnitude(field[first]) == 0.0) ++first;
    if (first > n) return;
    const double P0 = SquaredMagnitude(field[first]);
    // By design: the phase that a sample had is replaced, and the last sample keeps its
    // own.
    for (std::int32_t i = first; i < n; ++i) {
        const double P = SquaredMagnitude(field[i]);
        if (!(P > 0.0)) continue;
        const double phi = 0.5 * chirpFactor * std::log(P / P0), amplitude = std::sqrt(P);
        field[i] = {amplitude * std::cos(phi), amplitude * std::sin(phi)};
    }
}

/// Draws amplitude and phase of the last two bits toward those of sample 1, so that the period
/// closes on itself. Phases are not unwrapped.
void MatchEnds(Complex* field, std::int32_t n, std::int32_t patternLength) {
    const double firstAmplitude = Magnitude(field[1]);
    const double firstPhase = std::atan2(field[1].im, field[1].re);
    const std::int32_t width = 2 * (n / patternLength);
    for (std::int32_t i = 1; i <= width; ++i) {
        Complex& sample = field[n - width + i];
        const double x = static_cast<double>(width + i) / width;
        const double g = 1.0 - std::exp(-0.5 * std::pow(x, 8));
        const double amplitude = Magnitude(sample);
        const double phase = std::atan2(sample.im, sample.re);
        const double blended = amplitude - (amplitude - firstAmplitude) * g;
        const double angle = phase - (phase - firstPhase) * g;
        sample = {blended * std::cos(angle), blended * std::sin(angle)};
    }
}

constexpr std::int32_t longestUnmatchedPattern = 7;  // bits

/// What the drive does to one polarization; `curve` is null where no multiplication happens.
void Modulate(const ModulatorParams& params, const TransferCurve* curve, const Complex* factors,
              Complex* field, const OpSig& channel) {
    if (!field) return;
    if (curve) Multiply(*curve, factors, field, channel.noPoints);
    Chirp(params.ChirpFactor, field, channel.noPoints);
    if (params.matchEnds && channel.patternLength > longestUnmatchedPattern) {
        MatchEnds(field, channel.noPoints, channel.patternLength);
    }
}

// --- Outputs ---

/// A channel on the drive's time grid that holds the level throughout. What the drive does not set
/// travels on.
bool ExpandLevel(Owned<OpSig>& channel, const OpSig& level, const ElecSig& drive) {
    if (Make(channel, CreateOpSigFromElec, &drive)) return false;
    if (level.Ey_samples && AddEySamples(channel.get())) return false;
    channel->wavelength = level.wavelength;
    channel->RIN = level.RIN;
    channel->spareCount = level.spareCount;
    std::fill_n(channel->Ex_samples + 1, channel->noPoints, level.Ex_samples[1]);
    if (level.Ey_samples) {
        std::fill_n(channel->Ey_samples + 1, channel->noPoints, level.Ey_samples[1]);
    }
    return true;
}

Status CopyChannels(Owned<OpSig>& head, const OpSig* channels, const ElecSig& drive,
                    const ModelReport& report) {
    OpSig* tail = nullptr;
    for (const OpSig& source : Items(channels)) {
        Owned<OpSig> channel;
        if (IsOneSampleLevel(source)) {
            if (!ExpandLevel(channel, source, drive)) {
                return report.Fail("ERROR creating optical signal\n");
            }
        } else {
            if (Make(channel, CopyOpSig, &source)) {
                return report.Fail("ERROR copying optical signal\n");
            }
            CopyBitInfoElecToOp(&drive, channel.get());
        }
        OpSig* added = channel.release();
        added->prev = tail;
        if (tail) {
            tail->next = added;
        } else {
            head.reset(added);
        }
        tail = added;
    }
    return Status::Success;
}

/// Noise does not follow the drive: it passes with the static transmission at the bias point.
void ScaleNoise(const ModulatorParams& params, OpSigASE* noise) {
    double t = params.transmission;
    if (params.modulationType == "MachZehnder") {
        t *= MachZehnder((params.vBias - params.vOffset) / params.vPi);
    }
    for (OpSigASE& spectrum : Items(noise)) {
        for (std::int32_t i = 1; i <= spectrum.noPoints; ++i) spectrum.powerSamples[i] *= t * t;
    }
}

/// Decibels to the factor of a field that they take away, whatever their sign.
double FieldLoss(double decibels) {
    return std::pow(10.0, -std::fabs(decibels) / 20.0);
}

}  // namespace

std::vector<ParamSpec> ModulatorParamSpecs() {
    return SpecsOf(rows);
}

ModulatorParams ReadModulatorParams(Parameter* parameters) {
    ModulatorParams params;
    ReadParams(rows, parameters, params);
    params.extinction = FieldLoss(params.onOffRatio);
    params.transmission = FieldLoss(params.insertionLoss);
    return params;
}

Status Modulator(const ModulatorParams& params, const Nodelist* inputs, Nodelist* output,
                 const ModelReport& report) {
    Status status = CheckPorts(inputs, output, report);
    if (status != Status::Success) return status;
    const auto* light = static_cast<const OpSignal*>(inputs->sig);
    const auto* drive = static_cast<const ElecSig*>(inputs->next->sig);
    if (!light || !drive) return Status::Success;
    if (CheckSizes(*light, *drive, report) != Status::Success ||
        CheckParams(rows, params, report) != Status::Success) {
        return Status::Error;
    }
    Owned<OpSig> channels;
    Owned<OpSigASE> noise;
    Owned<OpSignal> signal;
    if (CopyChannels(channels, light->channels, *drive, report) != Status::Success ||
        Make(noise, CopyOpSigASEList, light->noise) || Make(signal, CreateOpSignal)) {
        return Status::Error;
    }
    const TransferCurve* curve = FindCurve(params);
    OwnedBlock<Complex> factors;
    if (curve) status = MakeFactors(params, *curve, *drive, factors, report);
    if (status != Status::Success) return status;
    for (OpSig& channel : Items(channels.get())) {
        Modulate(params, curve, factors.get(), channel.Ex_samples, channel);
        Modulate(params, curve, factors.get(), channel.Ey_samples, channel);
    }
    ScaleNoise(params, noise.get());
    signal->channels = channels.release();
    signal->noise = noise.release();
    output->sig = signal.release();
    output->sigType = OpSigType;
    return Status::Success;
}

Status RunModulator(const ModelCall& call) {
    return Modulator(ReadModulatorParams(call.component.parameters), call.inputs, call.outputs,
                     call);
}

}  // namespace photrak

// The chain in physical order. The strongest channel sets time grid, carrier and intensity noise;
// the others join it as powers, so that beats between channels do not exist here.
#include "models/detection/receiver.h"

#include <cmath>
#include <cstring>
#include <memory>

#include "base/arrays.h"
#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "models/common/electrical_spectrum.h"
#include "models/common/sampling.h"
#include "numeric/factor_cache.h"
#include "numeric/messages.h"
#include "numeric/samples.h"
#include "numeric/simd_array.h"
#include "platform/file_system.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

constexpr std::int32_t fewestSamples = 8;  // fewer have next to no spectrum to integrate over
constexpr std::size_t maxTableFileBytes = std::size_t{1} << 28;

constexpr ParamRow<NoisePolynomial> noiseRows[] = {{"n_a0", &NoisePolynomial::a0, 1e-22},
                                                   {"n_a2", &NoisePolynomial::a2, 0.0},
                                                   {"n_a4", &NoisePolynomial::a4, 0.0},
                                                   {"n_a6", &NoisePolynomial::a6, 0.0}};

const OpSig& StrongestChannel(const OpSig* channels) {
    const OpSig* strongest = nullptr;
    double most = 0.0;
    TakeAveragePowers(channels, [&](const OpSig& channel, double power) {
        if (strongest && !(power > most)) return;
        most = power;
        strongest = &channel;
    });
    return *strongest;
}

/// Finds samples of another channel on the time grid of this one: nearest sample, round the period.
struct NearestSample {
    double tStep, startTime, otherStep, otherStart;  // s
    std::int32_t count;

    double Position(std::int32_t i) const {
        return ((i - 1) * tStep + startTime - otherStart) / otherStep + 0.5;
    }
    /// Positions that a 64-bit integer can hold for all of 1..n. One sample needs no position.
    bool Works(std::int32_t n) const {
        constexpr double farthest = 4e18;
        return count == 1 ||
               (std::fabs(Position(1)) < farthest && std::fabs(Position(n)) < farthest);
    }
    std::int32_t operator()(std::int32_t i) const {
        if (count == 1) return 1;
        const auto whole = static_cast<std::int64_t>(Position(i));
        const bool within = whole >= 0 && whole < count;  // as a rule: no division needed
        const std::int64_t j = within ? whole : whole % count;
        return static_cast<std::int32_t>(j < 0 ? j + count : j) + 1;
    }
};

NearestSample Lookup(const OpSig& other, const OpSig& reference) {
    return {reference.tStep, reference.startTime, other.tStep, other.startTime, other.noPoints};
}

using Polarization = Complex* OpSig::*;

/// Replaces one polarization of `sum` by the amplitude of the summed powers of all channels.
void SumPowers(const OpSig* channels, const OpSig& strongest, Polarization which, OpSig& sum,
               double* Is) {
    Complex* target = sum.*which;
    const std::int32_t n = sum.noPoints;
    StopPoint();
    for (std::int32_t i = 1; i <= n; ++i) Is[i] = SquaredMagnitude(target[i]);
    for (const OpSig& other : Items(channels)) {
        // By design: a second polarization that the strongest channel lacks is not seen.
        const Complex* samples = other.*which;
        if (&other == &strongest || !samples || other.noPoints < 1) continue;
        const NearestSample nearest = Lookup(other, sum);
        for (std::int32_t i = 1; i <= n; ++i) Is[i] += SquaredMagnitude(samples[nearest(i)]);
    }
    StopPoint();
    for (std::int32_t i = 1; i <= n; ++i) target[i] = MakeComplex(std::sqrt(Is[i]));
}

/// Everything that a stage could stumble over, before any stage runs.
Status CheckInput(const OpSig* channels, const OpSig& strongest, const ReceiverParams& params,
                  const ModelReport& report) {
    const Status sampling =
        CheckSampling(strongest.noPoints, strongest.tStep, fewestSamples, report);
    if (sampling != Status::Success) return sampling;
    for (const OpSig& other : Items(channels)) {
        if (other.noPoints < 1 || Lookup(other, strongest).Works(strongest.noPoints)) continue;
        return report.Refuse("a channel with the time step ", other.tStep, " s and the start time ",
                             other.startTime, " s");
    }
    if (params.frontEnd.modelType == "custom" && params.frontEnd.count < 1) {
        report.errorText += BadTableText(params.frontEnd);
        return report.Refuse("a custom front end without a table");
    }
    return Status::Success;
}

/// Multiplies the photocurrent's spectrum by H and returns to time.
void ToVoltage(ElecSig& esOut, const Complex* H) {
    const long n = esOut.noPoints;
    MultiplyElement(esOut.fftView, 1, H[1]);
    for (long i = 2; i <= n / 2 + 1; ++i) {
        // By design: element N/2 + 1 is both ends of the walk and is multiplied twice.
        MultiplyElement(esOut.fftView, i, H[i]);
        MultiplyElement(esOut.fftView, n + 2 - i, H[n + 2 - i]);
    }
    ReturnToTime(esOut.fftView, n);
    esOut.UnitType = VoltageUnit;
    esOut.domain = TimeDomain;
}

/// The optical signal's properties that the noise depends on.
struct OpticalNoise {
    const OpSigASE* ase;  // only the first spectrum counts
    double wavelength;    // m
    double RIN;           // 1/Hz
};

NoiseTerms Terms(const ReceiverTransfer& transfer, double peak, const OpticalNoise& light,
                 const PhotoDetectorParams& detector, const NoisePolynomial& density) {
    const double excess = ExcessNoise(detector.APD_Multiplier, detector.ionizationCoef);
    NoiseTerms terms;
    terms.bandwidth = NoiseBandwidth(transfer);
    terms.receiverNoise = ReceiverNoise(transfer, density);
    const double aseDensity =
        light.ase
            ? NoiseDensityAt(transfer, *light.ase, lightSpeed / light.wavelength, terms.bandwidth)
            : 0.0;
    terms.signalDensity = 4.0 * excess * detector.responsivity * aseDensity + twiceElementaryCharge;
    terms.darkDensity = detector.darkShotDensity * excess;
    terms.currentPerVolt = excess / detector.APD_Multiplier / peak;
    terms.RIN = light.RIN;
    return terms;
}

/// H of front end and filter, without a look at what other receivers have made.
Status ComputeTransfer(const ElecSig& esOut, const ReceiverParams& params, Complex* H,
                       const ModelReport& report) {
    if (FrontEnd(&esOut, params.frontEnd, H, report) != Status::Success) {
        return report.Fail("Error in FrontEndAmp() in Receiver().\n");
    }
    if (DoEleFilter(&esOut, DoubleView(H), params.filter, report) != Status::Success) {
        return report.Fail("Error in DoEleFilter() in Receiver().\n");
    }
    return Status::Success;
}

FactorKey TransferKey(const ElecSig& esOut, const ReceiverParams& params) {
    const FrontEndParams& amplifier = params.frontEnd;
    const ElectricalFilterParams& filter = params.filter;
    FactorKey key("receiver");
    key.AddAll(amplifier.modelType, amplifier.tZ, amplifier.zero, amplifier.pole);
    key.AddAll(filter.type, filter.bandwidth, filter.center, std::int64_t{filter.order},
               filter.gain, filter.ripple);
    return key.AddAll(std::int64_t{esOut.noPoints}, esOut.tStep);
}

/// Fills H[1..noPoints]. Receivers of one kind have it in common; a table of a front end is too
/// much to be compared.
Status MakeTransfer(const ElecSig& esOut, const ReceiverParams& params, Complex* H,
                    const ModelReport& report) {
    if (params.frontEnd.modelType == "custom") return ComputeTransfer(esOut, params, H, report);
    const FactorKey key = TransferKey(esOut, params);
    const auto n = static_cast<std::size_t>(esOut.noPoints);
    if (const auto kept = std::static_pointer_cast<const AlignedDoubles>(FindFactors(key))) {
        std::memcpy(static_cast<void*>(H + 1), kept->Data(), n * sizeof(Complex));
        return Status::Success;
    }
    const Status status = ComputeTransfer(esOut, params, H, report);
    if (status != Status::Success) return status;
    auto made = std::make_shared<AlignedDoubles>(2 * n);
    std::memcpy(made->Data(), H + 1, n * sizeof(Complex));
    KeepFactors(key, std::move(made), n * sizeof(Complex));
    return status;
}

/// The stages after the optical sum: spectrum of the current, transfer array, voltage, noise.
Status RunChain(const OpSig& light, const OpSigASE* ase, const ReceiverParams& params, Complex* H,
                ElecSig& esOut, const ModelReport& report) {
    PhotoDetectorParams detector = params.detector;
    if (DetectPulse(&light, &esOut, detector, report) != Status::Success) {
        return report.Fail("Error in detecting signal in Receiver().\n");
    }
    if (MakeTransfer(esOut, params, H, report) != Status::Success) return Status::Error;
    const long n = esOut.noPoints;
    const double peak = std::sqrt(PeakMagnitudeSquared(DoubleView(H), 2 * n));
    if (!(peak > 0.0)) {
        return report.Refuse("front end and filter pass nothing");
    }
    ToVoltage(esOut, H);
    const ReceiverTransfer transfer{H, n, 1.0 / (static_cast<double>(n) * esOut.tStep)};
    const OpticalNoise noise{ase, light.wavelength, light.RIN};
    if (!FillSigma(esOut, Terms(transfer, peak, noise, detector, params.noise))) {
        return report.Refuse("a voltage or its noise is not a finite number");
    }
    return Status::Success;
}

Status CheckCells(const Nodelist* input, const Nodelist* output, const ModelReport& report) {
    if (!input || input->sigType != OpSigType) {
        return report.Fail(
            "Input signal type incorrect for the receiver.\n"
            "Input signal type must be OPSIG.\n");
    }
    const auto* signal = static_cast<const OpSignal*>(input->sig);
    if (!signal || !signal->channels) {
        return report.Warn("Receiver has no input signal.\n");
    }
    if (!output || output->sigType != ElecSigType) {
        return report.Fail(
            "Output signal type incorrect for the receiver.\n"
            "Output signal type must be ELECSIG.\n");
    }
    return Status::Success;
}

Status ReadParameters(const ModelCall& call, ReceiverParams& params) {
    Parameter* list = call.component.parameters;
    ReadParams(photoDetectorRows, list, params.detector);
    ReadParams(frontEndRows, list, params.frontEnd);
    ReadParams(receiverFilterRows, list, params.filter);
    ReadParams(noiseRows, list, params.noise);
    Status status = CheckParams(photoDetectorRows, params.detector, call);
    if (status == Status::Success) status = CheckParams(frontEndRows, params.frontEnd, call);
    if (status == Status::Success) status = CheckParams(noiseRows, params.noise, call);
    return status;
}

/// An unreadable file leaves the table empty, which Receiver reports.
Status LoadTable(FrontEndParams& frontEnd, const ModelReport& report) {
    std::string text, reason;
    if (frontEnd.modelType != "custom" || frontEnd.filename.empty() ||
        !ReadWholeFile(frontEnd.filename, text, reason, maxTableFileBytes) ||
        ReadFrontEndTable(text, frontEnd, reason) == Status::Success) {
        return Status::Success;
    }
    report.errorText += BadTableText(frontEnd);
    return report.Refuse("front end table: ", reason);
}

}  // namespace

std::vector<ParamSpec> ReceiverParamSpecs() {
    return SpecsOf(photoDetectorRows, frontEndRows, receiverFilterRows, noiseRows);
}

Status Receiver(const Nodelist* input, const ReceiverParams& params, Nodelist* output,
                const ModelReport& report) {
    const Status cells = CheckCells(input, output, report);
    if (cells != Status::Success) return cells;
    const auto& signal = *static_cast<const OpSignal*>(input->sig);
    const OpSig& strongest = StrongestChannel(signal.channels);
    if (CheckInput(signal.channels, strongest, params, report) != Status::Success) {
        return Status::Error;
    }
    const std::int32_t n = strongest.noPoints;
    Owned<ElecSig> esOut;
    if (Make(esOut, CreateElecSig, n))
        return report.Fail("Error in creating esout in Receiver().\n");
    const OwnedBlock<Complex> H(NewSamples<Complex>(n));
    if (!H) {
        ReportNoMemory(report.errorText, "Receiver()-- receiver");
        return Status::Error;
    }
    const OwnedBlock<double> Is(NewSamples<double>(n));
    if (!Is) {
        ReportNoMemory(report.errorText, "Receiver() -- Is");
        return Status::Error;
    }
    Owned<OpSig> light;
    if (Make(light, CopyOpSig, &strongest)) {
        return report.Fail("Error in copying optical signal - receiver().\n");
    }
    for (const Polarization which : {&OpSig::Ex_samples, &OpSig::Ey_samples}) {
        if ((*light).*which) SumPowers(signal.channels, strongest, which, *light, Is.get());
    }
    const Status status = RunChain(*light, signal.noise, params, H.get(), *esOut, report);
    if (status != Status::Success) return status;
    OpSig* finished = light.release();
    if (FreeOpSig(&finished) != 0) {
        return report.Fail("Error in destroying optical signal - receiver().\n");
    }
    output->sig = esOut.release();
    output->sigType = ElecSigType;
    return Status::Success;
}

Status ReceiverModel(const ModelCall& call) {
    ReceiverParams params;
    if (ReadParameters(call, params) != Status::Success) return Status::Error;
    if (LoadTable(params.frontEnd, call) != Status::Success) return Status::Error;
    const Status status = Receiver(call.inputs, params, call.outputs, call);
    if (status != Status::Success) call.errorText += "\n";
    return status;
}

}  // namespace photrak

// The stages of the electrical signal generator in their order: pattern, pulses, filter, levels.
#include "models/sources/signal_generator.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "kernel/sample_arrays.h"
#include "models/sources/drive_filters.h"
#include "models/sources/drive_pulses.h"
#include "models/sources/drive_signal.h"

namespace photrak {
namespace {

// Limits that keep positions within what a double counts exactly. An edge that jitters over more
// than some bits has no place in its pattern.
constexpr double maxEdgeBits = 1e6, maxJitterBits = 10.0;

constexpr ParamRow<SignalGeneratorParams> rows[] = {
    {"driveType", &SignalGeneratorParams::driveType, "on_off_ramp",
     Words{"on_off_ramp on_off_exp raisedCosine"}},
    {"pointsPerBit", &SignalGeneratorParams::pointsPerBit, 5},
    {"Vmax", &SignalGeneratorParams::Vmax, 2.0},
    {"Vmin", &SignalGeneratorParams::Vmin, 0.0},
    {"tr", &SignalGeneratorParams::tr, 30e-12, Range::NotNegative},
    {"tf", &SignalGeneratorParams::tf, 30e-12, Range::NotNegative},
    {"timeJitter", &SignalGeneratorParams::timeJitter, 0.0, Range::NotNegative},
    {"filterType", &SignalGeneratorParams::filterType, "None",
     Words{"None none RCFilter RingFilter"}},
    {"modulationType", &SignalGeneratorParams::modulationType, "NRZ", Words{"NRZ RZ"}},
    {"f0", &SignalGeneratorParams::f0, 15e9, Range::Any},
    {"gamma", &SignalGeneratorParams::gamma, 15e9, Range::Any}};

const DriveType* CheckDriveType(const SignalGeneratorParams& params, const ModelReport& report) {
    const DriveType* type = FindDriveType(params.driveType);
    if (type) return type;
    static_cast<void>(report.Fail(
        FillIn("Error drive pattern type for the signal generator: %s\n", {params.driveType}),
        "Allowed types are on_off_exp, on_off_ramp and raisedCosine.\n"));
    return nullptr;
}

Status CheckInput(const Nodelist* input, const ModelReport& report) {
    if (!input || input->sigType != BinSigType) {
        return report.Fail(
            "Input signal type incorrect for the signal generator.\n"
            "Input signal type must be 'BinSigType'.\n");
    }
    const auto* bits = static_cast<const BinSig*>(input->sig);
    if (!bits) return Status::Success;  // the copy of the pattern fails, with its own text
    if (bits->noPoints < 1) return report.Refuse("the bit pattern is empty");
    if (bits->bitRate > 0.0 && std::isfinite(bits->bitRate) && std::isfinite(1.0 / bits->bitRate)) {
        return Status::Success;
    }
    return report.Refuse("the bit rate of the pattern is ", bits->bitRate,
                         " bit/s; it must be finite and above 0");
}

/// Every bit followed by a 0, at twice the rate.
Status ExpandPattern(const BinSig& source, Owned<BinSig>& pattern, const ModelReport& report) {
    std::int32_t count = 0;
    if (!SampleCount(source.noPoints, 2, count) || Make(pattern, CreateBinSig, count)) {
        // By design: the custom generator's name stands in this text.
        return report.Fail("Error in creating Binary Signal in Signal_Gen_Custom().\n");
    }
    pattern->bitRate = 2.0 * source.bitRate;
    pattern->startTime = source.startTime;
    pattern->bitSequence[0] = 0;
    for (std::int32_t k = 1; k <= source.noPoints; ++k) {
        pattern->bitSequence[2 * k - 1] = source.bitSequence[k];
        pattern->bitSequence[2 * k] = 0;
    }
    return Status::Success;
}

/// The pattern as it is painted, with the time and the samples of each of its bits.
struct PaintedPattern {
    Owned<BinSig> bits;
    std::int32_t samplesPerBit = 0;
    double bitWidth = 0.0;  // s
};

Status MakePattern(const SignalGeneratorParams& params, const BinSig* source,
                   PaintedPattern& pattern, const ModelReport& report) {
    if (params.pointsPerBit < 0 || params.pointsPerBit > maxDriveExponent) {
        return report.RefuseValue("pointsPerBit", params.pointsPerBit,
                                  Concat("an exponent of 2 from 0 to ", maxDriveExponent));
    }
    pattern.samplesPerBit = std::int32_t{1} << params.pointsPerBit;
    pattern.bitWidth = params.bitWidth;
    if (params.modulationType != "RZ" || !source) {
        if (Make(pattern.bits, CopyBinSig, source) == 0) return Status::Success;
        return report.Fail("Error in copying binary signal in Signal_Generator().\n");
    }
    if (pattern.samplesPerBit < 2) {
        return report.RefuseValue("pointsPerBit", params.pointsPerBit,
                                  "at least 1 with return to zero: two samples for each bit");
    }
    pattern.samplesPerBit /= 2;
    pattern.bitWidth /= 2.0;
    return ExpandPattern(*source, pattern.bits, report);
}

/// A waveform of zeros on the pattern's time axis.
Status MakeWave(const PaintedPattern& pattern, Owned<ElecSig>& wave, const ModelReport& report) {
    const BinSig& bits = *pattern.bits;
    std::int32_t noPoints = 0;
    if (!SampleCount(bits.noPoints, pattern.samplesPerBit, noPoints) ||
        noPoints > maxDriveSamples) {
        return report.Refuse(bits.noPoints, " bits of ", pattern.samplesPerBit,
                             " samples make more than ", maxDriveSamples, " samples");
    }
    if (Make(wave, CreateElecSig, noPoints)) {
        return report.Fail("Error in creating elec signal in Signal_Generator().\n");
    }
    wave->bitRate = bits.bitRate;
    wave->patternLength = bits.noPoints;
    // Lasers compute their step by the same expression: a modulator wants both equal to the bit.
    wave->tStep = 1.0 / (wave->bitRate / wave->patternLength * wave->noPoints);
    wave->startTime = bits.startTime;
    return Status::Success;
}

Status CheckEdges(const SignalGeneratorParams& params, double bitTime, const ModelReport& report) {
    const struct {
        std::string_view name;
        double value, maxBits;
    } times[] = {{"tr", params.tr, maxEdgeBits},
                 {"tf", params.tf, maxEdgeBits},
                 {"timeJitter", params.timeJitter, maxJitterBits}};
    for (const auto& [name, value, maxBits] : times) {
        if (value <= maxBits * bitTime) continue;
        return report.RefuseValue(name, value,
                                  Concat("at most ", maxBits, " bits of ", bitTime, " s"));
    }
    return Status::Success;
}

Status PaintWave(const SignalGeneratorParams& params, const DriveType& type,
                 const PaintedPattern& pattern, double amplitude, ElecSig& wave,
                 const ModelReport& report) {
    DrivePulses drive;
    drive.type = &type;
    drive.samplesPerBit = pattern.samplesPerBit;
    drive.amplitude = amplitude;
    drive.bitTime = 1.0 / wave.bitRate;
    drive.bitWidth = pattern.bitWidth;
    drive.riseTime = params.tr;
    drive.fallTime = params.tf;
    drive.timeJitter = params.timeJitter;
    const Status status = CheckEdges(params, drive.bitTime, report);
    if (status == Status::Success) PaintPulses(drive, *pattern.bits, wave.elecSamples);
    return status;
}

Status FilterWave(const SignalGeneratorParams& params, ElecSig& wave, const ModelReport& report) {
    // A raised cosine has its shape by itself; its filter type is not even looked at.
    if (params.driveType.find("on_off") == std::string::npos) return Status::Success;
    return FilterDrive({params.filterType, params.tr, params.f0, params.gamma}, wave, report);
}

}  // namespace

std::vector<ParamSpec> SignalGeneratorParamSpecs() {
    return SpecsOf(rows);
}

SignalGeneratorParams ReadSignalGeneratorParams(Parameter* parameters, const Nodelist* input) {
    SignalGeneratorParams params;
    ReadParams(rows, parameters, params);
    if (input && input->sigType == BinSigType && input->sig) {
        params.bitWidth = 1.0 / static_cast<const BinSig*>(input->sig)->bitRate;
    }
    return params;
}

Status Signal_Generator(const SignalGeneratorParams& params, const Nodelist* input,
                        Nodelist* output, const ModelReport& report) {
    const DriveType* type = CheckDriveType(params, report);
    if (!type) return Status::Error;
    if (!output) return report.Refuse("no output port");
    Status status = CheckInput(input, report);
    if (status == Status::Success) {
        status = CheckParams(rows, params, report);
    }
    if (status != Status::Success) return status;

    PaintedPattern pattern;
    status = MakePattern(params, static_cast<const BinSig*>(input->sig), pattern, report);
    if (status != Status::Success) return status;
    if (params.Vmax < params.Vmin) {
        for (std::int32_t k = 1; k <= pattern.bits->noPoints; ++k) {
            pattern.bits->bitSequence[k] = pattern.bits->bitSequence[k] == 1 ? 0 : 1;
        }
    }
    const auto [low, high] = std::minmax(params.Vmin, params.Vmax);
    Owned<ElecSig> wave;
    status = MakeWave(pattern, wave, report);
    if (status == Status::Success) {
        status = PaintWave(params, *type, pattern, high - low, *wave, report);
    }
    if (status == Status::Success) status = FilterWave(params, *wave, report);
    if (status != Status::Success) return status;
    for (std::int32_t i = 1; i <= wave->noPoints; ++i) wave->elecSamples[i].re += low;
    if (params.modulationType == "RZ") {
        wave->bitRate /= 2.0;
        wave->patternLength /= 2;
    }
    output->sig = wave.release();
    output->sigType = ElecSigType;
    return Status::Success;
}

Status RunSignalGenerator(const ModelCall& call) {
    return Signal_Generator(ReadSignalGeneratorParams(call.component.parameters, call.inputs),
                            call.inputs, call.outputs, call);
}

}  // namespace photrak

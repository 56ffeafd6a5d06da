// The stages of the electrical signal generator in their order: pattern, pulses, filter, levels.
#include "models/sources/signal_generator.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "kernel/parameters.h"
#include "kernel/sample_arrays.h"
#include "models/common/parameter_limits.h"
#include "models/common/refusals.h"
#include "models/sources/drive_filters.h"
#include "models/sources/drive_pulses.h"
#include "models/sources/drive_signal.h"

namespace photrak {
namespace {

// Limits that keep positions within what a double counts exactly. An edge that jitters over more
// than some bits has no place in its pattern.
constexpr double maxEdgeBits = 1e6, maxJitterBits = 10.0;

Status Fail(std::string_view text, std::string& errorText) {
    errorText.append(text);
    return Status::Error;
}

constexpr ParameterLimit<SignalGeneratorParams> limits[] = {
    {"Vmax", &SignalGeneratorParams::Vmax, Range::Finite},
    {"Vmin", &SignalGeneratorParams::Vmin, Range::Finite},
    {"tr", &SignalGeneratorParams::tr, Range::NotNegative},
    {"tf", &SignalGeneratorParams::tf, Range::NotNegative},
    {"timeJitter", &SignalGeneratorParams::timeJitter, Range::NotNegative}};

const DriveType* CheckDriveType(const SignalGeneratorParams& params, std::string& errorText) {
    const DriveType* type = FindDriveType(params.driveType);
    if (type) return type;
    errorText +=
        FillIn("Error drive pattern type for the signal generator: %s\n", {params.driveType});
    errorText += "Allowed types are on_off_exp, on_off_ramp and raisedCosine.\n";
    return nullptr;
}

Status CheckInput(const SignalGeneratorParams& params, const Nodelist* input,
                  std::string& errorText) {
    if (!input || input->sigType != BinSigType) {
        errorText += "Input signal type incorrect for the signal generator.\n";
        return Fail("Input signal type must be 'BinSigType'.\n", errorText);
    }
    const auto* bits = static_cast<const BinSig*>(input->sig);
    if (!bits) return Status::Success;  // the copy of the pattern fails, with its own text
    if (bits->noPoints < 1)
        return RefuseComponent(params.owner, "the bit pattern is empty", errorText);
    if (bits->bitRate > 0.0 && std::isfinite(bits->bitRate) && std::isfinite(1.0 / bits->bitRate)) {
        return Status::Success;
    }
    return RefuseComponent(params.owner,
                           Concat("the bit rate of the pattern is ", bits->bitRate,
                                  " bit/s; it must be finite and above 0"),
                           errorText);
}

/// Every bit followed by a 0, at twice the rate.
Status ExpandPattern(const BinSig& source, Owned<BinSig>& pattern, std::string& errorText) {
    std::int32_t count = 0;
    if (!SampleCount(source.noPoints, 2, count) || Make(pattern, CreateBinSig, count)) {
        // By design: the custom generator's name stands in this text.
        return Fail("Error in creating Binary Signal in Signal_Gen_Custom().\n", errorText);
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
                   PaintedPattern& pattern, std::string& errorText) {
    if (params.pointsPerBit < 0 || params.pointsPerBit > maxDriveExponent) {
        return RefuseParameter(params.owner, "pointsPerBit", params.pointsPerBit,
                               Concat("an exponent of 2 from 0 to ", maxDriveExponent), errorText);
    }
    pattern.samplesPerBit = std::int32_t{1} << params.pointsPerBit;
    pattern.bitWidth = params.bitWidth;
    if (params.modulationType != "RZ" || !source) {
        if (Make(pattern.bits, CopyBinSig, source) == 0) return Status::Success;
        return Fail("Error in copying binary signal in Signal_Generator().\n", errorText);
    }
    if (pattern.samplesPerBit < 2) {
        return RefuseParameter(params.owner, "pointsPerBit", params.pointsPerBit,
                               "at least 1 with return to zero: two samples for each bit",
                               errorText);
    }
    pattern.samplesPerBit /= 2;
    pattern.bitWidth /= 2.0;
    return ExpandPattern(*source, pattern.bits, errorText);
}

/// A waveform of zeros on the pattern's time axis.
Status MakeWave(const SignalGeneratorParams& params, const PaintedPattern& pattern,
                Owned<ElecSig>& wave, std::string& errorText) {
    const BinSig& bits = *pattern.bits;
    std::int32_t noPoints = 0;
    if (!SampleCount(bits.noPoints, pattern.samplesPerBit, noPoints) ||
        noPoints > maxDriveSamples) {
        return RefuseComponent(params.owner,
                               Concat(bits.noPoints, " bits of ", pattern.samplesPerBit,
                                      " samples make more than ", maxDriveSamples, " samples"),
                               errorText);
    }
    if (Make(wave, CreateElecSig, noPoints)) {
        return Fail("Error in creating elec signal in Signal_Generator().\n", errorText);
    }
    wave->bitRate = bits.bitRate;
    wave->patternLength = bits.noPoints;
    // Lasers compute their step by the same expression: a modulator wants both equal to the bit.
    wave->tStep = 1.0 / (wave->bitRate / wave->patternLength * wave->noPoints);
    wave->startTime = bits.startTime;
    return Status::Success;
}

Status CheckEdges(const SignalGeneratorParams& params, double bitTime, std::string& errorText) {
    const struct {
        std::string_view name;
        double value, maxBits;
    } times[] = {{"tr", params.tr, maxEdgeBits},
                 {"tf", params.tf, maxEdgeBits},
                 {"timeJitter", params.timeJitter, maxJitterBits}};
    for (const auto& [name, value, maxBits] : times) {
        if (value <= maxBits * bitTime) continue;
        return RefuseParameter(params.owner, name, value,
                               Concat("at most ", maxBits, " bits of ", bitTime, " s"), errorText);
    }
    return Status::Success;
}

Status PaintWave(const SignalGeneratorParams& params, const DriveType& type,
                 const PaintedPattern& pattern, double amplitude, ElecSig& wave,
                 std::string& errorText) {
    DrivePulses drive;
    drive.type = &type;
    drive.samplesPerBit = pattern.samplesPerBit;
    drive.amplitude = amplitude;
    drive.bitTime = 1.0 / wave.bitRate;
    drive.bitWidth = pattern.bitWidth;
    drive.riseTime = params.tr;
    drive.fallTime = params.tf;
    drive.timeJitter = params.timeJitter;
    const Status status = CheckEdges(params, drive.bitTime, errorText);
    if (status == Status::Success) PaintPulses(drive, *pattern.bits, wave.elecSamples);
    return status;
}

Status FilterWave(const SignalGeneratorParams& params, ElecSig& wave, std::string& errorText) {
    // A raised cosine has its shape by itself; its filter type is not even looked at.
    if (params.driveType.find("on_off") == std::string::npos) return Status::Success;
    return FilterDrive({params.owner, params.filterType, params.tr, params.f0, params.gamma}, wave,
                       errorText);
}

}  // namespace

SignalGeneratorParams ReadSignalGeneratorParams(const Component& component, const Nodelist* input) {
    Parameter* list = component.parameters;
    SignalGeneratorParams params;
    params.owner = component.name;
    params.driveType = GetParamText(list, "driveType", "on_off_ramp");
    params.pointsPerBit = GetParamInt(list, "pointsPerBit", 5);
    params.Vmax = GetParamDouble(list, "Vmax", 2.0);
    params.Vmin = GetParamDouble(list, "Vmin", 0.0);
    params.tr = GetParamDouble(list, "tr", 30e-12);
    params.tf = GetParamDouble(list, "tf", 30e-12);
    params.timeJitter = GetParamDouble(list, "timeJitter", 0.0);
    params.filterType = GetParamText(list, "filterType", "None");
    params.modulationType = GetParamText(list, "modulationType", "NRZ");
    params.f0 = GetParamDouble(list, "f0", 15e9);
    params.gamma = GetParamDouble(list, "gamma", 15e9);
    if (input && input->sigType == BinSigType && input->sig) {
        params.bitWidth = 1.0 / static_cast<const BinSig*>(input->sig)->bitRate;
    }
    return params;
}

Status Signal_Generator(const SignalGeneratorParams& params, const Nodelist* input,
                        Nodelist* output, std::string& errorText) {
    const DriveType* type = CheckDriveType(params, errorText);
    if (!type) return Status::Error;
    if (!output) return RefuseComponent(params.owner, "no output port", errorText);
    Status status = CheckInput(params, input, errorText);
    if (status == Status::Success) {
        status = CheckLimits<SignalGeneratorParams>(params, limits, errorText);
    }
    if (status != Status::Success) return status;

    PaintedPattern pattern;
    status = MakePattern(params, static_cast<const BinSig*>(input->sig), pattern, errorText);
    if (status != Status::Success) return status;
    if (params.Vmax < params.Vmin) {
        for (std::int32_t k = 1; k <= pattern.bits->noPoints; ++k) {
            pattern.bits->bitSequence[k] = pattern.bits->bitSequence[k] == 1 ? 0 : 1;
        }
    }
    const auto [low, high] = std::minmax(params.Vmin, params.Vmax);
    Owned<ElecSig> wave;
    status = MakeWave(params, pattern, wave, errorText);
    if (status == Status::Success) {
        status = PaintWave(params, *type, pattern, high - low, *wave, errorText);
    }
    if (status == Status::Success) status = FilterWave(params, *wave, errorText);
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
    return Signal_Generator(ReadSignalGeneratorParams(call.component, call.inputs), call.inputs,
                            call.outputs, call.errorText);
}

}  // namespace photrak

// Each block reads its parameters, then changes the copies that ChangeCopies makes.
#include "models/optical/passive_blocks.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/units.h"
#include "models/common/ase_spectra.h"
#include "models/common/port_copies.h"
#include "models/common/spectrum_grid.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

constexpr double darkerThanAll = -1e32;  // dBm

// --- Parameters ---

struct AttenuatorParams {
    double attenuation = 0.0;   // dB
    double differential = 0.0;  // dB, of y against x
};
constexpr ParamRow<AttenuatorParams> attenuatorRows[] = {
    {"attenuation", &AttenuatorParams::attenuation, 0.0},
    {"xy_differential", &AttenuatorParams::differential, 0.0}};

struct NormalizerParams {
    double target = 0.0;  // dBm
    bool uniform = true;  // all channels by one factor
};
constexpr ParamRow<NormalizerParams> normalizerRows[] = {
    {"AvePowerOut", &NormalizerParams::target, 0.0},
    {"AttenuationType",
     [](NormalizerParams& params, std::string_view word) { params.uniform = word == "Uniform"; },
     "Uniform", Words{"Uniform Individual"}}};

struct PhaseShiftParams {
    double phaseShift = 0.0;  // rad
};
constexpr ParamRow<PhaseShiftParams> phaseShiftRows[] = {
    {"phaseShift", &PhaseShiftParams::phaseShift, 0.0, Range::Finite, ParamUnit::Degrees}};

struct DelayParams {
    double delay = 0.0;  // s
};
constexpr ParamRow<DelayParams> delayRows[] = {{"delay", &DelayParams::delay, 0.0}};

struct ConverterParams {
    double shift = 0.0;       // Hz or m
    bool inFrequency = true;  // Hz
};
constexpr ParamRow<ConverterParams> converterRows[] = {
    {"shift", &ConverterParams::shift, 0.0},
    {"specMode",
     [](ConverterParams& params, std::string_view word) {
         params.inFrequency = word == "Frequency";
     },
     "Frequency", Words{"Frequency Wavelength"}}};

/// Reads and checks a block's table.
template <class Params, std::size_t n>
Status Read(const ModelCall& call, const ParamRow<Params> (&rows)[n], Params& params) {
    ReadParams(rows, call.component.parameters, params);
    return CheckParams(rows, params, call);
}

// --- Normalizer ---

// By design: the text of the attenuator for a bad input, under which users look it up.
constexpr PortTexts normalizerTexts = {"ERROR in OpticalAttenuator: invalid input signals\n",
                                       "Error in copying OpSig in OpticalNormalizer.\n"};

double PowerDbm(const OpSig& channel) {
    return DbmFromWatts(AverageOpSigPower(&channel));
}

/// dBm of the strongest channel of all ports; `darkerThanAll` where no channel has any power.
Status FindHighestPower(const ModelCall& call, double& highest) {
    highest = darkerThanAll;
    for (const Nodelist& input : Items(call.inputs)) {
        if (!input.sig) continue;
        if (input.sigType != OpSigType) {
            return call.Fail("Incorrect input signal types in OpticalNormalizer.\n");
        }
        for (const OpSig& channel : Items(static_cast<const OpSignal*>(input.sig)->channels)) {
            const double power = AverageOpSigPower(&channel);
            if (!std::isfinite(power)) {
                return call.Refuse("a channel has a mean power of ", power, " W");
            }
            highest = std::max(highest, PowerDbm(channel));
        }
    }
    return Status::Success;
}

struct Normalization : NormalizerParams {
    double factor = 1.0;  // of power, that brings the strongest channel to the target
};

/// The factor of a gain in dB; one beyond the range of numbers is refused.
Status ReadGain(const ModelCall& call, double gain, double& factor) {
    factor = PowerRatio(gain);
    if (std::isfinite(factor)) return Status::Success;
    return call.Refuse("no gain of ", gain, " dB can be applied");
}

Status Normalize(const ModelCall& call, const Normalization& normalization, OpSignal& signal) {
    for (OpSig& channel : Items(signal.channels)) {
        double factor = normalization.factor;
        if (!normalization.uniform) {
            // A dark channel cannot be brought to any power.
            if (AverageOpSigPower(&channel) == 0.0) continue;
            const double gain = normalization.target - PowerDbm(channel);
            const Status status = ReadGain(call, gain, factor);
            if (status != Status::Success) return status;
        }
        ScaleChannel(channel, std::sqrt(factor));
    }
    // Noise belongs to no channel: it takes the factor of the strongest in both modes.
    ScaleSpectra(signal.noise, normalization.factor);
    return Status::Success;
}

// --- Frequency converter ---

/// Moves a channel. `shift` is in Hz or in m and is replaced by what the channel moved, in m.
Status ShiftWavelength(const ModelCall& call, bool inFrequency, OpSig& channel, double& shift) {
    const double lambda = channel.wavelength;
    // By design: the result takes the place of the shift, so that every channel after the
    // first, on later ports too, is moved by what the one before it moved, read as Hz.
    if (inFrequency) shift = (lightSpeed / (lambda * shift + lightSpeed) - 1.0) * lambda;
    channel.wavelength += shift;
    if (channel.wavelength > 0.0 && std::isfinite(channel.wavelength)) return Status::Success;
    return call.Refuse("its shift moves a channel of ", lambda, " m to the wavelength ",
                       channel.wavelength, " m");
}

}  // namespace

std::vector<ParamSpec> OpticalAttenuatorParamSpecs() {
    return SpecsOf(attenuatorRows);
}
std::vector<ParamSpec> OpticalNormalizerParamSpecs() {
    return SpecsOf(normalizerRows);
}
std::vector<ParamSpec> PhaseShiftParamSpecs() {
    return SpecsOf(phaseShiftRows);
}
std::vector<ParamSpec> FiberDelayParamSpecs() {
    return SpecsOf(delayRows);
}
std::vector<ParamSpec> IdealFrequencyConverterParamSpecs() {
    return SpecsOf(converterRows);
}

Status RunOpticalAttenuator(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in OpticalAttenuator: invalid input signals\n",
                                 "Error in copying OpSig in OpticalAttenuator.\n"};
    AttenuatorParams params;
    const Status status = Read(call, attenuatorRows, params);
    if (status != Status::Success) return status;
    // By design: a gain in dB, links are drawn with negative values where light gets lost.
    const double Px = PowerRatio(params.attenuation);
    const double Py = PowerRatio(params.attenuation - params.differential);
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) {
            ScaleField(channel.Ex_samples, channel.noPoints, std::sqrt(Px));
            ScaleField(channel.Ey_samples, channel.noPoints, std::sqrt(Py));
        }
        ScaleSpectra(signal.noise, (Px + Py) / 2.0);  // unpolarized
        return Status::Success;
    });
}

Status RunOpticalNormalizer(const ModelCall& call) {
    Normalization normalization;
    double highest = darkerThanAll;
    Status status = Read<NormalizerParams>(call, normalizerRows, normalization);
    if (status == Status::Success) status = FindHighestPower(call, highest);
    if (status != Status::Success) return status;
    const auto leave = [](OpSignal&) { return Status::Success; };
    if (highest == darkerThanAll) return ChangeCopies(call, normalizerTexts, leave);

    const double gain = normalization.target - highest;  // dB
    status = ReadGain(call, gain, normalization.factor);
    if (status != Status::Success) return status;
    if (normalization.factor > 1.0) {
        status = call.Warn("WARNING: Optical Normalizer '", call.owner, "' applied a gain of ",
                           gain, " dB\n");
    }
    MergeStatus(status, ChangeCopies(call, normalizerTexts, [&](OpSignal& signal) {
                    return Normalize(call, normalization, signal);
                }));
    return status;
}

Status RunPhaseShift(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in PhaseShift: invalid input signals\n",
                                 "Error in copying OpSig in PhaseShift.\n"};
    PhaseShiftParams params;
    const Status status = Read(call, phaseShiftRows, params);
    if (status != Status::Success) return status;
    const Complex factor = Exp({0.0, params.phaseShift});
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) ScaleChannel(channel, factor);
        return Status::Success;
    });
}

Status RunFiberDelay(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in FiberDelay: invalid input signals\n",
                                 "Error in copying OpSig in FiberDelay.\n"};
    DelayParams params;
    const Status status = Read(call, delayRows, params);
    if (status != Status::Success) return status;
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) channel.startTime += params.delay;
        return Status::Success;
    });
}

Status RunIdealFrequencyConverter(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in IdealFrequencyConverter: invalid input signals\n",
                                 "Error in copying OpSig in IdealFrequencyConverter.\n"};
    ConverterParams params;
    const Status status = Read(call, converterRows, params);
    if (status != Status::Success) return status;
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) {
            const Status moved = ShiftWavelength(call, params.inFrequency, channel, params.shift);
            if (moved != Status::Success) return moved;
        }
        return Status::Success;
    });
}

}  // namespace photrak

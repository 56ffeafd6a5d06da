// Each block reads its parameters, then changes the copies that ChangeCopies makes.
#include "models/optical/passive_blocks.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/units.h"
#include "kernel/parameters.h"
#include "models/common/ase_spectra.h"
#include "models/common/parameter_limits.h"
#include "models/common/port_copies.h"
#include "models/common/refusals.h"
#include "models/common/spectrum_grid.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

constexpr double darkerThanAll = -1e32;  // dBm

double PowerFactor(double decibels) {
    return std::pow(10.0, 0.1 * decibels);
}

template <class Factor>
void ScaleChannel(OpSig& channel, Factor factor) {
    ScaleField(channel.Ex_samples, channel.noPoints, factor);
    ScaleField(channel.Ey_samples, channel.noPoints, factor);
}

/// A parameter of the block; anything but a finite number is refused.
Status ReadFinite(const ModelCall& call, std::string_view name, double& value) {
    value = GetParamDouble(call.component.parameters, name, 0.0);
    return CheckRange(call.component.name, name, value, Range::Finite, call.errorText);
}

Status Refuse(const ModelCall& call, std::string_view reason) {
    return RefuseComponent(call.component.name, reason, call.errorText);
}

// --- Normalizer ---

// By design: the text of the attenuator for a bad input, under which users look it up.
constexpr PortTexts normalizerTexts = {"ERROR in OpticalAttenuator: invalid input signals\n",
                                       "Error in copying OpSig in OpticalNormalizer.\n"};

double PowerDbm(const OpSig& channel) {
    return 10.0 * std::log10(milliwattsPerWatt * AverageOpSigPower(&channel));
}

/// dBm of the strongest channel of all ports; `darkerThanAll` where no channel has any power.
Status FindHighestPower(const ModelCall& call, double& highest) {
    highest = darkerThanAll;
    for (const Nodelist& input : Items(call.inputs)) {
        if (!input.sig) continue;
        if (input.sigType != OpSigType) {
            AppendPiece(call.errorText, "Incorrect input signal types in OpticalNormalizer.\n");
            return Status::Error;
        }
        for (const OpSig& channel : Items(static_cast<const OpSignal*>(input.sig)->channels)) {
            const double power = AverageOpSigPower(&channel);
            if (!std::isfinite(power)) {
                return Refuse(call, Concat("a channel has a mean power of ", power, " W"));
            }
            highest = std::max(highest, PowerDbm(channel));
        }
    }
    return Status::Success;
}

struct Normalization {
    double target = 0.0;  // dBm
    bool uniform = true;  // all channels by one factor
    double factor = 1.0;  // of power, that brings the strongest channel to the target
};

/// The factor of a gain in dB; one beyond the range of numbers is refused.
Status ReadGain(const ModelCall& call, double gain, double& factor) {
    factor = PowerFactor(gain);
    if (std::isfinite(factor)) return Status::Success;
    return Refuse(call, Concat("no gain of ", gain, " dB can be applied"));
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
    // By design: the result takes the place of the shift, so that every channel behind the
    // first, on later ports too, is moved by what the one before it moved, read as Hz.
    if (inFrequency) shift = (lightSpeed / (lambda * shift + lightSpeed) - 1.0) * lambda;
    channel.wavelength += shift;
    if (channel.wavelength > 0.0 && std::isfinite(channel.wavelength)) return Status::Success;
    return Refuse(call, Concat("its shift moves a channel of ", lambda, " m to the wavelength ",
                               channel.wavelength, " m"));
}

}  // namespace

Status RunOpticalAttenuator(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in OpticalAttenuator: invalid input signals\n",
                                 "Error in copying OpSig in OpticalAttenuator.\n"};
    double attenuation = 0.0, differential = 0.0;
    Status status = ReadFinite(call, "attenuation", attenuation);
    if (status == Status::Success) status = ReadFinite(call, "xy_differential", differential);
    if (status != Status::Success) return status;
    // By design: a gain in dB, links are drawn with negative values where light gets lost.
    const double Px = PowerFactor(attenuation), Py = PowerFactor(attenuation - differential);
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
    Status status = ReadFinite(call, "AvePowerOut", normalization.target);
    if (status == Status::Success) status = FindHighestPower(call, highest);
    if (status != Status::Success) return status;
    normalization.uniform =
        GetParamText(call.component.parameters, "AttenuationType", "Uniform") == "Uniform";
    const auto leave = [](OpSignal&) { return Status::Success; };
    if (highest == darkerThanAll) return ChangeCopies(call, normalizerTexts, leave);

    const double gain = normalization.target - highest;  // dB
    status = ReadGain(call, gain, normalization.factor);
    if (status != Status::Success) return status;
    if (normalization.factor > 1.0) {
        AppendPiece(call.errorText, Concat("WARNING: Optical Normalizer '", call.component.name,
                                           "' applied a gain of ", gain, " dB\n"));
        status = Status::Warning;
    }
    MergeStatus(status, ChangeCopies(call, normalizerTexts, [&](OpSignal& signal) {
                    return Normalize(call, normalization, signal);
                }));
    return status;
}

Status RunPhaseShift(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in PhaseShift: invalid input signals\n",
                                 "Error in copying OpSig in PhaseShift.\n"};
    double degrees = 0.0;
    const Status status = ReadFinite(call, "phaseShift", degrees);
    if (status != Status::Success) return status;
    const Complex factor = Exp({0.0, degrees * radiansPerDegree});
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) ScaleChannel(channel, factor);
        return Status::Success;
    });
}

Status RunFiberDelay(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in FiberDelay: invalid input signals\n",
                                 "Error in copying OpSig in FiberDelay.\n"};
    double delay = 0.0;
    const Status status = ReadFinite(call, "delay", delay);
    if (status != Status::Success) return status;
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) channel.startTime += delay;
        return Status::Success;
    });
}

Status RunIdealFrequencyConverter(const ModelCall& call) {
    constexpr PortTexts texts = {"ERROR in IdealFrequencyConverter: invalid input signals\n",
                                 "Error in copying OpSig in IdealFrequencyConverter.\n"};
    double shift = 0.0;
    const Status status = ReadFinite(call, "shift", shift);
    if (status != Status::Success) return status;
    const bool inFrequency =
        GetParamText(call.component.parameters, "specMode", "Frequency") == "Frequency";
    return ChangeCopies(call, texts, [&](OpSignal& signal) {
        for (OpSig& channel : Items(signal.channels)) {
            const Status moved = ShiftWavelength(call, inFrequency, channel, shift);
            if (moved != Status::Success) return moved;
        }
        return Status::Success;
    });
}

}  // namespace photrak

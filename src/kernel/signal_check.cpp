// The look at what a model left, before anyone reads it.
#include "kernel/signal_check.h"

#include <cmath>

#include "kernel/signals.h"

namespace photrak {
namespace {

/// An infinite power or variance is found in the square: plots and means take it of each sample.
bool AreSquaresFinite(const Complex* samples, std::int32_t n) {
    for (std::int32_t k = 1; samples && k <= n; ++k) {
        if (!std::isfinite(samples[k].re * samples[k].re + samples[k].im * samples[k].im)) {
            return false;
        }
    }
    return true;
}

bool IsFinite(const OpSig& channel) {
    return std::isfinite(channel.tStep) && std::isfinite(channel.startTime) &&
           std::isfinite(channel.wavelength) &&
           AreSquaresFinite(channel.Ex_samples, channel.noPoints) &&
           AreSquaresFinite(channel.Ey_samples, channel.noPoints);
}

bool IsFinite(const OpSigASE& noise) {
    if (!std::isfinite(noise.fstart) || !std::isfinite(noise.fstep)) return false;
    for (std::int32_t k = 1; noise.powerSamples && k <= noise.noPoints; ++k) {
        if (!std::isfinite(noise.powerSamples[k])) return false;
    }
    return true;
}

bool IsFinite(const OpSignal& light) {
    for (const OpSig& channel : Items(light.channels)) {
        if (!IsFinite(channel)) return false;
    }
    for (const OpSigASE& noise : Items(light.noise)) {
        if (!IsFinite(noise)) return false;
    }
    return true;
}

bool IsFinite(const ElecSig& wave) {
    return std::isfinite(wave.tStep) && std::isfinite(wave.startTime) &&
           AreSquaresFinite(wave.elecSamples, wave.noPoints) &&
           AreSquaresFinite(wave.sigmaSamples, wave.noPoints);
}

}  // namespace

bool HasFiniteValues(const void* sig, std::int32_t sigType) {
    if (!sig) return true;
    if (sigType == OpSigType) return IsFinite(*static_cast<const OpSignal*>(sig));
    if (sigType == ElecSigType) return IsFinite(*static_cast<const ElecSig*>(sig));
    return true;
}

}  // namespace photrak

// The look at what a model left, before anyone reads it.
#include "kernel/signal_check.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernel/signals.h"

namespace photrak {
namespace {

/// An infinite power or variance is found in the square: plots and means take it of each sample.
/// Looked for a block at a time, in loops without a way out, which take several at once.
bool AreSquaresFinite(const Complex* samples, std::int32_t n) {
    constexpr std::int64_t blockSize = 1024;
    for (std::int64_t k = 1; samples && k <= n;) {
        const std::int64_t end = std::min<std::int64_t>(k + blockSize, std::int64_t{n} + 1);
        bool finite = true;
        for (; k < end; ++k) {
            const double square = samples[k].re * samples[k].re + samples[k].im * samples[k].im;
            finite &= square <= std::numeric_limits<double>::max();
        }
        if (!finite) return false;
    }
    return true;
}

bool IsAxisFinite(const OpSig& channel) {
    return std::isfinite(channel.tStep) && std::isfinite(channel.startTime) &&
           std::isfinite(channel.wavelength);
}

bool AreSamplesFinite(const OpSig& channel) {
    return AreSquaresFinite(channel.Ex_samples, channel.noPoints) &&
           AreSquaresFinite(channel.Ey_samples, channel.noPoints);
}

bool IsFinite(const OpSigASE& noise) {
    if (!std::isfinite(noise.fstart) || !std::isfinite(noise.fstep)) return false;
    for (std::int32_t k = 1; noise.powerSamples && k <= noise.noPoints; ++k) {
        if (!std::isfinite(noise.powerSamples[k])) return false;
    }
    return true;
}

bool IsFinite(const OpSignal& light, const SignalSummaries& measured) {
    auto summary = measured.begin();
    for (const OpSig& channel : Items(light.channels)) {
        if (!IsAxisFinite(channel)) return false;
        // One square that is not finite makes the sum so; a sum may also overflow by itself.
        const bool known = summary != measured.end() && std::isfinite(summary->average);
        if (!known && !AreSamplesFinite(channel)) return false;
        if (summary != measured.end()) ++summary;
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

bool HasFiniteValues(const void* sig, std::int32_t sigType, const SignalSummaries& measured) {
    if (!sig) return true;
    if (sigType == OpSigType) return IsFinite(*static_cast<const OpSignal*>(sig), measured);
    if (sigType == ElecSigType) return IsFinite(*static_cast<const ElecSig*>(sig));
    return true;
}

}  // namespace photrak

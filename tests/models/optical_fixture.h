// Optical signals of the optical path's tests: steady fields and small noise spectra.
#pragma once

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {

/// n samples of a constant x field of `power` watts, 1 ps apart.
inline Owned<OpSignal> Carrier(double power, std::int32_t n = 4, double wavelength = 1.55e-6) {
    Owned<OpSignal> signal;
    EXPECT_EQ(Make(signal, CreateOpSignalWithSig, n), 0);
    OpSig& channel = *signal->channels;
    channel.wavelength = wavelength;
    channel.tStep = 1e-12;
    for (std::int32_t i = 1; i <= n; ++i) channel.Ex_samples[i].re = std::sqrt(power);
    return signal;
}

/// Puts the channels of `other` behind those of the signal.
inline OpSig& AppendChannel(OpSignal& signal, Owned<OpSignal> other) {
    OpSig* last = signal.channels;
    while (last->next) last = last->next;
    last->next = std::exchange(other->channels, nullptr);
    last->next->prev = last;
    return *last->next;
}

/// Puts a spectrum at the end of the signal's list.
inline void AddNoise(OpSignal& signal, double fstart, double fstep,
                     std::initializer_list<double> power) {
    Owned<OpSigASE> spectrum;
    ASSERT_EQ(Make(spectrum, CreateOpSigASE, static_cast<std::int32_t>(power.size())), 0);
    spectrum->fstart = fstart;
    spectrum->fstep = fstep;
    std::copy(power.begin(), power.end(), spectrum->powerSamples + 1);
    OpSigASE** tail = &signal.noise;
    while (*tail) tail = &(*tail)->next;
    *tail = spectrum.release();
}

}  // namespace photrak

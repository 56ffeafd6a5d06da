// Optical signals of the optical path's tests: steady fields, levels, tones and small noise
// spectra.
#pragma once

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <utility>

#include "models/common/spectrum_grid.h"
#include "support/model_parameters.h"
#include "support/signals.h"

namespace photrak {

using Field = std::complex<double>;

inline Complex ToComplex(Field value) {
    return {value.real(), value.imag()};
}

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

/// A level of `power` watts in one sample.
inline Owned<OpSignal> Level(double power, double wavelength) {
    Owned<OpSignal> signal = Carrier(power, 1, wavelength);
    signal->channels->tStep = 0.0;
    return signal;
}

/// A tone `bin` bins of its own window above the carrier, exp(-2 pi j t bin df), in both
/// polarizations, the second of half the field.
inline Owned<OpSignal> Tone(std::int32_t n, int bin, double wavelength) {
    Owned<OpSignal> signal = Carrier(1.0, n, wavelength);
    OpSig& channel = *signal->channels;
    EXPECT_EQ(AddEySamples(&channel), 0);
    for (std::int32_t j = 1; j <= n; ++j) {
        const double turns = 1.0 * bin * (j - 1) / n;
        channel.Ex_samples[j] = ToComplex(std::polar(1.0, -2.0 * std::numbers::pi * turns));
        channel.Ey_samples[j] = 0.5 * channel.Ex_samples[j];
    }
    return signal;
}

/// Puts the channels of `other` behind those of the signal.
inline OpSig& AppendChannel(OpSignal& signal, Owned<OpSignal> other) {
    OpSig *last = nullptr, **tail = &signal.channels;
    for (; *tail; tail = &last->next) last = *tail;
    *tail = std::exchange(other->channels, nullptr);
    (*tail)->prev = last;
    return **tail;
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

inline void ExpectField(Complex found, Field expected, double tolerance) {
    EXPECT_NEAR(std::abs(Value(found) - expected), 0.0, tolerance) << Value(found);
}

}  // namespace photrak

// Small signals with samples that tell where they come from.
#pragma once

#include <complex>
#include <gtest/gtest.h>

#include "kernel/signals.h"

namespace photrak {

/// Comparable and printable.
inline std::complex<double> Value(Complex a) {
    return {a.re, a.im};
}

/// Sample i is (first + i, -(first + i)).
inline void FillRamp(Complex* samples, std::int32_t n, double first) {
    for (std::int32_t i = 1; i <= n; ++i) samples[i] = {first + i, -(first + i)};
}

enum class Polarized { No, Yes };

/// A channel whose every number differs from the defaults.
inline Owned<OpSig> RampChannel(std::int32_t n, double tStep, Polarized polarized = Polarized::No) {
    Owned<OpSig> sig;
    EXPECT_EQ(Make(sig, CreateOpSig, n), 0);
    sig->tStep = tStep;
    sig->startTime = 3e-12;
    sig->wavelength = 1.55e-6;
    sig->bitRate = 1e10;
    sig->patternLength = 16;
    sig->spareCount = 2;
    sig->RIN = 1e-15;
    sig->domain = FreqDomain;
    FillRamp(sig->Ex_samples, n, 0.0);
    if (polarized == Polarized::Yes) {
        EXPECT_EQ(AddEySamples(sig.get()), 0);
        FillRamp(sig->Ey_samples, n, 100.0);
    }
    return sig;
}

inline Owned<ElecSig> RampWaveform(std::int32_t n, double tStep) {
    Owned<ElecSig> sig;
    EXPECT_EQ(Make(sig, CreateElecSig, n), 0);
    sig->tStep = tStep;
    sig->startTime = 4e-12;
    sig->bitRate = 1e10;
    sig->patternLength = 8;
    sig->spareCount = 3;
    sig->UnitType = CurrentUnit;
    sig->domain = FreqDomain;
    FillRamp(sig->elecSamples, n, 0.0);
    FillRamp(sig->sigmaSamples, n, 1000.0);
    return sig;
}

/// Bits 1, 0, 1, 0, ...
inline Owned<BinSig> AlternatingBits(std::int32_t n) {
    Owned<BinSig> sig;
    EXPECT_EQ(Make(sig, CreateBinSig, n), 0);
    sig->bitRate = 1e10;
    sig->startTime = 5e-12;
    for (std::int32_t i = 0; i <= n; ++i) sig->bitSequence[i] = std::int16_t(i % 2);
    return sig;
}

inline Owned<OpSigASE> RampSpectrum(std::int32_t n) {
    Owned<OpSigASE> spectrum;
    EXPECT_EQ(Make(spectrum, CreateOpSigASE, n), 0);
    spectrum->fstep = 1e9;
    spectrum->fstart = 193e12;
    for (std::int32_t i = 1; i <= n; ++i) spectrum->powerSamples[i] = i;
    return spectrum;
}

/// A multiplex of two channels (the second polarized) and two noise spectra.
inline Owned<OpSignal> Multiplex(std::int32_t n, double tStep) {
    Owned<OpSignal> pair;
    EXPECT_EQ(Make(pair, CreateOpSignal), 0);
    pair->channels = RampChannel(n, tStep).release();
    pair->channels->next = RampChannel(n, tStep, Polarized::Yes).release();
    pair->channels->next->prev = pair->channels;
    pair->noise = RampSpectrum(n).release();
    pair->noise->next = RampSpectrum(n + 1).release();
    return pair;
}

/// A multiplex of that channel.
inline Owned<OpSignal> Alone(Owned<OpSig> channel) {
    Owned<OpSignal> pair;
    EXPECT_EQ(Make(pair, CreateOpSignal), 0);
    pair->channels = channel.release();
    return pair;
}

/// Puts a cell with the signal in front of the list.
template <class T>
void PushCell(Owned<Nodelist>& list, Owned<T> sig, std::int32_t sigType) {
    Owned<Nodelist> cell;
    ASSERT_EQ(Make(cell, CreateNodelist, sigType), 0);
    cell->sig = sig.release();
    cell->next = list.release();
    list = std::move(cell);
}

}  // namespace photrak

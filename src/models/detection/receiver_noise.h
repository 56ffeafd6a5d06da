// The noise of a receiver in closed form: densities at its input, integrated over its transfer
// function, give one standard deviation for each sample of the waveform. No random numbers.
#pragma once

#include "kernel/signals.h"

namespace photrak {

/// Density of the receiver's own input-referred current noise, A^2/Hz:
/// n(f) = a0 + a2 f^2 + a4 f^4 + a6 f^6, f in Hz.
struct NoisePolynomial {
    double a0 = 0.0, a2 = 0.0, a4 = 0.0, a6 = 0.0;

    double operator()(double f) const {
        const double u = f * f;
        return a0 + u * (a2 + u * (a4 + u * a6));
    }
};

/// A transfer array H[1..n] in transform order, V/A, bins df apart (Hz).
struct ReceiverTransfer {
    const Complex* H;
    long n;
    double df;
};

/// One-sided integral of |H|^2, Hz (V/A)^2, with end weights.
double NoiseBandwidth(const ReceiverTransfer& transfer);
/// One-sided integral of |H|^2 n(f), V^2.
double ReceiverNoise(const ReceiverTransfer& transfer, const NoisePolynomial& density);
/// Density of the optical noise around the carrier (Hz) as the receiver weighs it, W/Hz: the mean
/// of the spectrum over both sides of the carrier with the weight |H|^2. Outside its points the
/// spectrum is 0.
double NoiseDensityAt(const ReceiverTransfer& transfer, const OpSigASE& spectrum, double carrier,
                      double noiseBandwidth);

/// Excess noise factor of an avalanche times M^2 (McIntyre): (k M + (1 - k)(2 - 1/M)) M^2.
double ExcessNoise(double multiplier, double ionizationRatio);

/// What sigma depends on besides the sample.
struct NoiseTerms {
    double currentPerVolt = 0.0;  // from |voltage| to the current that makes noise, A/V
    double RIN = 0.0;             // 1/Hz
    double signalDensity = 0.0;   // shot and signal-ASE beat noise per ampere, A/Hz
    double darkDensity = 0.0;     // of the dark current, A^2/Hz
    double bandwidth = 0.0;       // NoiseBandwidth
    double receiverNoise = 0.0;   // ReceiverNoise
};
/// Fills sigmaSamples from the voltages. False if a voltage or a sigma is no finite number.
[[nodiscard]] bool FillSigma(ElecSig& signal, const NoiseTerms& terms);

}  // namespace photrak

// Integrals over the transfer array and the sum of variances at each sample.
#include "models/detection/receiver_noise.h"

#include <algorithm>
#include <cmath>

#include "numeric/fft.h"
#include "numeric/samples.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

/// Linear between the points of the spectrum, 0 outside.
double DensityAt(const OpSigASE& spectrum, double f) {
    const double end = spectrum.fstart + (spectrum.noPoints - 1) * spectrum.fstep;
    if (!(f >= spectrum.fstart && f < end)) return 0.0;
    const auto interval = static_cast<std::int32_t>((f - spectrum.fstart) / spectrum.fstep);
    const std::int32_t j = std::clamp(interval + 1, 1, spectrum.noPoints - 1);
    const double u = (f - (spectrum.fstart + (j - 1) * spectrum.fstep)) / spectrum.fstep;
    return (1.0 - u) * spectrum.powerSamples[j] + u * spectrum.powerSamples[j + 1];
}

}  // namespace

double NoiseBandwidth(const ReceiverTransfer& transfer) {
    return transfer.df *
           WeightedSum(transfer.n / 2 + 1, [&](long i) { return SquaredMagnitude(transfer.H[i]); });
}

double ReceiverNoise(const ReceiverTransfer& transfer, const NoisePolynomial& density) {
    return transfer.df * WeightedSum(transfer.n / 2 + 1, [&](long i) {
               const double f = static_cast<double>(i - 1) * transfer.df;
               return SquaredMagnitude(transfer.H[i]) * density(f);
           });
}

double NoiseDensityAt(const ReceiverTransfer& transfer, const OpSigASE& spectrum, double carrier,
                      double noiseBandwidth) {
    const auto n = static_cast<std::int32_t>(transfer.n);
    double sum = 0.0;
    for (std::int32_t i = 1; i <= n; ++i) {
        LookForStop(i);
        const double f = FFTIndexToBin(n, i) * transfer.df + carrier;
        sum += SquaredMagnitude(transfer.H[i]) * DensityAt(spectrum, f);
    }
    return transfer.df * 0.5 * sum / noiseBandwidth;
}

double ExcessNoise(double multiplier, double ionizationRatio) {
    return (ionizationRatio * multiplier + (1.0 - ionizationRatio) * (2.0 - 1.0 / multiplier)) *
           multiplier * multiplier;
}

bool FillSigma(ElecSig& signal, const NoiseTerms& terms) {
    bool finite = true;
    for (std::int32_t i = 1; i <= signal.noPoints; ++i) {
        LookForStop(i);
        const double current = terms.currentPerVolt * std::fabs(signal.elecSamples[i].re);
        const double density =
            (current * terms.RIN + terms.signalDensity) * current + terms.darkDensity;
        const double sigma = std::sqrt(density * terms.bandwidth + terms.receiverNoise);
        signal.sigmaSamples[i] = MakeComplex(sigma);
        finite = finite && std::isfinite(sigma) && std::isfinite(signal.elecSamples[i].re);
    }
    return finite;
}

}  // namespace photrak

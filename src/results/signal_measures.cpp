// Waveforms are one period of a repeating pattern, a whole number of samples to each bit; others
// have no eye.
#include "results/signal_measures.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "numeric/samples.h"

namespace photrak {
namespace {

constexpr double osnrBand = 0.1e-9;  // m, the usual reference
constexpr double polarizations = 2.0;

/// Sorts the values of one phase and parts them where the variance between the parts is largest.
EyeLevels PartLevels(std::vector<double>& values) {
    std::sort(values.begin(), values.end());
    double total = 0.0;
    for (const double value : values) total += value;
    const auto count = static_cast<double>(values.size());
    EyeLevels best;
    double below = 0.0, largest = -1.0;
    for (std::size_t k = 1; k < values.size(); ++k) {
        below += values[k - 1];
        const double low = static_cast<double>(k), high = count - low;
        const double mean0 = below / low, mean1 = (total - below) / high;
        const double variance = low * high * (mean1 - mean0) * (mean1 - mean0);
        if (variance <= largest) continue;
        largest = variance;
        best = {mean0, mean1, values[k] - values[k - 1], 0};
    }
    return best;
}

std::vector<double> PowerOf(const OpSig& channel) {
    std::vector<double> wave;
    if (channel.domain != TimeDomain || channel.noPoints < 1 || !channel.Ex_samples) return wave;
    wave.reserve(static_cast<std::size_t>(channel.noPoints));
    const auto square = [](const Complex& z) { return z.re * z.re + z.im * z.im; };
    for (std::int32_t k = 1; k <= channel.noPoints; ++k) {
        const double y = channel.Ey_samples ? square(channel.Ey_samples[k]) : 0.0;
        wave.push_back(square(channel.Ex_samples[k]) + y);
    }
    return wave;
}

std::vector<double> ValuesOf(const ElecSig& signal) {
    std::vector<double> wave;
    if (signal.domain != TimeDomain || signal.noPoints < 1 || !signal.elecSamples) return wave;
    wave.reserve(static_cast<std::size_t>(signal.noPoints));
    for (std::int32_t k = 1; k <= signal.noPoints; ++k) wave.push_back(signal.elecSamples[k].re);
    return wave;
}

/// Peak and eye.
template <class Signal>
void MeasureWave(const Signal& signal, const std::vector<double>& wave, SignalMeasures& measures) {
    constexpr double smallest = 1e-9;  // opening in parts of the peak: below it is rounding
    if (wave.empty()) return;
    if (signal.bitRate > 0.0) measures.bitRate = signal.bitRate;
    measures.peak = *std::ranges::max_element(wave);
    const std::int32_t bits = signal.patternLength;
    if (bits < 2 || signal.noPoints % bits != 0) return;
    const EyeLevels eye = FindEyeLevels(wave, signal.noPoints / bits);
    const double size = std::max(std::fabs(measures.peak), std::fabs(eye.level0));
    if (!(eye.opening > smallest * size)) return;
    measures.level0 = eye.level0;
    measures.level1 = eye.level1;
    measures.eyeOpening = eye.opening;
    measures.eyeTime = eye.phase * signal.tStep;
}

double DensityAt(const OpSigASE* noise, double frequency) {
    double density = 0.0;
    for (const OpSigASE& spectrum : Items<const OpSigASE>(noise)) {
        density += NoiseDensity(spectrum, frequency);
    }
    return polarizations * density;
}

SignalMeasures MeasureChannel(const OpSig& channel, const OpSigASE* noise) {
    SignalMeasures measures;
    measures.sigType = OpSigType;
    measures.unit = "W";
    measures.average = AverageOpSigPower(&channel);
    if (channel.wavelength > 0.0) {
        measures.wavelength = channel.wavelength;
        measures.frequency = lightSpeed / channel.wavelength;
        measures.noise = DensityAt(noise, measures.frequency);
        const double band = FrequencyWidth(osnrBand, channel.wavelength);
        if (measures.noise > 0.0) {
            measures.osnr = PowerDecibels(measures.average / (measures.noise * band));
        }
    }
    MeasureWave(channel, PowerOf(channel), measures);
    measures.extinctionRatio = PowerDecibels(measures.level1 / measures.level0);
    return measures;
}

SignalMeasures MeasureElectrical(const ElecSig& signal) {
    SignalMeasures measures;
    measures.sigType = ElecSigType;
    measures.unit = signal.UnitType == VoltageUnit ? "V" : "A";
    const std::vector<double> wave = ValuesOf(signal);
    if (wave.empty()) return measures;
    double sum = 0.0, sigma = 0.0;
    for (const double value : wave) sum += value;
    for (std::int32_t k = 1; signal.sigmaSamples && k <= signal.noPoints; ++k) {
        sigma += std::hypot(signal.sigmaSamples[k].re, signal.sigmaSamples[k].im);
    }
    measures.average = sum / signal.noPoints;
    measures.noise = sigma / signal.noPoints;
    MeasureWave(signal, wave, measures);
    return measures;
}

SignalMeasures MeasureBits(const BinSig& bits) {
    SignalMeasures measures;
    measures.sigType = BinSigType;
    measures.bitRate = bits.bitRate;
    double ones = 0.0;
    for (std::int32_t k = 1; bits.bitSequence && k <= bits.noPoints; ++k) {
        ones += bits.bitSequence[k];
    }
    if (bits.noPoints > 0) measures.average = ones / bits.noPoints;
    return measures;
}

}  // namespace

EyeLevels FindEyeLevels(const std::vector<double>& wave, std::int32_t samplesPerBit) {
    EyeLevels best;
    std::vector<double> values;
    const auto step = static_cast<std::size_t>(samplesPerBit);
    for (std::size_t phase = 0; phase < step; ++phase) {
        values.clear();
        for (std::size_t k = phase; k < wave.size(); k += step) values.push_back(wave[k]);
        const EyeLevels found = PartLevels(values);
        if (found.opening <= best.opening) continue;
        best = found;
        best.phase = static_cast<std::int32_t>(phase);
    }
    return best;
}

std::vector<SignalMeasures> MeasureSignal(const SigRecord& record) {
    std::vector<SignalMeasures> all;
    if (!record.sig) return all;
    if (record.sigType == OpSigType) {
        const auto& signal = *static_cast<const OpSignal*>(record.sig);
        for (const OpSig& channel : Items<const OpSig>(signal.channels)) {
            all.push_back(MeasureChannel(channel, signal.noise));
            all.back().channel = static_cast<std::int32_t>(all.size());
        }
    } else if (record.sigType == ElecSigType) {
        all.push_back(MeasureElectrical(*static_cast<const ElecSig*>(record.sig)));
    } else if (record.sigType == BinSigType) {
        all.push_back(MeasureBits(*static_cast<const BinSig*>(record.sig)));
    }
    return all;
}

}  // namespace photrak

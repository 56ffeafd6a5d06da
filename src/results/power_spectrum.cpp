// Transforms of the samples and sums on the axis.
#include "results/power_spectrum.h"

#include <algorithm>
#include <cmath>

#include "base/arrays.h"
#include "numeric/fft.h"
#include "results/signal_plot.h"

namespace photrak {
namespace {

/// In bins: what rounding may move a point that stands on a bin.
constexpr double snap = 1e-6;

/// Adds the powers of the transform of samples[1..N]. The place where a period begins turns phases
/// only, hence the first sample serves for every start.
void AddBinPowers(const Complex* samples, int sign, DcBin dc, std::vector<double>& bins) {
    if (!samples) return;
    const auto n = static_cast<std::int32_t>(bins.size());
    Doubles view(2 * static_cast<long>(n));
    std::copy_n(DoubleView(samples) + 1, view.Size(), view.Data() + 1);
    DoFFT(view.Data(), n, sign);
    if (dc == DcBin::Hidden && n > 1) {
        view[1] = view[3];
        view[2] = view[4];
    }
    const double scale = 1.0 / n;
    const std::int64_t first = FirstBin(n);
    for (std::int32_t k = 1; k <= n; ++k) {
        const double re = view[2 * long{k} - 1] * scale, im = view[2 * long{k}] * scale;
        const std::int64_t bin = n > 1 ? FFTIndexToBin(n, k) : 0;
        bins[static_cast<std::size_t>(bin - first)] += re * re + im * im;
    }
}

double AtPosition(std::span<const double> bins, double position) {
    const double nearest = std::round(position);
    if (std::abs(position - nearest) < snap) return bins[static_cast<std::size_t>(nearest)];
    const double below = std::floor(position), u = position - below;
    const auto i = static_cast<std::size_t>(below);
    return bins[i] + u * (bins[i + 1] - bins[i]);
}

}  // namespace

std::vector<double> PowerSpectrum(const Trace& trace, int polarization, DcBin dc) {
    const std::int32_t n = trace.channel ? trace.channel->noPoints : trace.wave->noPoints;
    std::vector<double> bins(static_cast<std::size_t>(n), 0.0);
    if (trace.wave) {
        AddBinPowers(trace.wave->elecSamples, -1, dc, bins);
        return bins;
    }
    if (polarization != plotFlag::y) AddBinPowers(trace.channel->Ex_samples, +1, dc, bins);
    if (polarization != plotFlag::x) AddBinPowers(trace.channel->Ey_samples, +1, dc, bins);
    return bins;
}

OpticalAxis PlanOpticalAxis(double lowestCarrier, double highestCarrier, std::int64_t n, double df,
                            std::int64_t asked) {
    OpticalAxis axis;
    axis.reference = lowestCarrier;
    axis.start = static_cast<double>(FirstBin(n)) * df;
    const double spacing = highestCarrier - lowestCarrier;
    const double span = spacing + static_cast<double>(n - 1) * df;
    const double full = std::floor(span / df + snap) + 1.0;
    const double wanted = asked > 0 ? std::min<double>(static_cast<double>(asked), full) : full;
    axis.count = static_cast<std::int64_t>(std::clamp<double>(wanted, 2.0, mostSpectrumPoints));
    axis.isCoarse = static_cast<double>(axis.count) < full;
    const bool onBins = spacing == 0.0 && !axis.isCoarse;
    axis.step = onBins ? df : span / static_cast<double>(axis.count - 1);
    return axis;
}

void AddBins(const OpticalAxis& axis, double carrier, double df, std::span<const double> bins,
             std::span<double> sums) {
    const auto n = static_cast<std::int64_t>(bins.size());
    const double lowest =
        (carrier - axis.reference) + static_cast<double>(FirstBin(n)) * df - axis.start;
    if (axis.isCoarse) {
        for (std::int64_t k = 0; k < n; ++k) {
            const double point = std::round((lowest + static_cast<double>(k) * df) / axis.step);
            const double last = static_cast<double>(axis.count - 1);
            sums[static_cast<std::size_t>(std::clamp(point, 0.0, last))] +=
                bins[static_cast<std::size_t>(k)];
        }
        return;
    }
    const double reach = static_cast<double>(n - 1) * df, margin = snap * df;
    const double begin = std::max(std::ceil((lowest - margin) / axis.step), 0.0);
    const auto last = static_cast<std::int64_t>(std::min(
        std::floor((lowest + reach + margin) / axis.step), static_cast<double>(axis.count - 1)));
    for (auto i = static_cast<std::int64_t>(begin); i <= last; ++i) {
        const double position = (static_cast<double>(i) * axis.step - lowest) / df;
        sums[static_cast<std::size_t>(i)] +=
            AtPosition(bins, std::clamp(position, 0.0, static_cast<double>(n - 1)));
    }
}

void AddNoise(const OpticalAxis& axis, const OpSigASE& record, std::span<double> densities) {
    for (std::int64_t i = 0; i < axis.count; ++i) {
        densities[static_cast<std::size_t>(i)] += NoiseDensity(record, axis.Frequency(i));
    }
}

}  // namespace photrak

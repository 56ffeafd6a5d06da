// Bringing the inputs of a plot to a common time grid: the longest duration, the finest step, a
// power of two of samples.
#include "kernel/align.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "base/arrays.h"
#include "base/text.h"
#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {
namespace {

constexpr double maxCommonLength = 1 << 26;  // 1 GiB for each array of Complex

/// The longest duration and the finest step among the waveforms, in s. Bit sequences take no part.
struct TimeGrid {
    double duration = 0.0;
    double step = std::numeric_limits<double>::max();
    bool finite = true;

    template <class Waveform>
    void Note(const Waveform& sig) {
        const double length = Duration(sig);
        finite = finite && std::isfinite(length) && std::isfinite(sig.tStep);
        if (length > duration) duration = length;
        if (sig.tStep != 0.0 && sig.tStep < step) step = sig.tStep;
    }
    template <class Waveform>
    bool Fits(const Waveform& sig) const {
        return Duration(sig) == duration && sig.tStep == step;
    }
    template <class Waveform>
    static double Duration(const Waveform& sig) {
        return (double(sig.noPoints) - 1.0) * sig.tStep;
    }
};

/// Calls `visit` for every waveform of the list; stops with the first result that is not 0.
template <class Visit>
std::int32_t ForEachWaveform(Nodelist* head, Visit visit) {
    for (Nodelist& cell : Items(head)) {
        if (!cell.sig) continue;
        if (cell.sigType == ElecSigType) {
            if (visit(*static_cast<ElecSig*>(cell.sig))) return 1;
        } else if (cell.sigType == OpSigType) {
            for (OpSig& channel : Items(static_cast<OpSignal*>(cell.sig)->channels)) {
                if (visit(channel)) return 1;
            }
        }
    }
    return 0;
}

std::int32_t CloneList(const Nodelist* head, Owned<Nodelist>& clones) {
    if (Make(clones, CopyNodelistShape, head)) return 1;
    Nodelist* clone = clones.get();
    for (const Nodelist& cell : Items(head)) {
        if (CopySignal(&clone->sig, cell.sig, cell.sigType)) return 1;
        clone = clone->next;
    }
    return 0;
}

/// The grid's number of samples; where that is no power of two the duration grows to the next one.
/// 0 if it is above the largest common length (or no number).
std::int32_t CommonLength(TimeGrid& grid) {
    const double steps = grid.duration / grid.step + 0.5;
    if (!(steps < maxCommonLength)) return 0;
    auto length = static_cast<std::uint32_t>(steps) + 1;
    if (!std::has_single_bit(length)) {
        length = std::bit_ceil(length);
        grid.duration = (length - 1) * grid.step;
    }
    return static_cast<std::int32_t>(length);
}

/// Replaces an array by its resampled form; false when memory is exhausted.
bool ResampleArray(Complex*& samples, std::int32_t nOld, double dOld, std::int32_t nNew,
                   double dNew) {
    Complex* resampled = NewSamples<Complex>(nNew);
    if (!resampled) return false;
    ResampleLinear(samples, samples ? nOld : 0, dOld, resampled, nNew, dNew);
    Release(samples);
    samples = resampled;
    return true;
}

bool ResampleArrays(ElecSig& sig, std::int32_t n, double step) {
    const bool done = ResampleArray(sig.elecSamples, sig.noPoints, sig.tStep, n, step) &&
                      ResampleArray(sig.sigmaSamples, sig.noPoints, sig.tStep, n, step);
    sig.fftView = DoubleView(sig.elecSamples);
    sig.sigmaFftView = DoubleView(sig.sigmaSamples);
    return done;
}

bool ResampleArrays(OpSig& sig, std::int32_t n, double step) {
    // By design: polarized channels are not resampled, a plot of them is refused.
    if (sig.Ey_samples) return false;
    const bool done = ResampleArray(sig.Ex_samples, sig.noPoints, sig.tStep, n, step);
    sig.fftView = DoubleView(sig.Ex_samples);
    return done;
}

/// Brings one waveform to the grid. 0 or 1.
template <class Waveform>
std::int32_t Resample(Waveform& sig, const TimeGrid& grid, std::int32_t n) {
    const double bits = sig.bitRate * grid.duration + 0.5;
    if (!std::isfinite(bits)) return 1;
    if (!ResampleArrays(sig, n, grid.step)) return 1;
    sig.noPoints = n;
    sig.tStep = grid.step;
    sig.patternLength = SaturateToInt(bits);
    return 0;
}

}  // namespace

void ResampleLinear(const Complex* source, std::int32_t nOld, double dOld, Complex* target,
                    std::int32_t nNew, double dNew) {
    if (nNew < 1) return;
    target[1] = nOld >= 1 ? source[1] : Complex{};
    const std::int32_t last = nOld - 1;
    for (std::int32_t i = 1; i < nNew; ++i) {
        target[i + 1] = Complex{};
        if (nOld < 1) continue;
        const double t = i * dNew;
        const std::int64_t k = SaturateToInt(t / dOld);
        const auto below = static_cast<std::int32_t>(std::clamp<std::int64_t>(k, 0, last));
        const auto above = static_cast<std::int32_t>(std::clamp<std::int64_t>(k + 1, 0, last));
        if (above == 0) {
            target[i + 1] = source[below + 1];  // one sample: a continuous level
        } else if (above != below) {
            const double fraction = (t - below * dOld) / dOld;
            const Complex a = source[below + 1], b = source[above + 1];
            target[i + 1] = a + fraction * (b - a);
        }
    }
}

std::int32_t AlignSignals(const Nodelist* head, std::int32_t align, Nodelist** clones) {
    if (!clones) return 1;
    *clones = nullptr;
    Owned<Nodelist> list;
    if (CloneList(head, list)) return 1;

    std::int32_t result = 0;
    if (align == 1) {
        TimeGrid grid;
        ForEachWaveform(list.get(), [&](const auto& sig) {
            grid.Note(sig);
            return 0;
        });
        if (!grid.finite) return 1;
        if (grid.duration > 0.0 && grid.step > 0.0) {
            const std::int32_t n = CommonLength(grid);
            if (n == 0) return 1;
            const auto bringToGrid = [&](auto& sig) {
                if (grid.Fits(sig)) return 0;
                result = 2;
                return Resample(sig, grid, n);
            };
            if (ForEachWaveform(list.get(), bringToGrid)) return 1;
        }
    }
    *clones = list.release();
    return result;
}

}  // namespace photrak

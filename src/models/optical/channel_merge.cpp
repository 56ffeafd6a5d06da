// Works in the frequency domain, where a shift of the carrier is a rotation of the bins.
#include "models/optical/channel_merge.h"

#include <cmath>
#include <vector>

#include "models/common/spectrum_grid.h"
#include "numeric/fft.h"
#include "numeric/samples.h"
#include "platform/workers.h"

namespace photrak {
namespace {

struct CommonGrid {
    std::int32_t n = 0;      // samples of each channel
    double df = 0.0;         // bin width, Hz; 0 for levels in one sample
    double carrier = 0.0;    // mean, Hz
    double startTime = 0.0;  // mean, s
};

double Carrier(const OpSig& channel) {
    return lightSpeed / channel.wavelength;
}

/// Every later step relies on these.
Status CheckChannels(const OpSig& first, const ModelReport& report) {
    for (const OpSig& channel : Items(&first)) {
        if (channel.tStep != first.tStep) {
            return report.Fail("ERROR merging input signals: time steps do not match\n");
        }
        if (channel.noPoints != first.noPoints) {
            return report.Fail("ERROR merging input signals: number of data points do not match\n");
        }
        if (!(channel.wavelength > 0.0) || !std::isfinite(Carrier(channel)) ||
            !std::isfinite(channel.startTime)) {
            return report.Fail(
                "ERROR merging input signals: a wavelength or start time is out of range\n");
        }
    }
    if (!IsPowerOfTwo(first.noPoints)) {
        return report.Fail(
            "ERROR merging input signals: number of data points is no power of two\n");
    }
    const bool isLevel = first.noPoints == 1;
    if (isLevel || (first.tStep > 0.0 && std::isfinite(1.0 / (first.noPoints * first.tStep)))) {
        return Status::Success;
    }
    return report.Fail("ERROR merging input signals: the time step is not above 0\n");
}

CommonGrid FindGrid(const OpSig& first) {
    CommonGrid grid;
    grid.n = first.noPoints;
    grid.df = grid.n > 1 ? 1.0 / (grid.n * first.tStep) : 0.0;
    double count = 0.0;
    for (const OpSig& channel : Items(&first)) {
        grid.carrier += Carrier(channel);
        grid.startTime += channel.startTime;
        count += 1.0;
    }
    grid.carrier /= count;
    grid.startTime /= count;
    return grid;
}

/// The window holds frequencies of one sampling rate; the list is sorted, so that its ends are the
/// extremes.
bool FitsSampling(const OpSig* channels, const CommonGrid& grid) {
    const OpSig* last = channels;
    while (last->next) last = last->next;
    return std::fabs(Carrier(*channels) - Carrier(*last)) <= (grid.n - 1) * grid.df;
}

/// A copy of a channel at the common start, as spectra.
bool MakeSpectra(const OpSig& channel, const CommonGrid& grid, Owned<OpSig>& spectra) {
    if (Make(spectra, CopyOpSig, &channel)) return false;
    AlignStartTime(spectra.get(), grid.startTime);
    for (Complex* samples : {spectra->Ex_samples, spectra->Ey_samples}) {
        if (samples) DoFFTFlagged(samples, grid.n, 1, 0);
    }
    return true;
}

/// Output bin k gets bin k - m, m the channel's distance from the mean carrier in bins; 0 <= m < n.
void AddRotated(const Complex* spectrum, std::int32_t n, std::int32_t m, Complex* sum) {
    if (!spectrum) return;
    for (std::int32_t k = 1; k <= n; ++k) {
        const std::int32_t from = k > m ? k - m : k - m + n;
        sum[k] = sum[k] + spectrum[from];
    }
}

void AddSpectra(const OpSig& spectra, const CommonGrid& grid, OpSig& sum) {
    const double bins = grid.n > 1 ? std::round((Carrier(spectra) - grid.carrier) / grid.df) : 0.0;
    const double wrapped = std::fmod(bins, grid.n);
    const auto m = SaturateToInt(wrapped < 0.0 ? wrapped + grid.n : wrapped);
    AddRotated(spectra.Ex_samples, grid.n, m, sum.Ex_samples);
    AddRotated(spectra.Ey_samples, grid.n, m, sum.Ey_samples);
}

/// The spectra of several channels at a time, added up in the order of the list.
Status AddChannels(const OpSig* channels, const CommonGrid& grid, OpSig& sum,
                   const ModelReport& report) {
    std::vector<const OpSig*> list;
    for (const OpSig& channel : Items(channels)) list.push_back(&channel);
    Workers workers(ThreadsFor(list.size(), grid.n));
    std::vector<Owned<OpSig>> spectra(static_cast<std::size_t>(workers.Count()));
    bool made = true;
    workers.ShareInOrder(
        static_cast<long>(list.size()),
        [&](long channel, int slot) {
            Owned<OpSig>& place = spectra[static_cast<std::size_t>(slot)];
            if (!MakeSpectra(*list[static_cast<std::size_t>(channel)], grid, place)) place.reset();
        },
        [&](long, int slot) {
            const Owned<OpSig>& copy = spectra[static_cast<std::size_t>(slot)];
            made = made && copy;
            if (made) AddSpectra(*copy, grid, sum);
        });
    return made ? Status::Success : report.Fail("ERROR copying input optical signals\n");
}

/// A dark channel with the fields that the sum takes over.
bool CreateSum(const OpSig& first, const CommonGrid& grid, Owned<OpSig>& sum) {
    if (Make(sum, CreateOpSig, grid.n)) return false;
    for (const OpSig& channel : Items(&first)) {
        if (channel.Ey_samples && AddEySamples(sum.get())) return false;
    }
    sum->wavelength = lightSpeed / grid.carrier;
    sum->tStep = first.tStep;
    sum->startTime = grid.startTime;
    sum->bitRate = first.bitRate;
    sum->patternLength = first.patternLength;
    sum->RIN = first.RIN;
    return true;
}

}  // namespace

Status MergeChannels(const OpSig* channels, Owned<OpSig>& merged, const ModelReport& report) {
    merged.reset();
    if (!channels) return Status::Success;
    Status status = CheckChannels(*channels, report);
    if (status != Status::Success) return status;
    const CommonGrid grid = FindGrid(*channels);
    if (!FitsSampling(channels, grid)) {
        return report.Fail("ERROR merging optical signals: signal sampling rate too low\n");
    }
    Owned<OpSig> sum;
    if (!CreateSum(*channels, grid, sum)) {
        return report.Fail("ERROR creating output optical signal\n");
    }
    status = AddChannels(channels, grid, *sum, report);
    if (status != Status::Success) return status;
    DoFFTFlagged(sum->Ex_samples, grid.n, -1, fftDivideByN);
    if (sum->Ey_samples) DoFFTFlagged(sum->Ey_samples, grid.n, -1, fftDivideByN);
    merged = std::move(sum);
    return Status::Success;
}

}  // namespace photrak

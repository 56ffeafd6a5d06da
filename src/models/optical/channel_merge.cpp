// Works in the frequency domain, where a shift of the carrier is a rotation of the bins.
#include "models/optical/channel_merge.h"

#include <cmath>

#include "models/common/spectrum_grid.h"
#include "numeric/fft.h"
#include "numeric/samples.h"

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

/// Output bin k gets bin k - m, m the channel's distance from the mean carrier in bins; 0 <= m < n.
void AddRotated(Complex* samples, std::int32_t n, std::int32_t m, Complex* sum) {
    if (!samples) return;
    DoFFTFlagged(samples, n, 1, 0);
    for (std::int32_t k = 1; k <= n; ++k) {
        const std::int32_t from = k > m ? k - m : k - m + n;
        sum[k] = sum[k] + samples[from];
    }
}

Status AddChannel(const OpSig& channel, const CommonGrid& grid, OpSig& sum,
                  const ModelReport& report) {
    Owned<OpSig> copy;
    if (Make(copy, CopyOpSig, &channel)) {
        return report.Fail("ERROR copying input optical signals\n");
    }
    AlignStartTime(copy.get(), grid.startTime);
    const double bins = grid.n > 1 ? std::round((Carrier(channel) - grid.carrier) / grid.df) : 0.0;
    const double wrapped = std::fmod(bins, grid.n);
    const auto m = SaturateToInt(wrapped < 0.0 ? wrapped + grid.n : wrapped);
    AddRotated(copy->Ex_samples, grid.n, m, sum.Ex_samples);
    AddRotated(copy->Ey_samples, grid.n, m, sum.Ey_samples);
    return Status::Success;
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
    for (const OpSig& channel : Items(channels)) {
        status = AddChannel(channel, grid, *sum, report);
        if (status != Status::Success) return status;
    }
    DoFFTFlagged(sum->Ex_samples, grid.n, -1, fftDivideByN);
    if (sum->Ey_samples) DoFFTFlagged(sum->Ey_samples, grid.n, -1, fftDivideByN);
    merged = std::move(sum);
    return Status::Success;
}

}  // namespace photrak

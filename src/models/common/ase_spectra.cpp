// Grid union and resampling.
#include "models/common/ase_spectra.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kernel/sample_arrays.h"
#include "numeric/messages.h"

namespace photrak {
namespace {

struct SpectrumGrid {
    double fstart, fstep, last;  // Hz
    bool operator==(const SpectrumGrid&) const = default;
};

SpectrumGrid GridOf(const OpSigASE& spectrum) {
    return {spectrum.fstart, spectrum.fstep, LastFrequency(spectrum)};
}

SpectrumGrid Union(const SpectrumGrid& a, const SpectrumGrid& b) {
    return {std::min(a.fstart, b.fstart), std::min(a.fstep, b.fstep), std::max(a.last, b.last)};
}

bool IsSound(const SpectrumGrid& grid) {
    return std::isfinite(grid.fstart) && std::isfinite(grid.last) && std::isfinite(grid.fstep) &&
           grid.fstep > 0.0;
}

void AddResampled(OpSigASE& sum, const OpSigASE& source) {
    for (std::int32_t i = 1; i <= sum.noPoints; ++i) {
        sum.powerSamples[i] += NoiseDensity(source, SpectrumFrequency(sum, i));
    }
}

/// Moves `sum` onto the grid.
Status Regrid(OpSigASE& sum, const SpectrumGrid& grid, const ModelReport& report) {
    const double intervals = std::round((grid.last - grid.fstart) / grid.fstep);
    if (!(intervals < maxSpectrumPoints)) {
        return report.Fail("ERROR: the sum of two noise spectra has ", intervals + 1,
                           " points; at most ", maxSpectrumPoints, " are kept\n");
    }
    Owned<OpSigASE> wider;
    if (Make(wider, CreateOpSigASE, SaturateToInt(intervals) + 1)) {
        ReportNoMemory(report.errorText, "a noise spectrum");
        return Status::Error;
    }
    wider->fstart = grid.fstart;
    wider->fstep = grid.fstep;
    AddResampled(*wider, sum);
    std::swap(sum.powerSamples, wider->powerSamples);
    std::swap(sum.noPoints, wider->noPoints);
    sum.fstart = grid.fstart;
    sum.fstep = grid.fstep;
    return Status::Success;
}

/// A record without points takes over the other spectrum.
Status TakeOver(OpSigASE& sum, const OpSigASE& added, const ModelReport& report) {
    double* samples = nullptr;
    if (!CopySamples(samples, added.powerSamples, added.noPoints)) {
        ReportNoMemory(report.errorText, "a noise spectrum");
        return Status::Error;
    }
    Release(std::exchange(sum.powerSamples, samples));
    sum.noPoints = added.noPoints;
    sum.fstart = added.fstart;
    sum.fstep = added.fstep;
    return Status::Success;
}

}  // namespace

void ScaleSpectra(OpSigASE* spectra, double factor) {
    for (OpSigASE& spectrum : Items(spectra)) {
        for (std::int32_t i = 1; i <= spectrum.noPoints; ++i) spectrum.powerSamples[i] *= factor;
    }
}

Status AddSpectrum(OpSigASE& sum, const OpSigASE& added, const ModelReport& report) {
    if (added.noPoints < 1) return Status::Success;
    if (sum.noPoints < 1) return TakeOver(sum, added, report);
    if (sum.noPoints == added.noPoints && sum.fstart == added.fstart && sum.fstep == added.fstep) {
        for (std::int32_t i = 1; i <= sum.noPoints; ++i) {
            sum.powerSamples[i] += added.powerSamples[i];
        }
        return Status::Success;
    }
    const SpectrumGrid own = GridOf(sum), other = GridOf(added);
    if (!IsSound(own) || !IsSound(other)) {
        return report.Fail("ERROR: a noise spectrum has no frequency step above 0\n");
    }
    const SpectrumGrid grid = Union(own, other);
    if (grid != own) {
        const Status status = Regrid(sum, grid, report);
        if (status != Status::Success) return status;
    }
    AddResampled(sum, added);
    return Status::Success;
}

}  // namespace photrak

// Widths and steps are given as wavelengths and turned into frequencies about the center, so that
// the grid is even in frequency.
#include "models/optical/amplifier_noise.h"

#include <cmath>
#include <numbers>

#include "base/text.h"
#include "base/units.h"
#include "models/common/ase_spectra.h"
#include "models/common/spectrum_grid.h"

namespace photrak {
namespace {

constexpr double halfPlanck = 3.313085e-34;  // J s

/// Width in Hz of a band of `width` meters about a wavelength.
double FrequencyWidth(double center, double width) {
    return (1.0 / (center - width / 2.0) - 1.0 / (center + width / 2.0)) * lightSpeed;
}

struct NoiseGrid {
    double fstart = 0.0, fstep = 0.0;  // Hz
    std::int32_t n = 1;
};

Status CreateOnGrid(const NoiseGrid& grid, Owned<OpSigASE>& emission, const ModelReport& report) {
    if (Make(emission, CreateOpSigASE, grid.n)) {
        return report.Fail("ERROR in EDFA creating ASE noise spectra\n");
    }
    emission->fstart = grid.fstart;
    emission->fstep = grid.fstep;
    return Status::Success;
}

/// Steps of a grid; one whose number cannot be held is refused.
Status CountPoints(const EdfaParams& params, double steps, NoiseGrid& grid,
                   const ModelReport& report) {
    steps = std::round(steps);
    if (steps < maxSpectrumPoints) {
        grid.n = SaturateToInt(steps) + 1;
        return Status::Success;
    }
    return report.RefuseValue("noiseResolution", params.noiseResolution,
                              Concat("coarse enough for at most ", maxSpectrumPoints, " points"));
}

// --- Computed shapes ---

struct Band {
    double nu0, dnu;  // center and width, Hz
};

double FlatShape(const Band& band, double nu) {
    return nu > band.nu0 - band.dnu / 2.0 && nu < band.nu0 + band.dnu / 2.0 ? 1.0 : 0.0;
}

/// Falls to 1/sqrt(2) at half the width on either side.
double GaussianShape(const Band& band, double nu) {
    const double x = (nu - band.nu0) / band.dnu;
    return std::exp(-4.0 * std::log(std::numbers::sqrt2) * x * x);
}

struct ComputedShape {
    double span;  // width of the grid, in widths of the band
    double (*value)(const Band& band, double nu);
};
constexpr ComputedShape flat = {2.0, FlatShape};
constexpr ComputedShape gaussian = {4.0, GaussianShape};

Status MakeComputed(const EdfaParams& params, const ComputedShape& shape, double density,
                    Owned<OpSigASE>& emission, const ModelReport& report) {
    if (!(params.BW > 0.0 && params.BW < 2.0 * params.noiseCenter)) {
        return report.RefuseValue("BW", params.BW, "above 0 and below twice noiseCenter");
    }
    const Band band = {lightSpeed / params.noiseCenter,
                       FrequencyWidth(params.noiseCenter, params.BW)};
    const double width = shape.span * band.dnu, r = params.noiseResolution;
    NoiseGrid grid;
    Status status = CountPoints(params, r > 0.0 ? shape.span * params.BW / r : 0.0, grid, report);
    if (status != Status::Success) return status;
    grid.fstart = band.nu0 - width / 2.0;
    grid.fstep = grid.n > 1 ? width / (grid.n - 1) : width;
    status = CreateOnGrid(grid, emission, report);
    if (status != Status::Success) return status;
    for (std::int32_t i = 1; i <= grid.n; ++i) {
        emission->powerSamples[i] = density * shape.value(band, SpectrumFrequency(*emission, i));
    }
    return Status::Success;
}

// --- Curves ---

/// The grid spans the wavelengths of the lower curve.
Status GridOfCurve(const EdfaParams& params, const SCurve& curve, NoiseGrid& grid,
                   const ModelReport& report) {
    const double nuA = lightSpeed / (curve.wavelength.get()[curve.count] / nanometersPerMeter);
    const double nuB = lightSpeed / (curve.wavelength.get()[1] / nanometersPerMeter);
    const double middle = 2.0 * lightSpeed / (nuA + nuB);
    const double r = params.noiseResolution, width = nuB - nuA;
    grid.fstart = nuA;
    if (r > 0.0 && r < 2.0 * middle) {
        grid.fstep = FrequencyWidth(middle, r);
        const Status status = CountPoints(params, width / grid.fstep, grid, report);
        if (status != Status::Success) return status;
    }
    // One point stands for the whole width; a curve of one wavelength has none but the resolution.
    if (grid.n == 1 && width > 0.0) grid.fstep = width;
    if (grid.fstep > 0.0 && std::isfinite(grid.fstep) && std::isfinite(nuA)) return Status::Success;
    return report.RefuseValue("noiseResolution", params.noiseResolution,
                              "above 0 and below twice the wavelength");
}

Status MakeFromCurves(const EdfaParams& params, double inputPower, Owned<OpSigASE>& emission,
                      const ModelReport& report) {
    const SCurvePair curves = ChooseSCurves(params.noiseCurves, inputPower);
    NoiseGrid grid;
    Status status = GridOfCurve(params, *curves.lo, grid, report);
    if (status != Status::Success) return status;
    status = CreateOnGrid(grid, emission, report);
    if (status != Status::Success) return status;
    for (std::int32_t i = 1; i <= grid.n; ++i) {
        const double x = lightSpeed / SpectrumFrequency(*emission, i) * nanometersPerMeter;
        emission->powerSamples[i] = WattsFromDbm(SCurveValue(curves, x));
    }
    return Status::Success;
}

bool IsFinite(const OpSigASE& spectrum) {
    for (std::int32_t i = 1; i <= spectrum.noPoints; ++i) {
        if (!std::isfinite(spectrum.powerSamples[i])) return false;
    }
    return std::isfinite(spectrum.fstart) && std::isfinite(spectrum.fstep);
}

Status MakeShape(const EdfaParams& params, double density, double inputPower,
                 Owned<OpSigASE>& emission, const ModelReport& report) {
    if (params.noiseShape == NoiseShape::Custom && !params.noiseCurves.empty()) {
        return MakeFromCurves(params, inputPower, emission, report);
    }
    const bool bell = params.noiseShape == NoiseShape::Gaussian;
    return MakeComputed(params, bell ? gaussian : flat, density, emission, report);
}

}  // namespace

double EmissionDensity(double g, double Fn, double nu) {
    return g > 1.0 ? (g * g - 1.0) * Fn * nu * halfPlanck : 0.0;
}

Status MakeEmission(const EdfaParams& params, double density, double inputPower,
                    Owned<OpSigASE>& emission, const ModelReport& report) {
    const Status status = MakeShape(params, density, inputPower, emission, report);
    if (status == Status::Success && IsFinite(*emission)) return Status::Success;
    return report.Fail("ERROR in EDFA creating noise spectrum\n");
}

}  // namespace photrak

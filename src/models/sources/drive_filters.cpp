// Transfer functions of the drive filters.
#include "models/sources/drive_filters.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "base/units.h"
#include "kernel/param_table.h"
#include "models/common/electrical_spectrum.h"
#include "models/common/sampling.h"
#include "numeric/fft.h"

namespace photrak {
namespace {

// A first-order system rises from 10 % to 90 % in ln(9) time constants.
// By design: this is 1/ln(9) to eight digits, and drive signals depend on the others, too.
constexpr double timeConstantPerRiseTime = 0.45511960861898226;

/// First-order low-pass: 1 / (1 + j 2 pi f tau).
Complex LowPass(const DriveFilterParams& params, double f) {
    const double tau = params.riseTime * timeConstantPerRiseTime;
    return 1.0 / Complex{1.0, twoPi * f * tau};
}

/// Blackman's window as a taper over frequency: 1 at DC, 0 at half the sample rate. It keeps the
/// sharp edges of the pulses from ringing.
double Taper(double cyclesPerSample) {
    const double angle = pi * (1.0 + 2.0 * cyclesPerSample);
    return 0.42 - 0.5 * std::cos(angle) + 0.08 * std::cos(2.0 * angle);
}

Complex RcFilter(const DriveFilterParams& params, double f, double tStep) {
    return Taper(f * tStep) * LowPass(params, f);
}

/// The low-pass and a resonance after it: f0^2 / (f0^2 - f^2 + j gamma f).
Complex RingFilter(const DriveFilterParams& params, double f, double /*tStep*/) {
    const double f0Squared = params.f0 * params.f0;
    const Complex resonance = f0Squared * (1.0 / Complex{f0Squared - f * f, params.gamma * f});
    return LowPass(params, f) * resonance;
}

struct FilterType {
    std::string_view word;
    Complex (*response)(const DriveFilterParams& params, double f, double tStep);  // null: none
};
constexpr FilterType filterTypes[] = {
    {"RingFilter", RingFilter}, {"RCFilter", RcFilter}, {"None", nullptr}, {"none", nullptr}};

Status CheckRing(const DriveFilterParams& params, const ModelReport& report) {
    const Status status = CheckRange(report, "f0", params.f0, Range::NotZero);
    if (status != Status::Success) return status;
    return CheckRange(report, "gamma", params.gamma, Range::Finite);
}

}  // namespace

Status FilterDrive(const DriveFilterParams& params, ElecSig& wave, const ModelReport& report) {
    const auto* type =
        std::find_if(std::begin(filterTypes), std::end(filterTypes),
                     [&](const FilterType& candidate) { return candidate.word == params.type; });
    if (type == std::end(filterTypes)) {
        return report.Fail(
            FillIn("Error filter pattern type for the signal generator: %s\n", {params.type}),
            "Allowed types are 'RingFilter', 'RCFilter' and 'none'.\n");
    }
    if (!type->response) return Status::Success;
    const std::int32_t n = wave.noPoints;
    Status status = CheckSampling(n, wave.tStep, 1, report);
    if (status == Status::Success && type->response == RingFilter) {
        status = CheckRing(params, report);
    }
    if (status != Status::Success) return status;

    bool finite = true;  // both filters pass DC as it is
    DoFFT(wave.fftView, n, -1);
    MultiplyPairs(wave.fftView, n, 1.0 / (n * wave.tStep), [&](double f) {
        const Complex h = type->response(params, f, wave.tStep);
        finite = finite && std::isfinite(h.re) && std::isfinite(h.im);
        return h;
    });
    ReturnToTime(wave.fftView, n);
    if (!finite) {
        return report.Refuse("the ring filter has no damping at a frequency of the signal");
    }
    // What is left of the imaginary parts is rounding.
    for (std::int32_t i = 1; i <= n; ++i) wave.elecSamples[i].im = 0.0;
    return Status::Success;
}

}  // namespace photrak

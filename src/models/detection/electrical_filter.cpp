// One frame serves all families: s(f) = j y(f) is purely imaginary, and the prototypes have real
// coefficients, so that H(-s) is the conjugate of H(s) and one evaluation gives both elements of a
// pair.
#include "models/detection/electrical_filter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "base/text.h"
#include "base/units.h"
#include "kernel/sample_arrays.h"
#include "models/common/electrical_spectrum.h"
#include "models/common/sampling.h"
#include "numeric/fft.h"
#include "numeric/messages.h"
#include "numeric/special_functions.h"

namespace photrak {
namespace {

constexpr double maxRippleDb = 3.01;  // half power: a larger ripple leaves no 3 dB width

enum class Response { LowPass = 1, HighPass = 2, BandPass = 3 };

/// y of s = j y at a frequency f above 0: the prototype's normalized frequency.
struct FrequencyMap {
    Response response;
    double bandwidth, center;  // Hz
    double scale = 1.0;

    double operator()(double f) const {
        switch (response) {
            case Response::LowPass:
                return f * scale / bandwidth;
            case Response::HighPass:
                return -scale * bandwidth / f;
            default:
                return -scale * (center * center - f * f) / (bandwidth * f);
        }
    }
};

/// A value that overflowed on the way stands for a denominator beyond the range: total rejection.
Complex ZeroUnlessFinite(Complex h) {
    return std::isfinite(h.re) && std::isfinite(h.im) ? h : Complex{};
}

/// numerator / product of (s - p_k), poles[1..order].
struct PoleProduct {
    Complex numerator;
    const Complex* poles;
    int order;

    Complex operator()(double y) const {
        Complex denominator{1.0, 0.0};
        for (int k = 1; k <= order; ++k) denominator = denominator * (Complex{0.0, y} - poles[k]);
        return ZeroUnlessFinite(numerator / denominator);
    }
};

/// gain / sum of b_k s^k, coeff[1 + k] = b_k real, b_0 = 1. With s = j y the even powers are real
/// and the odd ones imaginary: two Horner schemes in -y^2.
struct BesselPolynomial {
    double gain;
    const double* coeff;
    int order;

    Complex operator()(double y) const {
        double parts[2] = {0.0, 0.0};
        for (int k = order; k >= 0; --k) parts[k % 2] = parts[k % 2] * (-y * y) + coeff[1 + k];
        return ZeroUnlessFinite(gain / Complex{parts[0], parts[1] * y});
    }
};

/// A spectrum with its number of elements and their spacing.
struct Spectrum {
    double* view;
    long n;
    double df;  // Hz
};

template <class Prototype>
void Apply(const Spectrum& spectrum, const FrequencyMap& y, const Prototype& prototype) {
    // By design: DC takes s = 0 in every type, so that a high-pass or band-pass passes DC
    // like its prototype and the mean of a waveform survives.
    MultiplyElement(spectrum.view, 1, prototype(0.0));
    MultiplyPairs(spectrum.view, spectrum.n, spectrum.df,
                  [&](double f) { return prototype(y(f)); });
}

Status NoMemory(std::string_view name, const ModelReport& report) {
    ReportNoMemory(report.errorText, name);
    return Status::Error;
}

/// Poles on the unit circle, Butterworth's maximally flat response: |H|^2 = 1 / (1 + y^(2n)).
Status Butterworth(const Spectrum& spectrum, Response response, ElectricalFilterParams& params,
                   const ModelReport& report) {
    const int n = params.order;
    const OwnedBlock<Complex> poles(NewSamples<Complex>(n));
    if (!poles) return NoMemory("Butterworth -- filterPoles", report);
    for (int k = 1; k <= n; ++k) {
        poles.get()[k] = Complex{0.0, 1.0} * Exp({0.0, (2 * k - 1) * pi / (2 * n)});
    }
    Apply(spectrum, FrequencyMap{response, params.bandwidth, params.center},
          PoleProduct{MakeComplex(params.gain), poles.get(), n});
    return Status::Success;
}

/// Poles on an ellipse, equal ripple in the pass band: |H|^2 = 1 / (1 + eps^2 T_n(y)^2). The
/// bandwidth is the 3 dB width; the ripple band ends where it is divided by c.
Status Chebyshev(const Spectrum& spectrum, Response response, ElectricalFilterParams& params,
                 const ModelReport& report) {
    const int n = params.order;
    const double eps = params.ripple;
    const OwnedBlock<Complex> poles(NewSamples<Complex>(n));
    if (!poles) return NoMemory("Chebyshev -- filterPoles", report);
    params.dcFactor = n % 2 == 0 ? 1.0 / std::sqrt(eps * eps + 1.0) : 1.0;
    const double a = Asinh(1.0 / eps) / n;
    Complex atDc{1.0, 0.0};
    for (int k = 1; k <= n; ++k) {
        poles.get()[k] = Complex{0.0, 1.0} * Cos({(2 * k - 1) * pi / (2 * n), -a});
        atDc = atDc * (Complex{} - poles.get()[k]);
    }
    const double c = std::cosh(Acosh(1.0 / eps) / n);
    params.scaledBandwidth = params.bandwidth / c;
    Apply(spectrum, FrequencyMap{response, params.scaledBandwidth, params.center / c},
          PoleProduct{params.gain * params.dcFactor * atDc, poles.get(), n});
    return Status::Success;
}

/// Frequency scale by which the delay-normalized prototype has its 3 dB point at 1.
double BesselScale(int order) {
    constexpr double fromOrderTwo[] = {1.36165, 1.75567, 2.11392, 2.42741, 2.70339,
                                       2.95172, 3.17961, 3.39169, 3.59097};
    if (order >= 2 && order <= 10) return fromOrderTwo[order - 2];
    return std::sqrt(std::numbers::ln2) * std::sqrt(2.0 * order - 1.0);
}

/// Reverse Bessel polynomial, maximally flat delay:
/// a_k = (2n - k)! / (2^(n - k) k! (n - k)!), here divided by a_0.
Status Bessel(const Spectrum& spectrum, Response response, ElectricalFilterParams& params,
              const ModelReport& report) {
    const int n = params.order;
    const OwnedBlock<double> coeff(NewSamples<double>(n + 1));
    if (!coeff) return NoMemory("Bessel -- coeff", report);
    const auto factorial = [](int k) { return factrl(static_cast<std::int16_t>(k)); };
    for (int k = 0; k <= n; ++k) {
        coeff.get()[1 + k] =
            factorial(2 * n - k) / (std::ldexp(1.0, n - k) * factorial(k) * factorial(n - k));
    }
    const double a0 = coeff.get()[1];
    for (int k = 0; k <= n; ++k) coeff.get()[1 + k] /= a0;
    Apply(spectrum, FrequencyMap{response, params.bandwidth, params.center, BesselScale(n)},
          BesselPolynomial{params.gain, coeff.get(), n});
    return Status::Success;
}

struct FilterType {
    std::string_view word;
    Response response;
    Status (*apply)(const Spectrum&, Response, ElectricalFilterParams&, const ModelReport&);
};
constexpr FilterType filterTypes[] = {
    {"LPbutterworth", Response::LowPass, Butterworth},
    {"LPchebyshev", Response::LowPass, Chebyshev},
    {"LPbessel", Response::LowPass, Bessel},
    {"HPbutterworth", Response::HighPass, Butterworth},
    {"HPchebyshev", Response::HighPass, Chebyshev},
    {"HPbessel", Response::HighPass, Bessel},
    {"BPbutterworth", Response::BandPass, Butterworth},
    {"BPchebyshev", Response::BandPass, Chebyshev},
    {"BPbessel", Response::BandPass, Bessel},
};

/// Replaces the decibels of the ripple by eps and refuses what has no transfer function.
Status PrepareFilter(const FilterType& type, ElectricalFilterParams& params,
                     const ModelReport& report) {
    const auto refuse = [&](std::string_view what, double value, std::string_view limits) {
        return report.Refuse("filter ", what, " ", value, limits);
    };
    if (params.order < 1 || params.order > maxFilterOrder) {
        return refuse("order", params.order, Concat(" is not in 1..", maxFilterOrder));
    }
    if (!(params.bandwidth > 0.0) || std::isinf(params.bandwidth)) {
        return refuse("bandwidth", params.bandwidth, " Hz is not above 0");
    }
    if (type.response == Response::BandPass && !std::isfinite(params.center)) {
        return refuse("center", params.center, " Hz is not finite");
    }
    if (!std::isfinite(params.gain)) return refuse("gain", params.gain, " is not finite");
    const double rippleDb = params.ripple;
    params.ripple = std::sqrt(PowerRatio(rippleDb) - 1.0);
    if (type.apply == Chebyshev && !(params.ripple > 0.0 && rippleDb <= maxRippleDb)) {
        return refuse("ripple", rippleDb,
                      Concat(" dB is not above 0 and at most ", maxRippleDb, " dB"));
    }
    return Status::Success;
}

Status CheckPortTypes(const ModelCall& call) {
    if (!call.inputs || call.inputs->sigType != ElecSigType) {
        return call.Fail(
            "Input signal type incorrect for the electrical filter.\n"
            "Input signal type must be electrical.\n");
    }
    if (!call.outputs || call.outputs->sigType != ElecSigType) {
        return call.Fail(
            "Output signal type incorrect for the electrical filter.\n"
            "Output signal type must be electrical.\n");
    }
    return Status::Success;
}

}  // namespace

std::vector<ParamSpec> ElectricalFilterParamSpecs() {
    return SpecsOf(electricalFilterRows);
}

Status DoEleFilter(const ElecSig* signal, double* spectrum, ElectricalFilterParams params,
                   const ModelReport& report) {
    if (!signal) {
        return report.Fail("Empty input ElecSig in DoEleFilter\n");
    }
    if (!spectrum) {
        return report.Fail("Empty input data in DoEleFilter\n");
    }
    const auto* type =
        std::find_if(std::begin(filterTypes), std::end(filterTypes),
                     [&](const FilterType& candidate) { return candidate.word == params.type; });
    if (type == std::end(filterTypes)) return Status::Success;
    if (PrepareFilter(*type, params, report) != Status::Success) return Status::Error;
    const double df = 1.0 / (signal->noPoints * signal->tStep);
    return type->apply({spectrum, signal->noPoints, df}, type->response, params, report);
}

Status ElectricalFilter(const ModelCall& call) {
    if (CheckPortTypes(call) != Status::Success) return Status::Error;
    const auto* input = static_cast<const ElecSig*>(call.inputs->sig);
    if (!input) return Status::Success;
    Owned<ElecSig> output;
    if (Make(output, CopyElecSig, input)) {
        return call.Fail("Error copying input signal to output in electrical filter\n");
    }
    ElectricalFilterParams params;
    ReadParams(electricalFilterRows, call.component.parameters, params);
    const std::int32_t n = output->noPoints;
    if (CheckSampling(n, output->tStep, 1, call) != Status::Success) {
        return Status::Error;
    }
    DoFFT(output->fftView, n, -1);
    if (DoEleFilter(output.get(), output->fftView, params, call) != Status::Success) {
        return Status::Error;
    }
    ReturnToTime(output->fftView, n);
    call.outputs->sig = output.release();
    call.outputs->sigType = ElecSigType;
    return Status::Success;
}

}  // namespace photrak

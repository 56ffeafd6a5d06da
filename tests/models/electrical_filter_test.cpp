#include "models/detection/electrical_filter.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "base/text.h"
#include "models/detection_fixture.h"

namespace photrak {
namespace {

using Value64 = std::complex<double>;

constexpr std::int32_t size = 64;
constexpr double df = 1e9, bandwidth = 8e9, center = 6e9;  // Hz
// Products of up to eight factors and the rounding of the poles.
constexpr double rounding = 1e-12;

ElectricalFilterParams Params(std::string type, int order, double ripple = 0.5) {
    ElectricalFilterParams params;
    params.owner = "f";
    params.type = std::move(type);
    params.order = static_cast<std::int16_t>(order);
    params.bandwidth = bandwidth;
    params.center = center;
    params.ripple = ripple;
    return params;
}

/// A spectrum of ones behind the filter, element i at h[i].
std::vector<Value64> Filter(const ElectricalFilterParams& params, const std::string& expected = "",
                            std::int32_t n = size) {
    Owned<ElecSig> signal;
    EXPECT_EQ(Make(signal, CreateElecSig, n), 0);
    signal->tStep = 1.0 / (n * df);
    for (std::int32_t i = 1; i <= n; ++i) signal->elecSamples[i] = {1.0, 0.0};
    std::string text;
    const Status status = DoEleFilter(signal.get(), signal->fftView, params, text);
    EXPECT_EQ(status, expected.empty() ? Status::Success : Status::Error);
    EXPECT_EQ(text, expected);
    std::vector<Value64> h;
    for (std::int32_t i = 0; i <= n; ++i) h.push_back(Value(signal->elecSamples[i]));
    return h;
}

/// y of s = j y at element i, bandwidth and center divided by c.
double Normalized(std::string_view type, int i, double c = 1.0) {
    const double f = (i - 1) * df, b = bandwidth / c, fc = center / c;
    if (StartsWith(type, "LP")) return f / b;
    return StartsWith(type, "HP") ? -b / f : -(fc * fc - f * f) / (b * f);
}

// |H|^2 = 1 / (1 + y^(2n)): half power at the bandwidth whatever the order.
TEST(ElectricalFilter, ButterworthIsMaximallyFlat) {
    for (const char* type : {"LPbutterworth", "HPbutterworth", "BPbutterworth"}) {
        for (int order = 1; order <= 8; ++order) {
            SCOPED_TRACE(Concat(type, " ", order));
            ElectricalFilterParams params = Params(type, order);
            params.gain = -20.0;
            const auto h = Filter(params);
            for (int i = 2; i <= size / 2; ++i) {
                const double power = 0.01 / (1.0 + std::pow(Normalized(type, i), 2 * order));
                EXPECT_NEAR(std::abs(h[i]), std::sqrt(power), rounding);
                EXPECT_NEAR(std::abs(h[size + 2 - i] - std::conj(h[i])), 0.0, rounding);
            }
        }
    }
}

// |H|^2 = 1 / (1 + eps^2 T_n(y)^2), T_n by its two closed forms. Bandwidth and center are divided
// by c before the frequency is normalized: the half-power width of a low-pass is then the
// bandwidth.
TEST(ElectricalFilter, ChebyshevRipplesEqually) {
    for (const double ripple : {0.1, 3.01}) {
        const double eps = std::sqrt(std::pow(10.0, 0.1 * ripple) - 1.0);
        for (int order = 1; order <= 7; ++order) {
            const double c = std::cosh(std::acosh(1.0 / eps) / order);
            for (const char* type : {"LPchebyshev", "HPchebyshev", "BPchebyshev"}) {
                SCOPED_TRACE(Concat(type, " ", ripple, " dB, order ", order));
                const auto h = Filter(Params(type, order, ripple));
                for (int i = 2; i <= size / 2; ++i) {
                    const double y = std::fabs(Normalized(type, i, c));
                    const double t =
                        y > 1.0 ? std::cosh(order * std::acosh(y)) : std::cos(order * std::acos(y));
                    EXPECT_NEAR(std::abs(h[i]), 1.0 / std::sqrt(1.0 + eps * eps * t * t),
                                10 * rounding);
                }
                const double dc = order % 2 == 0 ? 1.0 / std::sqrt(1.0 + eps * eps) : 1.0;
                EXPECT_NEAR(std::abs(h[1] - dc), 0.0, rounding);
                const bool lowPass = type[0] == 'L';
                EXPECT_NEAR(std::abs(h[9]), lowPass ? std::sqrt(0.5) : std::abs(h[9]), 1e-11);
            }
        }
    }
}

TEST(ElectricalFilter, BesselHalvesThePowerAtItsBandwidth) {
    const auto corner = [](int order) { return std::abs(Filter(Params("LPbessel", order))[9]); };
    for (int order = 2; order <= 10; ++order) {
        EXPECT_NEAR(corner(order), std::sqrt(0.5), 3e-6) << order << ": scales of six digits";
    }
    // Outside the table the scale is that of a Gaussian response, which high orders approach.
    EXPECT_NEAR(corner(1), 1.0 / std::sqrt(1.0 + std::numbers::ln2), rounding);
    EXPECT_NEAR(corner(11), std::sqrt(0.5), 5e-3);
    EXPECT_NEAR(corner(64), std::sqrt(0.5), 1e-3);
}

// Stable prototypes written out: poles on the wrong side would keep the magnitude, not the phase.
TEST(ElectricalFilter, HasThePhaseOfItsPolynomial) {
    const double eps = std::sqrt(std::pow(10.0, 0.05) - 1.0),
                 u = std::sinh(std::asinh(1.0 / eps) / 3);
    const double c = std::cosh(std::acosh(1.0 / eps) / 3.0), pair = u * u + 0.75;
    const auto butterworth = Filter(Params("LPbutterworth", 3)),
               bessel = Filter(Params("LPbessel", 3)), chebyshev = Filter(Params("LPchebyshev", 3));
    for (int i = 1; i <= size / 2; ++i) {
        const Value64 s(0.0, Normalized("LP", i)), b = 1.75567 * s, t = c * s;
        EXPECT_NEAR(std::abs(butterworth[i] * (s + 1.0) * (s * s + s + 1.0) - 1.0), 0.0, rounding);
        EXPECT_NEAR(std::abs(bessel[i] * (b * b * b + 6.0 * b * b + 15.0 * b + 15.0) - 15.0), 0.0,
                    10 * rounding);
        EXPECT_NEAR(std::abs(chebyshev[i] * (t + u) * (t * t + u * t + pair) - u * pair), 0.0,
                    rounding);
    }
}

TEST(ElectricalFilter, PassesDcInEveryTypeAndGivesTheLastElementBothFactors) {
    for (const char* type : {"HPbutterworth", "HPbessel", "BPbessel"}) {
        EXPECT_NEAR(std::abs(Filter(Params(type, 4))[1] - 1.0), 0.0, rounding) << type;
    }
    for (const std::int32_t n : {2, 64}) {
        const double y = Normalized("LP", n / 2 + 1);
        const auto h = Filter(Params("LPbutterworth", 2), "", n);
        EXPECT_NEAR(std::abs(h[n / 2 + 1] - 1.0 / (1.0 + std::pow(y, 4))), 0.0, rounding);
    }
}

TEST(ElectricalFilter, RejectsTotallyWhereItsProductsOverflow) {
    for (const char* type : {"LPbutterworth", "LPchebyshev", "LPbessel", "BPbessel"}) {
        ElectricalFilterParams params = Params(type, 64);
        for (const double narrow : {1.0, 1e-300}) {
            params.bandwidth = narrow;
            EXPECT_EQ(Filter(params)[3], Value64()) << type;
        }
    }
}

TEST(ElectricalFilter, RefusesWhatHasNoTransferFunction) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* type;
        int order;
        double bandwidth, ripple;
        const char* reason;
    } rows[] = {
        {"LPbessel", 0, 8e9, 0.5, "order 0 is not in 1..64"},
        {"HPbutterworth", 10000, 8e9, 0.5, "order 10000 is not in 1..64"},
        {"LPbutterworth", 4, 0.0, 0.5, "bandwidth 0 Hz is not above 0"},
        {"LPchebyshev", 4, 8e9, 0.0, "ripple 0 dB is not above 0 and at most 3.01 dB"},
        {"HPchebyshev", 4, 8e9, nan, "ripple nan dB is not above 0 and at most 3.01 dB"},
        {"none", 0, 0.0, 0.0, nullptr},  // another word is no filter
    };
    for (const auto& row : rows) {
        ElectricalFilterParams params = Params(row.type, row.order, row.ripple);
        params.bandwidth = row.bandwidth;
        const std::string text =
            row.reason ? Concat("ERROR: component 'f': filter ", row.reason, "\n") : "";
        EXPECT_EQ(Filter(params, text)[2], Value64(1.0));
    }
}

// A sine at the bandwidth behind a first-order low-pass: amplitude 1/sqrt(2), an eighth of a period
// later; the mean stays.
TEST(ElectricalFilterBlock, DelaysAndWeakensASine) {
    ParameterList parameters;
    parameters.Text("type", "LPbutterworth").Double("bandwidth", 4e9).Int("order", 1);
    const Owned<ElecSig> input = RampWaveform(size, 1.0 / (size * df));
    const double step = 2.0 * std::numbers::pi * 4 / size;  // phase from sample to sample
    for (int i = 1; i <= size; ++i) input->elecSamples[i] = {2.0 + std::cos(step * i), 0.0};
    const BlockResult result = RunBlock(ElectricalFilter, parameters, input.get(), ElecSigType);
    ASSERT_EQ(result.status, Status::Success) << result.text;
    for (int i = 1; i <= size; ++i) {
        EXPECT_NEAR(result.output->elecSamples[i].re,
                    2.0 + std::cos(step * i - std::numbers::pi / 4) / std::numbers::sqrt2,
                    rounding);
        EXPECT_EQ(result.output->sigmaSamples[i].re, input->sigmaSamples[i].re);
        EXPECT_EQ(input->elecSamples[i].re, 2.0 + std::cos(step * i)) << "an input never changes";
    }
}

TEST(ElectricalFilterBlock, RefusesWrongPortsAndLengths) {
    ParameterList parameters;
    parameters.Text("type", "LPbessel").Double("bandwidth", 4e9).Int("order", 65537);
    const Owned<ElecSig> odd = RampWaveform(12, 1e-12), good = RampWaveform(16, 1e-12);
    const struct {
        ElecSig* input;
        std::int32_t inputType, outputType;
        const char* text;
    } rows[] = {
        {good.get(), OpSigType, ElecSigType,
         "Input signal type incorrect for the electrical filter.\n"
         "Input signal type must be electrical.\n"},
        {good.get(), ElecSigType, BinSigType,
         "Output signal type incorrect for the electrical filter.\n"
         "Output signal type must be electrical.\n"},
        {odd.get(), ElecSigType, ElecSigType,
         "ERROR: component 'block': a signal of 12 samples; their number must be a power of two, "
         "at least 1\n"},
        {good.get(), ElecSigType, ElecSigType,
         "ERROR: component 'block': filter order 32767 is not in 1..64\n"},
        {nullptr, ElecSigType, ElecSigType, ""},  // no signal, no output, no fault
    };
    for (const auto& row : rows) {
        const BlockResult result =
            RunBlock(ElectricalFilter, parameters, row.input, row.inputType, row.outputType);
        EXPECT_EQ(result.status, row.input ? Status::Error : Status::Success);
        EXPECT_EQ(result.text, row.text);
        EXPECT_EQ(result.output, nullptr);
    }
}

}  // namespace
}  // namespace photrak

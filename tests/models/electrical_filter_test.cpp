#include "models/detection/electrical_filter.h"

#include <cmath>
#include <numbers>
#include <vector>

#include "base/text.h"
#include "models/block_run.h"
#include "support/signals.h"

namespace photrak {
namespace {

using Value64 = std::complex<double>;

constexpr std::int32_t size = 64;
constexpr double df = 1e9, bandwidth = 8e9, center = 6e9;  // Hz
// Products of up to eight factors and the rounding of the poles.
constexpr double rounding = 1e-12;

ElectricalFilterParams Params(std::string type, int order, double ripple = 0.5) {
    ElectricalFilterParams params;
    params.type = std::move(type);
    params.order = order;
    params.bandwidth = bandwidth;
    params.center = center;
    params.ripple = ripple;
    return params;
}

/// A spectrum of ones behind the filter, element i at h[i].
std::vector<Value64> Filter(const ElectricalFilterParams& params,
                            const std::string& expected = "") {
    Owned<ElecSig> signal;
    EXPECT_EQ(Make(signal, CreateElecSig, size), 0);
    signal->tStep = 1.0 / (size * df);
    for (std::int32_t i = 1; i <= size; ++i) signal->elecSamples[i] = {1.0, 0.0};
    std::string text;
    const Status status = DoEleFilter(signal.get(), signal->fftView, params, {"f", text});
    EXPECT_EQ(status, expected.empty() ? Status::Success : Status::Error);
    EXPECT_EQ(text, expected);
    std::vector<Value64> h;
    for (std::int32_t i = 0; i <= size; ++i) h.push_back(Value(signal->elecSamples[i]));
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
        for (const int order : {1, 2, 5, 8}) {
            SCOPED_TRACE(Concat(type, " ", order));
            ElectricalFilterParams params = Params(type, order);
            params.gain = 0.1;
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
        for (const int order : {1, 4, 7}) {
            const double c = std::cosh(std::acosh(1.0 / eps) / order);
            for (const char* type : {"LPchebyshev", "HPchebyshev", "BPchebyshev"}) {
                SCOPED_TRACE(Concat(type, " ", ripple, " dB, order ", order));
                const auto h = Filter(Params(type, order, ripple));
                const auto magnitude = [&](double y) {
                    const double t =
                        y > 1.0 ? std::cosh(order * std::acosh(y)) : std::cos(order * std::acos(y));
                    return 1.0 / std::hypot(1.0, eps * t);
                };
                EXPECT_NEAR(std::abs(h[1] - magnitude(0.0)), 0.0, rounding);
                for (int i = 2; i <= size / 2; ++i) {
                    EXPECT_NEAR(std::abs(h[i]), magnitude(std::fabs(Normalized(type, i, c))),
                                10 * rounding);
                }
            }
        }
    }
}

TEST(ElectricalFilter, BesselHalvesThePowerAtItsBandwidth) {
    // The table has scales of six digits. Outside it the scale is that of a Gaussian response,
    // which high orders approach.
    for (int order = 1; order <= 64; ++order) {
        const double expected =
            order == 1 ? 1.0 / std::sqrt(1.0 + std::numbers::ln2) : std::sqrt(0.5);
        const double tolerance = order == 1 ? rounding : order <= 10 ? 3e-6 : 0.06 / order;
        EXPECT_NEAR(std::abs(Filter(Params("LPbessel", order))[9]), expected, tolerance) << order;
    }
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

TEST(ElectricalFilter, PassesDcInEveryType) {
    for (const char* type : {"HPbutterworth", "HPbessel", "BPbessel"}) {
        EXPECT_NEAR(std::abs(Filter(Params(type, 4))[1] - 1.0), 0.0, rounding) << type;
    }
}

TEST(ElectricalFilter, RejectsTotallyWhereItsProductsOverflow) {
    for (const char* type : {"LPbutterworth", "LPchebyshev", "LPbessel", "BPbessel"}) {
        ElectricalFilterParams params = Params(type, 64);
        params.bandwidth = 1e-300;
        EXPECT_EQ(Filter(params)[3], Value64()) << type;
    }
}

TEST(ElectricalFilter, RefusesWhatHasNoTransferFunction) {
    const struct {
        int order;
        double bandwidth, ripple;
        const char* reason;
    } rows[] = {{65537, 8e9, 0.5, "order 65537 is not in 1..64"},
                {4, 0.0, 0.5, "bandwidth 0 Hz is not above 0"},
                {4, 8e9, NAN, "ripple nan dB is not above 0 and at most 3.01 dB"}};
    for (const auto& row : rows) {
        ElectricalFilterParams params = Params("LPchebyshev", row.order, row.ripple);
        params.bandwidth = row.bandwidth;
        Filter(params, Concat("ERROR: component 'f': filter ", row.reason, "\n"));
    }
    EXPECT_EQ(Filter(Params("none", 0))[2], Value64(1.0)) << "another word is no filter";
}

// A sine at the bandwidth behind a first-order low-pass: amplitude 1/sqrt(2), an eighth of a period
// later; the mean stays.
TEST(ElectricalFilterBlock, DelaysAndWeakensASine) {
    ModelBlock block;
    block.Word("type", "LPbutterworth").Number("bandwidth", 4e9).Whole("order", 1);
    block.Number("lossGain", -20.0);
    const Owned<ElecSig> input = RampWaveform(size, 1.0 / (size * df));
    const double step = 2.0 * std::numbers::pi * 4 / size;  // phase from sample to sample
    for (int i = 1; i <= size; ++i) input->elecSamples[i] = {2.0 + std::cos(step * i), 0.0};
    const BlockRun run(ElectricalFilter, block, {input}, 1, ElecSigType);
    for (int i = 1; i <= size; ++i) {
        EXPECT_NEAR(run.Wave().elecSamples[i].re,
                    0.2 + 0.1 * std::cos(step * i - std::numbers::pi / 4) / std::numbers::sqrt2,
                    rounding);
        EXPECT_EQ(run.Wave().sigmaSamples[i].re, input->sigmaSamples[i].re);
    }
}

}  // namespace
}  // namespace photrak

// Complex arithmetic against long double; the fixed formulas where bits matter.
#include "base/complex.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

namespace photrak {
namespace {

using Reference = std::complex<long double>;

constexpr Complex values[] = {{1.0, 2.0},  {-3.5, 0.25}, {0.5, -4.0},    {-1e-3, -2e2},
                              {0.0, 1.75}, {2.0, 0.0},   {-0.75, -0.75}, {1e5, 3e-4}};

Reference Wide(Complex a) {
    return {a.re, a.im};
}

void ExpectNear(Complex got, Reference wanted, long double tolerance) {
    const long double scale = std::abs(wanted) + 1e-300L;
    EXPECT_LE(std::abs(Wide(got) - wanted) / scale, tolerance)
        << "(" << got.re << ", " << got.im << ")";
}

TEST(Complex, AgreesWithWideArithmetic) {
    // A few roundings of operands of one size; the product's sums may cancel one digit.
    constexpr long double tolerance = 2e-15L;
    for (const Complex a : values) {
        SCOPED_TRACE(testing::Message() << "a = (" << a.re << ", " << a.im << ")");
        for (const Complex b : values) {
            const Reference product = Wide(a) * Wide(b);
            EXPECT_LE(std::abs(Wide(a * b) - product),
                      tolerance * std::abs(Wide(a)) * 3.0L * std::abs(Wide(b)));
            ExpectNear(a / b, Wide(a) / Wide(b), tolerance);
        }
        ExpectNear(2.5 / a, 2.5L / Wide(a), tolerance);
        ExpectNear(Sqrt(a), std::sqrt(Wide(a)), tolerance);
        ExpectNear(Log(a), std::log(Wide(a)), tolerance);
        ExpectNear(Power(a, 1.5), std::pow(Wide(a), 1.5L), tolerance * 10.0L);
        EXPECT_NEAR(Phase(a), std::arg(Wide(a)), 1e-15);
    }
    EXPECT_NEAR(Asinh(std::sinh(3.5)), 3.5, 1e-14);
    EXPECT_NEAR(Acosh(std::cosh(3.5)), 3.5, 1e-13);
    for (const Complex a : {Complex{0.3, -1.2}, Complex{-2.0, 0.7}, Complex{1.0, 3.0}}) {
        ExpectNear(Exp(a), std::exp(Wide(a)), tolerance);
        ExpectNear(Sin(a), std::sin(Wide(a)), tolerance);
        ExpectNear(Cos(a), std::cos(Wide(a)), tolerance);
    }
}

TEST(Complex, QuotientSurvivesLargeDivisorsAndTiesToTheRealPart) {
    EXPECT_TRUE((Complex{1e200, 1e200} / Complex{1e200, -1e200} == Complex{0.0, 1.0}));
    ExpectNear(Complex{3.0, 4.0} / Complex{1e300, 2e300},
               Reference(3, 4) / Reference(1e300L, 2e300L), 1e-15L);
    // A product takes three multiplications: four would give a real part of 1e16, since the
    // imaginary part of the first factor drowns in it.
    const Complex product = Complex{1e16, 1.0} * Complex{1.0, -1.0};
    EXPECT_TRUE((product == Complex{10000000000000002.0, -1e16}));
}

TEST(Complex, PhaseCoversTheAxes) {
    constexpr double pi = std::numbers::pi;
    const std::pair<Complex, double> rows[] = {
        {{0.0, 0.0}, 0.0}, {{-0.0, 0.0}, 0.0}, {{0.0, 3.0}, pi / 2.0}, {{0.0, -3.0}, -pi / 2.0},
        {{-2.0, 0.0}, pi}, {{-2.0, -0.0}, pi}};  // not below zero: the upper side of the cut
    for (const auto& [z, phase] : rows) EXPECT_EQ(Phase(z), phase);
    EXPECT_TRUE(std::isnan(Phase({std::numeric_limits<double>::quiet_NaN(), 1.0})));
}

}  // namespace
}  // namespace photrak

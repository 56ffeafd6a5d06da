// Transfer arrays, split fields and the passes between transforms, against plain transforms and
// plain loops, for every vector width that the processor has.
#include "numeric/transfer.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

#include "base/arrays.h"
#include "gtest/gtest.h"
#include "numeric/fft.h"
#include "numeric/split_step.h"
#include "support/failure.h"
#include "support/fft_support.h"

namespace photrak {
namespace {

using Values = std::vector<std::complex<double>>;

class TransferLevels : public FftLevels {};

Values ValuesOf(const std::vector<Complex>& samples) {
    Values values;
    for (std::size_t i = 1; i < samples.size(); ++i) values.push_back(Value(samples[i]));
    return values;
}

Values ValuesOf(SplitField& field) {
    Settle(field);
    std::vector<Complex> samples(static_cast<std::size_t>(field.Size()) + 1);
    field.CopyTo(samples.data(), 0, field.Size());
    return ValuesOf(samples);
}

SplitField FieldOf(const std::vector<Complex>& samples) {
    const long n = static_cast<long>(samples.size()) - 1;
    SplitField field(n);
    field.CopyFrom(samples.data(), 0, n);
    return field;
}

// Deviation over the largest element.
double Difference(const Values& a, const Values& b) {
    double difference = 0, size = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        difference = std::max(difference, std::abs(a[i] - b[i]));
        size = std::max(size, std::abs(b[i]));
    }
    return difference == 0 ? 0 : difference / size;
}

bool SameBits(const Values& a, const Values& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(a[0])) == 0;
}

Values Filtered(std::vector<Complex> samples, const std::vector<Complex>& factors, int sign) {
    const long n = static_cast<long>(samples.size()) - 1;
    DoFFT(DoubleView(samples.data()), n, sign);
    for (std::size_t i = 1; i < samples.size(); ++i)
        samples[i] = (1.0 / static_cast<double>(n)) * (samples[i] * factors[i]);
    DoFFT(DoubleView(samples.data()), n, -sign);
    return ValuesOf(samples);
}

// The lengths take every mixture of stages: none, 2, 4, 4 4, 8, and so on, the last one factors
// from two tables.
TEST_F(TransferLevels, ApplyTransferIsForwardProductInverse) {
    for (long n = 1; n <= 1 << 16; n *= 2)
        for (int sign : {+1, -1}) {
            SCOPED_TRACE(testing::Message() << "n = " << n << ", sign " << sign);
            const std::vector<Complex> input = RandomSamples(n, 2), factors = RandomSamples(n, 3);
            const Values expected = Filtered(input, factors, sign);
            TransferArray transfer(n, sign);
            transfer.Fill(factors.data());
            Values first;
            ForEachLevel([&] {
                std::vector<Complex> samples = input;
                ApplyTransfer(samples.data(), transfer);
                EXPECT_LT(Difference(ValuesOf(samples), expected), 1e-14);
                if (first.empty()) first = ValuesOf(samples);
                EXPECT_TRUE(SameBits(ValuesOf(samples), first));
                SplitField field = FieldOf(input), open = FieldOf(input);
                ApplyTransfer(field, transfer);
                ApplyTransferOpen(open, transfer);
                EXPECT_TRUE(SameBits(ValuesOf(field), first));
                EXPECT_TRUE(SameBits(ValuesOf(open), first));
            });
        }
}

TEST(Transfer, ResponseIsAskedBySignedBin) {
    // A delay of d samples: with sign +1 in the forward transform, exp(+2 pi i k d / n).
    for (long n : {4L, 64L, 512L}) {
        const long d = n / 4 + 1;
        TransferArray transfer(n, +1);
        transfer.Fill([&](long k) {
            EXPECT_GT(k, -(n + 1) / 2);
            EXPECT_LE(k, n / 2);
            const double angle = 2 * std::numbers::pi * static_cast<double>(k * d % n) / n;
            return MakeComplex(std::cos(angle), std::sin(angle));
        });
        std::vector<Complex> samples(static_cast<std::size_t>(n) + 1);
        samples[3] = MakeComplex(1, -2);
        ApplyTransfer(samples.data(), transfer);
        const long at = (2 + d) % n + 1;
        for (long i = 1; i <= n; ++i)
            EXPECT_NEAR(std::abs(Value(samples[static_cast<std::size_t>(i)]) -
                                 (i == at ? std::complex<double>(1, -2) : 0.0)),
                        0, 1e-14)
                << i;
    }
}

TEST_F(TransferLevels, FillPhasesIsTheSameAsFillingFactors) {
    for (long n : {2L, 256L})
        for (int sign : {+1, -1}) {
            const double length = 3.5, gain = 0.25;
            TransferArray byPhase(n, sign), byFactor(n, sign);
            AlignedDoubles phase(static_cast<std::size_t>(n));
            for (long q = 0; q < n; ++q) {
                phase[static_cast<std::size_t>(q)] = 1e-3 * byPhase.BinOrder()[q] - 2;
                const std::complex<double> h =
                    std::polar(gain, length * phase[static_cast<std::size_t>(q)]);
                byFactor.Set(q, {h.real(), h.imag()});
            }
            ForEachLevel([&] {
                byPhase.FillPhases(phase.Data(), length, gain);
                SplitField a = FieldOf(RandomSamples(n)), b = FieldOf(RandomSamples(n));
                ApplyTransfer(a, byPhase);
                ApplyTransfer(b, byFactor);
                EXPECT_LT(Difference(ValuesOf(a), ValuesOf(b)), 1e-15);
            });
        }
}

TEST(Transfer, LengthsThatDoNotFitAreRefused) {
    for (long n : {0L, 12L, 1L << 40, std::numeric_limits<long>::max()})
        EXPECT_NE(FailureOf([&] { TransferArray(n, 1); }), "") << n;
    for (long n : {0L, std::numeric_limits<long>::max()})
        EXPECT_NE(FailureOf([&] { SplitField field(n); }), "") << n;
    SplitField field(64);
    TransferArray transfer(128, 1);
    EXPECT_NE(FailureOf([&] { ApplyTransfer(field, transfer); }), "");
    EXPECT_NE(FailureOf([&] { KerrThenTransfer(field, nullptr, {}, transfer, nullptr); }), "");
}

// Angles of every way of working them out, and a few that have no sine.
TEST_F(TransferLevels, RotationIsRightToTheLastBits) {
    std::vector<double> phase;
    for (double scale : {1e-8, 0.1, 0.78, 0.79, 10.0, 1e3, 1e5, 0.99e6, 1.01e6, 1e9, 1e300})
        for (double part : {-1.0, -0.6180339887, 0.0, 0.3141592653, 1.0})
            phase.push_back(scale * part);
    for (int k = 1; k < 40; ++k) phase.push_back(k * std::numbers::pi / 4);  // next to zeros
    const long n = static_cast<long>(phase.size());
    Values first;
    ForEachLevel([&] {
        std::vector<Complex> ones(phase.size() + 1, MakeComplex(1));
        SplitField field = FieldOf(ones);
        RotatePhases(field, phase.data());
        const Values turned = ValuesOf(field);
        for (long i = 0; i < n; ++i) {
            const auto k = static_cast<std::size_t>(i);
            const long double angle = phase[k];
            EXPECT_NEAR(turned[k].real(), static_cast<double>(std::cos(angle)), 3e-16) << phase[k];
            EXPECT_NEAR(turned[k].imag(), static_cast<double>(std::sin(angle)), 3e-16) << phase[k];
        }
        if (first.empty()) first = turned;
        EXPECT_TRUE(SameBits(turned, first));

        const double wild[] = {std::numeric_limits<double>::infinity(), std::nan(""), 1.0};
        SplitField three(3);
        three.Re()[2] = 1;
        RotatePhases(three, wild, 2);
        EXPECT_TRUE(std::isnan(three.Re()[0]) && std::isnan(three.Im()[1]));
        EXPECT_NEAR(three.Im()[2], std::sin(2.0), 2e-16);
    });
}

TEST_F(TransferLevels, AmplificationIsTheExponential) {
    std::vector<double> exponent;
    for (double x :
         {-800.0, -745.0, -690.0, -1.0, -1e-17, 0.0, 1e-3, 0.34657, 0.34658, 30.0, 709.0})
        exponent.push_back(x);
    ForEachLevel([&] {
        SplitField field(static_cast<long>(exponent.size()));
        for (long q = 0; q < field.Size(); ++q) field.Re()[q] = 1, field.Im()[q] = -2;
        Amplify(field, exponent.data());
        for (long q = 0; q < field.Size(); ++q) {
            const double expected = std::exp(exponent[static_cast<std::size_t>(q)]);
            EXPECT_NEAR(field.Re()[q], expected, 4e-16 * expected) << q;
            EXPECT_NEAR(field.Im()[q], -2 * expected, 8e-16 * expected) << q;
        }
    });
}

// Two channels with two polarizations and walk-off, some steps, by plain loops.
struct PlainChannels {
    std::vector<Values> x, y;
    std::vector<double> gamma;
    std::vector<long> shift;

    void Step() {
        const auto n = static_cast<long>(x[0].size());
        std::vector<double> sx(x[0].size()), sy(x[0].size());
        const auto at = [n](long q) { return static_cast<std::size_t>(((q % n) + n) % n); };
        const bool alone = x.size() == 1;
        for (std::size_t c = 0; c < x.size(); ++c)
            for (long q = 0; q < n; ++q) {
                sx[at(q + shift[c])] += std::norm(x[c][at(q)]);
                sy[at(q + shift[c])] += std::norm(y[c][at(q)]);
            }
        for (std::size_t c = 0; c < x.size(); ++c)
            for (long q = 0; q < n; ++q) {
                std::complex<double>&ex = x[c][at(q)], &ey = y[c][at(q)];
                const double own = alone ? 0 : 2 * sx[at(q + shift[c])];
                const double ownY = alone ? 0 : 2 * sy[at(q + shift[c])];
                const double a = alone ? std::norm(ex) : own - std::norm(ex);
                const double b = alone ? std::norm(ey) : ownY - std::norm(ey);
                ex *= std::polar(1.0, gamma[c] * (a + b * 2 / 3));
                ey *= std::polar(1.0, gamma[c] * (b + a * 2 / 3));
            }
    }
};

std::vector<Complex> SamplesOf(const Values& values) {
    std::vector<Complex> samples(1);
    for (const auto& v : values) samples.push_back({v.real(), v.imag()});
    return samples;
}

// Every step turns the rounding of the powers into angles gamma times as large.
void RunChannels(long n, std::size_t channels, bool dual, int sign, double gamma) {
    SCOPED_TRACE(testing::Message() << "n = " << n << ", " << channels << " channels, "
                                    << (dual ? 2 : 1) << " polarizations, sign " << sign);
    PlainChannels plain;
    std::vector<SplitField> x, y;
    for (std::size_t c = 0; c < channels; ++c) {
        const auto seed = static_cast<unsigned>(10 + c);
        plain.x.push_back(ValuesOf(RandomSamples(n, seed)));
        plain.y.push_back(dual ? ValuesOf(RandomSamples(n, seed + 50))
                               : Values(static_cast<std::size_t>(n)));
        plain.gamma.push_back(gamma * (1 + 0.1 * static_cast<double>(c)));
        plain.shift.push_back(c == 0 ? 0 : -n / 3 - 5);
        x.push_back(FieldOf(SamplesOf(plain.x.back())));
        y.push_back(FieldOf(SamplesOf(plain.y.back())));
    }
    const std::vector<Complex> factors = RandomSamples(n, 5);
    TransferArray transfer(n, sign);
    transfer.Fill(factors.data());
    for (int step = 0; step < 4; ++step) {
        std::vector<double> sx(static_cast<std::size_t>(n)), sy(sx);
        for (std::size_t c = 0; channels > 1 && c < channels; ++c) {
            AddPower(x[c], sx.data(), plain.shift[c]);
            if (dual) AddPower(y[c], sy.data(), plain.shift[c]);
        }
        if (step == 2) Settle(y[0]);  // of a pair one may be open and one settled
        plain.Step();
        for (std::size_t c = 0; c < channels; ++c) {
            KerrStep kerr;
            kerr.gamma = plain.gamma[c];
            if (channels > 1) kerr = {plain.gamma[c], sx.data(), sy.data(), plain.shift[c]};
            SplitField* other = dual ? &y[c] : nullptr;
            if (step == 3) {
                KerrRotate(x[c], other, kerr);
            } else {
                KerrThenTransfer(x[c], other, kerr, transfer, dual ? &transfer : nullptr);
                plain.x[c] = Filtered(SamplesOf(plain.x[c]), factors, sign);
                plain.y[c] = Filtered(SamplesOf(plain.y[c]), factors, sign);
            }
        }
    }
    const double tolerance = 1e-13 * (1 + 10 * gamma);
    for (std::size_t c = 0; c < channels; ++c) {
        EXPECT_LT(Difference(ValuesOf(x[c]), plain.x[c]), tolerance) << "x of channel " << c;
        EXPECT_LT(Difference(ValuesOf(y[c]), plain.y[c]), tolerance) << "y of channel " << c;
    }
}

TEST_F(TransferLevels, SplitStepsAgreeWithPlainLoops) {
    ForEachLevel([] {
        for (long n : {1L, 8L, 32L, 64L, 128L, 256L, 512L, 4096L})
            for (std::size_t channels : {1, 2})
                for (bool dual : {false, true})
                    for (int sign : {+1, -1}) RunChannels(n, channels, dual, sign, 0.1);
        RunChannels(1 << 16, 1, true, +1, 0.1);
        RunChannels(512, 2, true, +1, 5.0);  // beyond the first quadrant
    });
}

TEST_F(TransferLevels, PeakPowerTakesThePartAskedFor) {
    SplitField x(64), y(64);
    x.Re()[20] = 3;
    y.Im()[20] = 4;
    x.Im()[40] = 10;
    ForEachLevel([&] {
        EXPECT_EQ(PeakPower(x, &y, 0, 64), 100);
        EXPECT_EQ(PeakPower(x, &y, 16, 24), 25);
        EXPECT_EQ(PeakPower(x, nullptr, 19, 2), 9);
        EXPECT_EQ(PeakPower(x, &y, 21, 3), 0);
    });
}

}  // namespace
}  // namespace photrak

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

TEST(Transfer, LengthsThatDoNotFitAreRefused) {
    for (long n : {0L, 12L, 1L << 40, std::numeric_limits<long>::max()})
        EXPECT_NE(FailureOf([&] { TransferArray(n, 1); }), "") << n;
    SplitField field(64);
    TransferArray transfer(128, 1);
    EXPECT_NE(FailureOf([&] { ApplyTransfer(field, transfer); }), "");
}

// Angles of every way of working them out.
TEST_F(TransferLevels, RotationIsRightToTheLastBits) {
    std::vector<double> phase;
    for (double scale : {1e-8, 0.78, 0.79, 10.0, 1e5, 0.99e6, 1.01e6, 1e9, 1e300})
        for (double part : {-1.0, -0.6180339887, 0.0, 0.3141592653}) phase.push_back(scale * part);
    for (int k = 1; k < 40; ++k) phase.push_back(k * std::numbers::pi / 4);  // next to zeros
    Values first;
    ForEachLevel([&] {
        SplitField field = FieldOf(std::vector<Complex>(phase.size() + 1, MakeComplex(1)));
        RotatePhases(field, phase.data());
        const Values turned = ValuesOf(field);
        for (std::size_t k = 0; k < phase.size(); ++k) {
            const long double angle = phase[k];
            EXPECT_NEAR(turned[k].real(), static_cast<double>(std::cos(angle)), 3e-16) << phase[k];
            EXPECT_NEAR(turned[k].imag(), static_cast<double>(std::sin(angle)), 3e-16) << phase[k];
        }
        if (first.empty()) first = turned;
        EXPECT_TRUE(SameBits(turned, first));
    });
}

TEST_F(TransferLevels, AmplificationIsTheExponential) {
    const double exponents[] = {-800, -745, -690, -1e-17, 0.0, 1e-3, 0.34657, 0.34658, 30, 709};
    ForEachLevel([&] {
        SplitField field(std::size(exponents));
        for (long q = 0; q < field.Size(); ++q) field.Re()[q] = 1, field.Im()[q] = -2;
        Amplify(field, exponents);
        for (long q = 0; q < field.Size(); ++q) {
            const double expected = std::exp(exponents[q]);
            EXPECT_NEAR(field.Re()[q], expected, 4e-16 * expected) << q;
            EXPECT_NEAR(field.Im()[q], -2 * expected, 8e-16 * expected) << q;
        }
    });
}

std::vector<Complex> SamplesOf(const Values& values) {
    std::vector<Complex> samples(1);
    for (const auto& v : values) samples.push_back({v.real(), v.imag()});
    return samples;
}

// Some steps of one channel by plain loops, with `others`' powers passing by at a shift. Every step
// turns the rounding of the powers into angles gamma times as large.
void RunSteps(long n, bool others, bool dual, int sign, double gamma) {
    SCOPED_TRACE(testing::Message() << n << " samples, " << others << dual << " sign " << sign);
    const auto size = static_cast<std::size_t>(n), offset = (3 * size - size / 3 - 5 % size) % size;
    const std::vector<Complex> factors = RandomSamples(n, 5);
    Values plainX = ValuesOf(RandomSamples(n, 10));
    Values plainY = dual ? ValuesOf(RandomSamples(n, 60)) : Values(size);
    SplitField x = FieldOf(SamplesOf(plainX)), y = FieldOf(SamplesOf(plainY));
    TransferArray transfer(n, sign);
    transfer.Fill(factors.data());
    for (int step = 0; step < 4; ++step) {
        std::vector<double> sx(size), sy(size);
        for (std::size_t q = 0; q < size; ++q) sx[q] = 1.0 / (1.0 + q), sy[q] = 0.5 * sx[q];
        for (std::size_t q = 0; q < size; ++q) {
            const double other = others ? sx[(q + offset) % size] : 0;
            const double a = std::norm(plainX[q]) + 2 * other;
            const double b = std::norm(plainY[q]) + (dual ? other : 0);
            plainX[q] *= std::polar(1.0, gamma * (a + b * 2 / 3));
            plainY[q] *= std::polar(1.0, gamma * (b + a * 2 / 3));
        }
        KerrStep kerr{gamma};
        if (others) {
            kerr = {gamma, sx.data(), sy.data(), -n / 3 - 5};
            AddPower(x, sx.data(), kerr.shift);
            if (dual) AddPower(y, sy.data(), kerr.shift);
        }
        if (step == 2) Settle(y);  // of a pair one may be open and one settled
        if (step == 3) {
            KerrRotate(x, dual ? &y : nullptr, kerr);
        } else {
            KerrThenTransfer(x, dual ? &y : nullptr, kerr, transfer, dual ? &transfer : nullptr);
            plainX = Filtered(SamplesOf(plainX), factors, sign);
            plainY = Filtered(SamplesOf(plainY), factors, sign);
        }
    }
    EXPECT_LT(Difference(ValuesOf(x), plainX), 1e-13 * (1 + 10 * gamma));
    EXPECT_LT(Difference(ValuesOf(y), plainY), 1e-13 * (1 + 10 * gamma));
}

TEST_F(TransferLevels, SplitStepsAgreeWithPlainLoops) {
    ForEachLevel([] {
        for (long n : {1L, 8L, 32L, 64L, 128L, 256L, 512L, 4096L})
            for (bool others : {false, true})
                for (bool dual : {false, true})
                    for (int sign : {+1, -1}) RunSteps(n, others, dual, sign, 0.1);
        RunSteps(1 << 16, false, true, +1, 0.1);
        RunSteps(512, true, true, +1, 5.0);  // beyond the first quadrant
    });
}

/// Two steps with a look at the peak in the middle of each, pass by pass or taken along.
void RunWithPeaks(SplitField& x, SplitField* y, const KerrStep& kerr, const TransferArray& h,
                  bool along, std::vector<double>& peaks) {
    const long at = x.Size() / 4, count = x.Size() / 2;
    const auto transfer = [&] {
        ApplyTransferOpen(x, h);
        if (y) ApplyTransferOpen(*y, h);
    };
    const auto look = [&] {
        Settle(x);
        if (y) Settle(*y);
        peaks.push_back(PeakPower(x, y, at, count));
    };
    for (int step = 0; step < 2; ++step) {
        transfer();
        if (along) {
            peaks.push_back(KerrThenPeak(x, y, kerr, at, count, h));
        } else {
            KerrRotate(x, y, kerr);
            look();
        }
        transfer();
        if (along)
            peaks.push_back(PeakThenBegin(x, y, at, count, h));
        else
            look();
    }
    transfer();
    look();
}

TEST_F(TransferLevels, PeaksTakenAlongChangeNoBit) {
    ForEachLevel([] {
        for (const long n : {2L, 64L, 128L, 256L, 512L, 1024L, 1L << 16}) {
            for (const int variant : {0, 1, 2, 3}) {
                SCOPED_TRACE(testing::Message() << n << " samples, variant " << variant);
                TransferArray h(n, variant & 1 ? +1 : -1);
                const std::vector<Complex> factors = RandomSamples(n, 5);
                h.Fill(factors.data());
                const KerrStep kerr{0.3};
                Values results[2];
                std::vector<double> peaks[2];
                for (const bool along : {false, true}) {
                    SplitField x = FieldOf(RandomSamples(n, 10)), y = FieldOf(RandomSamples(n, 60));
                    RunWithPeaks(x, variant & 2 ? &y : nullptr, kerr, h, along, peaks[along]);
                    results[along] = ValuesOf(x);
                }
                EXPECT_GT(peaks[0].back(), 0.0);
                EXPECT_EQ(peaks[0], peaks[1]);
                EXPECT_EQ(results[0], results[1]);
            }
        }
    });
}

}  // namespace
}  // namespace photrak

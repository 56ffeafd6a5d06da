// The transforms against a textbook transform in long double, and the bookkeeping of bins by hand.
#include "numeric/fft.h"

#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <vector>

#include "base/arrays.h"
#include "gtest/gtest.h"
#include "support/failure.h"
#include "support/fft_support.h"

namespace photrak {
namespace {

using Wide = std::complex<long double>;

// Recursive, every factor from sine and cosine: slow, and exact enough to judge doubles.
void ExactTransform(std::vector<Wide>& x, int sign) {
    const std::size_t n = x.size();
    if (n == 1) return;
    std::vector<Wide> even(n / 2), odd(n / 2);
    for (std::size_t i = 0; i < n / 2; ++i) even[i] = x[2 * i], odd[i] = x[2 * i + 1];
    ExactTransform(even, sign);
    ExactTransform(odd, sign);
    for (std::size_t k = 0; k < n / 2; ++k) {
        const long double angle = sign * 2 * std::numbers::pi_v<long double> * k / n;
        const Wide turned = Wide(std::cos(angle), std::sin(angle)) * odd[k];
        x[k] = even[k] + turned;
        x[k + n / 2] = even[k] - turned;
    }
}

std::vector<Wide> ExactTransform(const std::vector<Complex>& samples, int sign) {
    std::vector<Wide> exact(samples.size() - 1);
    for (std::size_t i = 0; i < exact.size(); ++i)
        exact[i] = {samples[i + 1].re, samples[i + 1].im};
    ExactTransform(exact, sign);
    return exact;
}

// Relative rms deviation of samples[1..n].
double Deviation(const std::vector<Complex>& samples, const std::vector<Wide>& exact) {
    long double difference = 0, size = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        difference += std::norm(Wide(samples[i + 1].re, samples[i + 1].im) - exact[i]);
        size += std::norm(exact[i]);
    }
    return static_cast<double>(std::sqrt(difference / size));
}

// Lengths on both sides of every change of method: short, one level, two levels, factors in two
// tables.
TEST_F(FftLevels, AgreeWithTheTextbookTransformAndWithEachOtherToTheBit) {
    for (long n = 1; n <= 1 << 17; n *= 2)
        for (int sign : {+1, -1}) {
            SCOPED_TRACE(testing::Message() << "n = " << n << ", sign " << sign);
            const std::vector<Complex> input = RandomSamples(n);
            const std::vector<Wide> exact = ExactTransform(input, sign);
            std::vector<Complex> first;
            ForEachLevel([&] {
                std::vector<Complex> samples = input;
                DoFFT(DoubleView(samples.data()), n, sign);
                EXPECT_LT(Deviation(samples, exact), 1e-15);
                EXPECT_EQ(Value(samples[0]), Value(input[0])) << "element 0 is no sample";
                if (first.empty()) first = samples;
                EXPECT_EQ(std::memcmp(first.data(), samples.data(), first.size() * sizeof(Complex)),
                          0);
            });
        }
}

TEST(Fft, LengthsThatAreNoPowerOfTwoAreRefused) {
    std::vector<Complex> samples = RandomSamples(12);
    const std::vector<Complex> before = samples;
    for (int n : {-8, -1, 0, 3, 12}) {
        EXPECT_NE(FailureOf([&] { DoFFT(DoubleView(samples.data()), n, 1); }), "") << n;
        EXPECT_NE(FailureOf([&] { DoFFTFlagged(samples.data(), n, 1, 0); }), "") << n;
    }
    EXPECT_EQ(DoFFTFlagged(samples.data(), -5, 1, fftShrinkToPower | fftHannWindow | fftCenter), 0);
    for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(Value(samples[i]), Value(before[i]));
}

TEST(Fft, FlagsWorkInTheirOrder) {
    // n = 4, x = 1, i, 2, -1: sums by hand with sign +1, bins 0, 1, 2, -1.
    const std::vector<Complex> x = {{9, 9}, {1, 0}, {0, 1}, {2, 0}, {-1, 0}, {7, 7}};
    const std::vector<Complex> bins = {{2, 1}, {-2, 1}, {4, -1}, {0, -1}};
    std::vector<Complex> a = x;
    EXPECT_EQ(DoFFTFlagged(a.data(), 4, +1, 0), 4);
    for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(Value(a[k + 1]), Value(bins[k])) << k;

    // Flag 1 makes 4 of 5; the spectrum is centered, then divided.
    a = x;
    EXPECT_EQ(DoFFTFlagged(a.data(), 5, +1, fftShrinkToPower | fftCenter | fftDivideByN), 4);
    const std::size_t centered[] = {2, 3, 0, 1, 2};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(Value(a[i]), Value(0.25 * bins[centered[i]])) << i;
    EXPECT_EQ(Value(a[5]), Value(x[5]));

    // Sign -1 mirrors the bins; without centering element 0 stays.
    a = x;
    DoFFTFlagged(a.data(), 4, -1, fftDivideByN);
    const std::size_t mirrored[] = {0, 3, 2, 1};
    for (std::size_t k = 0; k < 4; ++k)
        EXPECT_EQ(Value(a[k + 1]), Value(0.25 * bins[mirrored[k]])) << k;
    EXPECT_EQ(Value(a[0]), Value(x[0]));
}

TEST(Fft, WindowHasPeakGainTwoAndPeriodNMinusOne) {
    // A single windowed sample shows its own factor in every bin.
    for (std::int32_t i = 1; i <= 8; ++i) {
        std::vector<Complex> a(9);
        a[static_cast<std::size_t>(i)] = {1, 0};
        DoFFTFlagged(a.data(), 8, -1, fftHannWindow);
        EXPECT_NEAR(a[1].re, 1 - std::cos(2 * std::numbers::pi * (i - 1) / 7), 1e-15) << i;
    }
    std::vector<Complex> one = {{0, 0}, {3, 4}};
    DoFFTFlagged(one.data(), 1, 1, fftHannWindow);
    EXPECT_EQ(Value(one[1]), 0.0);
    one[1] = {3, 4};
    DoFFTFlagged(one.data(), 1, 1, fftCenter);
    EXPECT_EQ(Value(one[0]), Value({3, 4}));
    EXPECT_EQ(Value(one[1]), Value({3, 4}));
}

TEST(Fft, BinsAndElementsMapOntoEachOther) {
    EXPECT_EQ(FFTIndexToBin(8, 5), 4);
    EXPECT_EQ(FFTIndexToBin(8, 6), -3);
    EXPECT_EQ(FFTIndexToBin(1, 1), 0);
    for (std::int32_t n : {1, 2, 8, 1 << 20})
        for (std::int32_t i = 1; i <= n; ++i)
            ASSERT_EQ(FFTBinToIndex(n, FFTIndexToBin(n, i)), i) << n;
    EXPECT_EQ(FFTBinToIndex(8, -4), 5);
}

TEST(Fft, LargestPowerOfTwoIsTotal) {
    const std::int32_t rows[][2] = {{INT32_MIN, 0}, {0, 0},       {1, 1},
                                    {1023, 512},    {1024, 1024}, {INT32_MAX, 1 << 30}};
    for (const auto& row : rows) EXPECT_EQ(LargestPowerOfTwo(row[0]), row[1]) << row[0];
}

}  // namespace
}  // namespace photrak

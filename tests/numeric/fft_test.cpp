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
std::vector<Wide> ExactTransform(const std::vector<Wide>& x, int sign) {
    const std::size_t n = x.size();
    if (n == 1) return x;
    std::vector<Wide> half[2], all(n);
    for (std::size_t i = 0; i < n; ++i) half[i % 2].push_back(x[i]);
    const std::vector<Wide> even = ExactTransform(half[0], sign);
    const std::vector<Wide> odd = ExactTransform(half[1], sign);
    for (std::size_t k = 0; k < n; ++k) {
        const long double angle = sign * 2 * std::numbers::pi_v<long double> * k / n;
        all[k] = even[k % (n / 2)] + Wide(std::cos(angle), std::sin(angle)) * odd[k % (n / 2)];
    }
    return all;
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
            std::vector<Wide> exact;
            for (const Complex& a : input) exact.push_back({a.re, a.im});
            exact.erase(exact.begin());
            exact = ExactTransform(exact, sign);
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
    const std::vector<Complex> before = RandomSamples(12);
    std::vector<Complex> samples = before;
    for (int n : {-8, 0, 3, 12}) {
        EXPECT_NE(FailureOf([&] { DoFFT(DoubleView(samples.data()), n, 1); }), "") << n;
    }
    EXPECT_EQ(std::memcmp(samples.data(), before.data(), before.size() * sizeof(Complex)), 0);
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

    // A single windowed sample shows its own factor in every bin: peak 2, period n - 1.
    for (std::size_t i = 1; i <= 8; ++i) {
        a.assign(9, {});
        a[i] = {1, 0};
        DoFFTFlagged(a.data(), 8, -1, fftHannWindow);
        EXPECT_NEAR(a[1].re, 1 - std::cos(2 * std::numbers::pi * (i - 1.0) / 7), 1e-15) << i;
    }
}

TEST(Fft, BinsAndElementsMapOntoEachOther) {
    EXPECT_EQ(FFTIndexToBin(8, 5), 4);
    EXPECT_EQ(FFTBinToIndex(8, -4), 5);
    for (std::int32_t n : {1, 2, 8})
        for (std::int32_t i = 1; i <= n; ++i) EXPECT_EQ(FFTBinToIndex(n, FFTIndexToBin(n, i)), i);
    EXPECT_EQ(LargestPowerOfTwo(INT32_MIN), 0);
    EXPECT_EQ(LargestPowerOfTwo(INT32_MAX), 1 << 30);
}

}  // namespace
}  // namespace photrak

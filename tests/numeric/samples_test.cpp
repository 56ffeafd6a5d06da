// Shifts, powers and peaks of small signals built by hand; the reader of number files.
#include "numeric/samples.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "base/arrays.h"
#include "numeric/number_file.h"

namespace photrak {
namespace {

/// One-based samples re = 1..n, im = -re.
std::vector<Complex> Ramp(int n) {
    std::vector<Complex> a(n + 1);
    for (int i = 1; i <= n; ++i) a[i] = {1.0 * i, -1.0 * i};
    return a;
}

TEST(RotateSamples, MovesEverySampleAroundThePeriod) {
    constexpr int n = 7;
    for (const long k : {0L, 3L, 7L, -15L, std::numeric_limits<long>::min()}) {
        auto a = Ramp(n);
        RotateSamples(k, n, a.data());
        for (int i = 1; i <= n; ++i) EXPECT_EQ(a[((i - 1 + k % n) % n + n) % n + 1].re, i) << k;
    }
}

TEST(AlignStartTime, KeepsEverySampleAtTheNearestStep) {
    // In steps of half a second, with a period of 8.
    for (const double asked : {0.0, 3.0, 2.7, 3.4, -13.0, -12.6, 203.0}) {
        const long steps = std::lround(asked);
        auto x = Ramp(8), y = Ramp(8);
        OpSig sig{};
        sig.noPoints = 8;
        sig.tStep = 0.5;
        sig.startTime = 1.5;
        sig.Ex_samples = x.data();
        sig.Ey_samples = y.data();
        const double target = 1.5 + 0.5 * asked;
        AlignStartTime(&sig, target);
        EXPECT_EQ(sig.startTime, target);
        for (int i = 1; i <= 8; ++i) {
            EXPECT_EQ(x[i].re, (((i - 1 + steps) % 8) + 8) % 8 + 1) << asked;
            EXPECT_EQ(y[i].re, x[i].re);
        }
    }
}

TEST(Power, AddsPolarizationsChannelsAndNoise) {
    auto x = Ramp(4), y = Ramp(4);  // mean of 2 i^2 over 1..4: 15
    OpSig second{}, first{}, empty{};
    second.noPoints = first.noPoints = 4;
    first.Ex_samples = second.Ex_samples = x.data();
    second.Ey_samples = y.data();
    first.next = &second;
    second.next = &empty;
    EXPECT_DOUBLE_EQ(AverageOpSigPower(&second), 30.0);

    double spectrum[] = {99.0, 1e-3, 2e-3, 4e-3};
    OpSigASE ase{nullptr, 3, spectrum, 100.0, 0.0};
    const OpSignal signal{&first, &ase};
    EXPECT_DOUBLE_EQ(NodelistPower(&signal), 45.7);
}

/// Lists of every length and mix: with and without a second polarization, of two sizes.
TEST(Power, IsTheSameForChannelsTakenTogether) {
    for (int mix = 0; mix < 1 << 7; ++mix) {
        std::vector<std::vector<Complex>> arrays;
        std::vector<OpSig> channels(7);
        for (std::size_t k = 0; k < channels.size(); ++k) {
            const bool differs = mix >> k & 1;
            channels[k].noPoints = differs && k % 2 == 0 ? 5 : 9;
            for (Complex* OpSig::*field : {&OpSig::Ex_samples, &OpSig::Ey_samples}) {
                if (field == &OpSig::Ey_samples && !(differs && k % 2 != 0)) continue;
                std::vector<Complex>& samples = arrays.emplace_back(10);
                for (std::size_t i = 0; i < 10; ++i)
                    samples[i] = {0.1 * double(i + k), 0.7 / double(i + arrays.size())};
                channels[k].*field = samples.data();
            }
            if (k > 0) channels[k - 1].next = &channels[k];
        }
        std::size_t next = 0;
        TakeAveragePowers(&channels[0], [&](const OpSig& channel, double power) {
            EXPECT_EQ(&channel, &channels[next++]);
            EXPECT_EQ(power, AverageOpSigPower(&channel)) << mix;
        });
        EXPECT_EQ(next, channels.size());
    }
}

TEST(EndWeights, IntegrateCubicsOverTheAxis) {
    for (const long n : {6L, 7L, 12L, 100L}) {
        for (int power = 0; power <= 3; ++power) {
            const double sum = WeightedSum(n, [&](long i) { return std::pow(i - 1.0, power); });
            const double integral = std::pow(n - 1.0, power + 1) / (power + 1);
            EXPECT_NEAR(sum, integral, power < 3 ? 1e-9 * integral : 0.2 * n) << n << " " << power;
        }
    }
    EXPECT_EQ(WeightedSum(0, [](long) { return 1.0; }), 0.0);
}

TEST(Magnitudes, OfADoubleView) {
    std::vector<Complex> a(9, {3.0, -4.0});
    a[5] = {0.0, 12.0};
    a[0] = {1e9, 1e9};
    const double* view = DoubleView(a.data());
    EXPECT_DOUBLE_EQ(IntegrateMagnitude(view, 16), (7.0 * 5.0 + 7.0) / 8.0);  // n - 1 weights
    EXPECT_EQ(PeakMagnitudeSquared(view, 16), 144.0);
    EXPECT_EQ(PeakMagnitudeSquared(view, 8), 25.0);
    EXPECT_EQ(PeakMagnitude(view, 8), 12.0);
    EXPECT_EQ(PeakMagnitude(view, 4), 5.0);
}

TEST(Channels, SortByWavelength) {
    std::vector<std::vector<double>> lists = {{}, {3, 1, 2, 3, 1, 2, 2}};
    lists.push_back(std::vector<double>(50, std::nan("")));  // no order: must end all the same
    for (std::size_t i = 0; i < 50; ++i) {
        if (i % 3) lists.back()[i] = static_cast<double>(i * 7 % 50);
    }
    for (const auto& list : lists) {
        std::vector<OpSig> channels(list.size());
        std::vector<OpSig*> order;
        for (std::size_t i = 0; i < list.size(); ++i) {
            channels[i].wavelength = list[i];
            order.push_back(&channels[i]);
        }
        SortOpSigByWavelength(order.data(), 0, static_cast<long>(order.size()) - 1);
        for (std::size_t i = 1; i < list.size() && &list != &lists.back(); ++i) {
            EXPECT_LE(order[i - 1]->wavelength, order[i]->wavelength);
        }
        std::sort(order.begin(), order.end());  // every channel is still there, once
        for (std::size_t i = 0; i < list.size(); ++i) EXPECT_EQ(order[i], &channels[i]);
    }
}

TEST(NumberFile, ReadsOneValueToALineAndStaysWhereNoneStands) {
    NumberFile file("  3 rows follow 7\n1.5e-3 mW\n\n-4\n+7\nnan 1\n2");
    EXPECT_EQ(file.NextInt(), 3);
    EXPECT_EQ(file.NextDouble(), 1.5e-3);
    EXPECT_EQ(file.NextDouble(), -4.0);
    EXPECT_EQ(file.NextInt(), 7);
    EXPECT_EQ(file.NextDouble(), std::nullopt);  // and stays in front of the word
    EXPECT_EQ(file.NextInt(), std::nullopt);
    file.SkipToLineEnd();
    EXPECT_EQ(file.NextInt(), 2);
    EXPECT_TRUE(file.AtEnd());
    EXPECT_EQ(file.NextDouble(), std::nullopt);
}

}  // namespace
}  // namespace photrak

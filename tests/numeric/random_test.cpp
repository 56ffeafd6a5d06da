// The random sequences against slow models with wide integers.
#include "numeric/random.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

namespace photrak {
namespace {

class RandomSources : public testing::Test {
  protected:
    RandomSources() { ResetRandomState(); }
    ~RandomSources() override { ResetRandomState(); }
};

/// The minimal standard generator by its definition, shuffled through 32 words.
class SlowUniform {
  public:
    explicit SlowUniform(std::int64_t seed) : state_(seed) {
        for (int j = 39; j >= 0; --j) {
            Step();
            if (j < 32) table_[j] = state_;
        }
        output_ = table_[0];
    }
    double Next() {
        Step();
        const std::int64_t j = output_ >> 26;
        output_ = table_[j];
        table_[j] = state_;
        return std::min(static_cast<double>(output_) / 2147483647.0, 0.99999988);
    }

  private:
    void Step() { state_ = 16807 * state_ % 2147483647; }
    std::int64_t state_, output_ = 0, table_[32] = {};
};

// A word of 0 or one that the modulus would stop starts from 1, and so does the first call of all;
// later a positive word goes on.
TEST_F(RandomSources, UniformFollowsTheShuffledSequence) {
    const struct {
        int word;
        std::int64_t seed;
    } starts[] = {{4711, 1},        {-10, 10},           {0, 1}, {-2147483646, 2147483646},
                  {-2147483647, 1}, {-2147483647 - 1, 1}};
    for (const auto& start : starts) {
        int word = start.word;
        SlowUniform model(start.seed);
        for (int i = 0; i < 2000; ++i)
            ASSERT_DOUBLE_EQ(UniformRandom(&word), model.Next()) << start.word;
    }
}

TEST_F(RandomSources, GaussianPairsComeFromTheUnitCircle) {
    int seed = -10;
    SlowUniform model(10);
    for (int pair = 0; pair < 500; ++pair) {
        double v1 = 0.0, v2 = 0.0, r = 2.0;
        while (r >= 1.0 || r == 0.0) {
            v1 = 2.0 * model.Next() - 1.0;
            v2 = 2.0 * model.Next() - 1.0;
            r = v1 * v1 + v2 * v2;
        }
        // In polar form: the radius has the squared distribution of chi with two degrees.
        const double radius = std::sqrt(-2.0 * std::log(r)), angle = std::atan2(v1, v2);
        ASSERT_NEAR(GaussianRandom(&seed), radius * std::cos(angle), 1e-13);
        ASSERT_NEAR(GaussianRandom(&seed), radius * std::sin(angle), 1e-13);
    }
}

TEST_F(RandomSources, SpareGaussianGoesToTheNextCallerUnlessForgotten) {
    int mine = -3, yours = -5;
    const double first = GaussianRandom(&mine);
    GaussianRandom(&yours);
    EXPECT_EQ(yours, -5) << "no draw was needed";
    mine = -3;
    EXPECT_EQ(GaussianRandom(&mine), first);
    ForgetSpareGaussian();
    mine = -3;
    EXPECT_EQ(GaussianRandom(&mine), first);
}

TEST_F(RandomSources, ClippedGaussianLeavesOutWhatLiesBeyondItsLimit) {
    int seed = -1;
    std::vector<double> kept;
    for (int i = 0; i < 20000; ++i) {
        const double x = GaussianRandom(&seed);
        if (std::fabs(x) <= 2.8) kept.push_back(x);
    }
    EXPECT_LT(kept.size(), 20000u);
    seed = -1;
    for (const double x : kept) ASSERT_EQ(ClippedGaussianRandom(&seed), x);
}

TEST_F(RandomSources, SkippedGaussiansLeaveTheSourcesAsDrawnOnesDo) {
    int drawn = -9, skipped = -9;
    for (const long count : {0L, 1L, 2L, 3L, 30000L, 30001L}) {
        SCOPED_TRACE(count);
        ResetRandomState();
        for (long i = 0; i < count; ++i) ClippedGaussianRandom(&drawn);
        const double next = GaussianRandom(&drawn), afterNext = GaussianRandom(&drawn);
        ResetRandomState();
        SkipClippedGaussians(&skipped, count);
        EXPECT_EQ(GaussianRandom(&skipped), next);
        EXPECT_EQ(GaussianRandom(&skipped), afterNext);
        EXPECT_EQ(skipped, drawn);
    }
}

/// The three sequences and the table by their definition.
class SlowShuffle {
  public:
    explicit SlowShuffle(std::int64_t seed) {
        x1_ = Mod(54773 - seed, 259200);
        StepFirst();
        x2_ = x1_ % 134456;
        StepFirst();
        x3_ = x1_ % 243000;
        for (int j = 1; j <= 97; ++j) table_[j] = Value();
    }
    float Next() {
        x3_ = (4561 * x3_ + 51349) % 243000;
        float& entry = table_[1 + 97 * x3_ / 243000];
        const float value = entry;
        entry = Value();
        return value;
    }

  private:
    static std::int64_t Mod(std::int64_t x, std::int64_t m) { return (x % m + m) % m; }
    void StepFirst() { x1_ = (7141 * x1_ + 54773) % 259200; }
    float Value() {
        StepFirst();
        x2_ = (8121 * x2_ + 28411) % 134456;
        // Each single-precision rounding by way of a double, which holds the products exactly.
        const float fine = static_cast<float>(static_cast<double>(x2_) * double{7.4373775e-06F});
        const float sum = static_cast<float>(static_cast<double>(x1_) + double{fine});
        return static_cast<float>(double{sum} * double{3.8580247e-06F});
    }
    std::int64_t x1_ = 0, x2_ = 0, x3_ = 0;
    float table_[98] = {};
};

// The first call starts from any word.
TEST_F(RandomSources, ShuffledUniformFollowsItsThreeSequencesInSinglePrecision) {
    for (const int start : {-1, -54773, -2147483647 - 1, 7, 60000, 2147483647}) {
        ResetRandomState();
        int seed = start;
        SlowShuffle model(start);
        for (int i = 0; i < 2000; ++i) {
            ASSERT_EQ(ShuffledUniformRandom(&seed), model.Next()) << start << " draw " << i;
            ASSERT_EQ(seed, 1);
        }
    }
}

}  // namespace
}  // namespace photrak

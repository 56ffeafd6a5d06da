// What the cache keeps, for how long, and what it gives up first.
#include "numeric/factor_cache.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace photrak {
namespace {

FactorKey Key(double value, std::string_view kind = "test") {
    return FactorKey(kind).Add(value);
}

/// The number under the key; `made` counts those that were not there.
int Fetch(const FactorKey& key, std::size_t bytes, int& made) {
    return *FactorsFor<int>(key, bytes, [&] { return std::make_shared<int>(++made); });
}

TEST(FactorCache, KeepsWithinTheOutermostScopeOnly) {
    int made = 0;
    EXPECT_EQ(Fetch(Key(1), 8, made), 1);
    EXPECT_EQ(Fetch(Key(1), 8, made), 2) << "kept outside of a run";
    {
        const FactorCacheScope run;
        EXPECT_EQ(Fetch(Key(1), 8, made), 3);
        {
            const FactorCacheScope nested;
            EXPECT_EQ(Fetch(Key(1), 8, made), 3);
        }
        EXPECT_EQ(Fetch(Key(1), 8, made), 3) << "a run inside ended the cache";
        EXPECT_EQ(Fetch(Key(1, "other"), 8, made), 4);
        EXPECT_EQ(Fetch(Key(-0.0), 8, made), 5);
        EXPECT_EQ(Fetch(Key(0.0), 8, made), 6) << "bits count, not values";
        EXPECT_EQ(
            Fetch(FactorKey("a").AddAll(std::string_view("bc"), std::string_view("d")), 8, made),
            7);
        EXPECT_EQ(
            Fetch(FactorKey("a").AddAll(std::string_view("b"), std::string_view("cd")), 8, made),
            8);
    }
    EXPECT_EQ(Fetch(Key(1), 8, made), 9);
}

TEST(FactorCache, GivesUpWhatWasUsedLongestAgo) {
    const FactorCacheScope run;
    int made = 0;
    Fetch(Key(99), mostBytesOfOne + 1, made);
    EXPECT_EQ(FindFactors(Key(99)), nullptr) << "too large";
    for (int i = 0; i < 8; ++i) Fetch(Key(i), mostBytesOfOne, made);
    EXPECT_NE(FindFactors(Key(0)), nullptr);  // used again: now 1 is the oldest
    const auto held = FindFactors(Key(1));
    Fetch(Key(1), mostBytesOfOne, made);
    Fetch(Key(100), mostBytesOfOne, made);
    EXPECT_EQ(FindFactors(Key(2)), nullptr);
    for (const int i : {0, 1, 3, 4, 5, 6, 7, 100}) EXPECT_NE(FindFactors(Key(i)), nullptr) << i;
    for (int i = 200; i < 300; ++i) Fetch(Key(i), mostBytesOfOne / 3, made);
    EXPECT_EQ(FindFactors(Key(1)), nullptr);
    EXPECT_EQ(*static_cast<const int*>(held.get()), 3) << "whoever holds an array keeps it";
}

TEST(FactorCache, ServesThreads) {
    const FactorCacheScope run;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 2000; ++i) {
                const int wanted = i % 50;
                const auto found = FactorsFor<int>(Key(wanted), mostBytesOfOne / 2,
                                                   [&] { return std::make_shared<int>(wanted); });
                ASSERT_EQ(*found, wanted);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace photrak

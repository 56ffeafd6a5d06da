// The one-based arrays: offsets, contiguity, refusal; and the allocator's failure switch.
#include "base/arrays.h"

#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <string>

#include "base/memory.h"
#include "support/failure.h"

namespace photrak {
namespace {

constexpr long maxLong = std::numeric_limits<long>::max();

TEST(Arrays, AllowElementsFromLowToHigh) {
    for (const long low : {1L, 0L, -5L, 1000L}) {
        double* a = vector(low, low + 9);
        for (long i = low - 1; i <= low + 9; ++i) a[i] = static_cast<double>(i);  // with the spare
        EXPECT_EQ(a[low + 9], static_cast<double>(low + 9));
        free_vector(a, low);
    }
    Complex samples[] = {{}, {1, 2}, {3, 4}};
    EXPECT_EQ(DoubleView(samples)[2 * 2 - 1], 3);
    EXPECT_EQ(DoubleView(samples)[2 * 2], 4);
    free_cvector(cvector(1, 0), 1);  // no element but the spare
    free_ivector(nullptr, 1);
}

TEST(Arrays, MatricesAreOneBlockOfRows) {
    double** m = matrix(-1, 2, 1, 5);
    for (long i = -1; i <= 2; ++i) {
        for (long j = 1; j <= 5; ++j) m[i][j] = static_cast<double>(10 * i + j);
    }
    EXPECT_EQ(&m[-1][1] + 19, &m[2][5]);
    double** part = submatrix(m, 0, 1, 3, 5, 1, 1);
    EXPECT_EQ(&part[2][1], &m[1][3]);
    free_submatrix(part, 1);
    free_matrix(m, -1, 1);

    double flat[6] = {};
    double** table = convert_matrix(flat, 1, 2, 1, 3);
    EXPECT_EQ(&table[1][1], flat);
    EXPECT_EQ(&table[2][3], flat + 5);
    free_convert_matrix(table, 1);

    double*** t = f3tensor(1, 2, 0, 2, 1, 4);
    t[1][0][1] = t[2][2][4] = 7.0;
    EXPECT_EQ(&t[1][0][1] + 23, &t[2][2][4]);
    free_f3tensor(t, 1, 0, 1);
}

TEST(Arrays, RefuseWhatIsNoRangeOrDoesNotFit) {
    const std::pair<std::string, std::function<void()>> rows[] = {
        {"allocation failure in vector()", [] { vector(1, -1); }},
        {"allocation failure in dvector()", [] { dvector(-maxLong, maxLong); }},
        {"allocation failure in cmplxvector()", [] { cmplxvector(1, maxLong / 16); }},
        {"allocation failure 1 in matrix()", [] { dmatrix(1, 0, 1, 5); }},
        {"allocation failure 2 in matrix()", [] { imatrix(1, 1000, 1, maxLong / 1000); }},
        {"allocation failure in convert_matrix()", [] { convert_matrix(nullptr, 1, 2, 1, -4); }},
        {"allocation failure 3 in f3tensor()", [] { f3tensor(1, 2, 1, 2, 1, maxLong - 1); }},
    };
    for (const auto& [message, action] : rows) EXPECT_EQ(FailureOf(action), message);
    // The sanitizer sees a leak if the tables made before a refusal are lost.
    for (int n = 1; n <= 3; ++n) {
        RefuseAllocationsFrom(n);
        EXPECT_EQ(FailureOf([] { f3tensor(1, 2, 1, 2, 1, 2); }),
                  "allocation failure " + std::to_string(n) + " in f3tensor()");
    }
    RefuseAllocationsFrom(-1);

    constexpr auto huge = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(AllocateZeroed(huge / 2, 4), nullptr);
    EXPECT_EQ(Allocate(huge), nullptr);
    EXPECT_NE(OwnedBlock<void>(AllocateZeroed(0, 16)), nullptr);
}

}  // namespace
}  // namespace photrak

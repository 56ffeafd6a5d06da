// Plans of the transforms in natural order, their scratch memory, and the short lengths.
#include "numeric/fft_plan.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "numeric/simd.h"
#include "numeric/transfer_plan.h"
#include "platform/stop_point.h"

namespace photrak {

namespace {

// Rows up to this many are transformed in one go; more are split in two levels, so that what is
// worked on stays near the processor.
constexpr long singleLevelRows = 256;

// From here on a column bundle takes 16 columns: the caller's array is seldom aligned, so wider
// bundles share fewer cache lines with their neighbors.
constexpr long largeTransform = 1L << 15;

// From here on a transform takes a tenth of a second, and looks on its way whether the run is to
// end.
constexpr long longTransform = 1L << 22;

long ColumnLength(long n) {
    const long rows = n / 8;
    if (rows <= singleLevelRows) return 1;
    const int bits = static_cast<int>(std::bit_width(static_cast<unsigned long>(rows))) - 1;
    return std::max(8L, 1L << (bits / 2));
}

PlanCache<TransformPlan>& Plans() {
    static PlanCache<TransformPlan> plans;
    return plans;
}

// Radix 2 on a handful of points.
void TransformShort(double* data, long n, int sign) {
    static const Roots roots(fftLeaf / 2);
    for (long i = 0, j = 0; i < n; ++i) {
        if (j > i) {
            std::swap(data[2 * i], data[2 * j]);
            std::swap(data[2 * i + 1], data[2 * j + 1]);
        }
        long bit = n >> 1;
        for (; bit > 0 && (j & bit); bit >>= 1) j ^= bit;
        j |= bit;
    }
    for (long half = 1; half < n; half *= 2)
        for (long k = 0; k < half; ++k) {
            const auto w = roots[static_cast<std::uint64_t>(k * (fftLeaf / 4 / half))];
            for (double* a = data + 2 * k; a < data + 2 * n; a += 4 * half) {
                double* b = a + 2 * half;
                const double re = w.real() * b[0] - sign * w.imag() * b[1];
                const double im = w.real() * b[1] + sign * w.imag() * b[0];
                b[0] = a[0] - re;
                b[1] = a[1] - im;
                a[0] += re;
                a[1] += im;
            }
        }
}

}  // namespace

TransformPlan::TransformPlan(long n)
    : entry_(n, 8), columns_(ColumnLength(n)), rows_(n / 8 / ColumnLength(n)) {
    const long m1 = ColumnLength(n), m2 = n / 8 / m1;
    if (m1 > 1) {
        const Roots roots(n / 8);
        middle_ = AlignedDoubles(static_cast<std::size_t>(n / 4));
        double* at = middle_.Data();
        for (long column = 0; column < m2; ++column) {
            StopPoint();
            for (long turn = 0; turn < m1; ++turn) {
                const auto w = roots[static_cast<std::uint64_t>(column * columns_.Place(turn))];
                *at++ = w.real();
                *at++ = w.imag();
            }
        }
    }
    const bool large = n >= largeTransform;
    view_ = {.entry = entry_.View(),
             .columns = columns_.View(),
             .rows = rows_.View(),
             .middle = middle_.Data(),
             .bundle = large ? 16 : 8,
             .together = m1 > 1 ? 4 : 1,
             .pause = n >= longTransform ? StopPoint : nullptr};
}

std::shared_ptr<const TransformPlan> TransformPlan::For(long n) {
    return Plans().Find(n);
}

void TransformInterleaved(double* data, long n, int sign) {
    if (n < fftLeaf) return TransformShort(data, n, sign);
    const std::shared_ptr<const TransformPlan> plan = TransformPlan::For(n);
    ScratchDoubles scratch(static_cast<std::size_t>(TransformScratch(plan->View())));
    Kernels().transform(plan->View(), data, scratch.Data(), sign < 0);
}

void ResetFFTPlans() {
    Plans().Clear();
    ResetTransferPlans();
}

}  // namespace photrak

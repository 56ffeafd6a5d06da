// Stages of the split transforms and the order in which they leave the bins.
#include "numeric/transfer_plan.h"

#include <bit>
#include <limits>

#include "base/escape.h"
#include "base/text.h"
#include "numeric/fft.h"
#include "numeric/fft_plan.h"

namespace photrak {

namespace {

// Radices of the stages above the leaf: 8 first, since the outermost stages touch the most memory;
// what is left of the bits goes to stages of 4, or of 2 where there is but one bit.
std::vector<long> SplitRadices(long n) {
    int bits = static_cast<int>(std::bit_width(static_cast<unsigned long>(n / fftLeaf))) - 1;
    const int fours = bits == 1 ? 0 : (3 - bits % 3) % 3;
    std::vector<long> radices(static_cast<std::size_t>((bits - 2 * fours) / 3), 8);
    radices.insert(radices.end(), static_cast<std::size_t>(fours), 4);
    if (bits == 1) radices.push_back(2);
    return radices;
}

PlanCache<TransferPlan>& Plans() {
    static PlanCache<TransferPlan> plans;
    return plans;
}

}  // namespace

TransferPlan::TransferPlan(long n) : n_(n), bins_(static_cast<std::size_t>(n)) {
    if (IsShort()) {
        for (long k = 0; k < n; ++k)
            bins_[static_cast<std::size_t>(k)] = static_cast<std::int32_t>(k);
        return;
    }
    long length = n;
    for (const long radix : SplitRadices(n)) {
        tables_.emplace_back(length, radix);
        stages_.push_back(tables_.back().View());
        length /= radix;
    }
    tables_.emplace_back(fftLeaf, 8);
    view_ = {n, static_cast<long>(stages_.size()), stages_.data(), tables_.back().View()};
    OrderBins(0, 0, 0, 1);
}

void TransferPlan::OrderBins(std::size_t stage, long at, long first, long step) {
    if (stage == stages_.size()) {
        for (long k = 0; k < fftLeaf; ++k)
            bins_[static_cast<std::size_t>(at + k)] = static_cast<std::int32_t>(first + step * k);
        return;
    }
    const long radix = stages_[stage].radix, distance = stages_[stage].length / radix;
    for (long t = 0; t < radix; ++t)
        OrderBins(stage + 1, at + t * distance, first + t * step, step * radix);
}

std::shared_ptr<const TransferPlan> TransferPlan::For(long n) {
    if (!IsPowerOfTwo(n))
        NumericFailure(Concat("Transfer array of ", n, " samples: not a power of two"));
    if (n > std::numeric_limits<std::int32_t>::max())  // bins are counted in 32 bits
        NumericFailure(Concat("Transfer array of ", n, " samples: too long"));
    return Plans().Find(n);
}

void ResetTransferPlans() {
    Plans().Clear();
}

}  // namespace photrak

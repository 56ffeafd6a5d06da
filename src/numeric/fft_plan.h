// The engine of the transforms in natural order: what a length needs is worked out at its first use
// and kept for the process.
#pragma once

#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

#include "base/escape.h"
#include "numeric/fft_tables.h"

namespace photrak {

/// Transforms n (a power of two) interleaved complex numbers in place, unscaled, sign +1 or -1.
/// Safe to call from several threads on different data.
void TransformInterleaved(double* data, long n, int sign);

/// Tables of one length of at least fftLeaf, unchanged once made.
class TransformPlan {
  public:
    explicit TransformPlan(long n);
    /// The plan of a length from the cache of the process.
    static std::shared_ptr<const TransformPlan> For(long n);
    const TransformView& View() const { return view_; }

  private:
    GroupedStage entry_;
    RowPlan columns_, rows_;
    AlignedDoubles middle_;
    TransformView view_;
};

/// Forgets the tables of all lengths; those in use live on until they are left.
void ResetFFTPlans();

/// Plans by length, made when first asked for.
template <class Plan>
class PlanCache {
  public:
    std::shared_ptr<const Plan> Find(long n) {
        const std::lock_guard lock(mutex_);
        std::shared_ptr<const Plan>& plan = plans_[n];
        try {
            if (!plan) plan = std::make_shared<const Plan>(n);
        } catch (const std::bad_alloc&) {
            NumericFailure("Insufficient memory for the tables of a Fourier transform");
        }
        return plan;
    }
    void Clear() {
        const std::lock_guard lock(mutex_);
        plans_.clear();
    }

  private:
    std::mutex mutex_;
    std::unordered_map<long, std::shared_ptr<const Plan>> plans_;
};

}  // namespace photrak

// Tables of the transforms in scrambled order, one plan per length, and the door by which the
// vector loops reach into fields and transfer arrays.
#pragma once

#include <memory>
#include <vector>

#include "numeric/fft_kernels.h"
#include "numeric/fft_tables.h"
#include "numeric/transfer.h"

namespace photrak {

class TransferPlan {
  public:
    explicit TransferPlan(long n);
    /// The plan of a length from the cache of the process; NumericFailure if n is no power of two.
    static std::shared_ptr<const TransferPlan> For(long n);

    long Size() const { return n_; }
    /// Lengths below fftLeaf have no stages; their bins stand in natural order.
    bool IsShort() const { return n_ < fftLeaf; }
    bool CanStayOpen() const { return n_ >= fftShortestOpen; }
    const SplitPlanView& View() const { return view_; }
    const std::int32_t* BinOrder() const { return bins_.data(); }

  private:
    void OrderBins(std::size_t stage, long at, long first, long step);

    long n_;
    std::vector<GroupedStage> tables_;
    std::vector<FFTStage> stages_;
    std::vector<std::int32_t> bins_;
    SplitPlanView view_{};
};

void ResetTransferPlans();

struct SplitFieldAccess {
    /// With sign -1 the loops, which know +1 only, see real and imaginary parts exchanged; transfer
    /// arrays are kept conjugated for that.
    static FieldView View(SplitField& field, int sign);
    static ConstFieldView View(const TransferArray& transfer);
    static const TransferPlan& Plan(const SplitField& field) { return *field.plan_; }
    static const std::shared_ptr<const TransferPlan>& Plan(const TransferArray& transfer) {
        return transfer.plan_;
    }
    static int OpenSign(const SplitField& field) { return field.openSign_; }
    static int BegunSign(const SplitField& field) { return field.begunSign_; }
    static void Open(SplitField& field, const TransferArray& transfer);
    static void Begin(SplitField& field, int sign);
    static void Close(SplitField& field);
};

/// Checks that lengths agree; NumericFailure otherwise.
void CheckTransfer(const SplitField& field, const TransferArray& transfer);
/// From the first stage of the forward transform done to the last stage of the inverse due.
void TransferInside(SplitField& field, const TransferArray& transfer);

}  // namespace photrak

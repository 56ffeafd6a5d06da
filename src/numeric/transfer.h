// "Forward, multiply by a transfer array, inverse": what every filter does and what a fiber does in
// each step. The spectrum stays in the scrambled order in which it falls out, so nothing is ever
// reordered, and the 1/n of the way back is folded into the transfer array.
//
//   TransferArray h(n, /*sign=*/+1);
//   h.Fill([&](long bin) { return Response(bin * df); });  // bin signed, -n/2+1..n/2
//   ApplyTransfer(channel.Ex_samples, h);
//
// Results do not depend on alignment, on the vector width or on the number of threads. Different
// fields may be worked on by different threads at once. Exhausted memory, and a length that is no
// power of two or differs between field and array, go to NumericFailure.
#pragma once

#include <cstdint>
#include <memory>

#include "base/complex.h"
#include "numeric/simd_array.h"
#include "platform/stop_point.h"

namespace photrak {

class TransferPlan;
struct FieldView;
struct ConstFieldView;

/// n complex samples, zero-based, real and imaginary parts apart: what the vector loops like best.
/// A field may be "open": the last stage of the transfer that it went through is still due and is
/// done together with what comes next (see numeric/split_step.h). Settle before reading samples.
/// Or it may have begun the next transfer, which must then follow.
class SplitField {
  public:
    /// All zeros.
    explicit SplitField(long n);
    long Size() const { return n_; }
    bool IsOpen() const { return openSign_ != 0; }
    bool HasBegun() const { return begunSign_ != 0; }

    /// The samples; the field must not be open.
    double* Re();
    double* Im();
    const double* Re() const;
    const double* Im() const;

    /// samples[1..count] to the places at..at+count-1, and back.
    void CopyFrom(const Complex* samples, long at, long count);
    void CopyTo(Complex* samples, long at, long count) const;

  private:
    friend struct SplitFieldAccess;
    long n_;
    int openSign_ = 0;   // sign of the forward transform whose inverse is not finished
    int begunSign_ = 0;  // sign of the forward transform that has done its first stage
    AlignedDoubles memory_;
    double *re_, *im_;
    std::shared_ptr<const TransferPlan> plan_;  // of the open transfer
};

/// The factors by which ApplyTransfer multiplies the bins of a spectrum.
class TransferArray {
  public:
    /// For n samples and the sign of the forward transform; all factors 0.
    TransferArray(long n, int sign);
    long Size() const { return n_; }
    int Sign() const { return sign_; }

    /// BinOrder()[q], q = 0..n-1, is the bin 0..n-1 at place q: element minus 1 in the order of
    /// DoFFT. A table that goes with the places of this array can be worked out once and kept.
    const std::int32_t* BinOrder() const;
    /// Sets the factor at place q.
    void Set(long q, Complex factor) {
        re_[q] = factor.re * scale_;
        im_[q] = factor.im * imScale_;
    }
    /// Takes factors[1..n] in the order of DoFFT.
    void Fill(const Complex* factors);
    /// Takes response(k) for every bin k; k runs to n/2, those above are negative. May give a real.
    template <class Response>
    void Fill(Response response) {
        const std::int32_t* order = BinOrder();
        for (long q = 0; q < n_; ++q) {
            LookForStop(q);
            const long k = order[q] > n_ / 2 ? order[q] - n_ : order[q];
            Set(q, AsComplex(response(k)));
        }
    }
    /// gain * exp(i * length * phase[q]) at every place q: a lossy dispersive line. |length *
    /// phase| up to 1e6 costs a few operations and is right to the last bits; beyond, the library's
    /// sine.
    void FillPhases(const double* phase, double length, double gain);

  private:
    friend struct SplitFieldAccess;
    static Complex AsComplex(double factor) { return MakeComplex(factor); }
    static Complex AsComplex(Complex factor) { return factor; }
    long n_;
    int sign_;
    double scale_, imScale_;
    AlignedDoubles memory_;
    double *re_, *im_;
    std::shared_ptr<const TransferPlan> plan_;
};

/// Forward transform with the array's sign, product, inverse with the 1/n, on samples[1..n].
void ApplyTransfer(Complex* samples, const TransferArray& transfer);
/// The same on a split field, which is settled before and after.
void ApplyTransfer(SplitField& field, const TransferArray& transfer);
/// The same, leaving the last stage of the inverse open for the operation that follows. Worth it
/// only when that is one of numeric/split_step.h.
void ApplyTransferOpen(SplitField& field, const TransferArray& transfer);
/// Does what is still due; afterwards the field's samples may be read. Nothing on a settled field.
void Settle(SplitField& field);

}  // namespace photrak

// Fields, transfer arrays and their product.
#include "numeric/transfer.h"

#include <algorithm>
#include <cassert>

#include "base/escape.h"
#include "base/text.h"
#include "numeric/fft_plan.h"
#include "numeric/simd.h"
#include "numeric/transfer_plan.h"
#include "platform/stop_point.h"

namespace photrak {

namespace {

// Spare doubles between real and imaginary parts, so that for the large powers of two the same
// sample of both does not fall on the same place of a cache; a multiple of a cache line.
constexpr long partGap = 136;

std::size_t SplitDoubles(long n) {
    if (n < 1 || n > std::int64_t{1} << 40) NumericFailure(Concat("Field of ", n, " samples"));
    return static_cast<std::size_t>(2 * ((n + 7) / 8 * 8) + partGap);
}

double* ImaginaryPart(double* re, long n) {
    return re + (n + 7) / 8 * 8 + partGap;
}

const double* FirstDouble(const Complex* samples) {
    return &samples[1].re;
}

}  // namespace

SplitField::SplitField(long n)
    : n_(n), memory_(SplitDoubles(n)), re_(memory_.Data()), im_(ImaginaryPart(re_, n)) {
    std::fill_n(memory_.Data(), memory_.Size(), 0.0);
}

double* SplitField::Re() {
    assert(!IsOpen() && !HasBegun() && "settle a field before its samples are used");
    return re_;
}
double* SplitField::Im() {
    assert(!IsOpen() && !HasBegun() && "settle a field before its samples are used");
    return im_;
}
const double* SplitField::Re() const {
    assert(!IsOpen() && !HasBegun() && "settle a field before its samples are used");
    return re_;
}
const double* SplitField::Im() const {
    assert(!IsOpen() && !HasBegun() && "settle a field before its samples are used");
    return im_;
}

void SplitField::CopyFrom(const Complex* samples, long at, long count) {
    if (count > 0) Kernels().split(count, FirstDouble(samples), {Re() + at, Im() + at});
}

void SplitField::CopyTo(Complex* samples, long at, long count) const {
    if (count > 0) Kernels().join(count, {Re() + at, Im() + at}, &samples[1].re);
}

TransferArray::TransferArray(long n, int sign)
    : n_(n), sign_(sign < 0 ? -1 : +1), plan_(TransferPlan::For(n)) {
    scale_ = 1.0 / static_cast<double>(n);
    imScale_ = sign_ * scale_;
    memory_ = AlignedDoubles(SplitDoubles(n));
    constexpr std::size_t part = std::size_t{1} << 21;
    for (std::size_t at = 0; at < memory_.Size(); at += part) {
        StopPoint();  // the system takes its time to hand so much memory out
        std::fill_n(memory_.Data() + at, std::min(part, memory_.Size() - at), 0.0);
    }
    re_ = memory_.Data();
    im_ = ImaginaryPart(re_, n);
}

const std::int32_t* TransferArray::BinOrder() const {
    return plan_->BinOrder();
}

void TransferArray::Fill(const Complex* factors) {
    const std::int32_t* order = BinOrder();
    for (long q = 0; q < n_; ++q) Set(q, factors[order[q] + 1]);
}

void TransferArray::FillPhases(const double* phase, double length, double gain) {
    Kernels().polar(n_, {re_, im_}, phase, sign_ * length, gain * scale_);
}

FieldView SplitFieldAccess::View(SplitField& field, int sign) {
    return sign < 0 ? FieldView{field.im_, field.re_} : FieldView{field.re_, field.im_};
}

ConstFieldView SplitFieldAccess::View(const TransferArray& transfer) {
    return {transfer.re_, transfer.im_};
}

void SplitFieldAccess::Open(SplitField& field, const TransferArray& transfer) {
    if (field.plan_ != transfer.plan_) field.plan_ = transfer.plan_;
    field.openSign_ = transfer.sign_;
    field.begunSign_ = 0;
}

void SplitFieldAccess::Begin(SplitField& field, int sign) {
    field.openSign_ = 0;
    field.begunSign_ = sign;
}

void SplitFieldAccess::Close(SplitField& field) {
    field.openSign_ = 0;
}

void CheckTransfer(const SplitField& field, const TransferArray& transfer) {
    if (field.Size() != transfer.Size())
        NumericFailure(Concat("Transfer array of ", transfer.Size(), " bins on a field of ",
                              field.Size(), " samples"));
}

void TransferInside(SplitField& field, const TransferArray& transfer) {
    Kernels().filterInside(SplitFieldAccess::Plan(transfer)->View(),
                           SplitFieldAccess::View(field, transfer.Sign()),
                           SplitFieldAccess::View(transfer));
    SplitFieldAccess::Open(field, transfer);
}

namespace {

// Below the shortest split transform: natural order, out of place.
void ApplyShort(double* data, const TransferArray& transfer) {
    const long n = transfer.Size();
    const ConstFieldView h = SplitFieldAccess::View(transfer);
    TransformInterleaved(data, n, transfer.Sign());
    for (long k = 0; k < n; ++k) {
        const double re = data[2 * k], im = data[2 * k + 1];
        const double hIm = transfer.Sign() * h.im[k];
        data[2 * k] = re * h.re[k] - im * hIm;
        data[2 * k + 1] = re * hIm + im * h.re[k];
    }
    TransformInterleaved(data, n, -transfer.Sign());
}

}  // namespace

void ApplyTransfer(Complex* samples, const TransferArray& transfer) {
    double* data = &samples[1].re;
    const TransferPlan& plan = *SplitFieldAccess::Plan(transfer);
    if (plan.IsShort()) return ApplyShort(data, transfer);
    ScratchDoubles scratch(SplitDoubles(plan.Size()));
    Kernels().filterInterleaved(plan.View(), data,
                                {scratch.Data(), ImaginaryPart(scratch.Data(), plan.Size())},
                                SplitFieldAccess::View(transfer), transfer.Sign() < 0);
}

void ApplyTransfer(SplitField& field, const TransferArray& transfer) {
    CheckTransfer(field, transfer);
    Settle(field);
    const TransferPlan& plan = *SplitFieldAccess::Plan(transfer);
    if (!plan.IsShort()) {
        Kernels().filter(plan.View(), SplitFieldAccess::View(field, transfer.Sign()),
                         SplitFieldAccess::View(transfer));
        return;
    }
    Complex samples[fftLeaf + 1];
    field.CopyTo(samples, 0, plan.Size());
    ApplyShort(&samples[1].re, transfer);
    field.CopyFrom(samples, 0, plan.Size());
}

void ApplyTransferOpen(SplitField& field, const TransferArray& transfer) {
    const TransferPlan& plan = *SplitFieldAccess::Plan(transfer);
    if (!plan.CanStayOpen()) return ApplyTransfer(field, transfer);
    CheckTransfer(field, transfer);
    if (SplitFieldAccess::BegunSign(field) != transfer.Sign()) {
        Settle(field);
        Kernels().open(plan.View(), SplitFieldAccess::View(field, transfer.Sign()));
    }
    TransferInside(field, transfer);
}

void Settle(SplitField& field) {
    assert(!field.HasBegun() && "a transfer that has begun must follow");
    if (!field.IsOpen()) return;
    const int sign = SplitFieldAccess::OpenSign(field);
    Kernels().close(SplitFieldAccess::Plan(field).View(), SplitFieldAccess::View(field, sign));
    SplitFieldAccess::Close(field);
}

}  // namespace photrak

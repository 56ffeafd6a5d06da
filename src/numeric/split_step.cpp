// Which stages a pass over the samples takes along, and the short lengths that have none.
#include "numeric/split_step.h"

#include <cassert>
#include <cmath>

#include "base/escape.h"
#include "base/text.h"
#include "numeric/simd.h"
#include "numeric/transfer_plan.h"

namespace photrak {

namespace {

void CheckPair(const SplitField& x, const SplitField* y) {
    if (y && y->Size() != x.Size())
        NumericFailure(Concat("Polarizations of ", x.Size(), " and ", y->Size(), " samples"));
}

long OnCircle(long shift, long n) {
    const long k = shift % n;
    return k < 0 ? k + n : k;
}

// The plan under which a pass over a settled field runs: only the length matters.
SplitPlanView Unstaged(long n) {
    return {n, 0, nullptr, {}};
}

double Power(FieldView field, long q) {
    return field.re[q] * field.re[q] + field.im[q] * field.im[q];
}

void Turn(FieldView field, long q, double phase) {
    const double c = std::cos(phase), s = std::sin(phase);
    const double re = field.re[q], im = field.im[q];
    field.re[q] = re * c - im * s;
    field.im[q] = re * s + im * c;
}

void KerrShort(long n, FieldView x, FieldView y, const KerrView& kerr) {
    for (long q = 0; q < n; ++q) {
        double p = Power(x, q), r = y.re ? Power(y, q) : 0;
        if (kerr.totalX) {
            p = 2 * kerr.totalX[(q + kerr.shift) % n] - p;
            if (y.re) r = 2 * kerr.totalY[(q + kerr.shift) % n] - r;
        }
        Turn(x, q, kerr.gamma * (p + r * (2.0 / 3)));
        if (y.re) Turn(y, q, kerr.gamma * (r + p * (2.0 / 3)));
    }
}

FieldView ViewOrNone(SplitField* field, int sign) {
    return field ? SplitFieldAccess::View(*field, sign) : FieldView{nullptr, nullptr};
}

/// Whether both fields wait for the end of a transfer with this sign.
bool AreOpen(const SplitField& x, const SplitField* y, int sign) {
    return SplitFieldAccess::OpenSign(x) == sign && (!y || SplitFieldAccess::OpenSign(*y) == sign);
}

}  // namespace

void AddPower(SplitField& field, double* total, long shift, Total state) {
    Settle(field);
    const long n = field.Size();
    const FieldView view = SplitFieldAccess::View(field, +1);
    shift = OnCircle(shift, n);
    const bool first = state == Total::Begins;
    if (n >= fftLeaf) return Kernels().addPower(n, {view.re, view.im}, total, shift, first);
    for (long q = 0; q < n; ++q) {
        double& element = total[(q + shift) % n];
        element = first ? Power(view, q) : element + Power(view, q);
    }
}

void KerrRotate(SplitField& x, SplitField* y, const KerrStep& step) {
    CheckPair(x, y);
    Settle(x);
    if (y) Settle(*y);
    const long n = x.Size();
    const KerrView kerr = {step.gamma, step.totalX, step.totalY, OnCircle(step.shift, n)};
    assert(!(y && kerr.totalX) || kerr.totalY);
    const FieldView xView = SplitFieldAccess::View(x, +1), yView = ViewOrNone(y, +1);
    if (n < fftLeaf) return KerrShort(n, xView, yView, kerr);
    Kernels().kerr(Unstaged(n), fftPassAlone, xView, yView, kerr);
}

void KerrThenTransfer(SplitField& x, SplitField* y, const KerrStep& step, const TransferArray& hx,
                      const TransferArray* hy) {
    CheckPair(x, y);
    CheckTransfer(x, hx);
    assert(!y == !hy);
    const int sign = hx.Sign();
    const TransferPlan& plan = *SplitFieldAccess::Plan(hx);
    if (hy && (hy->Sign() != sign || hy->Size() != hx.Size()))
        NumericFailure("Transfer arrays of two polarizations differ in sign or size");
    if (!plan.CanStayOpen()) {
        KerrRotate(x, y, step);
        ApplyTransfer(x, hx);
        if (y) ApplyTransfer(*y, *hy);
        return;
    }
    // Both must come in the same state for one pass to take them along.
    const bool closes = AreOpen(x, y, sign);
    if (!closes) {
        Settle(x);
        if (y) Settle(*y);
    }
    const long n = x.Size();
    // With sign -1 the loops see i times the conjugate of the field, which turns the other way.
    const KerrView kerr = {sign * step.gamma, step.totalX, step.totalY, OnCircle(step.shift, n)};
    assert(!(y && kerr.totalX) || kerr.totalY);
    Kernels().kerr(plan.View(), fftPassOpens + (closes ? fftPassCloses : 0),
                   SplitFieldAccess::View(x, sign), ViewOrNone(y, sign), kerr);
    TransferInside(x, hx);
    if (y) TransferInside(*y, *hy);
}

namespace {

/// Whether the samples of a window are whole streams of the first stage.
bool IsWholeStreams(const TransferPlan& plan, long at, long count) {
    const long distance = plan.Size() / plan.View().stages[0].radix;
    return at % distance == 0 && count % distance == 0;
}

double PeakPass(SplitField& x, SplitField* y, int pass, const TransferArray& next, KerrView kerr) {
    double peak = 0;
    kerr.peak = &peak;
    const int sign = next.Sign();
    kerr.gamma *= sign;
    Kernels().kerr(SplitFieldAccess::Plan(next)->View(), pass | fftPassOpens | fftPassPeaks,
                   SplitFieldAccess::View(x, sign), ViewOrNone(y, sign), kerr);
    SplitFieldAccess::Begin(x, sign);
    if (y) SplitFieldAccess::Begin(*y, sign);
    return peak;
}

double SettledPeak(SplitField& x, SplitField* y, long at, long count) {
    Settle(x);
    if (y) Settle(*y);
    return PeakPower(x, y, at, count);
}

}  // namespace

double KerrThenPeak(SplitField& x, SplitField* y, const KerrStep& step, long at, long count,
                    const TransferArray& next) {
    CheckPair(x, y);
    CheckTransfer(x, next);
    const TransferPlan& plan = *SplitFieldAccess::Plan(next);
    if (!plan.CanStayOpen() || !IsWholeStreams(plan, at, count)) {
        KerrRotate(x, y, step);
        return PeakPower(x, y, at, count);
    }
    const bool closes = AreOpen(x, y, next.Sign());
    if (!closes) {
        Settle(x);
        if (y) Settle(*y);
    }
    return PeakPass(x, y, closes ? fftPassCloses : 0, next,
                    {step.gamma, step.totalX, step.totalY, OnCircle(step.shift, x.Size()), nullptr,
                     at, at + count});
}

double PeakThenBegin(SplitField& x, SplitField* y, long at, long count, const TransferArray& next) {
    CheckPair(x, y);
    CheckTransfer(x, next);
    const TransferPlan& plan = *SplitFieldAccess::Plan(next);
    if (!plan.CanStayOpen() || !IsWholeStreams(plan, at, count) || !AreOpen(x, y, next.Sign()))
        return SettledPeak(x, y, at, count);
    return PeakPass(x, y, fftPassCloses | fftPassStill, next,
                    {0, nullptr, nullptr, 0, nullptr, at, at + count});
}

void RotatePhases(SplitField& field, const double* phase, double scale) {
    Settle(field);
    Kernels().rotate(field.Size(), SplitFieldAccess::View(field, +1), phase, scale);
}

void Amplify(SplitField& field, const double* exponent, double scale) {
    Settle(field);
    Kernels().amplify(field.Size(), SplitFieldAccess::View(field, +1), exponent, scale);
}

double PeakPower(const SplitField& x, const SplitField* y, long at, long count) {
    const ConstFieldView none{nullptr, nullptr};
    return Kernels().peak(count, {x.Re() + at, x.Im() + at},
                          y ? ConstFieldView{y->Re() + at, y->Im() + at} : none);
}

}  // namespace photrak

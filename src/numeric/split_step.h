// What happens to fields between the linear steps of a split-step scheme, taken together with the
// outer stages of the transforms around it wherever a field is open: one pass over memory does the
// end of one transfer, the nonlinear step and the beginning of the next. A fixed-step run is
//
//   ApplyTransferOpen(e, half);
//   for (each step) KerrThenTransfer(e, nullptr, step, last ? half : full, nullptr);
//   Settle(e);
//
// and with several channels
//
//   for (each step) {
//       for (each channel) AddPower(e, total, shift of the channel);  // the first begins it
//       for (each channel) KerrThenTransfer(e, ..., step with totals and shift, ...);
//   }
//
// Different fields may be worked on by different threads; one total by one thread at a time, and
// always in the same order of channels, if the sums are to come out equal to the last bit.
#pragma once

#include "numeric/transfer.h"

namespace photrak {

/// A nonlinear step. Without totals a field turns by gamma * (p + 2/3 q), p its own squared
/// magnitude and q that of the other polarization (0 without one). With totals, the sums of p and q
/// over all channels, it turns by gamma * ((2 sx - p) + 2/3 (2 sy - q)): self-phase counts once,
/// every other channel twice. The other polarization likewise with the roles exchanged.
struct KerrStep {
    double gamma = 0;                // coefficient times step, rad/W
    const double* totalX = nullptr;  // n sums over the channels' x fields, or null
    const double* totalY = nullptr;  // the same of the y fields; needed with totalX and a y field
    long shift = 0;                  // sample q of the field meets total q + shift, on the circle
};

enum class Total { Begins, GoesOn };
/// total[(q + shift) mod n] += |field[q]|^2, where a total begins = |field[q]|^2. Settles the
/// field. `total` has n doubles.
void AddPower(SplitField& field, double* total, long shift, Total state = Total::GoesOn);

/// The nonlinear step on x and, unless null, y. Settles both.
void KerrRotate(SplitField& x, SplitField* y, const KerrStep& step);

/// The nonlinear step, then the transfer hx on x and hy on y; leaves the fields open. hy may be hx.
void KerrThenTransfer(SplitField& x, SplitField* y, const KerrStep& step, const TransferArray& hx,
                      const TransferArray* hy);

/// The nonlinear step, then the peak as PeakPower gives it. What must follow is a transfer with the
/// size and sign of `next` by ApplyTransferOpen, whose first stage may be done already.
double KerrThenPeak(SplitField& x, SplitField* y, const KerrStep& step, long at, long count,
                    const TransferArray& next);
/// The same without a step: between two transfers in one pass.
double PeakThenBegin(SplitField& x, SplitField* y, long at, long count, const TransferArray& next);

/// field[q] *= exp(i * scale * phase[q]); settles. Accurate to the last bits for angles up to 1e6,
/// beyond that by the library's sine and cosine; what is no number gives no number.
void RotatePhases(SplitField& field, const double* phase, double scale = 1);
/// field[q] *= exp(scale * exponent[q]); settles.
void Amplify(SplitField& field, const double* exponent, double scale = 1);

/// Largest |x|^2 + |y|^2 of the samples at..at+count-1 of settled fields; y may be null.
double PeakPower(const SplitField& x, const SplitField* y, long at, long count);

}  // namespace photrak

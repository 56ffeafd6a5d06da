// What the hot loops see of a transform: tables by plain pointers, and the set of loops that each
// vector width offers. The files compiled for one instruction set include nothing beyond this, so
// that no shared inline function is ever compiled for a processor that may not be there.
//
// Two orders of work share the butterflies:
// - split: real and imaginary parts in two arrays, natural time order in, scrambled bins out
//   (decimation in frequency), and the way back (decimation in time). Filters live on it.
// - rows: natural order in and out. The first pass takes radix 8 over eight far points for eight
//   neighbors at a time and turns the 8 x 8 block, so that a row holds bins 0..7 of one group:
//   8 real parts, then 8 imaginary parts. From there on every pass works on whole rows.
#pragma once

#include <cstdint>

namespace photrak {

/// Points that the split transform takes through its last two stages, the product and back without
/// leaving the registers.
inline constexpr long fftLeaf = 64;
/// Doubles in a row: 8 real parts, 8 imaginary parts.
inline constexpr long fftRow = 16;

/// One stage over blocks of `length` points: `radix` streams at distance length / radix.
struct FFTStage {
    long length;
    long radix;
    /// exp(2 pi i k t / length), t = 1..radix-1. Split stages and the first row pass: for every
    /// eight neighbors k, per t 8 real parts, then 8 imaginary parts. Row stages: for every k, per
    /// t real and imaginary part. Null in a last stage, which has none.
    const double* factors;
};

struct SplitPlanView {
    long n;  // at least fftLeaf
    long stageCount;
    const FFTStage* stages;     // from length n down to 2 * fftLeaf
    const double* leafFactors;  // of the stage of length fftLeaf and radix 8
};

/// Transform of `length` rows: in place stage by stage, the last stage writes to natural places.
struct RowPlanView {
    long length;
    long stageCount;
    const FFTStage* stages;
    /// Last stage: group g of rows gives the places order[g] + t * length / radix.
    const std::int32_t* order;
};

/// n = 8 * columns.length * rows.length points; columns.length is 1 where one level does.
struct TransformView {
    long n;
    const double* entryFactors;  // of the first pass: length n, radix 8
    RowPlanView columns, rows;
    const double* middle;  // between the levels: per column, in the order of writing, re and im
};

struct FFTKernels {
    /// Natural order in and out on n interleaved complex numbers. `scratch` has
    /// TransformScratch(view) doubles. `conjugate` gives sign -1 in place of +1.
    void (*transform)(const TransformView& view, double* data, double* scratch, bool conjugate);

    /// Forward, product with h (scrambled order, see TransferPlan), inverse; no scaling.
    void (*filter)(const SplitPlanView& plan, double* re, double* im, const double* hRe,
                   const double* hIm);
};

/// Rows between the columns of a bundle: one spare against the alignment of powers of two.
inline constexpr long ColumnStride(const TransformView& view) {
    return (view.columns.length + 1) * fftRow;
}
inline constexpr long TransformScratch(const TransformView& view) {
    return 2 * view.n + (view.columns.length > 1 ? 8 * ColumnStride(view) : 0);
}

}  // namespace photrak

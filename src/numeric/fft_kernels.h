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

/// One stage over blocks of `length` points: `radix` streams at distance length / radix, neighbors
/// k = 0..length/radix-1. Its factors are exp(2 pi i k t / length), t = 1..radix-1.
struct FFTStage {
    long length;
    long radix;
    /// Split stages and the entry of rows: for every eight neighbors k, per t 8 real parts, then 8
    /// imaginary parts. Stages of rows: for every k, per t real and imaginary part. Null in a last
    /// stage, which has none.
    const double* factors;
    /// Null, or (with radix 8) `factors` holds the first eight neighbors only, and neighbor 8 g + l
    /// takes the factors of l times coarse[7 g + t - 1] (real and imaginary part): long tables cost
    /// more to read than to multiply out.
    const double* coarse;
};

struct SplitPlanView {
    long n;  // at least fftLeaf
    long stageCount;
    const FFTStage* stages;  // from length n down to 2 * fftLeaf
    FFTStage leaf;           // of length fftLeaf and radix 8
};

/// Transform of `length` rows: in place stage by stage, the last stage writes to natural places.
struct RowPlanView {
    long length;
    long stageCount;
    const FFTStage* stages;
    /// Last stage: group g of rows gives the places order[g] + t * length / radix.
    const std::int32_t* order;
};

/// 8 * columns.length * rows.length points; columns.length is 1 where one level does.
struct TransformView {
    FFTStage entry;  // the first pass: all points, radix 8
    RowPlanView columns, rows;
    const double* middle;  // between the levels: per column, in the order of writing, re and im
    long bundle;           // columns worked on at once, a multiple of 8
    long together;         // runs of rows that leave side by side
    void (*pause)();       // called now and then on the way through a long one; may throw, or null
};

/// A split field: n real and n imaginary parts, each on a cache line.
struct FieldView {
    double *re, *im;
};
struct ConstFieldView {
    const double *re, *im;
};

/// A nonlinear step of one channel. Without totals (null) a channel turns by
///   gamma * (p + 2/3 q),  p its own power and q that of the other polarization (0 without one);
/// with them by  gamma * ((2 sx - p) + 2/3 (2 sy - q)),  sx and sy taken `shift` samples later, on
/// the circle of n. The other polarization likewise with the roles exchanged.
struct KerrView {
    double gamma;  // rad/W: nonlinear coefficient times step
    const double *totalX, *totalY;
    long shift;  // 0..n-1
    /// Where a pass that looks for the peak puts the largest |x|^2 + |y|^2 of the samples
    /// from..to-1 after the step; both are whole streams of the first stage.
    double* peak = nullptr;
    long from = 0, to = 0;
};

/// What of the neighboring transforms a pass over the samples takes along.
enum FFTPass : int {
    fftPassAlone = 0,
    fftPassCloses = 1,  // the last stage of the inverse before
    fftPassOpens = 2,   // the first stage of the forward after
    fftPassPeaks = 4,   // the peak between them
    fftPassStill = 8    // and no nonlinear step
};

struct FFTKernels {
    /// Natural order in and out on n interleaved complex numbers. `scratch` has
    /// TransformScratch(view) doubles. `conjugate` gives sign -1 in place of +1.
    void (*transform)(const TransformView& view, double* data, double* scratch, bool conjugate);

    /// Forward, product with h in scrambled order, inverse; no scaling.
    void (*filter)(const SplitPlanView& plan, FieldView field, ConstFieldView h);
    /// The same on interleaved numbers with a split field for scratch; `conjugate` exchanges real
    /// and imaginary parts on the way in and out.
    void (*filterInterleaved)(const SplitPlanView& plan, double* data, FieldView scratch,
                              ConstFieldView h, bool conjugate);
    /// The same between the first stage down and the last stage up, which are left to others.
    void (*filterInside)(const SplitPlanView& plan, FieldView field, ConstFieldView h);

    /// The first stage down and the last stage up by themselves.
    void (*open)(const SplitPlanView& plan, FieldView field);
    void (*close)(const SplitPlanView& plan, FieldView field);
    /// Nonlinear step in one pass with the stages of `pass`: alone, opens, or both; the latter two
    /// with the peak; all but the step. y.re is null for one polarization. Alone, only the length
    /// of the plan counts; else n is at least fftShortestOpen.
    void (*kerr)(const SplitPlanView& plan, int pass, FieldView x, FieldView y,
                 const KerrView& kerr);
    /// total[(q + shift) mod n] += |field[q]|^2, or = of the first field; n at least fftLeaf. No
    /// stage comes along: turned totals and far streams get into each other's way in the cache.
    void (*addPower)(long n, ConstFieldView field, double* total, long shift, bool first);

    /// The rest is for any count; n counts complex numbers. Split and join need no alignment.
    void (*split)(long n, const double* data, FieldView field);
    void (*join)(long n, ConstFieldView field, double* data);
    /// field *= exp(i * scale * phase), field *= exp(scale * exponent).
    void (*rotate)(long n, FieldView field, const double* phase, double scale);
    void (*amplify)(long n, FieldView field, const double* exponent, double scale);
    /// field = gain * exp(i * scale * phase).
    void (*polar)(long n, FieldView field, const double* phase, double scale, double gain);
    /// Largest |x|^2 + |y|^2; y.re is null for one polarization.
    double (*peak)(long n, ConstFieldView x, ConstFieldView y);
};

/// The shortest split transform whose outer stages can be left open.
inline constexpr long fftShortestOpen = 4 * fftLeaf;

/// Rows between the columns of a bundle: one spare against the alignment of powers of two.
inline constexpr long ColumnStride(const TransformView& view) {
    return (view.columns.length + 1) * fftRow;
}
inline constexpr long TransformScratch(const TransformView& view) {
    return 2 * view.entry.length + (view.columns.length > 1 ? view.bundle * ColumnStride(view) : 0);
}

}  // namespace photrak

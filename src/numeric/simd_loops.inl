// All hot loops and the table of them, for the files compiled once per width. The order of the
// parts matters: each uses those before it.
// clang-format off
#include "numeric/simd_vector.inl"
#include "numeric/fft_butterflies.inl"
#include "numeric/simd_math.inl"
#include "numeric/simd_arrays.inl"
#include "numeric/fft_split.inl"
#include "numeric/fft_rows.inl"
#include "numeric/split_step.inl"
// clang-format on

constexpr FFTKernels hotLoops = {Transform,   Filter,       FilterInterleaved, FilterInside, Open,
                                 Close,       KerrPass,     AddPower,          Split,        Join,
                                 RotateField, AmplifyField, PolarField,        PeakPower};

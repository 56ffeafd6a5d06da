// The tables behind a transform: roots of unity to the last bit and their arrangement per stage.
#pragma once

#include <complex>
#include <cstdint>
#include <vector>

#include "numeric/fft_kernels.h"
#include "numeric/simd_array.h"

namespace photrak {

/// exp(2 pi i k / n) for a power of two n: the product of two table entries in extended precision,
/// mirrored out of the first eighth of the circle, then rounded once.
class Roots {
  public:
    explicit Roots(long n);
    /// Any k of at least 0; the circle closes after n.
    std::complex<double> operator[](std::uint64_t k) const;

  private:
    using Wide = std::complex<long double>;
    Wide Octant(std::uint64_t k) const;
    std::uint64_t n_;
    int fineBits_;
    std::vector<Wide> coarse_, fine_;
};

/// A stage of `radix` over blocks of `length` points with its tables, at least eight neighbors.
class GroupedStage {
  public:
    GroupedStage(long length, long radix);
    FFTStage View() const;

  private:
    long length_, radix_;
    AlignedDoubles factors_, coarse_;
};

/// A transform of `length` rows (a power of two, 8 or more, or 1): its stages and tables.
class RowPlan {
  public:
    explicit RowPlan(long length);
    RowPlanView View() const;
    /// The place of what the last stage puts out at turn t.
    long Place(long turn) const;

  private:
    long length_;
    std::vector<FFTStage> stages_;
    std::vector<AlignedDoubles> factors_;
    std::vector<std::int32_t> order_;
};

}  // namespace photrak

// Samples, and the vector widths that this processor has, for tests of the Fourier engine.
#pragma once

#include <complex>
#include <random>
#include <vector>

#include "base/complex.h"
#include "gtest/gtest.h"
#include "numeric/simd.h"

namespace photrak {

// Comparable and printable.
inline std::complex<double> Value(Complex a) {
    return {a.re, a.im};
}

// n samples within [-1, 1] in elements 1..n.
inline std::vector<Complex> RandomSamples(long n, unsigned seed = 1) {
    std::mt19937_64 generator(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::vector<Complex> samples(static_cast<std::size_t>(n) + 1);
    for (Complex& s : samples) s = {uniform(generator), uniform(generator)};
    return samples;
}

// The levels that this processor has; the active one is restored at the end.
class FftLevels : public testing::Test {
  protected:
    ~FftLevels() override { UseSimdLevel(before_); }
    template <class Use>
    void ForEachLevel(Use use) {
        for (SimdLevel level : {SimdLevel::Plain, SimdLevel::Avx2, SimdLevel::Avx512})
            if (UseSimdLevel(level)) {
                SCOPED_TRACE(SimdLevelName(level));
                use();
            }
    }

  private:
    SimdLevel before_ = ActiveSimdLevel();
};

}  // namespace photrak

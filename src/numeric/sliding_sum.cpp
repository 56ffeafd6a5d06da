// Three ways to the same sums: whole blocks for equal weights, the definition for short kernels,
// transforms in layers of decreasing strength for long ones.
#include "numeric/sliding_sum.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#include "base/arrays.h"
#include "numeric/fft.h"

namespace photrak {
namespace {

/// Products up to which the definition is as fast as the transforms.
constexpr std::size_t mostProducts = std::size_t{1} << 26;

/// combine() over the m elements around each element, 0 beyond the ends. The array is cut into
/// blocks of m: a window is the end of one block and the start of the next, whose combinations are
/// carried along. Nothing is ever taken away, so that no rounding of large sums remains.
template <class Combine>
std::vector<double> OverWindows(std::span<const double> in, std::size_t m, Combine combine) {
    const std::size_t n = in.size(), half = m / 2, length = n + 2 * half;
    std::vector<double> fromStart(length, 0.0), toEnd(length, 0.0);
    std::copy(in.begin(), in.end(), fromStart.begin() + static_cast<std::ptrdiff_t>(half));
    toEnd = fromStart;
    for (std::size_t k = 1; k < length; ++k) {
        if (k % m != 0) fromStart[k] = combine(fromStart[k - 1], fromStart[k]);
    }
    for (std::size_t k = length - 1; k-- > 0;) {
        if ((k + 1) % m != 0) toEnd[k] = combine(toEnd[k], toEnd[k + 1]);
    }
    std::vector<double> out(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double end = fromStart[i + m - 1];
        out[i] = i % m == 0 ? end : combine(toEnd[i], end);
    }
    return out;
}

std::vector<double> DirectSums(std::span<const double> in, std::span<const double> kernel) {
    const std::size_t n = in.size(), m = kernel.size(), half = m / 2;
    std::vector<double> out(n, 0.0);
    for (std::size_t j = 0; j < m; ++j) {
        const std::size_t first = j < half ? half - j : 0;
        const std::size_t end = std::min(n, n + half - j);
        const double weight = kernel[j];
        for (std::size_t i = first; i < end; ++i) out[i] += weight * in[i + j - half];
    }
    return out;
}

/// Convolution with one kernel, whose transform is kept.
class Convolution {
  public:
    Convolution(std::size_t n, std::span<const double> kernel)
        : half_(kernel.size() / 2),
          length_(static_cast<long>(std::bit_ceil(n + kernel.size() - 1))),
          kernel_(2 * length_),
          work_(2 * length_) {
        Transform(kernel_, kernel);
    }
    /// Element i of the sums is at Result()[i].
    void Sum(std::span<const double> in) {
        Transform(work_, in);
        for (long k = 1; k <= 2 * length_; k += 2) {
            const double re = work_[k] * kernel_[k] - work_[k + 1] * kernel_[k + 1];
            work_[k + 1] = work_[k] * kernel_[k + 1] + work_[k + 1] * kernel_[k];
            work_[k] = re;
        }
        DoFFT(work_.Data(), length_, -1);
    }
    double Result(std::size_t i) const {
        return work_[2 * static_cast<long>(i + half_) + 1] / static_cast<double>(length_);
    }

  private:
    void Transform(Doubles& view, std::span<const double> values) const {
        std::fill_n(view.Data() + 1, 2 * length_, 0.0);
        for (std::size_t i = 0; i < values.size(); ++i) {
            view[2 * static_cast<long>(i) + 1] = values[i];
        }
        DoFFT(view.Data(), length_, +1);
    }

    std::size_t half_;
    long length_;
    Doubles kernel_, work_;
};

/// The rounding of a transform is a fraction of the strongest element. So only the sums that have a
/// strong element within reach are taken; for the others all those elements are left out, and the
/// next transform starts from the strongest that remains.
std::vector<double> LayeredSums(std::span<const double> in, std::span<const double> kernel) {
    constexpr double depth = 1e-5;  // of one layer
    const std::vector<double> reach =
        OverWindows(in, kernel.size(), [](double a, double b) { return std::max(a, b); });
    Convolution convolution(in.size(), kernel);
    std::vector<double> out(in.size(), 0.0), layer(in.begin(), in.end());
    double strongest = *std::max_element(in.begin(), in.end());
    while (strongest > 0.0) {
        for (double& value : layer) {
            if (value > strongest) value = 0.0;
        }
        convolution.Sum(layer);
        double next = 0.0;
        for (std::size_t i = 0; i < in.size(); ++i) {
            if (reach[i] > strongest) continue;
            if (reach[i] < depth * strongest) {
                next = std::max(next, reach[i]);
                continue;
            }
            out[i] = std::max(convolution.Result(i), kernel.front() * reach[i]);
        }
        strongest = next;
    }
    return out;
}

}  // namespace

std::vector<double> SlidingSum(std::span<const double> in, std::span<const double> kernel) {
    if (in.empty() || kernel.empty()) return {in.begin(), in.end()};
    const std::size_t m = kernel.size();
    if (kernel.front() == kernel[m / 2]) {
        std::vector<double> sums = OverWindows(in, m, [](double a, double b) { return a + b; });
        for (double& sum : sums) sum *= kernel.front();
        return sums;
    }
    if (in.size() <= mostProducts / m) return DirectSums(in, kernel);
    return LayeredSums(in, kernel);
}

}  // namespace photrak

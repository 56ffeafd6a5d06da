// Roots of unity and factors of stages.
#include "numeric/fft_tables.h"

#include <bit>
#include <cmath>
#include <numbers>

namespace photrak {

namespace {

int Log2(std::uint64_t n) {
    return static_cast<int>(std::bit_width(n)) - 1;
}

// From this length on the factors of a stage of radix 8 are products of two tables; one table would
// outgrow the cache that the samples need.
constexpr long longestTable = 1L << 16;

// Radices of a transform by rows: 4 first, since an early stage has more factors to apply, then 8.
// A remainder of one bit takes two stages of 4 in place of one of 8.
std::vector<long> RowRadices(long length) {
    const int bits = Log2(static_cast<std::uint64_t>(length));
    const int fours = (3 - bits % 3) % 3;
    std::vector<long> radices(static_cast<std::size_t>(fours), 4);
    radices.insert(radices.end(), static_cast<std::size_t>((bits - 2 * fours) / 3), 8);
    return radices;
}

}  // namespace

Roots::Roots(long n) : n_(static_cast<std::uint64_t>(n)), fineBits_((Log2(n_) + 1) / 2) {
    const auto root = [&](std::uint64_t k) {
        const long double angle = 2 * std::numbers::pi_v<long double> * k / n_;
        return Wide(std::cos(angle), std::sin(angle));
    };
    const std::uint64_t fine = std::uint64_t{1} << fineBits_;
    for (std::uint64_t k = 0; k < fine; ++k) fine_.push_back(root(k));
    for (std::uint64_t k = 0; k <= n_ / 8; k += fine) coarse_.push_back(root(k));
}

Roots::Wide Roots::Octant(std::uint64_t k) const {
    const Wide a = coarse_[k >> fineBits_], b = fine_[k & ((std::uint64_t{1} << fineBits_) - 1)];
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

std::complex<double> Roots::operator[](std::uint64_t k) const {
    k &= n_ - 1;
    // Eighths of a turn, so that lengths below 8 need no case of their own.
    const std::uint64_t eighths = 8 * k / n_, quarter = eighths / 2;
    const bool upper = eighths % 2 != 0;
    // Angle beyond the quarter, or up to the next one, in units of 1 / n.
    const std::uint64_t past = k - quarter * n_ / 4;
    Wide w = Octant(upper ? n_ / 4 - past : past);
    if (upper) w = {w.imag(), w.real()};
    const double re = static_cast<double>(w.real()), im = static_cast<double>(w.imag());
    switch (quarter) {
        case 0:
            return {re, im};
        case 1:
            return {-im, re};
        case 2:
            return {-re, -im};
        default:
            return {im, -re};
    }
}

GroupedStage::GroupedStage(long length, long radix) : length_(length), radix_(radix) {
    const bool split = radix == 8 && length >= longestTable;
    const long distance = length / radix, neighbors = split ? 8 : distance;
    const Roots roots(length);
    const auto root = [&](long k, long t) { return roots[static_cast<std::uint64_t>(k * t)]; };
    factors_ = AlignedDoubles(static_cast<std::size_t>(2 * neighbors * (radix - 1)));
    for (long k = 0; k < neighbors; ++k)
        for (long t = 1; t < radix; ++t) {
            double* place = factors_.Data() + k / 8 * fftRow * (radix - 1) + fftRow * (t - 1);
            place[k % 8] = root(k, t).real();
            place[k % 8 + 8] = root(k, t).imag();
        }
    if (!split) return;
    coarse_ = AlignedDoubles(static_cast<std::size_t>(distance / 8 * 2 * (radix - 1)));
    double* at = coarse_.Data();
    for (long k = 0; k < distance; k += 8)
        for (long t = 1; t < radix; ++t) {
            *at++ = root(k, t).real();
            *at++ = root(k, t).imag();
        }
}

FFTStage GroupedStage::View() const {
    return {length_, radix_, factors_.Data(), coarse_.Data()};
}

RowPlan::RowPlan(long length) : length_(length) {
    const std::vector<long> radices = RowRadices(length);
    long rest = length;
    order_.assign(1, 0);
    for (std::size_t s = 0; s < radices.size(); ++s) {
        const long radix = radices[s];
        if (s + 1 == radices.size()) {
            stages_.push_back({rest, radix, nullptr, nullptr});
            break;
        }
        const Roots roots(rest);
        AlignedDoubles table(static_cast<std::size_t>(2 * (rest / radix) * (radix - 1)));
        double* at = table.Data();
        for (long k = 0; k < rest / radix; ++k)
            for (long t = 1; t < radix; ++t) {
                const std::complex<double> w = roots[static_cast<std::uint64_t>(k * t)];
                *at++ = w.real();
                *at++ = w.imag();
            }
        stages_.push_back({rest, radix, table.Data(), nullptr});
        factors_.push_back(std::move(table));
        // Block b of this stage splits into blocks of bins order[b] + t * (blocks so far).
        const long blocks = length / rest;
        std::vector<std::int32_t> finer;
        for (const std::int32_t first : order_)
            for (long t = 0; t < radix; ++t)
                finer.push_back(static_cast<std::int32_t>(first + t * blocks));
        order_ = std::move(finer);
        rest /= radix;
    }
}

RowPlanView RowPlan::View() const {
    return {length_, static_cast<long>(stages_.size()), stages_.data(), order_.data()};
}

long RowPlan::Place(long turn) const {
    if (stages_.empty()) return 0;
    const long radix = stages_.back().radix;
    return order_[static_cast<std::size_t>(turn / radix)] + turn % radix * (length_ / radix);
}

}  // namespace photrak

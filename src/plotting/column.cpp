#include "plotting/column.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace photrak {
namespace {

struct Line {
    double center = 0.0, slope = 0.0;  // value at the middle row, change per row
};

/// Least squares over the row number, counted from the middle.
template <class Value>
Line FitLine(std::size_t n, Value value) {
    const double middle = 0.5 * static_cast<double>(n - 1);
    double sum = 0.0, product = 0.0, square = 0.0;
    const double origin = value(n / 2);  // keeps the sums near zero
    for (std::size_t i = 0; i < n; ++i) {
        const double k = static_cast<double>(i) - middle, v = value(i) - origin;
        sum += v;
        product += k * v;
        square += k * k;
    }
    return {origin + sum / static_cast<double>(n), product / square};
}

/// Half a unit of the sixth significant digit, with room for the writer's own rounding. Keeps the
/// decade of the value before, which neighbors share.
class HalfDigit {
  public:
    double Of(double value) {
        const double size = std::fabs(value);
        if (size == 0.0) return 0.0;
        if (!(size >= decade_ && size < 10.0 * decade_)) {
            decade_ = std::pow(10.0, std::floor(std::log10(size)));
        }
        return 0.5002e-5 * decade_;
    }

  private:
    double decade_ = 0.0;
};

template <class Original>
bool LineExplains(const std::vector<double>& values, const Line& line, Original original) {
    const double middle = 0.5 * static_cast<double>(values.size() - 1);
    HalfDigit halfDigit;
    // The error of a fitted value at the ends of the line is about twice that of one value over
    // root n; steps that are a simple part of the last digit round with a bias besides.
    const double bias = 0.2;
    const double slack =
        halfDigit.Of(values.back()) * (bias + 4.0 / std::sqrt(static_cast<double>(values.size())));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double fitted =
            original(line.center + line.slope * (static_cast<double>(i) - middle));
        if (!(std::fabs(fitted - values[i]) <= halfDigit.Of(values[i]) + slack)) return false;
    }
    return true;
}

template <class Original>
void TakeLine(std::vector<double>& values, const Line& line, Original original) {
    const double middle = 0.5 * static_cast<double>(values.size() - 1);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = original(line.center + line.slope * (static_cast<double>(i) - middle));
    }
}

/// Steps that differ by more than a thousandth: rounding shows.
bool RoundingShows(const std::vector<double>& values) {
    const double mean = (values.back() - values.front()) / static_cast<double>(values.size() - 1);
    for (std::size_t i = 1; i < values.size(); ++i) {
        if (std::fabs(values[i] - values[i - 1] - mean) > 1e-3 * std::fabs(mean)) return true;
    }
    return false;
}

bool IsStrictlyUsable(const std::vector<double>& values) {
    constexpr std::size_t fewest = 8;
    if (values.size() < fewest || !(values.back() > values.front())) return false;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isfinite(values[i]) || (i > 0 && values[i] < values[i - 1])) return false;
    }
    return true;
}

}  // namespace

Column::Column(std::vector<double> values) : values_(std::move(values)) {
    double before = -std::numeric_limits<double>::infinity();
    for (const double value : values_) {
        if (std::isnan(value)) {
            gaps_ = true;
            continue;
        }
        limits_.Include(value);
        if (value > 0.0) positive_.Include(value);
        if (value < before) ascending_ = false;
        before = value;
    }
    if (gaps_) ascending_ = false;
    MakeBlocks();
}

void Column::MakeBlocks() {
    constexpr std::size_t fewestBlocks = 16;
    if (values_.size() < fewestBlocks * blockLength) return;
    blocks_.resize(values_.size() / blockLength);
    for (std::size_t b = 0; b < blocks_.size(); ++b) {
        const double* v = values_.data() + b * blockLength;
        Block& block = blocks_[b];
        for (std::size_t i = 0; i < blockLength; ++i) {
            if (std::isnan(v[i])) {
                block.someGaps = true;
                continue;
            }
            const auto place = static_cast<std::uint16_t>(i);
            if (block.allGaps || v[i] < v[block.least]) block.least = place;
            if (block.allGaps || v[i] > v[block.greatest]) block.greatest = place;
            block.allGaps = false;
        }
    }
}

bool Column::FindExtremes(std::size_t from, std::size_t to, Extremes& found) const {
    bool any = false;
    found.sawGap = false;
    const auto take = [&](std::size_t least, std::size_t greatest) {
        if (!any || values_[least] < values_[found.least]) found.least = least;
        if (!any || values_[greatest] > values_[found.greatest]) found.greatest = greatest;
        any = true;
    };
    for (std::size_t i = from; i < to;) {
        const std::size_t b = i / blockLength;
        if (i % blockLength == 0 && i + blockLength <= to && b < blocks_.size()) {
            const Block& block = blocks_[b];
            found.sawGap |= block.someGaps;
            if (!block.allGaps) take(i + block.least, i + block.greatest);
            i += blockLength;
            continue;
        }
        if (std::isnan(values_[i])) {
            found.sawGap = true;
        } else {
            take(i, i);
        }
        ++i;
    }
    return any;
}

bool RestoreGrid(std::vector<double>& values, GridKind kind) {
    if (!IsStrictlyUsable(values) || !RoundingShows(values)) return false;
    const auto same = [](double v) { return v; };
    const auto reciprocal = [](double v) { return 1.0 / v; };
    const auto restore = [&](auto form) {
        const Line line = FitLine(values.size(), [&](std::size_t i) { return form(values[i]); });
        const bool explains = LineExplains(values, line, form);
        if (explains) TakeLine(values, line, form);
        return explains;
    };
    if (kind == GridKind::Even) return restore(same);
    return values.front() > 0.0 && restore(reciprocal);
}

}  // namespace photrak

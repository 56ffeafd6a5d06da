// One column of data as a plot uses it: values with gaps, their limits, and blocks of 256 with the
// least and greatest value of each, so that ten million points are searched in milliseconds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace photrak {

/// A range of values; empty while least > greatest.
struct ValueRange {
    double least = std::numeric_limits<double>::infinity();
    double greatest = -std::numeric_limits<double>::infinity();

    bool IsEmpty() const { return !(least <= greatest); }
    double Span() const { return greatest - least; }
    bool Contains(double value) const { return value >= least && value <= greatest; }
    void Include(double value) {
        if (value < least) least = value;
        if (value > greatest) greatest = value;
    }
    void Include(const ValueRange& other) {
        if (other.IsEmpty()) return;
        Include(other.least);
        Include(other.greatest);
    }
    bool operator==(const ValueRange&) const = default;
};

class Column {
  public:
    Column() = default;
    explicit Column(std::vector<double> values);

    const std::vector<double>& Values() const { return values_; }
    std::size_t Size() const { return values_.size(); }
    double operator[](std::size_t i) const { return values_[i]; }

    const ValueRange& Limits() const { return limits_; }
    /// Of the values above 0: what a logarithmic axis can show.
    const ValueRange& PositiveLimits() const { return positive_; }
    bool HasGaps() const { return gaps_; }
    /// No gaps and never falling: points can be found by bisection.
    bool IsAscending() const { return ascending_; }

    /// Indices of the least and the greatest value in [from, to), gaps passed over. False when
    /// there are only gaps. `sawGap` tells whether there was one.
    struct Extremes {
        std::size_t least = 0, greatest = 0;
        bool sawGap = false;
    };
    bool FindExtremes(std::size_t from, std::size_t to, Extremes& found) const;

    static constexpr std::size_t blockLength = 256;

  private:
    struct Block {
        std::uint16_t least = 0, greatest = 0;  // offsets into the block
        bool allGaps = true, someGaps = false;
    };
    void MakeBlocks();

    std::vector<double> values_;
    std::vector<Block> blocks_;
    ValueRange limits_, positive_;
    bool gaps_ = false, ascending_ = true;
};

/// How the grid behind rounded numbers runs.
enum class GridKind { Even, EvenReciprocal };

/// Finds the even grid behind values that were rounded to six significant digits. `kind` says what
/// the quantity calls for: time and frequency are even in the row number, wavelengths of even
/// frequencies in 1 / x (over a narrow band rounding hides the difference, so the numbers alone
/// cannot tell). A straight line is fitted; it counts when every value is the rounded grid value,
/// and is used only where rounding shows. `values` then become those of the grid. False when they
/// stay as they were. Source: least squares over the row number; the error of a slope over n
/// rounded values falls as n^(-3/2).
bool RestoreGrid(std::vector<double>& values, GridKind kind);

}  // namespace photrak

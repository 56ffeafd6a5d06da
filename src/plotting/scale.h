// Value to place on an axis and back: linear, logarithmic, or probability paper, on which an error
// rate stands at its Q, so that Gaussian noise over a linear amplitude is a straight line.
#pragma once

#include "plotting/column.h"

namespace photrak {

enum class ScaleKind { Linear, Logarithmic, Probability };

/// Q of an error rate, BER = erfc(Q / sqrt 2) / 2, for rates in (0, 0.5]; 0 for 0.5 and above.
/// Source: Newton's rule on the logarithm, from the asymptotic form.
double QOfRate(double rate);
/// The rate of a Q at least 0; below the range of a double it is 0.
double RateOfQ(double Q);

class AxisScale {
  public:
    AxisScale() = default;
    /// The range runs from 0 to 1. A range that the kind cannot show (flat, not finite, not above
    /// 0) is widened to one it can.
    AxisScale(ScaleKind kind, ValueRange range);

    ScaleKind Kind() const { return kind_; }
    const ValueRange& Range() const { return range_; }
    /// Place of a value: 0 at the least, 1 at the greatest. What a logarithmic or probability axis
    /// cannot show (0 and below, a rate of a half and above) lies below 0 or above 1.
    double Place(double value) const;
    double Value(double place) const;
    /// True when the axis has no place for the value at all (0 or below on a logarithmic one).
    bool Shows(double value) const;

  private:
    double Even(double value) const;  // in the measure in which the axis is even
    ScaleKind kind_ = ScaleKind::Linear;
    ValueRange range_{0.0, 1.0};
    double start_ = 0.0, span_ = 1.0;
};

/// `range` with room: flat ranges widened by half their value (to -1 and 1 around 0).
ValueRange Roomy(ValueRange range);

}  // namespace photrak

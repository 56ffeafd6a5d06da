// Where an axis has its ticks and what stands at them. Steps are 1, 2 or 5 times a power of ten and
// depend on the span and the pixels alone, so that nothing jumps while a plot is panned; decades of
// a logarithmic axis are thinned until their labels fit.
#pragma once

#include <string>
#include <vector>

#include "plotting/scale.h"

namespace photrak {

struct Tick {
    double value = 0.0;
    bool major = true;
    std::string label;  // empty at minor ticks
};

/// \param pixels   length of the axis
/// \param spacing  least distance of two labels, pixels
/// \param exponent the labels are value / 10^exponent (linear axes)
std::vector<Tick> MakeTicks(const AxisScale& scale, double pixels, double spacing, int exponent);
/// Ticks at round values of Q on an axis of error rates, labeled with Q where there is room.
std::vector<Tick> MakeQTicks(const AxisScale& rates, double pixels, double spacing);

/// A 1-2-5 step: mantissa 10^exponent.
struct TickStep {
    int mantissa = 1, exponent = 0;
    double Value() const;
    /// value of the index-th tick over 10^shift, without the error of adding up
    double Multiple(double index, int shift) const;
};
/// The smallest 1-2-5 step that is at least `least` (above 0, finite).
TickStep StepAtLeast(double least);

}  // namespace photrak

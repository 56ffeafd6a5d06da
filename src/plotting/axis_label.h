// The label of an axis taken apart, "Time (s)", and put together again with an SI prefix that fits
// what is shown, "Time (ns)". A prefix changes late, so that it does not flicker while zooming.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace photrak {

struct AxisLabel {
    std::string quantity;  // "Time"
    std::string unit;      // "s"; empty when the label ends in no unit the program knows
};
/// A last word in parentheses counts as unit when it is one: "Signal (Real)" has none.
AxisLabel SplitLabel(std::string_view label);

/// The power of ten, a multiple of 3, by which the labels are divided. `largest` is the largest
/// absolute value shown. The exponent in use stays as long as the largest label is from 0.8 to
/// 2000. Decibels keep 0. A number without unit gets a power only below 0.01 and from 100,000 on.
int ChooseExponent(std::string_view unit, double largest, std::optional<int> inUse = {});

/// "Time (ns)", "Signal (Real) (10^-3)" with raised digits.
std::string AxisText(const AxisLabel& label, int exponent);

}  // namespace photrak

#include "plotting/axis_label.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "drawing/number_text.h"

namespace photrak {
namespace {

constexpr std::string_view units[] = {"s",  "m",   "Hz",     "W",   "V",    "A",   "W/Hz",
                                      "dB", "dBm", "dBm/Hz", "rad", "Hz/s", "dBV", "dBA"};

/// Wavelengths stay below a micrometer's prefix: 1550 nm and not 1.55 um.
double LeastLabel(std::string_view unit) {
    return unit == "m" ? 2.0 : 1.0;
}

int Fresh(std::string_view unit, double largest) {
    const double decades = std::log10(largest / LeastLabel(unit));
    return std::clamp(3 * static_cast<int>(std::floor(decades / 3.0 + 1e-9)), -300, 300);
}

}  // namespace

AxisLabel SplitLabel(std::string_view label) {
    const std::size_t open = label.rfind('(');
    if (open != std::string_view::npos && label.ends_with(')')) {
        const std::string_view unit = label.substr(open + 1, label.size() - open - 2);
        if (std::find(std::begin(units), std::end(units), unit) != std::end(units)) {
            std::string_view quantity = label.substr(0, open);
            while (quantity.ends_with(' ')) quantity.remove_suffix(1);
            return {std::string(quantity), std::string(unit)};
        }
    }
    // The writers of phases name no unit.
    if (label == "Phase") return {std::string(label), "rad"};
    return {std::string(label), {}};
}

int ChooseExponent(std::string_view unit, double largest, std::optional<int> inUse) {
    if (!(largest > 0.0) || !std::isfinite(largest)) return inUse.value_or(0);
    if (unit.empty() || unit == "rad") {
        constexpr double small = 0.01, large = 1e5;
        return largest >= small && largest < large ? 0 : Fresh(unit, largest);
    }
    if (!TakesPrefix(unit)) return 0;
    if (inUse) {
        const double label = largest / PowerOfTen(*inUse);
        if (label >= 0.8 && label <= 2000.0) return *inUse;
    }
    return Fresh(unit, largest);
}

std::string AxisText(const AxisLabel& label, int exponent) {
    if (label.unit.empty()) {
        if (exponent == 0) return label.quantity;
        return Concat(label.quantity, label.quantity.empty() ? "" : " ", "(", DecadeText(exponent),
                      ")");
    }
    const std::string_view prefix = TakesPrefix(label.unit) ? PrefixOf(exponent).text : "";
    const std::string power =
        exponent != 0 && prefix.empty() ? DecadeText(exponent) + " " : std::string(prefix);
    return Concat(label.quantity, label.quantity.empty() ? "(" : " (", power, label.unit, ")");
}

}  // namespace photrak

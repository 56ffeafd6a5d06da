#include "plotting/decibels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "base/text.h"
#include "plotting/axis_label.h"

namespace photrak {
namespace {

struct Turn {
    std::string_view linear, decibel;
    double factor;  // decibels of a decade
    double unit;    // of 0 dB, in the linear unit
};
constexpr Turn turns[] = {{"W", "dBm", 10.0, 1e-3},
                          {"W/Hz", "dBm/Hz", 10.0, 1e-3},
                          {"V", "dBV", 20.0, 1.0},
                          {"A", "dBA", 20.0, 1.0}};

const Turn* TurnOf(std::string_view unit) {
    for (const Turn& turn : turns) {
        if (turn.linear == unit || turn.decibel == unit) return &turn;
    }
    return nullptr;
}

std::shared_ptr<const Column> Turned(const Column& column, const Turn& turn, bool toDecibels) {
    std::vector<double> values = column.Values();
    for (double& value : values) {
        if (toDecibels) {
            value = value > 0.0 ? turn.factor * std::log10(value / turn.unit)
                                : std::numeric_limits<double>::quiet_NaN();
        } else {
            value = turn.unit * std::pow(10.0, value / turn.factor);
        }
    }
    return std::make_shared<const Column>(std::move(values));
}

}  // namespace

bool TurnsToDecibels(const Plot& plot) {
    if (plot.kind == PlotKind::Eye) return false;
    return TurnOf(SplitLabel(plot.spec.yLabel).unit) ||
           (HasSecondAxis(plot) && TurnOf(SplitLabel(plot.spec.secondLabel).unit));
}

void TurnDecibels(Plot& plot) {
    if (plot.kind == PlotKind::Eye) return;
    for (const bool second : {false, true}) {
        std::string& label = second ? plot.spec.secondLabel : plot.spec.yLabel;
        const AxisLabel parts = SplitLabel(label);
        const Turn* turn = TurnOf(parts.unit);
        if (!turn) continue;
        const bool toDecibels = turn->linear == parts.unit;
        label = Concat(parts.quantity, " (", toDecibels ? turn->decibel : turn->linear, ")");
        (second ? plot.spec.second : plot.spec.y) = {};
        for (Curve& curve : plot.curves) {
            if (curve.second == second) curve.y = Turned(*curve.y, *turn, toDecibels);
        }
    }
}

}  // namespace photrak

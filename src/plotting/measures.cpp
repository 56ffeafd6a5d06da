#include "plotting/measures.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "drawing/number_text.h"
#include "plotting/axis_label.h"
#include "plotting/ber_readout.h"
#include "plotting/eye.h"
#include "plotting/peaks.h"

namespace photrak {
namespace {

constexpr double lightSpeed = 299792458.0;  // m/s

class Lines {
  public:
    Lines(const Plot& plot, const PlotView& view, std::size_t most)
        : plot_(plot), view_(view), most_(most) {}

    std::vector<std::string> Take() {
        const AxisLabel x = SplitLabel(plot_.spec.xLabel), y = SplitLabel(plot_.spec.yLabel);
        if (plot_.kind == PlotKind::Eye) {
            if (plot_.eye) Add(Concat("Eye: ", EyeText(*plot_.eye, x.unit, y.unit)));
        } else if (plot_.spec.logarithmic && y.unit.empty()) {
            AddRates(x.unit);
        } else if (x.unit == "m" || x.unit == "Hz") {
            AddPeaks(x.unit);
        }
        return std::move(lines_);
    }

  private:
    void Add(std::string line) {
        if (lines_.size() < most_) lines_.push_back(std::move(line));
    }

    void AddRates(const std::string& unit) {
        for (const double rate : usualRates) {
            for (const RateCrossing& crossing : CrossingsAt(plot_, rate)) {
                const Curve& curve = plot_.curves[crossing.curve];
                if (!crossing.x || view_.IsHidden(curve)) continue;
                std::string line = Concat(ReadableText(rate, 2), ": ", curve.name, " at ",
                                          EngineeringText(*crossing.x, unit, 5));
                if (crossing.penalty && *crossing.penalty != 0.0) {
                    line += Concat(", penalty ",
                                   EngineeringText(*crossing.penalty,
                                                   unit.starts_with("dB") ? "dB" : unit, 3));
                }
                Add(std::move(line));
            }
        }
    }

    std::string PlaceText(double x, const std::string& unit) const {
        std::string text = EngineeringText(x, unit, 7);
        if (unit == "m" && x > 0.0) text += ", " + EngineeringText(lightSpeed / x, "Hz", 7);
        return text;
    }
    void AddPeaks(const std::string& unit) {
        const ValueRange range = view_.ScaleOf(AxisId::X).Range();
        for (const Curve& curve : plot_.curves) {
            if (view_.IsHidden(curve) || curve.second || curve.held) continue;
            const std::string yUnit = SplitLabel(plot_.spec.yLabel).unit;
            const double least = yUnit.starts_with("dB") ? 3.0 : 0.1 * curve.y->Limits().Span();
            std::vector<Peak> peaks = FindPeaks(*curve.x, *curve.y, least);
            std::erase_if(peaks, [&](const Peak& p) { return !range.Contains(p.x); });
            for (const Peak& peak : peaks) {
                Add(Concat("Peak of ", curve.name, ": ", EngineeringText(peak.y, yUnit, 5), " at ",
                           PlaceText(peak.x, unit)));
            }
        }
    }

    const Plot& plot_;
    const PlotView& view_;
    std::size_t most_;
    std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> MeasureLines(const Plot& plot, const PlotView& view, std::size_t most) {
    return Lines(plot, view, most).Take();
}

}  // namespace photrak

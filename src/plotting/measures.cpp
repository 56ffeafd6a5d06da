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
            AddEye(x.unit, y.unit);
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

    void AddEye(const std::string& xUnit, const std::string& yUnit) {
        if (!plot_.eye) return;
        std::string_view text = eyeText_ = EyeText(*plot_.eye, xUnit, yUnit);
        while (!text.empty()) {
            const std::size_t comma = std::min(text.find(", "), text.size());
            Add(std::string(text.substr(0, comma)));
            text.remove_prefix(std::min(comma + 2, text.size()));
        }
    }

    void AddRates(const std::string& unit) {
        for (const double rate : usualRates) {
            bool headed = false;
            for (const RateCrossing& crossing : CrossingsAt(plot_, rate)) {
                const Curve& curve = plot_.curves[crossing.curve];
                if (!crossing.x || view_.IsHidden(curve)) continue;
                if (!headed) Add(Concat("Error rate of ", ReadableText(rate, 2)));
                headed = true;
                std::string line =
                    Concat(inset, EngineeringText(*crossing.x, unit, 5), "  ", curve.name);
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
        if (unit == "m" && x > 0.0) text += "  " + EngineeringText(lightSpeed / x, "Hz", 7);
        return text;
    }
    void AddPeaks(const std::string& unit) {
        const ValueRange range = view_.ScaleOf(AxisId::X).Range();
        const std::string yUnit = SplitLabel(plot_.spec.yLabel).unit;
        for (const Curve& curve : plot_.curves) {
            constexpr std::size_t mostSamples = 1'000'000;
            if (view_.IsHidden(curve) || curve.second || curve.held) continue;
            if (curve.x->Size() > mostSamples) continue;
            if (lines_.size() == most_) return;
            const double least = yUnit.starts_with("dB") ? 3.0 : 0.1 * curve.y->Limits().Span();
            std::vector<Peak> peaks = FindPeaks(*curve.x, *curve.y, least, most_);
            std::erase_if(peaks, [&](const Peak& p) { return !range.Contains(p.x); });
            std::sort(peaks.begin(), peaks.end(),
                      [](const Peak& a, const Peak& b) { return a.x < b.x; });
            if (!peaks.empty()) Add(Concat("Peaks of ", curve.name));
            for (const Peak& peak : peaks) {
                Add(Concat(inset, PlaceText(peak.x, unit), "  ",
                           EngineeringText(peak.y, yUnit, 4)));
            }
        }
    }

    static constexpr std::string_view inset = "   ";
    std::string eyeText_;
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

#include "plotting/plot_drawing.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/text.h"
#include "drawing/number_text.h"
#include "plotting/axis_drawing.h"
#include "plotting/axis_label.h"
#include "plotting/eye.h"
#include "plotting/legend.h"

namespace photrak {
namespace {

constexpr double pageMargin = 14.0, titleSize = 13.0, subtitleSize = 11.0, noteSize = 9.0;
constexpr double bottomRoom = 48.0;  // labels, title of the x axis
constexpr double fileNameRoom = 12.0;
constexpr double legendGap = 12.0;
constexpr double curveWidth = 1.5, hoveredWidth = 3.0, symbolSize = 7.0;
constexpr double tracesAlone = 200.0;  // traces from which an eye is a density

using Parts = std::vector<std::vector<Point>>;

class Painting {
  public:
    Painting(const Plot& plot, const PlotView& view, const PlotOptions& options)
        : plot_(plot), view_(view), options_(options), measure_(*options.measure) {
        drawing_.size = {std::clamp(options.size.width, leastPlotWidth, greatestPlotSide),
                         std::clamp(options.size.height, leastPlotHeight, greatestPlotSide)};
    }

    PlotPicture Draw() {
        MakeAxes();
        LayOut(0.0, 0.0);
        ReduceAll();
        PlaceLegend();
        DrawGround();
        DrawCurves();
        DrawFrame();
        DrawTexts();
        if (!legend_.rows.empty()) DrawLegend(drawing_, plot_, legend_, legendBox_);
        return {std::move(drawing_), layout_};
    }

  private:
    AxisPicture MakeAxis(AxisId id, std::string_view label) {
        const auto index = static_cast<std::size_t>(id);
        AxisPicture axis;
        axis.id = id;
        axis.scale = view_.ScaleOf(id);
        const AxisLabel parts = SplitLabel(label);
        const ValueRange& range = axis.scale.Range();
        if (axis.scale.Kind() == ScaleKind::Linear) {
            axis.exponent = ChooseExponent(
                parts.unit, std::max(std::fabs(range.least), std::fabs(range.greatest)),
                options_.exponents[index]);
        }
        axis.title = AxisText(parts, axis.exponent);
        layout_.scales[index] = axis.scale;
        layout_.exponents[index] = axis.exponent;
        return axis;
    }
    void MakeAxes() {
        x_ = MakeAxis(AxisId::X, plot_.spec.xLabel);
        y_ = MakeAxis(AxisId::Y, plot_.spec.yLabel);
        second_ = MakeAxis(AxisId::Second, plot_.spec.secondLabel);
        hasSecond_ = HasSecondAxis(plot_);
        TellEye();
        if (!hasSecond_) return MakeQAxis();
        y_.role = RoleOfAxis(false);
        second_.role = RoleOfAxis(true);
    }
    /// Error rates have their Q beside them.
    void MakeQAxis() {
        constexpr double leastWidth = 400.0;
        if (plot_.spec.yLabel != "BER" || y_.scale.Kind() == ScaleKind::Linear ||
            drawing_.size.width < leastWidth)
            return;
        hasSecond_ = true;
        second_ = {};
        second_.id = AxisId::Second;
        second_.scale = y_.scale;
        second_.title.assign(1, 'Q');
        second_.ofQ = true;
    }
    void TellEye() {
        if (plot_.kind != PlotKind::Eye) return;
        density_ = StyleOf(plot_, options_.eye) == EyeStyle::Density;
        if (plot_.eye) {
            eyeText_ = EyeText(*plot_.eye, SplitLabel(plot_.spec.xLabel).unit,
                               SplitLabel(plot_.spec.yLabel).unit);
        }
    }
    /// With two axes, one that has a single curve takes its color.
    Role RoleOfAxis(bool second) const {
        const Curve* only = nullptr;
        for (const Curve& curve : plot_.curves) {
            if (curve.second != second || curve.held) continue;
            if (only) return Role::Ink;
            only = &curve;
        }
        return only ? CurveRole(only->place) : Role::Ink;
    }

    std::string Subtitle() const {
        std::string text;
        for (const std::string& box : plot_.spec.textBoxes)
            text += (text.empty() ? "" : " \xC2\xB7 ") + box;
        if (!eyeText_.empty()) text += (text.empty() ? "" : " \xC2\xB7 ") + eyeText_;
        return text;
    }

    /// `right` and `above` are kept free beside the pane for the legend.
    void LayOut(double right, double above) {
        const double width = drawing_.size.width, height = drawing_.size.height;
        double top = pageMargin;
        if (!plot_.spec.title.empty()) top += titleSize + 8.0;
        if (!Subtitle().empty()) top += subtitleSize + 4.0;
        top += above;
        const double bottom = height - bottomRoom - (options_.fileName ? fileNameRoom : 4.0);
        const double tall = std::max(20.0, bottom - top);
        MakeAxisTicks(y_, tall, measure_);
        MakeAxisTicks(second_, tall, measure_);
        const double left = pageMargin + AxisRoom(y_);
        const double beside = hasSecond_ ? AxisRoom(second_) + pageMargin : pageMargin + 6.0;
        Rect& pane = layout_.pane;
        pane = {left, top, std::max(20.0, width - left - beside - right), tall};
        MakeAxisTicks(x_, pane.width, measure_);
        // Half of the last label stands right of the pane.
        const double over = hasSecond_ || right > 0.0 ? 0.0 : 0.5 * x_.labelWidth + 4.0 - beside;
        if (over > 0.0) pane.width = std::max(20.0, pane.width - over);
    }

    bool Shown(std::size_t i) const { return !view_.IsHidden(plot_.curves[i]); }

    /// Very many curves are drawn as far as a picture of usable size goes, and a note says so.
    void ReduceAll() {
        constexpr std::size_t mostVertices = 4'000'000, mostCurves = 20'000;
        parts_.assign(plot_.curves.size(), {});
        drawn_ = 0;
        if (density_) return;
        std::size_t vertices = 0, shown = 0;
        for (std::size_t i = 0; i < plot_.curves.size(); ++i) {
            if (shown == mostCurves || vertices >= mostVertices) return;
            drawn_ = i + 1;
            if (!Shown(i)) continue;
            const Curve& curve = plot_.curves[i];
            parts_[i] = ReduceCurve(*curve.x, *curve.y, layout_.Map(curve.second));
            for (const auto& part : parts_[i]) vertices += part.size();
            ++shown;
        }
    }

    void PlaceLegend() {
        legend_ = MakeLegend(plot_, view_, layout_.pane.height, measure_);
        if (legend_.rows.empty()) return;
        Parts all;
        for (const Parts& parts : parts_) all.insert(all.end(), parts.begin(), parts.end());
        if (const auto inside = FreePlace(layout_.pane, legend_.size, all)) {
            legendBox_ = *inside;
            return;
        }
        // A few short names go above the pane, more or longer ones beside it, unless that leaves
        // little of a narrow one.
        constexpr double leastHeight = 100.0, leastPart = 0.6;
        constexpr std::size_t mostAbove = 4;
        const Rect& pane = layout_.pane;
        const bool narrow = pane.width - legend_.size.width - legendGap < leastPart * pane.width &&
                            legend_.size.width <= pane.width &&
                            pane.height > 4.0 * legend_.size.height &&
                            legend_.rows.size() <= mostAbove;
        if (pane.height > leastHeight && (MakeStrip(legend_, pane.width) || narrow)) {
            PlaceLegendAbove();
        } else {
            PlaceLegendBeside();
        }
    }
    void PlaceLegendAbove() {
        constexpr double gap = 5.0;
        LayOut(0.0, legend_.size.height + gap);
        ReduceAll();
        const Rect& pane = layout_.pane;
        legendBox_ = {pane.Center().x - 0.5 * legend_.size.width,
                      pane.y - legend_.size.height - gap, legend_.size.width, legend_.size.height};
    }
    void PlaceLegendBeside() {
        constexpr double leastPane = 150.0;
        if (layout_.pane.width - legend_.size.width - legendGap < leastPane) {
            legend_ = {};  // a thumbnail shows its curves, not their names
            return;
        }
        LayOut(legend_.size.width + legendGap, 0.0);
        ReduceAll();
        const double axisRoom = hasSecond_ ? AxisRoom(second_) : 0.0;
        legendBox_ = {layout_.pane.Right() + axisRoom + legendGap, layout_.pane.y,
                      legend_.size.width, legend_.size.height};
    }

    void DrawGround() {
        DrawGrid(drawing_, x_, layout_.pane);
        DrawGrid(drawing_, y_, layout_.pane);
        drawing_.marks.push_back({"pane", layout_.pane, "Plot", "Wheel zooms, drag selects a box"});
    }

    void DrawCurves() {
        if (density_) {
            drawing_.Add(GroupBegin{"eye", "Eye diagram: " + eyeText_});
            drawing_.Add(MakeDensity(plot_, layout_.Map(false), options_.saturation));
            drawing_.Add(GroupEnd{});
            return;
        }
        // Signs at the edge are whole, so each curve has its lines clipped for itself; an eye has
        // none.
        const bool eye = plot_.kind == PlotKind::Eye;
        if (eye) drawing_.Add(ClipBegin{layout_.pane});
        for (std::size_t i = 0; i < plot_.curves.size(); ++i) {
            if (Shown(i) && i < drawn_ && i != options_.hovered) DrawCurve(i);
        }
        if (options_.hovered && *options_.hovered < plot_.curves.size() && Shown(*options_.hovered))
            DrawCurve(*options_.hovered);
        if (eye) drawing_.Add(ClipEnd{});
    }

    Pen PenOf(std::size_t i) const {
        const Curve& curve = plot_.curves[i];
        Pen pen{CurveRole(curve.place), i == options_.hovered ? hoveredWidth : curveWidth,
                CurveDash(curve.place), 1.0};
        if (curve.held) pen.opacity = 0.4;
        if (plot_.kind == PlotKind::Eye) {
            pen.width = 1.0;
            pen.opacity = std::clamp(40.0 / static_cast<double>(plot_.curves.size()), 0.08, 0.8);
        }
        return pen;
    }

    void DrawCurve(std::size_t i) {
        const Curve& curve = plot_.curves[i];
        const Pen pen = PenOf(i);
        drawing_.Add(GroupBegin{Concat("curve:", i), curve.name});
        const std::optional<std::vector<Point>> signs = Signs(i);
        const bool joined = !signs || plot_.spec.symbols == CurveSymbols::All;
        Symbols symbols{signs.value_or(std::vector<Point>{}), CurveMarker(curve.place), symbolSize,
                        pen.role, pen.opacity};
        const bool clipped = plot_.kind != PlotKind::Eye;
        if (clipped) drawing_.Add(ClipBegin{layout_.pane});
        for (const auto& part : parts_[i]) {
            if (part.size() > 1 && joined) drawing_.Add(Polyline{part, pen});
            if (part.size() == 1 && layout_.pane.Contains(part[0]))
                symbols.points.push_back(part[0]);
        }
        if (clipped) drawing_.Add(ClipEnd{});
        if (!symbols.points.empty()) drawing_.Add(std::move(symbols));
        AddZeros(i, pen);
        drawing_.Add(GroupEnd{});
        MarkCurve(i);
    }

    /// Signs at the points of lines, if the plot asks for them and there is room.
    std::optional<std::vector<Point>> Signs(std::size_t i) const {
        if (plot_.spec.symbols == CurveSymbols::None) return std::nullopt;
        constexpr double room = 12.0;  // pixels between neighbors
        std::vector<Point> inside;
        for (const auto& part : parts_[i]) {
            for (const Point p : part) {
                if (part.size() > 1 && layout_.pane.Grown(symbolSize).Contains(p))
                    inside.push_back(p);
            }
        }
        if (static_cast<double>(inside.size()) * room > layout_.pane.width) return std::nullopt;
        return inside;
    }

    /// What a logarithm cannot show, 0 and below, points downward at the lower edge.
    void AddZeros(std::size_t i, const Pen& pen) {
        const Curve& curve = plot_.curves[i];
        const PixelMap map = layout_.Map(curve.second);
        if (map.y.Kind() == ScaleKind::Linear || !(curve.y->Limits().least <= 0.0)) return;
        Symbols signs{{}, Marker::TriangleDown, symbolSize, pen.role, pen.opacity};
        constexpr double apart = 6.0;
        double before = -1e300;
        for (std::size_t k = 0; k < std::min(curve.x->Size(), curve.y->Size()); ++k) {
            const double x = (*curve.x)[k];
            if (!((*curve.y)[k] <= 0.0) || !map.x.Range().Contains(x)) continue;
            const Point p{map.At(x, 1.0).x, layout_.pane.Bottom() - 0.5 * symbolSize - 1.0};
            if (std::fabs(p.x - before) < apart) continue;
            before = p.x;
            signs.points.push_back(p);
        }
        if (!signs.points.empty()) drawing_.Add(std::move(signs));
    }

    void MarkCurve(std::size_t i) {
        if (plot_.kind == PlotKind::Eye) return;
        std::optional<Rect> around;
        for (const auto& part : parts_[i]) {
            for (const Point p : part) {
                if (!layout_.pane.Contains(p)) continue;
                around = around ? United(*around, {p.x, p.y, 0.0, 0.0}) : Rect{p.x, p.y, 0.0, 0.0};
            }
        }
        if (around)
            drawing_.marks.push_back({Concat("curve:", i), *around, plot_.curves[i].name, ""});
    }

    void DrawFrame() {
        DrawAxis(drawing_, x_, layout_.pane, measure_);
        DrawAxis(drawing_, y_, layout_.pane, measure_);
        if (hasSecond_) DrawAxis(drawing_, second_, layout_.pane, measure_);
        drawing_.Add(
            Box{layout_.pane, false, Role::Paper, 1.0, true, {Role::Frame, 1.0, Dash::Solid, 1.0}});
        if (plot_.curves.empty() || NothingToShow()) {
            drawing_.Add(TextItem{layout_.pane.Center(), "no data", labelSize, Role::Dim,
                                  Anchor::Middle, Weight::Regular, false});
        }
    }
    bool NothingToShow() const {
        return std::all_of(plot_.curves.begin(), plot_.curves.end(),
                           [](const Curve& c) { return c.y->Limits().IsEmpty(); });
    }

    void AddText(std::string_view text, double size, double baseline, Role role, Weight weight) {
        if (text.empty()) return;
        const double room = drawing_.size.width - 2.0 * pageMargin;
        TextItem item;
        item.text = Elided(text, room, size * (weight == Weight::Bold ? 1.12 : 1.0), measure_);
        const double half = 0.5 * measure_.Width(item.text, size, weight) + pageMargin;
        item.at = {
            std::clamp(layout_.pane.Center().x, half, std::max(half, drawing_.size.width - half)),
            baseline};
        item.size = size;
        item.role = role;
        item.anchor = Anchor::Middle;
        item.weight = weight;
        drawing_.Add(std::move(item));
    }
    void DrawTexts() {
        double baseline = pageMargin + titleSize - 2.0;
        AddText(plot_.spec.title, titleSize, baseline, Role::Ink, Weight::Bold);
        if (plot_.spec.title.empty()) baseline -= titleSize + 6.0;
        AddText(Subtitle(), subtitleSize, baseline + subtitleSize + 5.0, Role::Dim,
                Weight::Regular);
        if (!density_ && drawn_ < plot_.curves.size()) {
            drawing_.Add(
                TextItem{{8.0, drawing_.size.height - 6.0},
                         Concat("the first ", drawn_, " of ", plot_.curves.size(), " curves"),
                         noteSize,
                         Role::Fault,
                         Anchor::Start,
                         Weight::Regular,
                         false});
        }
        if (!options_.fileName) return;
        drawing_.Add(TextItem{{drawing_.size.width - 8.0, drawing_.size.height - 6.0},
                              Elided(plot_.name, 0.5 * drawing_.size.width, noteSize, measure_),
                              noteSize,
                              Role::Dim,
                              Anchor::End,
                              Weight::Regular,
                              false});
    }

    const Plot& plot_;
    const PlotView& view_;
    const PlotOptions& options_;
    const TextMeasure& measure_;
    Drawing drawing_;
    PlotLayout layout_;
    AxisPicture x_, y_, second_;
    bool hasSecond_ = false;  // an axis at the right
    bool density_ = false;
    std::string eyeText_;
    std::vector<Parts> parts_;
    std::size_t drawn_ = 0;  // curves before this one are drawn
    Legend legend_;
    Rect legendBox_;
};

}  // namespace

EyeStyle StyleOf(const Plot& plot, EyeStyle asked) {
    if (asked != EyeStyle::Auto) return asked;
    return static_cast<double>(plot.curves.size()) >= tracesAlone ? EyeStyle::Density
                                                                  : EyeStyle::Traces;
}

PlotPicture DrawPlot(const Plot& plot, const PlotView& view, const PlotOptions& options) {
    return Painting(plot, view, options).Draw();
}

}  // namespace photrak

#include "plotting/cursors.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "drawing/number_text.h"
#include "plotting/axis_label.h"

namespace photrak {
namespace {

constexpr double lightSpeed = 299792458.0;  // m/s
constexpr std::string_view letters[] = {"A", "B"};

const Curve* FirstVisible(const Plot& plot, const PlotView& view) {
    for (const Curve& curve : plot.curves) {
        if (!view.IsHidden(curve)) return &curve;
    }
    return nullptr;
}

std::optional<std::size_t> NearestByScan(const Column& x, double at) {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < x.Size(); ++i) {
        if (std::isnan(x[i])) continue;
        if (!best || std::fabs(x[i] - at) < std::fabs(x[*best] - at)) best = i;
    }
    return best;
}

/// Digits that tell neighboring samples apart: 1.55000004 um where the step asks for it.
int DigitsFor(double value, double step) {
    if (!(std::fabs(step) > 0.0) || value == 0.0) return 6;
    return std::clamp(static_cast<int>(std::ceil(std::log10(std::fabs(value / step)))) + 2, 4, 12);
}

double StepNear(const Column& x, double at) {
    const auto i = NearestSample(x, at);
    if (!i || x.Size() < 2) return 0.0;
    return *i + 1 < x.Size() ? x[*i + 1] - x[*i] : x[*i] - x[*i - 1];
}

std::string LevelText(const std::optional<double>& value, std::string_view unit) {
    return value ? EngineeringText(*value, unit, 6) : std::string();
}

/// Per prefixed unit of x: dB/nm rather than dB/m.
std::string SlopeText(double rise, double run, std::string_view yUnit, std::string_view xUnit) {
    if (run == 0.0) return {};
    const std::string_view unit = yUnit.starts_with("dB") ? "dB" : yUnit;
    if (unit.empty() && xUnit.empty()) return ReadableText(rise / run, 5);
    const SiPrefix prefix =
        TakesPrefix(xUnit) ? PrefixFor(xUnit == "m" ? 0.5 * run : run) : SiPrefix{};
    const double slope = rise / (run / PowerOfTen(prefix.exponent));
    const std::string under = xUnit.empty() ? "1" : Concat(prefix.text, xUnit);
    if (unit.empty()) return Concat(ReadableText(slope, 5), " /", under);
    return Concat(EngineeringText(slope, unit, 5), "/", under);
}

/// What a difference in x is besides: the rate of a time, the frequency of a difference in
/// wavelength.
std::string InverseText(std::string_view unit, double a, double b) {
    if (a == b) return {};
    if (unit == "s") return EngineeringText(1.0 / std::fabs(b - a), "Hz", 6);
    if (unit == "m" && a > 0.0 && b > 0.0)
        return EngineeringText(std::fabs(lightSpeed / a - lightSpeed / b), "Hz", 6);
    if (unit == "Hz") return EngineeringText(1.0 / std::fabs(b - a), "s", 6);
    return {};
}

void FillX(Readout& readout, const Plot& plot, const PlotView& view, const Cursors& cursors) {
    const std::string unit = SplitLabel(plot.spec.xLabel).unit;
    const Curve* curve = FirstVisible(plot, view);
    const auto text = [&](double value) {
        const double step = curve ? StepNear(*curve->x, value) : 0.0;
        return EngineeringText(value, unit, DigitsFor(value, step));
    };
    if (cursors.x[0]) readout.xA = text(*cursors.x[0]);
    if (cursors.x[1]) readout.xB = text(*cursors.x[1]);
    if (!cursors.x[0] || !cursors.x[1]) return;
    const double difference = *cursors.x[1] - *cursors.x[0];
    readout.xDifference = EngineeringText(difference, unit, 6);
    readout.xInverse = InverseText(unit, *cursors.x[0], *cursors.x[1]);
}

void FillY(Readout& readout, const Plot& plot, const Cursors& cursors) {
    const std::string unit = SplitLabel(plot.spec.yLabel).unit;
    readout.yA = LevelText(cursors.y[0], unit);
    readout.yB = LevelText(cursors.y[1], unit);
    if (!cursors.y[0] || !cursors.y[1]) return;
    // The difference of two levels in dBm is a ratio.
    readout.yDifference =
        EngineeringText(*cursors.y[1] - *cursors.y[0], unit.starts_with("dB") ? "dB" : unit, 6);
}

ReadoutRow RowOf(const Plot& plot, const Curve& curve, const Cursors& cursors) {
    const std::string xUnit = SplitLabel(plot.spec.xLabel).unit;
    const std::string yUnit =
        SplitLabel(curve.second ? plot.spec.secondLabel : plot.spec.yLabel).unit;
    std::array<std::optional<double>, 2> values;
    for (std::size_t i = 0; i < 2; ++i) {
        if (cursors.x[i]) values[i] = ValueAt(curve, *cursors.x[i], cursors.snaps);
    }
    ReadoutRow row{curve.name, LevelText(values[0], yUnit), LevelText(values[1], yUnit), {}, {}};
    if (!values[0] || !values[1]) return row;
    const double rise = *values[1] - *values[0];
    row.difference = EngineeringText(rise, yUnit.starts_with("dB") ? "dB" : yUnit, 6);
    row.slope = SlopeText(rise, *cursors.x[1] - *cursors.x[0], yUnit, xUnit);
    return row;
}

void DrawLine(PlotPicture& picture, std::string id, std::string_view letter, Point from, Point to,
              bool upright) {
    Drawing& drawing = picture.drawing;
    drawing.AddOver(Segments{{from, to}, {Role::Selected, 1.0, Dash::Dashed, 1.0}});
    const Point at =
        upright ? Point{from.x + 4.0, from.y + 13.0} : Point{from.x + 8.0, from.y - 4.0};
    drawing.AddOver(TextItem{at, std::string(letter), 11.0, Role::Selected, Anchor::Start,
                             Weight::Bold, false});
    const Rect line{std::min(from.x, to.x), std::min(from.y, to.y), std::fabs(to.x - from.x),
                    std::fabs(to.y - from.y)};
    drawing.marks.push_back({std::move(id), line.Grown(3.0), Concat("Cursor ", letter),
                             "Drag moves it, arrow keys step by samples"});
}

void DrawDots(PlotPicture& picture, const Plot& plot, const PlotView& view, const Cursors& cursors,
              double x) {
    constexpr std::size_t mostDots = 64;
    std::size_t drawn = 0;
    for (const Curve& curve : plot.curves) {
        if (view.IsHidden(curve) || drawn++ == mostDots || plot.kind == PlotKind::Eye) continue;
        const auto value = ValueAt(curve, x, cursors.snaps);
        const PixelMap map = picture.layout.Map(curve.second);
        if (!value || !map.y.Shows(*value)) continue;
        const Point p = map.At(x, *value);
        if (!picture.layout.pane.Contains(p)) continue;
        picture.drawing.AddOver(Symbols{{p}, Marker::Circle, 7.0, CurveRole(curve.place), 1.0});
    }
}

}  // namespace

std::optional<std::size_t> NearestSample(const Column& x, double at) {
    if (x.Size() == 0 || std::isnan(at)) return {};
    if (!x.IsAscending()) return NearestByScan(x, at);
    const auto& values = x.Values();
    const auto after = static_cast<std::size_t>(std::lower_bound(values.begin(), values.end(), at) -
                                                values.begin());
    if (after == 0) return 0;
    if (after == values.size()) return values.size() - 1;
    return at - values[after - 1] <= values[after] - at ? after - 1 : after;
}

std::optional<double> ValueAt(const Curve& curve, double at, bool snaps) {
    const Column& x = *curve.x;
    const auto i = NearestSample(x, at);
    if (!i || *i >= curve.y->Size() || !x.Limits().Contains(at)) return {};
    double value = (*curve.y)[*i];
    if (!snaps && x[*i] != at) {
        const bool before = x[*i] < at;
        const std::size_t other = before ? *i + 1 : *i - 1;
        if (other >= curve.y->Size()) return {};
        const double part = (at - x[*i]) / (x[other] - x[*i]);
        value += part * ((*curve.y)[other] - value);
    }
    if (std::isnan(value)) return {};
    return value;
}

double CursorPlace(const Plot& plot, const PlotView& view, const Cursors& cursors, double at) {
    const Curve* curve = FirstVisible(plot, view);
    if (!cursors.snaps || !curve) return at;
    const auto i = NearestSample(*curve->x, at);
    return i ? (*curve->x)[*i] : at;
}

void StepCursor(const Plot& plot, const PlotView& view, Cursors& cursors, CursorId id, int steps) {
    std::optional<double>& cursor = cursors.X(id);
    const Curve* curve = FirstVisible(plot, view);
    if (!cursor || !curve) return;
    if (!cursors.snaps) {
        const AxisScale scale = view.ScaleOf(AxisId::X);
        cursor = scale.Value(scale.Place(*cursor) + 0.01 * steps);
        return;
    }
    const auto i = NearestSample(*curve->x, *cursor);
    if (!i) return;
    const auto last = static_cast<std::ptrdiff_t>(curve->x->Size()) - 1;
    const auto next = std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(*i) + steps, 0, last);
    const double place = (*curve->x)[static_cast<std::size_t>(next)];
    if (!std::isnan(place)) cursor = place;
}

Readout MakeReadout(const Plot& plot, const PlotView& view, const Cursors& cursors,
                    std::size_t mostRows) {
    Readout readout;
    FillX(readout, plot, view, cursors);
    FillY(readout, plot, cursors);
    if (plot.kind == PlotKind::Eye || (!cursors.x[0] && !cursors.x[1])) return readout;
    for (const Curve& curve : plot.curves) {
        if (readout.rows.size() == mostRows) break;
        if (!view.IsHidden(curve)) readout.rows.push_back(RowOf(plot, curve, cursors));
    }
    return readout;
}

std::string ReadoutText(const Readout& readout) {
    std::string text = Concat("\tA\tB\tB - A\t\n", "x\t", readout.xA, "\t", readout.xB, "\t",
                              readout.xDifference, "\t", readout.xInverse, "\n");
    if (!readout.yA.empty() || !readout.yB.empty()) {
        text += Concat("y\t", readout.yA, "\t", readout.yB, "\t", readout.yDifference, "\t\n");
    }
    for (const ReadoutRow& row : readout.rows) {
        text +=
            Concat(row.name, "\t", row.a, "\t", row.b, "\t", row.difference, "\t", row.slope, "\n");
    }
    return text;
}

void DrawCursors(PlotPicture& picture, const Plot& plot, const PlotView& view,
                 const Cursors& cursors) {
    const Rect& pane = picture.layout.pane;
    const PixelMap map = picture.layout.Map(false);
    for (std::size_t i = 0; i < 2; ++i) {
        if (cursors.x[i] && map.x.Range().Contains(*cursors.x[i])) {
            const double x = map.At(*cursors.x[i], 1.0).x;
            DrawLine(picture, Concat("cursor:x", letters[i]), letters[i], {x, pane.y},
                     {x, pane.Bottom()}, true);
            DrawDots(picture, plot, view, cursors, *cursors.x[i]);
        }
        if (cursors.y[i] && map.y.Shows(*cursors.y[i]) && map.y.Range().Contains(*cursors.y[i])) {
            const double y = map.At(map.x.Range().least, *cursors.y[i]).y;
            DrawLine(picture, Concat("cursor:y", letters[i]), letters[i], {pane.x, y},
                     {pane.Right(), y}, false);
        }
    }
}

}  // namespace photrak
